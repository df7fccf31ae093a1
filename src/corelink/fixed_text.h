#pragma once

#include <span>
#include <string_view>

namespace pathstat {

/// Field to terminated text: as many characters as fit ahead of the NUL that ends `target`, without trailing blanks.
void kvS_STR_CopyF2C(std::span<char> target, std::string_view source);

/// Terminated text to field: the characters up to the first NUL, blank-padded or cut to the size of `target`.
void kvS_STR_CopyC2F(std::span<char> target, std::string_view source);

inline void COM_STR_CopyF2C(std::span<char> target, std::string_view source) { kvS_STR_CopyF2C(target, source); }
inline void COM_STR_CopyC2F(std::span<char> target, std::string_view source) { kvS_STR_CopyC2F(target, source); }

}  // namespace pathstat
