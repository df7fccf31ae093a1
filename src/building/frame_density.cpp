#include "building/frame_density.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

#include "coreapi/interrupt.h"
#include "coreapi/messages.h"
#include "coreapi/object_counts.h"
#include "coreapi/operations.h"
#include "state/analysis_settings.h"
#include "state/volume_state.h"
#include "support/parallel.h"
#include "trajectory/frame_cell.h"
#include "trajectory/frame_places.h"
#include "trajectory/front_end.h"
#include "trajectory/open_trajectory.h"
#include "trajectory/trajectory_keys.h"
#include "volumes/number_density.h"

namespace pathstat {
namespace {

constexpr std::int32_t atom_class = 3, stored_atoms = 1;

using Objects = std::vector<std::int32_t>;

Objects all_atoms(std::int32_t model, std::int32_t& error) {
  std::int32_t count = 0, listed = 0;
  count_atoms(model, stored_atoms, count, error);
  Objects atoms(static_cast<std::size_t>(count));
  if (error == 0 && count > 0) kvd_mod_atomlist_(model, stored_atoms, atoms, listed, error);
  atoms.resize(static_cast<std::size_t>(std::clamp(listed, 0, count)));
  return atoms;
}

/// Each selected atom once, images by their parents.
Objects selected_atoms(std::int32_t model, std::int32_t& error) {
  std::int32_t count = 0, listed = 0;
  count_selected(model, atom_class, count, error);
  Objects selected(static_cast<std::size_t>(count));
  if (error == 0 && count > 0) kvd_sel_findselected_(model, atom_class, selected, listed, error);
  selected.resize(static_cast<std::size_t>(std::clamp(listed, 0, count)));
  Objects atoms(selected.size());
  if (error == 0 && !selected.empty()) kvd_per_periodicparent_(selected, atoms, error);
  std::ranges::sort(atoms);
  atoms.erase(std::unique(atoms.begin(), atoms.end()), atoms.end());
  return atoms;
}

/// The grid for a cell; zeros, after a message, if it has too many points.
std::array<std::int32_t, 3> grid_for(const CellVectors& cell, double spacing) {
  constexpr double rounding = 1e-9;
  std::array<std::int32_t, 3> points{};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const Vector3 edge = std::array{cell.a, cell.b, cell.c}[axis];
    const double needed = std::ceil(std::hypot(edge[0], edge[1], edge[2]) / spacing - rounding);
    if (!(needed <= most_volume_points)) {
      refuse("STRUCTURE_GRID_TOO_LARGE", needed, most_volume_points);
      return {};
    }
    points[axis] = std::max(1, static_cast<std::int32_t>(needed));
  }
  return points;
}

/// The frames of a trajectory, one after another.
class Frames {
 public:
  /// @param positions  room for what moves and, behind it, the fixed atoms, which stand there already
  Frames(std::int32_t handle, std::int32_t moved, std::vector<double> positions)
      : handle_(handle), moved_(static_cast<std::size_t>(moved)), positions_(positions), ahead_(std::move(positions)) {
    Logical varies;
    std::int32_t unknown = 0;
    trj_lvalue_(handle_, trajectory_key::cell_varies, varies, unknown);
    cell_varies_ = unknown != 0 || varies;
  }

  /// Reads a frame while the one before it may still be counted.
  void read(std::int32_t frame) {
    std::int32_t count = 0;
    trj_readframe_(handle_, frame, status_);
    if (status_ == 0 && moved_ > 0) {
      trj_dvalue_(handle_, trajectory_key::movable_positions, std::span(ahead_).first(3 * moved_), count, status_);
    }
    if (status_ != 0 || (has_cell_ && !cell_varies_)) return;
    cell_ahead_ = cell_of_frame(handle_, status_);
    has_cell_ = status_ == 0;
  }

  /// Makes the frame that was read the present one. @return its status
  std::int32_t take() {
    std::swap(positions_, ahead_);
    cell_ = cell_ahead_;
    return status_;
  }

  std::span<const double> positions() const { return positions_; }
  const CellVectors& cell() const { return cell_; }
  Vector3 position(std::int32_t place) const {
    const auto* const at = &positions_[3 * static_cast<std::size_t>(place)];
    return {at[0], at[1], at[2]};
  }

 private:
  std::int32_t handle_;
  std::size_t moved_;
  std::vector<double> positions_, ahead_;
  CellVectors cell_{}, cell_ahead_{};
  bool cell_varies_ = true, has_cell_ = false;
  std::int32_t status_ = 0;
};

std::int32_t refuse_frame(std::int32_t frame, std::int32_t status) {
  refuse("STRUCTURE_DENSITY_FRAME", frame);
  return status;
}

/// Counts all frames; the first has been taken.
/// @param centre  place of the atom in the middle of the cell, if there is one
std::int32_t count_frames(const DensityRequest& request, Frames& frames, std::span<const std::int32_t> places,
                          std::optional<std::int32_t> centre, NumberDensity& density) {
  constexpr std::int32_t progress_steps = 50;
  const auto total = (request.last - request.first) / request.step + 1;
  const auto between = std::max(1, total / progress_steps);
  tell_progress(0.0F);
  for (std::int32_t done = 0; done < total;) {
    const auto frame = request.first + done * request.step;
    bool counted = false;
    const auto middle = centre ? std::optional(frames.position(*centre)) : std::nullopt;
    ParallelBlocks counting(1, [&](std::int64_t, std::size_t) {
      counted = density.add(frames.positions(), places, frames.cell().matrix(), middle);
    });
    const bool is_last = ++done == total;
    if (!is_last) frames.read(frame + request.step);
    counting.finish();
    if (!counted) return refuse("STRUCTURE_DENSITY_CELL");
    if (is_last) break;
    if (done % between == 0) tell_progress(static_cast<float>(done) / static_cast<float>(total));
    if (kvu_int_requestinterrupt_() == 1) {
      show_message("STRUCTURE_DENSITY_INTERRUPTED", done);
      break;
    }
    if (const auto status = frames.take(); status != 0) return refuse_frame(frame + request.step, status);
  }
  return 0;
}

std::int32_t usable(const OpenTrajectory& trajectory, std::int32_t model) {
  if (trajectory.attach_status() != 0) return trajectory.attach_status();
  std::int32_t type = 0, error = 0;
  kvd_mod_periodictype_(model, type, error);
  return error != 0 || type != periodic_type::three_dimensional ? refuse("STRUCTURE_DENSITY_CELL") : 0;
}

}  // namespace

std::int32_t mean_density(const DensityRequest& request, FrameDensity& density) {
  std::int32_t status = 0;
  const OpenTrajectory trajectory(request.trajectory, request.model, status);
  if (status == 0) status = usable(trajectory, request.model);
  if (status != 0) return status;

  std::int32_t error = 0;
  auto atoms = request.selected ? selected_atoms(request.model, error) : all_atoms(request.model, error);
  if (error != 0 || atoms.empty()) return refuse("STRUCTURE_DENSITY_ATOMS");
  if (request.centre > 0) {
    const auto all = all_atoms(request.model, error);
    if (error != 0 || request.centre > std::ssize(all))
      return refuse("STRUCTURE_DENSITY_CENTRE", static_cast<std::int32_t>(all.size()));
    atoms.push_back(all[static_cast<std::size_t>(request.centre) - 1]);
  }
  Objects places(atoms.size());
  const FramePlaces found(
      trajectory, atoms, places,
      {"PathStat/Density/TrjAtIds", "PathStat/Density/AtIds", "PathStat/Density/Fixed", "PathStat/Density/Movable"},
      status);
  if (status != 0) return status;
  if (found.lacks_movable()) return refuse("PATHSTAT_ERROR_87");
  std::vector<double> positions(3 * static_cast<std::size_t>(found.size()));
  found.place_fixed(positions, status);
  if (status != 0) return status;

  std::optional<std::int32_t> centre;
  if (request.centre > 0) {
    centre = places.back();
    places.pop_back();
  }
  Frames frames(trajectory.handle(), found.moved(), std::move(positions));
  frames.read(request.first);
  if (status = frames.take(); status != 0) return refuse_frame(request.first, status);
  const auto points = grid_for(frames.cell(), request.spacing);
  if (points[0] == 0) return 1;
  NumberDensity counts(points);
  if (status = count_frames(request, frames, places, centre, counts); status != 0) return status;
  density = {{points, counts.mean_cell(), counts.mean()}, counts.frames(), std::ssize(places)};
  return 0;
}

}  // namespace pathstat
