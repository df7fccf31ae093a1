#pragma once

#include "corelink/connection.h"

namespace pathstat {

/// The one connection to the Core; null until it is made. The record is never freed.
inline Connection* kvC_API_pnc = nullptr;

/// The Core while the process has given up its connection on purpose. What a layer above sets here leads to where the
/// process detaches and comes back.
struct CoreAbsence {
  bool away = false;
  void (*look)() = nullptr;       ///< where no exchange is under way: detaches if asked, lets a Core in that calls
  void (*come_back)() = nullptr;  ///< waits for the Core
};
inline CoreAbsence core_absence;

/// Makes sure that the Core is there, for a call that can't do without.
inline void need_core() {
  if (core_absence.away) core_absence.come_back();
}

/// Says that the Core is lost and ends the process with status 1.
[[noreturn]] void kvC_Error_handler(int code = 0);

}  // namespace pathstat
