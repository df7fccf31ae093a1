#pragma once

#include <cstdint>
#include <cstdio>
#include <string_view>

#include "coreapi/operations.h"

namespace pathstat {

namespace message_detail {
inline void push(std::int32_t value) { kvu_msg_argi_(value); }
inline void push(double value) { kvu_msg_argd_(value); }
inline void push(std::string_view text) { kvu_msg_args_(text); }
}  // namespace message_detail

/// Shows a message of severity 2 with its arguments and gives the result of a failed command.
template <class... Arguments>
std::int32_t refuse(std::string_view key, const Arguments&... arguments) {
  (message_detail::push(arguments), ...);
  std::int32_t error = 0;
  kvu_msg_display_(2, key, error);
  return 1;
}

/// Prints why a word does nothing now and gives the result of a failed command.
inline std::int32_t decline(std::string_view word, const char* why) {
  std::printf("%.*s: %s\n", static_cast<int>(word.size()), word.data(), why);
  return 1;
}

constexpr const char* another_analysis_runs = "another analysis is running";

}  // namespace pathstat
