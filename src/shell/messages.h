#pragma once

#include <cstdint>
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

}  // namespace pathstat
