#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

#include "corelink/connection.h"

namespace pathstat::desk {

/// What the system knows a process by as long as it lives: its start, in ticks since that of the system. 0 for a
/// process that there is not or that has ended, and for one of another user.
std::uint64_t start_of_process(pid_t process);

/// Reads the file by which a detached process says where it waits. A link, and a file that belongs to somebody else or
/// that others can get at, are refused.
/// @param port  empty while there is no file
/// @return empty, or why the file can't be used
std::string read_reconnection_file(const std::string& path, std::string& port);

/// Connects to a detached process that waits, and makes sure that it is this one.
/// @return empty, or what went wrong
std::string connect_to_waiting(pid_t process, const std::string& port, Connection& connection);

}  // namespace pathstat::desk
