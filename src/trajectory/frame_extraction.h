#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat {

/// What is done with a frame that is taken out of a trajectory.
enum class ExtractionMode : std::int32_t { report = 1, apply = 2 };

/// Takes one frame out of a trajectory: prints a report of it on standard output, or puts its cell, positions,
/// velocities and forces on the model and has the Core find the bonds anew. A report needs no model that fits.
///
/// @param frames_in_file  frames that the scan found
/// @param frame           from 1
/// @param status  0; 1 after PATHSTAT_ERROR_101 (no such frame), 102 (the model is empty), 103 (another periodic
///                type), 104 (the atoms of another model); that of the reader, the open one after "Traj_OpenProblem"
void extractfromframe_(std::string_view file, std::int32_t model, std::int32_t frames_in_file, std::int32_t frame,
                       ExtractionMode mode, std::int32_t& status);

}  // namespace pathstat
