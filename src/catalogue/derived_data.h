#pragma once

#include <cstdint>

namespace pathstat {

/// Lets go of what was derived from the frames so far, when the trajectory, the frame range or another setting of the
/// extraction has changed: no row is on disk any more, dipole and free volume rows have to be calculated anew and are
/// no longer selected, and the measures are forgotten. The scratch files stay; nothing trusts them.
/// @param status  0
void killcache_(std::int32_t& status);

}  // namespace pathstat
