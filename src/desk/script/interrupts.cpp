#include "desk/script/interrupts.h"

#include <atomic>
#include <csignal>
#include <initializer_list>

namespace pathstat::desk {
namespace {

std::atomic<int> requests = 0;
static_assert(std::atomic<int>::is_always_lock_free, "it is counted in a signal handler");

void count_request(int signal) {
  if (signal == SIGINT)
    ++requests;
  else
    requests = 2;
  if (requests >= 2) std::signal(SIGINT, SIG_DFL);
}

}  // namespace

void watch_interrupts() {
  struct sigaction action {};
  action.sa_handler = count_request;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) sigaction(signal, &action, nullptr);
  // These end as errors of the writes that they come of.
  for (const int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_IGN);
}

int interrupts() { return requests; }

void request_interrupt() { ++requests; }

void forget_interrupts() {
  requests = 0;
  watch_interrupts();
}

}  // namespace pathstat::desk
