#pragma once

#include <cstdint>
#include <string_view>

#include "correlation/frame_sink.h"

namespace pathstat {

/// Copies positions or velocities of the chosen frames and atoms of a trajectory into a cache.
///
/// @param cache               opened here, once all that is to come into it is known
/// @param frames_done         out: frames written; on a frame that cannot be read, its place from 1 on
/// @param atoms               out: atoms per record
/// @param velocities_present  out: of the last frame read, when velocities are wanted
/// @param frame_spacing       out: between the last two frames, ps
/// @param selection           "ALL", or "SELECTED" for those atoms selected in the Core that move
/// @param status              out: 0, one of cache_status, or the status of the cache, the trajectory or an allocation
void setupcorrl_(FrameSink& cache, std::string_view trajectory_file, std::int32_t model, std::int32_t& frames_done,
                 std::int32_t& atoms, bool& velocities_present, double& frame_spacing, bool want_velocities,
                 std::int32_t first, std::int32_t last, std::int32_t step, std::string_view selection,
                 std::int32_t& status);

}  // namespace pathstat
