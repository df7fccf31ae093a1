#pragma once

#include <cstdint>
#include <cstdio>
#include <string_view>

#include "coreapi/messages.h"

namespace pathstat {

/// Prints why a word does nothing now and gives the result of a failed command.
inline std::int32_t decline(std::string_view word, const char* why) {
  std::printf("%.*s: %s\n", static_cast<int>(word.size()), word.data(), why);
  return 1;
}

constexpr const char* another_analysis_runs = "another analysis is running";

}  // namespace pathstat
