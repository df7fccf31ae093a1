#include "analysis/settings.h"

#include <algorithm>
#include <array>
#include <string>

#include "analysis/analysis_state.h"
#include "catalogue/catalogue.h"
#include "catalogue/catalogue_mask.h"
#include "pairs/rdf_names.h"
#include "shell/arguments.h"
#include "shell/messages.h"
#include "state/analysis_settings.h"
#include "state/correlation_settings.h"
#include "state/rdf_settings.h"
#include "state/statistics_settings.h"
#include "state/trajectory_frames.h"

namespace pathstat::settings {
namespace {

constexpr std::int32_t done = 0;
constexpr std::int32_t refused = 1;

/// Velocity of light in cm/ps, to the digits that spectra use.
constexpr double light_cm_per_ps = 0.03;
constexpr double most_transform_points = 131073.0;
constexpr double pi = 3.141592653589793;

std::int32_t store(std::int32_t& target, std::int32_t value) {
  target = value;
  return done;
}

std::int32_t store_positive(std::initializer_list<double*> targets, double value) {
  if (!(value > 0.0)) return refused;
  for (auto* target : targets) *target = value;
  return done;
}

/// Runs `with_count` on a time turned into frames; a time below one frame, or without a time axis, is refused.
template <class WithCount>
std::int32_t as_frames(double time_ps, WithCount with_count) {
  if (!trj_gui_l_.has_time_axis) return refused;
  const std::int32_t frames = frames_of_time(time_ps);
  return frames < 1 ? refused : with_count(frames);
}

/// The longest interval is one frame less than the range, but never less than one.
std::int32_t cut_interval(std::int32_t frames) {
  return std::max(1, std::min(frames, trj_frames_.frames_in_range - 1));
}

double time_of_frames(std::int32_t frames) { return frames * trj_frames_.frame_step * trj_frames_.frame_time_step; }

void end_fit_at(double time_ps) {
  trj_vac_msd_d_.max_fit_time = time_ps;
  trj_vac_msd_d_.min_fit_time = std::min(trj_vac_msd_d_.min_fit_time, time_ps);
}

std::int32_t set_interval(std::int32_t& count, double& transform_ps, std::int32_t frames) {
  count = cut_interval(frames);
  transform_ps = time_of_frames(count);
  return done;
}

std::int32_t set_interval_time(std::int32_t& count, double time_ps) {
  return as_frames(time_ps, [&](std::int32_t frames) { return store(count, cut_interval(frames)); });
}

std::int32_t set_step_time(std::int32_t& step, double time_ps) {
  return as_frames(time_ps, [&](std::int32_t frames) { return store(step, frames); });
}

double transform_of_frequency(double per_cm) { return per_cm > 0.0 ? 0.5 / (per_cm * light_cm_per_ps) : 0.0; }

/// Takes over a radial grid of so many bins, if it is within the limits and differs from the present one.
std::int32_t set_rdf_grid(double bins_wanted, double interval) {
  const std::int32_t bins = nearest_count(bins_wanted);
  if (bins > most_transform_points) return refuse("PATHSTAT_ERROR_9");
  if (bins <= 3) return refuse("PATHSTAT_ERROR_10");
  if (bins != trj_rdf_i_.rdf_bins && bins < most_transform_points) {
    trj_rdf_i_.rdf_bins = bins;
    trj_rdf_d_.rdf_interval = interval;
    trj_rdf_d_.rdf_cutoff = bins * interval;
  }
  return done;
}

double rdf_bin_width() { return trj_rdf_d_.rdf_cutoff / trj_rdf_i_.rdf_bins; }

struct Between {
  std::string_view name;
  std::int32_t code;
};
constexpr std::array between_codes{Between{"ALL ATOMS", rdf_between::all_atoms},
                                   Between{"SELECTED", rdf_between::selected},
                                   Between{"ELEMENTS", rdf_between::elements},
                                   Between{"FF TYPES", rdf_between::fftypes}, Between{"GROUPS", rdf_between::groups}};

}  // namespace

std::int32_t input_source_changed() {
  std::int32_t status = 0;
  trj_propinit_(status);
  update_rdf_names();
  if (trj_gui_l_.trajectory_loaded || !(trj_gui_c_.input_source == from_trajectory)) {
    maskprops_(trj_frames_c_.trj_file_name, false, status);
  }
  return done;
}

std::int32_t atoms_changed() {
  auto& atoms = trj_vac_msd_c_;
  atoms.atoms_msd = atoms.atoms_vac = atoms.atoms_dac = atoms.atoms;
  return done;
}

std::int32_t update_rdf_names() {
  std::int32_t status = 0;
  update_rdf_range_(rdf_source(), trj_gui_i_.trajectory_model, trj_rdf_i_.rdf_set_type, trj_rdf_c_.rdf_name_list,
                    trj_rdf_i_.rdf_name_list_length, trj_rdf_c_.rdf_name_1, trj_rdf_c_.rdf_name_2, status);
  return done;
}

std::int32_t statistics_filename_changed() {
  constexpr std::string_view extension = ".dat";
  constexpr std::size_t longest_stem = 1020;
  std::string name = trj_stats_c_.stats_filename.str();
  if (!name.ends_with(extension)) {
    name.resize(std::min(name.size(), longest_stem));
    trj_stats_c_.stats_filename = name.append(extension);
  }
  return done;
}

void anisotropic_changed() {
  trj_aniso_.anisotropic_msd = trj_aniso_.anisotropic_vac = trj_aniso_.anisotropic_dac = trj_aniso_.anisotropic;
}

void monitor_changed() {
  auto& monitor = trj_vac_msd_l_;
  monitor.monitor_msd = monitor.monitor_rdf = monitor.monitor_dac = monitor.monitor_vac = monitor.monitor;
}

std::int32_t extract_frame_no(std::int32_t frame) { return store(trj_extract_, frame); }

std::int32_t extract_frame_time(double time_ps) {
  if (!trj_gui_l_.trajectory_loaded) return refuse("PATHSTAT_ERROR_57");
  if (!trj_gui_l_.has_time_axis) return refused;
  const std::int32_t frame = frame_of_time(time_ps);
  if (frame < 1 || frame > trj_frames_.frames_in_file) return refused;
  return store(trj_extract_, frame);
}

std::int32_t extrema_number(std::int32_t count) {
  trj_stats_.maxima_count = trj_stats_.minima_count = count;
  return store(trj_gui_i_.extrema_number, count);
}

std::int32_t maxima(std::int32_t count) {
  trj_gui_i_.extrema_number = count;
  return store(trj_stats_.maxima_count, count);
}

std::int32_t minima(std::int32_t count) {
  trj_gui_i_.extrema_number = count;
  return store(trj_stats_.minima_count, count);
}

std::int32_t number_of_bins(std::int32_t bins) { return store(trj_stats_.number_of_bins, bins); }

std::int32_t block_width_no(std::int32_t frames) {
  if (frames < 1 || frames > trj_frames_.frames_in_range) return refuse("PATHSTAT_WARN_2", trj_frames_.frames_in_range);
  return store(trj_stats_.block_width, frames);
}

double one_frame_of_the_range() { return time_of_frames(1); }

std::int32_t block_width(double time_ps) {
  return trj_gui_l_.has_time_axis ? block_width_no(frames_of_time(time_ps)) : refused;
}

std::int32_t block_interval_no(std::int32_t frames) {
  // An interval below 1 would never leave the first block.
  if (trj_stats_.block_width < 1 || frames < 1 || frames > trj_frames_.frames_in_range) {
    return refuse("PATHSTAT_WARN_3", trj_frames_.frames_in_range);
  }
  return store(trj_stats_.block_interval, frames);
}

std::int32_t block_interval(double time_ps) {
  if (!trj_gui_l_.has_time_axis) return refused;
  const std::int32_t frames = frames_of_time(time_ps);
  if (frames < 1 || frames > trj_frames_.frames_in_range - trj_stats_.block_width) {
    return refuse("PATHSTAT_WARN_3", trj_frames_.frames_in_range);
  }
  return store(trj_stats_.block_interval, frames);
}

std::int32_t max_interval_no(std::int32_t frames) {
  const std::int32_t interval = cut_interval(frames);
  set_maximal_intervals(interval, std::min(trj_vac_msd_d_.min_fit_time, time_of_frames(interval)));
  return done;
}

std::int32_t max_interval(double time_ps) { return as_frames(time_ps, max_interval_no); }

std::int32_t msd_max_interval_no(std::int32_t frames) {
  set_interval(trj_vac_msd_i_.max_interval_no_msd, trj_vac_msd_d_.max_interval_time_msd, frames);
  end_fit_at(trj_vac_msd_d_.max_interval_time_msd);
  return done;
}

std::int32_t msd_max_interval(double time_ps) {
  auto& count = trj_vac_msd_i_.max_interval_no_msd;
  const std::int32_t result = set_interval_time(count, time_ps);
  if (result == done) end_fit_at(time_of_frames(count));
  return result;
}

std::int32_t vac_max_interval_no(std::int32_t frames) {
  return set_interval(trj_vac_msd_i_.max_interval_no_vac, trj_vac_msd_d_.max_time_transform_vac, frames);
}

std::int32_t vac_max_interval(double time_ps) { return set_interval_time(trj_vac_msd_i_.max_interval_no_vac, time_ps); }

std::int32_t dac_max_interval_no(std::int32_t frames) {
  return set_interval(trj_vac_msd_i_.max_interval_no_dac, trj_vac_msd_d_.max_time_transform_dac, frames);
}

std::int32_t dac_max_interval(double time_ps) { return set_interval_time(trj_vac_msd_i_.max_interval_no_dac, time_ps); }

std::int32_t origin_step_no(std::int32_t frames) {
  auto& steps = trj_vac_msd_i_;
  steps.origin_step_no_msd = steps.origin_step_no_vac = steps.origin_step_no_dac = frames;
  return store(steps.origin_step_no, frames);
}

std::int32_t origin_step(double time_ps) { return as_frames(time_ps, origin_step_no); }

std::int32_t msd_origin_step_no(std::int32_t frames) { return store(trj_vac_msd_i_.origin_step_no_msd, frames); }
std::int32_t msd_origin_step(double time_ps) { return set_step_time(trj_vac_msd_i_.origin_step_no_msd, time_ps); }
std::int32_t vac_origin_step_no(std::int32_t frames) { return store(trj_vac_msd_i_.origin_step_no_vac, frames); }
std::int32_t vac_origin_step(double time_ps) { return set_step_time(trj_vac_msd_i_.origin_step_no_vac, time_ps); }
std::int32_t dac_origin_step_no(std::int32_t frames) { return store(trj_vac_msd_i_.origin_step_no_dac, frames); }
std::int32_t dac_origin_step(double time_ps) { return set_step_time(trj_vac_msd_i_.origin_step_no_dac, time_ps); }

std::int32_t min_fit_time(double time_ps) {
  trj_vac_msd_d_.min_fit_time = time_ps;
  return done;
}

std::int32_t max_fit_time(double time_ps) {
  trj_vac_msd_d_.max_fit_time = time_ps;
  return done;
}

std::int32_t max_time_transform(double time_ps) {
  auto& times = trj_vac_msd_d_;
  return store_positive({&times.max_time_transform, &times.max_time_transform_dac, &times.max_time_transform_vac},
                        time_ps);
}

std::int32_t vac_max_time_transform(double time_ps) {
  return store_positive({&trj_vac_msd_d_.max_time_transform_vac}, time_ps);
}

std::int32_t dac_max_time_transform(double time_ps) {
  return store_positive({&trj_vac_msd_d_.max_time_transform_dac}, time_ps);
}

std::int32_t frequency_interval(double per_cm) { return max_time_transform(transform_of_frequency(per_cm)); }
std::int32_t vac_frequency_interval(double per_cm) { return vac_max_time_transform(transform_of_frequency(per_cm)); }
std::int32_t dac_frequency_interval(double per_cm) { return dac_max_time_transform(transform_of_frequency(per_cm)); }

std::int32_t rdf_cutoff(double length) {
  return set_rdf_grid(length / trj_rdf_d_.rdf_interval, trj_rdf_d_.rdf_interval);
}

std::int32_t rdf_interval(double length) { return set_rdf_grid(trj_rdf_d_.rdf_cutoff / length, length); }

std::int32_t rdf_between() {
  Text<16> name;
  std::int32_t status = 0;
  kvz_argfillstring_(name, 1, 0, rdf_between_names, status);
  if (status > 0) return status;
  for (const auto& between : between_codes) {
    if (name == between.name) trj_rdf_i_.rdf_set_type = between.code;
  }
  return update_rdf_names();
}

std::int32_t rdf_type() {
  std::array<Text<8>, 2> names;
  for (std::int32_t k = 0; k < 2; ++k) {
    std::int32_t status = 0;
    kvz_argfillstring_(names[static_cast<std::size_t>(k)], k + 1, 0, "", status);
    if (status > 0) return status;
  }
  auto checked = names;
  std::int32_t status = 0;
  const std::int32_t type = trj_rdf_i_.rdf_set_type;
  update_rdf_range_(rdf_source(), trj_gui_i_.trajectory_model, type, trj_rdf_c_.rdf_name_list,
                    trj_rdf_i_.rdf_name_list_length, checked[0], checked[1], status);
  if (!(checked[0] == names[0].view()) || !(checked[1] == names[1].view())) {
    const std::string_view kind = type == rdf_between::elements  ? "ELEMENT"
                                  : type == rdf_between::fftypes ? "FF TYPE"
                                                                 : "";
    return refuse("PATHSTAT_ERROR_105", kind, names[0].view(), names[1].view());
  }
  trj_rdf_c_.rdf_name_1 = names[0];
  trj_rdf_c_.rdf_name_2 = names[1];
  return done;
}

std::int32_t k_space_interval(double per_length) {
  if (!(per_length > 0.0)) return refused;
  if (!(pi / (rdf_bin_width() * per_length) < most_transform_points)) return refuse("PATHSTAT_ERROR_54");
  trj_rdf_d_.k_space_interval = per_length;
  return done;
}

std::int32_t r_space_cutoff(double length) {
  if (!(length > 0.0)) return refused;
  if (!(length / rdf_bin_width() < most_transform_points)) return refuse("PATHSTAT_ERROR_55");
  trj_rdf_d_.k_space_interval = pi / length;
  return done;
}

std::int32_t frame_step_speed(double speed) {
  trj_gui_d_.frame_step_speed = speed;
  return store(trj_gui_i_.step_delay_ms, static_cast<std::int32_t>((100.0 - speed) * 10.0));
}

}  // namespace pathstat::settings
