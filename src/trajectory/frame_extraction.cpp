#include "trajectory/frame_extraction.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <optional>

#include "coreapi/operations.h"
#include "state/analysis_settings.h"
#include "structure/crystal_maths.h"
#include "support/named_memory.h"
#include "trajectory/frame_cell.h"
#include "trajectory/frame_report.h"
#include "trajectory/front_end.h"
#include "trajectory/model_frame.h"
#include "trajectory/open_trajectory.h"
#include "trajectory/trajectory_keys.h"

namespace pathstat {
namespace {

constexpr std::int32_t failed = 1;
constexpr std::int32_t most_comments = 10;
constexpr std::int32_t comment_width = 80;

/// One frame of one trajectory on its way into a report or a model.
class Extraction {
 public:
  Extraction(std::string_view file, std::int32_t model) : file_(file), model_(model) {}
  Extraction(const Extraction&) = delete;
  Extraction& operator=(const Extraction&) = delete;

  void run(std::int32_t frame, ExtractionMode mode, std::int32_t& status) {
    find_atoms(status);
    if (status == 0) trajectory_.emplace(file_, model_, status);
    if (status != 0) return;
    const Misfit misfit = misfit_of(*trajectory_, model_, periodic_type_);
    if (mode == ExtractionMode::apply) movable_ = count_movable(*trajectory_, misfit, std::ssize(atoms_), status);
    if (status == 0) trj_readframe_(trajectory_->handle(), frame, status);
    if (status != 0) return;
    std::int32_t absent = 0;
    if (periodic_type_ != periodic_type::none) cell_ = cell_of_frame(trajectory_->handle(), absent);
    if (mode == ExtractionMode::report) {
      report(frame);
    } else {
      apply(status);
    }
  }

 private:
  void find_atoms(std::int32_t& status) {
    atoms_ = atoms_of_model(model_, status);
    if (status != 0 || atoms_.empty()) refuse_frame("PATHSTAT_ERROR_102", status);
  }

  double value(std::int32_t key) const {
    double number = 0.0;
    std::int32_t status = 0;
    trj_dvalue_(trajectory_->handle(), key, number, status);
    return status == 0 ? number : 0.0;
  }

  /// Without a model that fits only the atoms that move are known.
  std::int32_t atoms_in_file() const {
    return trajectory_->integer(trajectory_key::all_atoms, trajectory_->integer(trajectory_key::movable_atoms, 0));
  }

  double cell_size() const {
    CellVectors cell = cell_;
    if (periodic_type_ == periodic_type::two_dimensional) cell.a = {1.0, 0.0, 0.0};
    double size = 0.0;
    std::int32_t status = 0;
    kva_cry_3dabctocellvolume_(cell.a, cell.b, cell.c, size, status);
    return size;
  }

  void report(std::int32_t frame) const {
    std::array<Text<comment_width>, most_comments> comments;
    std::int32_t count = 0;
    std::int32_t status = 0;
    trj_cvalue_(trajectory_->handle(), trajectory_key::comments, {comments[0].begin(), sizeof comments}, comment_width,
                count, status);
    const std::size_t lines = status == 0 ? static_cast<std::size_t>(std::clamp(count, 0, most_comments)) : 0;
    const FrameReport values{
        .frame = frame,
        .atoms = atoms_in_file(),
        .periodic_type = periodic_type_,
        .time = value(trajectory_key::time),
        .time_step = value(trajectory_key::time_step),
        .total_energy = value(400049),
        .potential_energy = value(400025),
        .cell_size = cell_size(),
        .pressure = value(400057),
        .bonds = value(400026),
        .van_der_waals = value(400030),
        .angles = value(400027),
        .electrostatic = value(400031),
        .torsions = value(400028),
        .hydrogen_bonds = value(400032),
        .inversions = value(400029),
        .restraints = value(400033),
        .cross_terms = value(400179),
        .three_body = value(400174),
        .user = value(400034),
    };
    std::fputs(frame_report_text(std::span(comments).first(lines), values).c_str(), stdout);
  }

  /// Gives the atoms the vectors of a key, if the frame has them.
  void apply_vectors(std::int32_t key, std::string_view name, std::span<const std::int32_t> atoms,
                     std::span<double> vectors, std::int32_t& status) const {
    std::int32_t count = 0;
    std::int32_t absent = 0;
    trj_dvalue_(trajectory_->handle(), key, vectors, count, absent);
    if (absent == 0) set_atom_vectors(model_, atoms, name, vectors, status);
  }

  void apply(std::int32_t& status) const {
    const auto moving = static_cast<std::size_t>(movable_);
    NamedBlock<std::int32_t> ids("PathStat/ExtFrame/TrjAtIds", movable_, status);
    if (status != 0) return;
    NamedBlock<double> xyz("PathStat/ExtFrame/dxyz", 3 * static_cast<std::int64_t>(movable_), status);
    if (status != 0) return;
    const auto vectors = xyz.span().first(3 * moving);
    std::int32_t count = 0;
    trj_ivalue_(trajectory_->handle(), trajectory_key::movable_ids, ids.span().first(moving), count, status);
    if (status != 0) return;
    const auto atoms = atoms_by_identifier(atoms_, ids.span().first(moving), status);
    if (status != 0) return refuse_frame("PATHSTAT_ERROR_104", status);
    set_model_cell(model_, periodic_type_, cell_, status);
    if (status == 0) trj_dvalue_(trajectory_->handle(), trajectory_key::movable_positions, vectors, count, status);
    if (status == 0) kvd_setxyz_(atoms, vectors, status);
    if (status == 0) apply_vectors(trajectory_key::movable_velocities, "Velocity", atoms, vectors, status);
    if (status == 0) apply_vectors(trajectory_key::movable_forces, "Force", atoms, vectors, status);
    if (status == 0) kva_bnd_recalculate_(1, model_, status);
  }

  std::string_view file_;
  std::int32_t model_;
  std::optional<OpenTrajectory> trajectory_;
  std::int32_t periodic_type_ = periodic_type::none;
  std::int32_t movable_ = 0;
  std::vector<std::int32_t> atoms_;
  CellVectors cell_;
};

}  // namespace

void extractfromframe_(std::string_view file, std::int32_t model, std::int32_t frames_in_file, std::int32_t frame,
                       ExtractionMode mode, std::int32_t& status) {
  status = 0;
  if (frame < 1 || frame > frames_in_file) return refuse_frame("PATHSTAT_ERROR_101", status);
  try {
    Extraction(trimmed(file), model).run(frame, mode, status);
  } catch (const std::bad_alloc&) {
    status = failed;
  }
}

}  // namespace pathstat
