#include <algorithm>
#include <charconv>
#include <optional>

#include "analysis/analysis_state.h"
#include "analysis/frame_actions.h"
#include "analysis/shown_frame.h"
#include "catalogue/derived_data.h"
#include "plots/saved_handles.h"
#include "services/text_operations.h"
#include "shell/arguments.h"
#include "state/analysis_settings.h"
#include "state/trajectory_frames.h"

namespace pathstat::actions {
namespace {

constexpr std::int32_t done = 0;
constexpr std::int32_t refused = 1;

struct FrameRange {
  std::int32_t first = 1;
  std::int32_t last = 1;
  std::int32_t step = 1;
  std::int32_t count() const { return (last - first) / step + 1; }
};

FrameRange present_range() { return {trj_frames_.first_frame, trj_frames_.last_frame, trj_frames_.frame_step}; }

/// Neither the saved graphs nor the frame cache of the old range hold for the new one.
void drop_marks_and_cache(std::int32_t place) {
  std::int32_t status = 0;
  initsavedgraphhandles_(place, status);
  trj_gui_l_.frame_cache_ready = false;
}

void drop_results() {
  std::int32_t status = 0;
  killcache_(status);
}

void store(const FrameRange& range, std::int32_t place) {
  trj_frames_.first_frame = range.first;
  trj_frames_.last_frame = range.last;
  trj_frames_.frame_step = range.step;
  trj_frames_.frames_in_range = range.count();
  set_maximal_intervals(range.count() / 2, 0.0);
  trj_gui_i_.current_frame = place;
}

/// Takes over a range; the shown frame moves with the current place. A frame that cannot be put on the model does not
/// keep the range back.
std::int32_t apply(const FrameRange& range) {
  std::int32_t status = done;
  const std::int32_t place = std::clamp(trj_gui_i_.current_frame, 1, range.count());
  if (trj_gui_l_.trajectory_loaded) {
    const std::int32_t shown = frame_at(trj_gui_i_.current_frame);
    const std::int32_t wanted = (place - 1) * range.step + range.first;
    if (!have_trajectory_model(false)) return refused;
    if (shown != wanted) status = put_frame_on_model(wanted);
    drop_marks_and_cache(place);
    drop_results();
  }
  store(range, place);
  return status;
}

std::int32_t set_first(std::int32_t frame) {
  FrameRange range = present_range();
  if (frame < 1 || frame > trj_frames_.frames_in_file || frame > range.last) return refused;
  if (frame == range.first) return done;
  range.first = frame;
  return apply(range);
}

std::int32_t set_last(std::int32_t frame) {
  FrameRange range = present_range();
  if (frame < 1 || frame > trj_frames_.frames_in_file || frame < range.first) return refused;
  if (frame == range.last) return done;
  range.last = frame;
  return apply(range);
}

std::int32_t set_step(std::int32_t step) {
  FrameRange range = present_range();
  if (step < 1 || step > trj_frames_.frames_in_file || step > range.last - range.first + 1) return refused;
  if (step == range.step) return done;
  range.step = step;
  return apply(range);
}

/// Reads one time of at least `low` ps and hands the number that `to_count` makes of it on.
template <class ToCount>
std::int32_t with_time(double low, ToCount to_count, std::int32_t (*set)(std::int32_t)) {
  double time_ps = 0.0;
  std::int32_t status = 0;
  kvz_argdouble_(time_ps, 1, low, no_real_limit, status);
  if (status > 0) return status;
  return trj_gui_l_.has_time_axis ? set(to_count(time_ps)) : refused;
}

/// The number of a frame, with or without a sign, or LAST in letters of either case.
std::optional<std::int32_t> frame_number(std::string_view text) {
  if (STR_CaseCmp(text, "LAST") == 0) return trj_frames_.frames_in_file;
  if (text.starts_with('+') && text.substr(1, 1) != "-") text.remove_prefix(1);
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return number;
}

}  // namespace

std::int32_t first_frame_no() {
  std::int32_t frame = 0;
  std::int32_t status = 0;
  kvz_argint_(frame, 1, 1, trj_frames_.last_frame, status);
  return status > 0 ? status : set_first(frame);
}

std::int32_t first_frame_time() { return with_time(0.0, frame_of_time, set_first); }

std::int32_t last_frame_no() {
  Text<32> text;
  std::int32_t status = 0;
  kvz_argfillstring_(text, 1, 0, "", status);
  if (status > 0) return status;
  const auto frame = frame_number(text.view());
  return frame ? set_last(*frame) : refused;
}

std::int32_t last_frame_time() { return with_time(0.0, frame_of_time, set_last); }

std::int32_t increment_no() {
  std::int32_t step = 0;
  std::int32_t status = 0;
  kvz_argint_(step, 1, 1, trj_frames_.last_frame - trj_frames_.first_frame + 1, status);
  return status > 0 ? status : set_step(step);
}

std::int32_t increment_time() {
  const double step_ps = trj_frames_.frame_time_step;
  return with_time(
      step_ps, [&](double time_ps) { return step_ps == 0.0 ? 0 : nearest_count(time_ps / step_ps); }, set_step);
}

std::int32_t use_all_frames() {
  if (!trj_gui_l_.trajectory_loaded) return done;
  if (!have_trajectory_model(false)) return refused;
  const FrameRange whole{1, trj_frames_.frames_in_file, 1};
  const std::int32_t place = std::clamp(trj_gui_i_.current_frame, 1, whole.count());
  store(whole, place);
  drop_results();
  const std::int32_t status = put_frame_on_model(frame_at(place));
  drop_marks_and_cache(place);
  return status;
}

}  // namespace pathstat::actions
