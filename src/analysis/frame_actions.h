#pragma once

#include <cstdint>

namespace pathstat::actions {

// The choice of frames: each routine takes a new end or step of the range, applies it, and shows the frame that then
// stands at the current place.

std::int32_t first_frame_no();
std::int32_t first_frame_time();
std::int32_t last_frame_no();
std::int32_t last_frame_time();
std::int32_t increment_no();
std::int32_t increment_time();
std::int32_t use_all_frames();

// The shown frame.

std::int32_t current_frame_number();
std::int32_t current_frame_time();
std::int32_t frame_step_forwards();
std::int32_t frame_step_backwards();
std::int32_t frame_step_stop();
std::int32_t show_next_frame();
std::int32_t show_previous_frame();
std::int32_t structure_from_plot();
std::int32_t extract_frame();
std::int32_t frame_info();

}  // namespace pathstat::actions
