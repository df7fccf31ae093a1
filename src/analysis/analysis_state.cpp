#include "analysis/analysis_state.h"

#include <array>
#include <cmath>
#include <limits>
#include <string>

#include "analysis/analysis.h"
#include "catalogue/catalogue.h"
#include "catalogue/catalogue_mask.h"
#include "catalogue/catalogue_rows.h"
#include "coreapi/operations.h"
#include "plots/saved_handles.h"
#include "services/file_names.h"
#include "state/analysis_settings.h"
#include "state/correlation_settings.h"
#include "state/rdf_settings.h"
#include "state/statistics_settings.h"
#include "state/trajectory_frames.h"
#include "support/text_field.h"
#include "trajectory/frame_cache.h"

namespace pathstat {
namespace {

constexpr std::int32_t frames_before_any_trajectory = 1000;

bool pick_mode_registered = false;

void register_pick_mode() {
  if (pick_mode_registered) return;
  pick_mode_registered = true;
  std::int32_t error = 0;
  kvp_sys_registertoolmode_(graph_mode::pick, " ", 2, 1, 1, application_key, "ANALYSIS_STRUCTURE_FROM_PLOT", error);
}

/// Everything that a command of the user may have set.
void set_starting_values() {
  trj_aniso_ = {};
  trj_vac_msd_c_ = {};
  trj_vac_msd_l_ = {};
  trj_stats_ = {};
  trj_stats_c_ = {};
  trj_rdf_c_ = {};
  trj_rdf_i_ = {};
  trj_rdf_d_ = {};
  trj_gui_l_ = {};
  trj_gui_c_ = {};
  trj_gui_d_.frame_step_speed = 100.0;
  trj_gui_i_.extrema_number = 10;
  trj_gui_i_.step_delay_ms = 0;
  trj_frames_c_.trj_file_name = "";
}

void remove_file(const std::string& path) {
  std::int32_t error = 0;
  if (kvs_fil_exists_(path)) kvs_fil_delete_(path, error);
}

constexpr std::array<std::string_view, 5> result_files{"./PathStat.dac", "./PathStat.fftdac", "./PathStat.rdf",
                                                       "./PathStat.vac", "./PathStat.msd"};

}  // namespace

std::int32_t nearest_count(double x) {
  constexpr double whole_from = 4503599627370496.0;
  const double nearest = std::abs(x) < whole_from ? std::trunc(x < 0.0 ? x - 0.5 : x + 0.5) : x;
  using Limits = std::numeric_limits<std::int32_t>;
  if (!(nearest > Limits::min())) return Limits::min();
  return nearest < Limits::max() ? static_cast<std::int32_t>(nearest) : Limits::max();
}

std::int32_t frames_of_time(double time_ps) {
  const double spacing_ps = trj_frames_.frame_time_step * trj_frames_.frame_step;
  return spacing_ps == 0.0 ? 0 : nearest_count(time_ps / spacing_ps);
}

std::int32_t frame_of_time(double time_ps) {
  const double step_ps = trj_frames_.frame_time_step;
  if (step_ps == 0.0) return 0;
  const std::int32_t steps = nearest_count((time_ps - trj_frames_.frame_first_time) / step_ps);
  return steps == std::numeric_limits<std::int32_t>::max() ? steps : steps + 1;
}

std::string_view rdf_source() {
  const bool trajectory = trj_gui_c_.input_source == from_trajectory && trj_rdf_c_.rdf_for == from_trajectory;
  return trajectory ? from_trajectory : from_selected_models;
}

void set_maximal_intervals(std::int32_t interval, double fit_start) {
  auto& counts = trj_vac_msd_i_;
  for (auto* count : {&counts.max_interval_no, &counts.max_interval_no_msd, &counts.max_interval_no_dac,
                      &counts.max_interval_no_vac}) {
    *count = interval;
  }
  const double time_ps = trj_frames_.frame_step * trj_frames_.frame_time_step * interval;
  auto& times = trj_vac_msd_d_;
  for (auto* time : {&times.max_fit_time, &times.max_time_transform, &times.max_interval_time_msd,
                     &times.max_time_transform_dac, &times.max_time_transform_vac}) {
    *time = time_ps;
  }
  times.min_fit_time = fit_start;
}

void trj_guiinit_(double first_time, double time_step, std::int32_t frame_count, std::int32_t& error) {
  error = 0;
  trj_frames_ = {time_step, first_time, frame_count, 1, 1, frame_count, frame_count};
  trj_vac_msd_i_ = {};
  set_maximal_intervals(frame_count / 2, 0.0);
  trj_extract_ = 1;
}

void forget_trajectory() {
  std::int32_t status = 0;
  trj_guiinit_(0.0, 0.0, frames_before_any_trajectory, status);
  trj_gui_i_.current_frame = 1;
  trj_gui_l_.has_time_axis = false;
  trj_gui_i_.trajectory_model = 0;
  trj_gui_l_.frame_cache_ready = false;
  trj_gui_l_.trajectory_loaded = false;
  trj_gui_c_.step_state = "";
  trj_gui_c_.last_trajectory = "";
  initsavedgraphhandles_(trj_gui_i_.current_frame, status);
  allowgraphinteraction_(false, status);
  leave_pick_mode();
}

void leave_pick_mode() {
  Text<50> state;
  std::int32_t error = 0;
  kvu_tls_getmodalstate_(graph_mode::modal_class, state, error);
  if (state == graph_mode::pick) kvu_tls_setmodalstate_(graph_mode::modal_class, graph_mode::standard, error);
}

void init_pathstat_() {
  register_pick_mode();
  set_starting_values();
  forget_trajectory();
  std::int32_t status = 0;
  trj_propinit_(status);
  maskprops_("", false, status);
}

void terminate_pathstat_() {
  for (const auto& row : property_rows) {
    if (row.extension != "NONE") remove_file("./PathStat_prf" + std::string(row.extension));
  }
  for (const auto& row : fluctuation_rows) {
    if (row.extension != "NONE") remove_file("./PathStat_fluc" + std::string(row.extension));
  }
  for (const auto path : result_files) remove_file(std::string(path));
  std::int32_t status = 0;
  killtrjcache_(status);
  remove_file(std::string(model_copy_path));
  leave_pick_mode();
}

void load_pathstat_() {
  std::int32_t application = 0;
  std::int32_t error = 0;
  kvd_app_findbyname_(application_key, application, error);
}

void save_pathstat_() { load_pathstat_(); }

}  // namespace pathstat
