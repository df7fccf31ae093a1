#include "shell/fatal_signals.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "shell/detaching.h"
#include "shell/input_loop.h"

namespace pathstat {
namespace {

struct FatalSignal {
  int number;
  const char* cause;  ///< follows "This error is caused by a"
};

constexpr FatalSignal fatal_signals[] = {
    {SIGHUP, " system hangup"},
    {SIGQUIT, " quit signal"},
    {SIGILL, "n illegal instruction"},
    {SIGTRAP, " trace trap"},
    {SIGABRT, "n abort signal"},
#ifdef SIGEMT
    {SIGEMT, "n EMT instruction"},
#endif
    {SIGFPE, " floating point exception"},
    {SIGBUS, " bus error"},
    {SIGSEGV, " segmentation violation"},
    {SIGSYS, " bad argument to system call"},
    {SIGPIPE, " write on a pipe with no one to read it"},
    {SIGTERM, " software termination signal"},
    {SIGPWR, " power-fail restart"},
};

constexpr unsigned last_words_seconds = 1;

/// Ends the process where its last words wait for a Core that does not read.
void limit_last_words() {
  std::signal(SIGALRM, [](int) { std::_Exit(1); });
  ::alarm(last_words_seconds);
}

void on_fatal_signal(int number) {
  limit_last_words();
  std::printf("Terminate external process due to error %d.\n", number);
  const auto* known = std::ranges::find(fatal_signals, number, &FatalSignal::number);
  if (known != std::end(fatal_signals)) std::printf("This error is caused by a%s.\n", known->cause);
  error_notify();
  std::fflush(stdout);
  std::_Exit(1);  // destructors would run on data that the signal has caught in the making
}

void on_notice_signal(int number) {
  const int failure = errno;
  note_call_of_core();
  std::signal(number, on_notice_signal);
  constexpr std::string_view notice = "Caught SIGUSR1 signal\n";
  // Straight to the descriptor: the signal may have come in the middle of a print.
  [[maybe_unused]] const auto written = ::write(STDOUT_FILENO, notice.data(), notice.size());
  errno = failure;
}

}  // namespace

void install_signal_handlers() {
  for (const auto& [number, cause] : fatal_signals) std::signal(number, on_fatal_signal);
  std::signal(SIGUSR1, on_notice_signal);
}

}  // namespace pathstat
