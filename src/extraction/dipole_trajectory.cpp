#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>

#include "coreapi/interrupt.h"
#include "coreapi/messages.h"
#include "coreapi/operations.h"
#include "extraction/dipole.h"
#include "extraction/dipole_charges.h"
#include "extraction/dipole_series.h"
#include "extraction/frame_points.h"
#include "extraction/scratch_file.h"
#include "state/analysis_settings.h"
#include "state/correlation_settings.h"
#include "support/text_field.h"
#include "trajectory/frame_cell.h"
#include "trajectory/frame_places.h"
#include "trajectory/frame_spacing.h"
#include "trajectory/front_end.h"
#include "trajectory/open_trajectory.h"
#include "trajectory/trajectory_keys.h"

namespace pathstat {
namespace {

constexpr std::int32_t frames_between_polls = 50;
constexpr std::int32_t reports_in_a_run = 50;

/// The charges of the trajectory's model, each with its atom's place in the frames' coordinates, and these.
class FrameCharges {
 public:
  FrameCharges(const OpenTrajectory& trajectory, std::int32_t periodic_type, DipoleChoice choice, std::int32_t& status)
      : trajectory_(trajectory), type_(periodic_type) {
    const DipoleAtoms atoms(trj_gui_i_.trajectory_model, periodic_type, choice, status);
    if (status != 0) return;
    const NamedBlock<std::int32_t> places("pathstat/DIP/AtIndex", std::ssize(atoms.atoms()), status);
    if (status != 0) return;
    const FramePlaces found(
        trajectory, atoms.atoms(), places.span(),
        {"pathstat/DIP/TrjAtIds", "pathstat/DIP/AtIds", "pathstat/DIP/SortAtOids", "pathstat/DIP/Movable"}, status);
    if (status == 0 && found.lacks_movable()) status = refuse("PATHSTAT_ERROR_11");
    if (status == 0) xyz_ = NamedBlock<double>("pathstat/DIP/dxyz", 3 * found.size(), status);
    if (status == 0) found.place_fixed(xyz_.span(), status);
    if (status != 0) return;
    moved_ = xyz_.span().first(3 * static_cast<std::size_t>(found.moved()));
    for (auto& place : places.span()) ++place;
    charges_ = DipoleCharges(atoms, places.span(), status);
    if (status != 0) return;
    if (charges_.none()) {
      status = refuse("PATHSTAT_ERROR_2");
    } else if (charges_.of_one_sign()) {
      status = refuse("PATHSTAT_ERROR_3");
    }
  }

  /// The dipole of the frame that is loaded.
  Vector3 dipole(std::int32_t& status) {
    std::int32_t count = 0;
    if (!moved_.empty()) {
      trj_dvalue_(trajectory_.handle(), trajectory_key::movable_positions, moved_, count, status);
    }
    CellVectors cell;
    if (status == 0 && type_ == periodic_type::three_dimensional) cell = cell_of_frame(trajectory_.handle(), status);
    return status == 0 ? charges_.moment(xyz_.span(), type_, cell.matrix(), status).dipole : Vector3{};
  }

 private:
  const OpenTrajectory& trajectory_;
  std::int32_t type_;
  NamedBlock<double> xyz_;
  std::span<double> moved_;
  DipoleCharges charges_;
};

/// Watches the times of frames and lets go of dipole_data_ready where they are not evenly spaced.
class TimeCheck {
 public:
  /// Takes the frame that is loaded. @return its time, or `absent` if it has none
  double add(const OpenTrajectory& trajectory, std::int32_t frame, std::int32_t frame_before, double absent) {
    double time = 0.0, time_step = 0.0;
    std::int32_t time_status = 0, step_status = 0;
    trj_dvalue_(trajectory.handle(), trajectory_key::time, time, time_status);
    trj_dvalue_(trajectory.handle(), trajectory_key::time_step, time_step, step_status);
    if (time_status != 0 || step_status != 0) {
      trj_gui_l_.dipole_data_ready = false;
    } else if (!spacing_.add(time, time_step)) {
      show_message("PATHSTAT_WARN_11", frame_before, frame);
      trj_gui_l_.dipole_data_ready = false;
    }
    return time_status == 0 ? time : absent;
  }

 private:
  FrameSpacing spacing_;
};

void report_progress(std::int32_t done, std::int32_t frames) {
  const std::int32_t total = std::max((frames - 1) / std::max(trj_vac_msd_i_.origin_step_no, 1), 1);
  if (done % std::max(total / reports_in_a_run, 1) != 0) return;
  tell_progress(static_cast<float>(done) / static_cast<float>(total));
}

/// Goes over the frames. @param status  0; 1 if the user interrupts; that of the frame after PATHSTAT_ERROR_93
void walk(const OpenTrajectory& trajectory, const FrameRange& range, FrameCharges& charges, DipoleSeries& series,
          std::int32_t& status) {
  TimeCheck times;
  report_progress(0, range.points);
  for (std::int32_t k = 0; k < range.points; ++k) {
    const std::int32_t frame = range.frame(k);
    if (frame % frames_between_polls == 0 && kvu_int_requestinterrupt_() == 1) {
      status = 1;
      return;
    }
    trj_readframe_(trajectory.handle(), frame, status);
    const Vector3 dipole = status == 0 ? charges.dipole(status) : Vector3{};
    if (status != 0) {
      show_message("PATHSTAT_ERROR_93");
      return;
    }
    const double time = times.add(trajectory, frame, range.frame(k - 1), frame);
    series.set(static_cast<std::size_t>(k), frame, trj_gui_l_.has_time_axis ? time : frame, dipole);
    report_progress(k + 1, range.points);
  }
}

}  // namespace

void dipoletrj_(std::string_view file, std::string_view atom_choice, std::string_view atom_kind, std::int32_t& status) {
  trj_gui_l_.dipole_data_ready = true;
  status = 0;
  const std::int32_t periodicity = trj_gui_i_.periodicity;
  if (periodicity != 0 && periodicity != 3) {
    status = refuse("PATHSTAT_ERROR_1");
    return;
  }
  const OpenTrajectory trajectory(file, trj_gui_i_.trajectory_model, status);
  if (status == 0) status = trajectory.attach_status();
  if (status != 0) return;
  const FrameRange range = chosen_frames();
  const std::int32_t type = periodicity == 3 ? periodic_type::three_dimensional : periodic_type::none;
  FrameCharges charges(trajectory, type, {atom_choice, atom_kind}, status);
  if (status != 0) return;
  DipoleSeries series(range.points, status);
  if (status == 0) walk(trajectory, range, charges, series, status);
  if (status == 0) series.write(kind_frames, {}, status);
}

void dipole_(std::string_view file, std::string_view source, std::string_view atom_choice, std::string_view atom_kind,
             std::int32_t& status) {
  if (same_text(source, from_selected_models)) {
    dipolemodels_(atom_choice, atom_kind, status);
  } else {
    dipoletrj_(file, atom_choice, atom_kind, status);
  }
}

}  // namespace pathstat
