#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat {

/// Reads a trajectory through once and counts its frames. Comments in it go to standard output; the count is shown
/// every 50 frames, where the user may stop it and keep what was found (PATHSTAT_WARN_19).
///
/// @param reader_code, file_kind, version  as the reader tells them
/// @param has_time_axis  out: the frames carry times that differ
/// @param first_time     out: time of frame 1, ps
/// @param time_step      out: ps between frames; 0.001 for a single frame, 0 where frames carry no times
/// @param frames         out: the frames found
/// @param status  0, also for a damaged file with some frames (PATHSTAT_WARN_7); not 0 where the file cannot be opened
///                (Traj_OpenProblem or PATHSTAT_ERROR_117 with its name) or has no frames (PATHSTAT_ERROR_47)
void scanfile_(std::string_view path, std::int32_t& reader_code, std::int32_t& file_kind, std::int32_t& version,
               bool& has_time_axis, double& first_time, double& time_step, std::int32_t& frames, std::int32_t& status);

}  // namespace pathstat
