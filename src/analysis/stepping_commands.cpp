#include <algorithm>
#include <cmath>

#include "analysis/analysis_state.h"
#include "analysis/frame_actions.h"
#include "analysis/shown_frame.h"
#include "coreapi/operations.h"
#include "plots/graph.h"
#include "plots/saved_handles.h"
#include "services/text_operations.h"
#include "shell/arguments.h"
#include "shell/messages.h"
#include "shell/running_analysis.h"
#include "state/analysis_settings.h"
#include "state/trajectory_frames.h"
#include "trajectory/frame_cache.h"
#include "trajectory/frame_extraction.h"
#include "trajectory/stepping.h"

namespace pathstat::actions {
namespace {

constexpr std::int32_t done = 0;
constexpr std::int32_t refused = 1;
constexpr std::string_view animation_panel = "AnalAnim*";

/// The phase of a press on a repeating button, by its first letter.
enum class Phase { start, end, running };

Phase phase_of(std::string_view word) {
  if (word.starts_with('S')) return Phase::start;
  return word.starts_with('E') ? Phase::end : Phase::running;
}

std::int32_t read_phase(Phase& phase) {
  Text<16> word;
  std::int32_t status = 0;
  kvz_argfillstring_(word, 1, 0, "", status);
  phase = phase_of(word.view());
  return status;
}

void update_panel(std::string_view kinds) {
  std::int32_t error = 0;
  kvu_gui_updatevalues_(animation_panel, kinds, error);
}

void take_bond_permission() { trj_gui_i_.bond_recalculation_permitted = kva_bnd_recalculationpermitted_(); }

void allow_marks() {
  std::int32_t status = 0;
  allowgraphinteraction_(true, status);
}

std::int32_t stop_repeats(std::int32_t result) {
  kvu_gui_supressrepeats_();
  return result;
}

/// Presses of a held button that have ended; one can end while a call of a step waits for the Core.
std::int32_t ended_presses = 0;

void set_step_state(std::int32_t direction) { trj_gui_c_.step_state = direction > 0 ? "F" : direction < 0 ? "B" : ""; }

std::int32_t end_stepping() {
  ++ended_presses;
  set_step_state(0);
  update_panel("TOG");
  return done;
}

/// What every way of moving the shown frame begins with: a trajectory, its model, the Core's word on bonds, marks.
bool open_frame_work(bool move_cache) {
  if (!trj_gui_l_.trajectory_loaded || !have_trajectory_model(move_cache)) return false;
  take_bond_permission();
  allow_marks();
  return true;
}

constexpr std::int32_t fewest_frames_to_step = 2;

bool prepare_stepping(std::int32_t direction, bool tells_panel) {
  if (!open_frame_work(trj_gui_l_.frame_cache_ready)) return false;
  if (tells_panel) {
    set_step_state(direction);
    update_panel("TOG");
  }
  if (trj_frames_.frames_in_range < fewest_frames_to_step) return false;
  trj_gui_i_.step_direction = direction;
  return have_frame_cache();
}

/// A press goes on by the cache that it started with, unless a change of the range or another trajectory has dropped
/// it.
bool can_go_on(std::int32_t fewest_frames) {
  if (!trj_gui_l_.trajectory_loaded) return false;
  return trj_gui_l_.frame_cache_ready || (trj_frames_.frames_in_range >= fewest_frames && have_frame_cache());
}

/// A run that starts at the end which it moves to begins anew from the other one.
void restart_at_end(std::int32_t direction) {
  if (!(trj_gui_c_.stepping_mode == "STOP AT END")) return;
  auto& current = trj_gui_i_.current_frame;
  const std::int32_t entries = trj_frames_.frames_in_range;
  if (direction > 0 && current == entries) {
    current = 0;
  } else if (direction < 0 && current == 1) {
    current = entries + 1;
  }
}

std::int32_t step(std::string_view mode) {
  auto& state = trj_gui_i_;
  const std::int32_t before = state.current_frame;
  std::int32_t status = 0;
  shownextframe_(state.current_frame, trj_frames_.frames_in_range, state.step_direction, mode,
                 state.bond_recalculation_permitted != 0, status);
  // A command that the Core nests in the step may have made the range shorter.
  const std::int32_t place = status == 0 ? state.current_frame : before;
  state.current_frame = std::clamp(place, 1, trj_frames_.frames_in_range);
  return status == 0 ? done : stop_repeats(status);
}

std::int32_t step_repeatedly(std::string_view word, std::int32_t direction) {
  Phase phase = Phase::running;
  const std::int32_t status = read_phase(phase);
  if (status > 0) return stop_repeats(status);
  if (phase == Phase::end) return end_stepping();
  if (RunningAnalysis::any()) return stop_repeats(decline(word, another_analysis_runs));
  const std::int32_t ended_before = ended_presses;
  if (phase == Phase::start) {
    if (!prepare_stepping(direction, true)) return stop_repeats(refused);
    restart_at_end(direction);
  }
  if (!can_go_on(fewest_frames_to_step)) return stop_repeats(refused);
  if (trj_gui_i_.step_delay_ms > 0) kvs_msecsleep_(trj_gui_i_.step_delay_ms);
  const std::int32_t stepped = step(trj_gui_c_.stepping_mode.view());
  set_step_state(ended_presses == ended_before ? trj_gui_i_.step_direction : 0);
  update_panel("TEX,TOG");
  return stepped;
}

std::int32_t show_neighbour(std::string_view word, std::int32_t direction) {
  Phase phase = Phase::running;
  const std::int32_t status = read_phase(phase);
  if (status > 0) return stop_repeats(status);
  if (phase == Phase::end) return done;
  if (RunningAnalysis::any()) return stop_repeats(decline(word, another_analysis_runs));
  if (phase == Phase::start && !prepare_stepping(direction, false)) return stop_repeats(refused);
  if (!can_go_on(fewest_frames_to_step)) return stop_repeats(refused);
  return step("LOOP AT END");
}

/// Shows an entry of the range. @return 1 if there is no such entry or it cannot be had
std::int32_t show_entry(std::int32_t entry, bool marks) {
  if (!trj_gui_l_.trajectory_loaded || trj_frames_.frames_in_range < fewest_frames_to_step) return done;
  if (!have_trajectory_model(trj_gui_l_.frame_cache_ready)) return refused;
  allow_marks();
  take_bond_permission();
  if (entry < 1 || entry > trj_frames_.frames_in_range || !have_frame_cache()) return refused;
  trj_gui_i_.current_frame = entry;
  std::int32_t status = 0;
  showtrjframe_(entry, trj_gui_i_.bond_recalculation_permitted != 0, status);
  if (status != 0) return status;
  if (marks) highlightpoints_(entry, status);
  kvg_redisplaymodels_(0, 0);
  return done;
}

/// The entry of the range that lies nearest to an x of a profile.
std::int32_t entry_at(double x) {
  const auto& frames = trj_frames_;
  const double entry = frames.frame_time_step == 0.0
                           ? (x - frames.first_frame) / frames.frame_step + 1.0
                           : (x - (frames.frame_first_time + (frames.first_frame - 1) * frames.frame_time_step)) /
                                     (frames.frame_step * frames.frame_time_step) +
                                 1.0;
  return std::clamp(nearest_count(entry), 1, frames.frames_in_range);
}

struct Pick {
  Text<50> graph;
  std::int32_t version = 0;
  double x = 0.0;
  double y = 0.0;
  Text<16> event;
};

std::int32_t read_pick(Pick& pick) {
  std::int32_t status = 0;
  kvz_defineminargcount_(0, status);
  if (status <= 0) kvz_argfillstring_(pick.graph, 1, 0, "", status);
  if (status <= 0) kvz_argint_(pick.version, 2, no_integer_limit, no_integer_limit, status);
  if (status <= 0) kvz_argdouble_(pick.x, 3, no_real_limit, no_real_limit, status);
  if (status <= 0) kvz_argdouble_(pick.y, 4, no_real_limit, no_real_limit, status);
  if (status <= 0) kvz_argfillstring_(pick.event, 5, 0, "", status);
  return status > 0 ? status : done;
}

std::int32_t show_picked(const Pick& pick) {
  bool found = false;
  std::int32_t status = 0;
  findhandle_(pick.graph, pick.version, graph_kind, found, status);
  if (!found) {
    refuse(pick.graph == "Profile" ? "PATHSTAT_ERROR_76" : "PATHSTAT_ERROR_120", pick.graph.view());
    return done;
  }
  const std::int32_t entry = entry_at(pick.x);
  if (entry == trj_gui_i_.current_frame) return done;
  trj_gui_i_.current_frame = entry;
  highlightpoints_(entry, status);
  showtrjframe_(entry, trj_gui_i_.bond_recalculation_permitted != 0, status);
  kvg_redisplaymodels_(0, 0);
  update_panel("TEX");
  return status == 0 ? done : stop_repeats(status);
}

}  // namespace

std::int32_t frame_step_forwards() { return step_repeatedly("FRAME_STEP_FORWARDS", 1); }
std::int32_t frame_step_backwards() { return step_repeatedly("FRAME_STEP_BACKWARDS", -1); }
std::int32_t frame_step_stop() { return stop_repeats(done); }
std::int32_t show_next_frame() { return show_neighbour("SHOW_NEXT_FRAME", 1); }
std::int32_t show_previous_frame() { return show_neighbour("SHOW_PREVIOUS_FRAME", -1); }

std::int32_t current_frame_number() {
  std::int32_t entry = 0;
  std::int32_t status = 0;
  kvz_argint_(entry, 1, no_integer_limit, no_integer_limit, status);
  return status > 0 ? status : show_entry(entry, true);
}

std::int32_t current_frame_time() {
  double time_ps = 0.0;
  std::int32_t status = 0;
  kvz_argdouble_(time_ps, 1, no_real_limit, no_real_limit, status);
  if (status > 0) return status;
  if (!trj_gui_l_.has_time_axis) return refused;
  const std::int32_t steps = frames_of_time(time_ps - trj_frames_.frame_first_time);
  return show_entry(steps < trj_frames_.frames_in_file ? steps + 1 : steps, false);
}

std::int32_t structure_from_plot() {
  if (kvZ_ArgumentTotal() < 1) return done;
  Pick pick;
  const std::int32_t status = read_pick(pick);
  if (status != done) return status;
  const Phase phase = phase_of(pick.event.view());
  if (phase == Phase::end) return done;
  if (RunningAnalysis::any()) return stop_repeats(decline("ANALYSIS_STRUCTURE_FROM_PLOT", another_analysis_runs));
  const bool starts = phase == Phase::start;
  if (starts && !(open_frame_work(trj_gui_l_.frame_cache_ready) && have_frame_cache())) return stop_repeats(refused);
  return can_go_on(1) ? show_picked(pick) : stop_repeats(refused);
}

std::int32_t extract_frame() { return put_frame_on_model(trj_extract_); }

std::int32_t frame_info() {
  std::int32_t status = 0;
  extractfromframe_(trj_frames_c_.trj_file_name, trj_gui_i_.trajectory_model, trj_frames_.frames_in_file,
                    frame_at(trj_gui_i_.current_frame), ExtractionMode::report, status);
  return status;
}

}  // namespace pathstat::actions
