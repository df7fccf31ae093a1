#pragma once

#include <cstdint>

namespace pathstat {

/// Input codes that begin an exchange of the Core.
namespace input_code {
constexpr std::int32_t command = -1;
constexpr std::int32_t request = -2;
constexpr std::int32_t initialize = -3;
constexpr std::int32_t terminate = -4;
constexpr std::int32_t load = -5;
constexpr std::int32_t save = -6;
}  // namespace input_code

/// Codes that the process sends on its side.
namespace output_code {
constexpr std::int32_t ack = 1;
constexpr std::int32_t done = -64;
constexpr std::int32_t detached = -65;
constexpr std::int32_t fatal_error = -66;
}  // namespace output_code

/// True from the start of the applications to the terminate code.
inline bool applications_started = false;
/// Set by the terminate code; a connection that is lost afterwards is no error.
inline bool termination_requested = false;

/// Connects to the Core and serves it until the connection ends.
void extappl();

/// Waits for one input code and serves it. @return 0 to go on, 1 to end the loop
std::int32_t get_command();

/// Acknowledges an input code, reads what belongs to it, acts and answers. It may run again inside a call to the Core
/// that it makes. @return 0 to go on, 1 if the connection fails
std::int32_t process_input(std::int32_t code);

/// Tell the Core that a command is done with a status, that a request is done, that the process detaches, and that it
/// dies. Nothing is sent without a connection.
void cmd_done(std::int32_t status);
void request_done();
void detach_notify();
void error_notify();

}  // namespace pathstat
