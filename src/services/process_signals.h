#pragma once

#include <cstdint>

namespace pathstat {

// Signals to other processes, which are named by a text: the number of one process, above 0, as this process could
// reach its whole group or every process by the others. Each answers 0, or -1 with the error text set.

std::int32_t COM_signal(std::int32_t signal, const char* process);
std::int32_t COM_signal_send_kill(const char* process);
std::int32_t COM_signal_send_stop(const char* process);
std::int32_t COM_signal_send_resume(const char* process);
std::int32_t COM_signal_send_int(const char* process);
std::int32_t COM_sigusr1_send(const char* process);
std::int32_t COM_sigusr2_send(const char* process);

/// Raises the nice value of a process by `delta`.
std::int32_t COM_setpriority(std::int32_t delta, const char* process);

using SignalHandler = void (*)(int signal);

/// Have SIGCHLD and SIGPIPE handled by a function. @return the handler that stood there
SignalHandler COM_signal_handler_child(SignalHandler handler);
SignalHandler COM_signal_handler_socket(SignalHandler handler);

/// Waits for each child that ends, and calls `ended` with its process number from the signal handler.
void COM_sigchld_set(void (*ended)(std::int32_t process));

}  // namespace pathstat
