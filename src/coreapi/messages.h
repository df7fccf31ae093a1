#pragma once

#include <cstdint>
#include <string_view>

#include "coreapi/operations.h"

namespace pathstat {

namespace message {
/// Queues one argument of the next message.
inline void push(std::int32_t value) { kvu_msg_argi_(value); }
inline void push(float value) { kvu_msg_argf_(value); }
inline void push(double value) { kvu_msg_argd_(value); }
inline void push(std::string_view text) { kvu_msg_args_(text); }
}  // namespace message

/// Shows the message of a key, of severity 2, with these arguments behind those that are queued.
template <class... Arguments>
void show_message(std::string_view key, const Arguments&... arguments) {
  (message::push(arguments), ...);
  std::int32_t error = 0;
  kvu_msg_display_(2, key, error);
}

/// The same. @return 1, the result of what is refused
template <class... Arguments>
std::int32_t refuse(std::string_view key, const Arguments&... arguments) {
  show_message(key, arguments...);
  return 1;
}

}  // namespace pathstat
