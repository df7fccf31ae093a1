#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat {

/// What the loaded trajectory or the selected models can deliver: sets Selectable and CanBeUsed of all rows and
/// whether something selected can be had.
///
/// @param file    the trajectory
/// @param keep    false: of a trajectory, reads the header values and rebuilds the tables first
/// @param status  0; that of the open after "Traj_OpenProblem"; 50015 if the trajectory does not fit its model, the
///                rows being set all the same
void maskprops_(std::string_view file, bool keep, std::int32_t& status);

/// Takes back the selection of rows that no selected model can serve, each with PATHSTAT_WARN_13.
/// @param status  0, or that of the allocation
void checkprops_(std::int32_t& status);

/// Degrees of freedom of `movable` atoms in a trajectory.
double degrees_of_freedom(std::int32_t movable, std::int32_t fixed, std::int32_t periodicity);

}  // namespace pathstat
