#include "analysis/shown_frame.h"

#include <algorithm>

#include "analysis/analysis_state.h"
#include "coreapi/operations.h"
#include "shell/running_analysis.h"
#include "state/analysis_settings.h"
#include "state/trajectory_frames.h"
#include "trajectory/frame_cache.h"
#include "trajectory/frame_extraction.h"
#include "trajectory/model_check.h"

namespace pathstat {

bool have_trajectory_model(bool move_cache) {
  std::int32_t status = 0;
  checktrjmodel_(model_copy_path, trj_gui_i_.trajectory_model, move_cache, status);
  return status == 0;
}

std::int32_t put_frame_on_model(std::int32_t frame) {
  std::int32_t status = 0;
  extractfromframe_(trj_frames_c_.trj_file_name, trj_gui_i_.trajectory_model, trj_frames_.frames_in_file, frame,
                    ExtractionMode::apply, status);
  kvg_redisplaymodels_(0, 0);
  return status;
}

bool have_frame_cache() {
  std::int32_t status = 0;
  if (trj_gui_l_.frame_cache_ready) {
    checkcacheatoms_(status);
    trj_gui_l_.frame_cache_ready = status == 0;
    return status == 0;
  }
  const RunningAnalysis running;  // the making of the cache holds the open trajectory
  setuptrjcache_(trj_gui_i_.trajectory_model, trj_frames_c_.trj_file_name, trj_frames_.first_frame,
                 trj_frames_.last_frame, trj_frames_.frame_step, status);
  if (status != 0) return false;
  trj_gui_i_.current_frame = std::min(trj_gui_i_.current_frame, trj_frames_.frames_in_range);
  trj_gui_l_.frame_cache_ready = true;
  return true;
}

std::int32_t frame_at(std::int32_t place) { return trj_frames_.first_frame + trj_frames_.frame_step * (place - 1); }

}  // namespace pathstat
