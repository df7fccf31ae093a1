#pragma once

#include <string_view>

#include "coreapi/messages.h"

namespace pathstat {

/// Queues one argument of the next line.
using message::push;

/// Prints the line of a key with these arguments behind those that are queued.
template <class... Arguments>
void print_line(std::string_view key, const Arguments&... arguments) {
  show_message(key, arguments...);
}

}  // namespace pathstat
