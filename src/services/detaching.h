#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "corelink/connection.h"

namespace pathstat {

/// The path of the file by which a Core finds a process that waits for it: it holds the port and "tcp", a line each.
std::string reconnection_file(std::int32_t process);

/// Told where the process listens, before it waits.
using DetachNotifier = std::function<void(const ListeningServer& server)>;

/// Waits at most so many seconds for a Core to connect to this process, which becomes the server of the connection.
///
/// The process listens on a free port, and the reconnection file, which only this user can read, stands for as long as
/// it waits. The file is made anew: one of this user that a dead process left is removed, and what belongs to anyone
/// else makes the wait fail. Without a notifier nobody but a process of this user on this machine can know of the port,
/// and any other that connects is turned away.
///
/// A failure is printed and leaves the error text and a closed record.
/// @return 0, or 1 on failure
std::int32_t RJ_detachedX(Connection& record, std::int32_t seconds, const DetachNotifier& notifier);
std::int32_t RJ_detached(Connection& record, std::int32_t seconds);

/// Tells a Core on a machine that a process waits: "attach NAME MACHINE PROCESS PORT" to its public port, as plain
/// bytes. A failure is told on standard error.
void send_attach(const std::string& core_machine, const std::string& public_port, const std::string& process_name,
                 const ListeningServer& server);

}  // namespace pathstat
