#pragma once

#include <cstdint>

namespace pathstat {

enum class WaitDirection { read, write };
enum class WaitResult { ready = 1, timed_out = 2, error = 3 };

/// Waits until the socket can be read or written. An interruption starts the wait of `seconds` anew.
/// An error sets the error text.
WaitResult timed_wait(std::int32_t socket, WaitDirection direction, std::int32_t seconds);

}  // namespace pathstat
