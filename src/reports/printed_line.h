#pragma once

#include <cstdint>
#include <string_view>

#include "coreapi/operations.h"

namespace pathstat {

/// Queues one argument of the next line.
inline void push(std::int32_t value) { kvu_msg_argi_(value); }
inline void push(float value) { kvu_msg_argf_(value); }
inline void push(double value) { kvu_msg_argd_(value); }
inline void push(std::string_view text) { kvu_msg_args_(text); }

/// Prints the line of a key with these arguments behind those that are queued.
template <class... Arguments>
void print_line(std::string_view key, const Arguments&... arguments) {
  (push(arguments), ...);
  std::int32_t error = 0;
  kvu_msg_display_(2, key, error);
}

}  // namespace pathstat
