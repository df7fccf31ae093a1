#include "services/process_signals.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>

#include "corelink/last_error.h"

namespace pathstat {
namespace {

constexpr std::int32_t failed = -1;

std::optional<pid_t> process_number(const char* text) {
  const std::string_view digits = text == nullptr ? "" : text;
  pid_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error == std::errc{} && end == digits.data() + digits.size() && number > 0) return number;
  PLE_error("process %s is not a unix process number", digits.data());
  return std::nullopt;
}

/// What a failed signal says could not be done: the numbers of stop and resume of all systems that this runs on.
struct Purpose {
  std::int32_t signal;
  const char* text;
};
constexpr std::array purposes{Purpose{SIGKILL, "cannot kill process %d%s"}, Purpose{23, "cannot stop process %d%s"},
                              Purpose{SIGSTOP, "cannot stop process %d%s"},
                              Purpose{25, "cannot resume execution of process %d%s"},
                              Purpose{SIGCONT, "cannot resume execution of process %d%s"}};

void tell_failure(std::int32_t signal, pid_t process) {
  const char* system = PLE_system_error();
  for (const auto& purpose : purposes) {
    if (purpose.signal != signal) continue;
    std::array<char, 512> text{};
    std::snprintf(text.data(), text.size(), purpose.text, process, system);
    return PLE_error("%s", text.data());
  }
  PLE_error("cannot send signal %d to process %d%s", signal, process, system);
}

volatile std::sig_atomic_t handler_depth = 0;
void (*volatile on_child_end)(std::int32_t process) = nullptr;

/// Straight to the descriptor: the signal may have come in the middle of a print.
template <class... Values>
void write_line(int descriptor, const char* format, Values... values) {
  std::array<char, 256> text{};
  const int length = std::snprintf(text.data(), text.size(), format, values...);
  const auto size = std::min(static_cast<std::size_t>(std::max(length, 0)), text.size() - 1);
  [[maybe_unused]] const auto written = ::write(descriptor, text.data(), size);
}

void on_child_signal(int signal) {
  constexpr int most_levels = 5;
  const int failure = errno;
  handler_depth = handler_depth + 1;
  if (handler_depth <= most_levels) {
    std::signal(signal, on_child_signal);
  } else {
    write_line(STDERR_FILENO, "com_sigchld_handler: Warning 0913.10: counter=%d\n", static_cast<int>(handler_depth));
  }
  int status = 0;
  const pid_t ended = ::wait(&status);
  if (std::getenv("SIG_DEBUG") != nullptr) {
    write_line(STDOUT_FILENO, "com_sigchld_handler: process=%d status=%d counter=%d\n", ended, status,
               static_cast<int>(handler_depth));
  }
  if (ended < 0) {
    write_line(STDERR_FILENO, "Error waiting: %s\n", std::strerror(errno));
  } else if (on_child_end != nullptr) {
    on_child_end(ended);
  }
  handler_depth = handler_depth - 1;
  errno = failure;
}

}  // namespace

std::int32_t COM_signal(std::int32_t signal, const char* process) {
  const auto number = process_number(process);
  if (!number) return failed;
  if (::kill(*number, signal) == 0) return 0;
  tell_failure(signal, *number);
  return failed;
}

std::int32_t COM_signal_send_kill(const char* process) { return COM_signal(SIGKILL, process); }
std::int32_t COM_signal_send_stop(const char* process) { return COM_signal(SIGSTOP, process); }
std::int32_t COM_signal_send_resume(const char* process) { return COM_signal(SIGCONT, process); }
std::int32_t COM_signal_send_int(const char* process) { return COM_signal(SIGINT, process); }
std::int32_t COM_sigusr1_send(const char* process) { return COM_signal(SIGUSR1, process); }
std::int32_t COM_sigusr2_send(const char* process) { return COM_signal(SIGUSR2, process); }

std::int32_t COM_setpriority(std::int32_t delta, const char* process) {
  const auto number = process_number(process);
  if (!number) return failed;
  errno = 0;
  const auto who = static_cast<id_t>(*number);
  const int present = ::getpriority(PRIO_PROCESS, who);
  if (errno == 0 && ::setpriority(PRIO_PROCESS, who, present + std::clamp(delta, -40, 40)) == 0) return 0;
  PLE_error("cannot change priority of %d by %d", *number, delta);
  return failed;
}

SignalHandler COM_signal_handler_child(SignalHandler handler) { return std::signal(SIGCHLD, handler); }
SignalHandler COM_signal_handler_socket(SignalHandler handler) { return std::signal(SIGPIPE, handler); }

void COM_sigchld_set(void (*ended)(std::int32_t process)) {
  on_child_end = ended;
  std::signal(SIGCHLD, on_child_signal);
}

}  // namespace pathstat
