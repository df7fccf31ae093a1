#pragma once

#include <cstdint>

namespace pathstat {

/// Finds the trajectory's model, offering its safety copy where it is gone.
/// @param move_cache  a frame cache follows to a restored model
/// @return false if there is no model to work on
bool have_trajectory_model(bool move_cache);

/// Puts a frame of the file on the trajectory's model and has it drawn. @return the status of the extraction
std::int32_t put_frame_on_model(std::int32_t frame);

/// Makes the frame cache for the present range, or checks the one that is there. A cache that fails the check is made
/// anew the next time. @return false on failure
bool have_frame_cache();

/// The frame of the file at a place of the range.
std::int32_t frame_at(std::int32_t place);

}  // namespace pathstat
