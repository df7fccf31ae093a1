#include "coreapi/interrupt.h"

#include <sys/time.h>

#include <csignal>

#include "coreapi/error_reporting.h"
#include "coreapi/operations.h"
#include "corelink/core_connection.h"

namespace pathstat {

std::int32_t kvU_INT_RequestInterrupt() {
  constexpr suseconds_t interval_us = 400000;
  if (kvZ_IsApplicationInternal() != 0) return kvU_INT_RequestCoreInterrupt();
  itimerval left{};
  getitimer(ITIMER_REAL, &left);
  if (left.it_value.tv_usec != 0) return 0;
  const std::int32_t answer = core_absence.away ? 0 : kvU_INT_RequestCoreInterrupt();
  if (core_absence.look != nullptr) core_absence.look();
  std::signal(SIGALRM, SIG_IGN);
  const itimerval next{{0, 0}, {0, interval_us}};
  setitimer(ITIMER_REAL, &next, nullptr);
  return answer;
}

void tell_progress(float fraction) {
  if (!core_absence.away) kvU_INT_ReportProgress(fraction);
}

}  // namespace pathstat
