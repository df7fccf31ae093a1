#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat {

/// Sends the value of a key to the Core's scripts through the return list. The times are those of frame 1 and of the
/// last frame of the range.
/// @param status  0; 1 for a key without a value, for which nothing is sent
void mdanaltclreturn_(std::string_view key, std::int32_t& status);

}  // namespace pathstat
