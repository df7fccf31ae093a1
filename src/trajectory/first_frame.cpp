#include "trajectory/first_frame.h"

#include <new>

#include "coreapi/operations.h"
#include "state/analysis_settings.h"
#include "support/identifier_index.h"
#include "support/named_memory.h"
#include "trajectory/frame_cell.h"
#include "trajectory/front_end.h"
#include "trajectory/model_frame.h"
#include "trajectory/open_trajectory.h"
#include "trajectory/trajectory_keys.h"

namespace pathstat {
namespace {

constexpr std::int32_t failed = 1;
constexpr std::int32_t structured_file = 1;

/// The trajectory while its first frame goes onto the model.
class FirstFrame {
 public:
  FirstFrame(std::string_view file, std::int32_t model, std::int32_t& status)
      : model_(model), trajectory_(file, model, status, OpenProblem::left_to_caller) {}

  void apply(std::span<const std::int32_t> model_atoms, std::int32_t file_type, std::int32_t& status) {
    const Misfit misfit = misfit_of(trajectory_, model_, type_);
    movable_ = count_movable(trajectory_, misfit, std::ssize(model_atoms), status);
    if (status == 0) order_atoms(model_atoms, status);
    if (status == 0) trj_readframe_(trajectory_.handle(), 1, status);
    if (status == 0) set_cell(status);
    if (status == 0) set_positions(status);
    if (status == 0 && file_type != structured_file) set_movable(status);
    if (status == 0) set_vectors(trajectory_key::all_velocities, "Velocity", status);
    if (status == 0) set_vectors(trajectory_key::all_forces, "Force", status);
    if (status == 0) kva_bnd_recalculate_(1, model_, status);
  }

 private:
  /// The model's atoms in the order of the trajectory.
  void order_atoms(std::span<const std::int32_t> model_atoms, std::int32_t& status) {
    ids_ = NamedBlock<std::int32_t>("PathStat/ExtFrame/TrjAtIds", std::ssize(model_atoms), status);
    xyz_ = NamedBlock<double>("PathStat/ExtFrame/dxyz", 3 * std::ssize(model_atoms), status);
    if (status != 0) return;
    std::int32_t count = 0;
    trj_ivalue_(trajectory_.handle(), trajectory_key::all_ids, ids_.span(), count, status);
    if (status == 0 && count != std::ssize(model_atoms)) refuse_frame("PATHSTAT_ERROR_104", status);
    if (status != 0) return;
    atoms_ = atoms_by_identifier(model_atoms, ids_.span(), status);
    if (status != 0) refuse_frame("PATHSTAT_ERROR_104", status);
  }

  void set_cell(std::int32_t& status) {
    if (type_ == periodic_type::none) return;
    const CellVectors cell = cell_of_frame(trajectory_.handle(), status);
    if (status == 0) set_model_cell(model_, type_, cell, status);
  }

  void set_positions(std::int32_t& status) {
    std::int32_t count = 0;
    trj_dvalue_(trajectory_.handle(), trajectory_key::all_positions, xyz_.span(), count, status);
    if (status == 0) kvd_setxyz_(atoms_, xyz_.span(), status);
  }

  /// Movable are the atoms that the trajectory moves.
  void set_movable(std::int32_t& status) {
    NamedBlock<std::int32_t> moving("PathStat/ExtFrame/MovTrjAtIds", movable_, status);
    NamedBlock<std::int32_t> flags("PathStat/ExtFrame/IsMovable", std::ssize(atoms_), status);
    if (status != 0) return;
    const auto moving_ids = moving.span().first(static_cast<std::size_t>(movable_));
    std::int32_t count = 0;
    trj_ivalue_(trajectory_.handle(), trajectory_key::movable_ids, moving_ids, count, status);
    if (status != 0) return;
    const IdentifierIndex index(moving_ids, status);
    for (std::size_t k = 0; k < atoms_.size(); ++k) flags.span()[k] = index.find(ids_.span()[k]) >= 0 ? 1 : 0;
    if (status == 0) kvd_setmovable_(atoms_, flags.span(), status);
  }

  /// Vectors that the file does not hold are no failure.
  void set_vectors(std::int32_t key, std::string_view name, std::int32_t& status) {
    std::int32_t count = 0;
    trj_dvalue_(trajectory_.handle(), key, xyz_.span(), count, status);
    if (status == trajectory_status::no_such_key) {
      status = 0;
      return;
    }
    if (status == 0) kva_ud_setdoublevec_(atoms_, name, xyz_.span(), status);
    if (status == 0) kva_ud_doublevecsetmagnitude_(model_, name, 1, status);
  }

  std::int32_t model_;
  OpenTrajectory trajectory_;
  std::int32_t type_ = periodic_type::none;
  std::int32_t movable_ = 0;
  std::vector<std::int32_t> atoms_;
  NamedBlock<std::int32_t> ids_;
  NamedBlock<double> xyz_;
};

}  // namespace

void trjfixatoms_(std::string_view file, std::int32_t file_type, std::int32_t model, std::int32_t& status) {
  try {
    const auto atoms = atoms_of_model(model, status);
    if (status != 0 || atoms.empty()) return refuse_frame("PATHSTAT_ERROR_102", status);
    FirstFrame frame(trimmed(file), model, status);
    if (status == 0) frame.apply(atoms, file_type, status);
  } catch (const std::bad_alloc&) {
    status = failed;
  }
}

}  // namespace pathstat
