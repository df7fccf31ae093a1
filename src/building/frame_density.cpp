#include "building/frame_density.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "building/alike_molecules.h"
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
#include "trajectory/model_frame.h"
#include "trajectory/open_trajectory.h"
#include "trajectory/trajectory_keys.h"
#include "volumes/molecule_density.h"
#include "volumes/number_density.h"

namespace pathstat {
namespace {

constexpr std::int32_t atom_class = 3;

using Objects = std::vector<std::int32_t>;

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

/// The points along an edge, at the least that is needed; 0, after a message, for too many.
std::int32_t points_along(double edge, double spacing) {
  constexpr double rounding = 1e-9;
  const double needed = std::ceil(edge / spacing - rounding);
  if (!(needed <= most_volume_points)) {
    refuse("STRUCTURE_GRID_TOO_LARGE", needed, most_volume_points);
    return 0;
  }
  return std::max(1, static_cast<std::int32_t>(needed));
}

/// The grid for a cell; zeros, after a message, if it has too many points.
std::array<std::int32_t, 3> grid_for(const CellVectors& cell, double spacing) {
  std::array<std::int32_t, 3> points{};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const Vector3 edge = std::array{cell.a, cell.b, cell.c}[axis];
    points[axis] = points_along(std::hypot(edge[0], edge[1], edge[2]), spacing);
    if (points[axis] == 0) return {};
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
/// @param count  bool(): adds the present frame to the density; false for a flat cell
/// @param done   out: the frames that were counted
template <class Count>
std::int32_t count_frames(const DensityRequest& request, Frames& frames, Count count, std::int32_t& done) {
  constexpr std::int32_t progress_steps = 50;
  const auto total = (request.last - request.first) / request.step + 1;
  const auto between = std::max(1, total / progress_steps);
  tell_progress(0.0F);
  for (done = 0; done < total;) {
    const auto frame = request.first + done * request.step;
    bool counted = false;
    ParallelBlocks counting(1, [&](std::int64_t, std::size_t) { counted = count(); });
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

/// The atoms of a density: those that count and, behind them, those that say where the grid stands.
struct DensityAtoms {
  Objects objects;
  std::size_t counted = 0;
  Objects molecules;               ///< of each one that counts, for a density on the axes of molecules
  Objects alike;                   ///< those molecules; each has three atoms behind the ones that count
  std::span<std::int32_t> places;  ///< in the frames, once they are found

  std::span<const std::int32_t> counting() const { return places.first(counted); }
};

/// @return 0, or 1 after a message
std::int32_t choose_atoms(const DensityRequest& request, DensityAtoms& atoms) {
  std::int32_t error = 0;
  const auto all = atoms_of_model(request.model, error, ModelAtoms::stored);
  atoms.objects = error == 0 && request.selected ? selected_atoms(request.model, error) : all;
  atoms.counted = atoms.objects.size();
  if (error != 0 || atoms.objects.empty()) return refuse("STRUCTURE_DENSITY_ATOMS");
  const auto count = static_cast<std::int32_t>(all.size());
  if (request.centre > count) return refuse("STRUCTURE_DENSITY_CENTRE", count);
  const bool on_molecules = request.axis > 0 || request.plane > 0;
  if (!on_molecules) {
    if (request.centre > 0) atoms.objects.push_back(all[static_cast<std::size_t>(request.centre) - 1]);
    return 0;
  }
  const std::array numbers{request.centre, request.axis, request.plane};
  if (std::ranges::any_of(numbers, [&](std::int32_t number) { return number < 1 || number > count; }))
    return refuse("STRUCTURE_DENSITY_AXES");
  std::array<std::size_t, 3> three{};
  std::ranges::transform(numbers, three.begin(),
                         [](std::int32_t number) { return static_cast<std::size_t>(number) - 1; });
  AlikeMolecules found;
  find_alike(all, three, found, error);
  if (error != 0 || found.alike.empty()) return refuse("STRUCTURE_DENSITY_AXES");
  std::unordered_map<std::int32_t, std::int32_t> molecule_of;
  for (std::size_t k = 0; k < all.size(); ++k) molecule_of.emplace(all[k], found.numbers[k]);
  for (const auto object : atoms.objects) atoms.molecules.push_back(molecule_of[object]);
  for (const auto& molecule : found.atoms) atoms.objects.insert(atoms.objects.end(), molecule.begin(), molecule.end());
  atoms.alike = std::move(found.alike);
  return 0;
}

std::int32_t density_in_cell(const DensityRequest& request, const DensityAtoms& atoms, Frames& frames,
                             FrameDensity& density) {
  const auto points = grid_for(frames.cell(), request.spacing);
  if (points[0] == 0) return 1;
  NumberDensity counts(points);
  std::int32_t done = 0;
  const auto count = [&] {
    const auto middle = request.centre > 0 ? std::optional(frames.position(atoms.places.back())) : std::nullopt;
    return counts.add(frames.positions(), atoms.counting(), frames.cell().matrix(), middle);
  };
  if (const auto status = count_frames(request, frames, count, done); status != 0) return status;
  density = {{points, counts.mean_cell(), counts.mean()}, counts.frames(), std::ssize(atoms.counting()), 0};
  return 0;
}

std::int32_t density_around_molecules(const DensityRequest& request, const DensityAtoms& atoms, Frames& frames,
                                      FrameDensity& density) {
  const double edge = cube_within(frames.cell().matrix());
  if (!(edge > 0)) return refuse("STRUCTURE_DENSITY_CELL");
  auto points = points_along(edge, request.spacing);
  if (points == 0) return 1;
  points += points % 2 == 0 ? 1 : 0;
  std::vector<MoleculeAtoms> around;
  for (std::size_t k = 0; k < atoms.alike.size(); ++k) {
    const auto three = atoms.places.subspan(atoms.counted + 3 * k);
    around.push_back({three[0], three[1], three[2], atoms.alike[k]});
  }
  MoleculeDensity counts(points, edge);
  std::int32_t done = 0;
  const auto count = [&] {
    return counts.add(frames.positions(), atoms.counting(), atoms.molecules, around, frames.cell().matrix());
  };
  if (const auto status = count_frames(request, frames, count, done); status != 0) return status;
  if (counts.samples() == 0) return refuse("STRUCTURE_DENSITY_AXES");
  const Matrix3 cube{edge, 0, 0, 0, edge, 0, 0, 0, edge};
  density = {{{points, points, points}, cube, counts.mean()}, done, std::ssize(atoms.counting()), std::ssize(around)};
  return 0;
}

}  // namespace

std::int32_t mean_density(const DensityRequest& request, FrameDensity& density) {
  std::int32_t status = 0;
  const OpenTrajectory trajectory(request.trajectory, request.model, status);
  if (status == 0) status = usable(trajectory, request.model);
  if (status != 0) return status;

  DensityAtoms atoms;
  if (status = choose_atoms(request, atoms); status != 0) return status;
  Objects places(atoms.objects.size());
  const FramePlaces found(
      trajectory, atoms.objects, places,
      {"PathStat/Density/TrjAtIds", "PathStat/Density/AtIds", "PathStat/Density/Fixed", "PathStat/Density/Movable"},
      status);
  if (status != 0) return status;
  if (found.lacks_movable()) return refuse("PATHSTAT_ERROR_87");
  std::vector<double> positions(3 * static_cast<std::size_t>(found.size()));
  found.place_fixed(positions, status);
  if (status != 0) return status;
  atoms.places = places;

  Frames frames(trajectory.handle(), found.moved(), std::move(positions));
  frames.read(request.first);
  if (status = frames.take(); status != 0) return refuse_frame(request.first, status);
  return atoms.alike.empty() ? density_in_cell(request, atoms, frames, density)
                             : density_around_molecules(request, atoms, frames, density);
}

}  // namespace pathstat
