#pragma once

#include <cstddef>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace pathstat {

/// The bytes that pairs of hexadecimal digits stand for; stops at the first pair that is none.
std::vector<std::byte> COM_h2c(std::string_view digits);

/// Two upper-case hexadecimal digits per byte.
std::string COM_scdump(std::span<const std::byte> bytes);

/// Writes the bytes in rows of sixteen, in hexadecimal and as characters. Of a block of fewer than 4 or more than
/// 4096 bytes the first 80 at most are shown, behind a line that says so.
void COM_cdump(std::string_view title, std::span<const std::byte> bytes, std::FILE* out = stdout);

/// The same by address: the title is a field, of which trailing blanks are no part.
inline void com_fdump_(std::string_view title, std::span<const std::byte> bytes) {
  COM_cdump(title.substr(0, title.find_last_not_of(' ') + 1), bytes);
}

}  // namespace pathstat
