#pragma once

#include <cstdint>

#include "support/text_field.h"

namespace pathstat {

/// The frames of the loaded trajectory and the range chosen among them.
struct TrjFrames {
  double frame_time_step = 0.0;      ///< ps between two frames of the file; 0 when the file tells no usable time
  double frame_first_time = 0.0;     ///< ps, of frame 1
  std::int32_t frames_in_file = 0;   ///< as found by the scan
  std::int32_t first_frame = 0;      ///< of the range
  std::int32_t frame_step = 0;       ///< of the range
  std::int32_t last_frame = 0;       ///< of the range
  std::int32_t frames_in_range = 0;  ///< entries of the range
};
inline TrjFrames trj_frames_;

struct TrjFramesC {
  Text<1024> trj_file_name;
};
inline TrjFramesC trj_frames_c_;

/// The frame of the extraction command.
inline std::int32_t trj_extract_ = 1;

}  // namespace pathstat
