#include "analysis/correlation_actions.h"

#include <algorithm>

#include "analysis/shown_frame.h"
#include "correlation/dipole_autocorrelation.h"
#include "correlation/dipole_spectrum.h"
#include "correlation/displacement.h"
#include "correlation/linear_fit.h"
#include "correlation/power_spectrum.h"
#include "correlation/velocity_autocorrelation.h"
#include "extraction/dipole.h"
#include "plots/graph.h"
#include "state/analysis_settings.h"
#include "state/correlation_settings.h"
#include "state/trajectory_frames.h"

namespace pathstat::actions {
namespace {

using Correlation = void (*)(std::int32_t intervals, std::int32_t frames, std::string_view trajectory,
                             std::int32_t model, std::int32_t first, std::int32_t last, std::int32_t step, bool monitor,
                             std::string_view atoms, std::int32_t origin_step, bool anisotropic, bool& available,
                             std::int32_t& status);

/// Settings of one correlation.
struct Choice {
  std::int32_t intervals;
  bool monitor;
  const Text<8>& atoms;
  std::int32_t origin_step;
  bool anisotropic;
};

std::int32_t correlate(Correlation run, const Choice& choice, Logical& done) {
  const PlotTransaction plots;
  bool available = false;
  std::int32_t status = 0;
  const std::int32_t intervals = std::max(1, choice.intervals);  // half a range of one frame is none
  run(intervals, trj_frames_.frames_in_range, trj_frames_c_.trj_file_name, trj_gui_i_.trajectory_model,
      trj_frames_.first_frame, trj_frames_.last_frame, trj_frames_.frame_step, choice.monitor, choice.atoms,
      choice.origin_step, choice.anisotropic, available, status);
  done = available;
  return status;
}

}  // namespace

std::int32_t msd() {
  return correlate(run_msd_,
                   {trj_vac_msd_i_.max_interval_no_msd, trj_vac_msd_l_.monitor_msd, trj_vac_msd_c_.atoms_msd,
                    trj_vac_msd_i_.origin_step_no_msd, trj_aniso_.anisotropic_msd},
                   trj_gui_l_.msd_done);
}

std::int32_t vac() {
  return correlate(run_vac_,
                   {trj_vac_msd_i_.max_interval_no_vac, trj_vac_msd_l_.monitor_vac, trj_vac_msd_c_.atoms_vac,
                    trj_vac_msd_i_.origin_step_no_vac, trj_aniso_.anisotropic_vac},
                   trj_gui_l_.vac_done);
}

std::int32_t linear_fit() {
  const PlotTransaction plots;
  std::int32_t status = 0;
  run_linefit_(trj_vac_msd_d_.min_fit_time, trj_vac_msd_d_.max_fit_time, status);
  return status;
}

std::int32_t power_spectrum() {
  const PlotTransaction plots;
  std::int32_t status = 0;
  run_pwr_(trj_vac_msd_d_.max_time_transform_vac, status);
  return status;
}

std::int32_t dipole() {
  if (trj_gui_c_.input_source == from_trajectory && !have_trajectory_model(false)) return 1;
  std::int32_t status = 0;
  dipole_(trj_frames_c_.trj_file_name, trj_gui_c_.input_source, trj_vac_msd_c_.atoms_dac, trj_gui_c_.dipole_using,
          status);
  return status;
}

std::int32_t dac() {
  const PlotTransaction plots;
  std::int32_t status = 0;
  rundac_(trj_frames_c_.trj_file_name, trj_vac_msd_c_.atoms_dac, trj_vac_msd_i_.max_interval_no_dac,
          trj_vac_msd_l_.monitor_dac, trj_vac_msd_i_.origin_step_no_dac, trj_aniso_.anisotropic_dac, status);
  return status;
}

std::int32_t dac_power_spectrum() {
  const PlotTransaction plots;
  std::int32_t status = 0;
  runfftdac_(trj_frames_c_.trj_file_name, trj_vac_msd_c_.atoms_dac, trj_vac_msd_i_.max_interval_no_dac,
             trj_vac_msd_l_.monitor_dac, trj_vac_msd_i_.origin_step_no_dac, trj_aniso_.anisotropic_dac,
             trj_vac_msd_d_.max_time_transform_dac, status);
  return status;
}

}  // namespace pathstat::actions
