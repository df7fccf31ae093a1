#include "extraction/frame_points.h"

#include <cstddef>

#include "coreapi/messages.h"
#include "state/analysis_settings.h"
#include "state/trajectory_frames.h"
#include "trajectory/front_end.h"
#include "trajectory/trajectory_keys.h"

namespace pathstat {
FrameRange chosen_frames() {
  const auto& chosen = trj_frames_;
  if (chosen.first_frame < 1 || chosen.frame_step < 1 || chosen.last_frame < chosen.first_frame) return {};
  return {chosen.first_frame, chosen.frame_step, (chosen.last_frame - chosen.first_frame) / chosen.frame_step + 1};
}

FramePoints::FramePoints(const FrameRange& range, std::int32_t& status)
    : range_(range), x_("pathstat/DTD/XData", range.points, status) {
  if (status == 0) numbers_ = NamedBlock<std::int32_t>("pathstat/DTD/FrameNumber", range.points, status);
}

void FramePoints::read(const OpenTrajectory& trajectory, std::int32_t k, std::int32_t& status) {
  const auto at = static_cast<std::size_t>(k);
  const std::int32_t frame = range_.frame(k);
  numbers_.span()[at] = frame;
  double& x = x_.span()[at];
  x = frame;
  trj_readframe_(trajectory.handle(), frame, status);
  if (status == 0 && trj_gui_l_.has_time_axis) trj_dvalue_(trajectory.handle(), trajectory_key::time, x, status);
  if (status != 0) show_message("PATHSTAT_ERROR_93");
}

}  // namespace pathstat
