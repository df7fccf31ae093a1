#pragma once

#include <cstdint>

namespace pathstat {

/// Has the user interrupted the work? Asks the Core at most once in 400000 microseconds; in between the answer is 0
/// with no call, so that a long loop may ask in every round. This is also where a process detaches that is asked to,
/// and where a detached one, which asks nobody, meets a Core that comes back.
/// @return 1 if the user asks to stop
std::int32_t kvU_INT_RequestInterrupt();

inline std::int32_t kvu_int_requestinterrupt_() { return kvU_INT_RequestInterrupt(); }

/// Tells the Core the share of the work that is done, from 0 to 1, if it is there.
void tell_progress(float fraction);

}  // namespace pathstat
