#pragma once

#include <cstdint>

namespace pathstat {

/// Gives up the connection to the Core: takes the process name and the Core's public port from it, closes the
/// connection and says so. The bindings of operations stay, as the Core that comes back has the same.
/// @param status  0
void kvZ_DetachApplication(std::int32_t& status);

/// Waits at most so many seconds for the Core to connect, and tells it the number of threads. Does nothing but say so
/// if there is a connection. Ends the process with 1 if nobody comes, and with 2 if the connection is lost again.
/// @param status  0
void kvZ_ReattachApplication(std::int32_t seconds, std::int32_t& status);

/// Has the process detach at the next point where no exchange with the Core is under way. It then works on by itself
/// until it needs the Core, for which it waits at most so many seconds.
void detach_soon(std::int32_t seconds);

/// Has calls, polls and the input loop know of a Core that is away; to be called once, at the start.
void watch_core();

/// Set by SIGUSR1: a Core waits for this process to listen.
void note_call_of_core();

}  // namespace pathstat
