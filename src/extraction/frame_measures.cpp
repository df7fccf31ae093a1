#include "extraction/frame_measures.h"

#include <algorithm>

#include "catalogue/catalogue.h"
#include "catalogue/measure_families.h"
#include "coreapi/messages.h"
#include "coreapi/object_counts.h"
#include "coreapi/operations.h"
#include "extraction/scratch_file.h"
#include "measures/measures.h"
#include "state/analysis_settings.h"
#include "support/identifier_index.h"
#include "trajectory/front_end.h"
#include "trajectory/trajectory_keys.h"

namespace pathstat {
namespace {

constexpr std::int32_t with_images = 3;
constexpr std::int32_t undefined_inversion = -1;
constexpr std::int32_t inversions = 505;

void tell_misfit() { show_message("PATHSTAT_ERROR_100"); }

/// The atoms of a model as the data model and a trajectory know them.
struct ModelAtoms {
  NamedBlock<std::int32_t> objects, identifiers, movable;

  ModelAtoms(std::int32_t model, std::int32_t count, std::int32_t& status)
      : objects("pathstat/DTD/AtOids", count, status) {
    if (status == 0) identifiers = NamedBlock<std::int32_t>("pathstat/DTD/AtIds", count, status);
    if (status == 0) movable = NamedBlock<std::int32_t>("pathstat/DTD/Movable", count, status);
    std::int32_t listed = 0;
    if (status == 0) kvd_mod_atomlist_(model, with_images, objects.span(), listed, status);
    if (status == 0 && listed != count) status = 1;
    if (status == 0) kvd_ismovable_(objects.span(), movable.span(), status);
    if (status == 0) kvd_id_(objects.span(), identifiers.span(), status);
  }
};

/// Puts each atom where the trajectory has it, and fixed ones that it does not have behind its atoms.
/// @param atoms  a place for each atom of the model; 0 for none
/// @return the fixed atoms put behind; -1 if an atom that moves is not in the trajectory or there is no room
std::int32_t put_in_order(const ModelAtoms& model, std::span<const std::int32_t> moved, std::span<std::int32_t> atoms) {
  std::int32_t status = 0;
  const IdentifierIndex index(moved, status);
  if (status != 0) return -1;
  std::size_t end = moved.size();
  for (std::size_t k = 0; k < atoms.size(); ++k) {
    const std::int32_t place = index.find(model.identifiers.span()[k]);
    const bool is_lost = place < 0 && (model.movable.span()[k] != 0 || end == atoms.size());
    if (is_lost) return -1;
    atoms[place < 0 ? end++ : static_cast<std::size_t>(place)] = model.objects.span()[k];
  }
  return static_cast<std::int32_t>(end - moved.size());
}

using Calculation = void (*)(std::int32_t count, std::span<const double> xyz, VectorIn<double> a, VectorIn<double> b,
                             VectorIn<double> c, std::span<double> out, std::int32_t& status);

/// By family, from 501 on.
constexpr std::array<Calculation, 6> calculations{calcdistmeasures_,  calcangmeasures_, calctormeasures_,
                                                  calcplanemeasures_, calcinvmeasures_, calcdistvecmeasures_};

}  // namespace

FrameMeasures::FrameMeasures(const OpenTrajectory& trajectory) : trajectory_(trajectory) {
  const CatalogueTable table = property_table();
  for (std::size_t row = 0; row < table.size(); ++row) {
    if (!is_measure(table.ids[row]) || !table.on_disk[row]) continue;
    std::int32_t status = 0;
    const std::int32_t type = measure_family(table.ids[row]).monitor_type;
    table.on_disk[row] = !measureschanged_(trj_gui_i_.trajectory_model, type, status);
  }
}

FrameMeasures::~FrameMeasures() {
  std::int32_t status = 0;
  for (const auto& [id, measures] : counts_) cleanupmeasures_(id, status);
}

bool FrameMeasures::find_atoms() {
  std::int32_t count = 0;
  std::int32_t status = 0;
  count_atoms(trj_gui_i_.trajectory_model, with_images, count, status);
  const std::int32_t moved = trajectory_.integer(trajectory_key::movable_atoms, -1);
  if (status != 0 || moved < 0 || moved > count) return false;
  const ModelAtoms model(trj_gui_i_.trajectory_model, count, status);
  if (status != 0) return false;
  const NamedBlock<std::int32_t> identifiers("pathstat/DTD/TrjAtIds", moved, status);
  std::int32_t told = 0;
  if (status == 0 && moved > 0)
    trj_ivalue_(trajectory_.handle(), trajectory_key::movable_ids, identifiers.span(), told, status);
  if (status == 0) atoms_ = NamedBlock<std::int32_t>("pathstat/DTD/SortAtOids", count, status);
  if (status == 0) xyz_ = NamedBlock<double>("pathstat/DTD/dxyz", 6 * std::int64_t{count}, status);
  if (status != 0) return false;
  const std::size_t numbers = xyz_.size() / 2;
  frame_.xyz = xyz_.span().first(numbers);
  taken_.xyz = xyz_.span().last(numbers);
  const std::int32_t fixed = put_in_order(model, identifiers.span(), atoms_.span());
  if (fixed < 0) return false;
  moved_ = static_cast<std::size_t>(moved);
  const auto behind = static_cast<std::size_t>(fixed);
  const std::span<const std::int32_t> still = atoms_.span().subspan(moved_, behind);
  if (fixed > 0) kvd_xyz_(still, frame_.xyz.subspan(3 * moved_, 3 * behind), status);
  std::ranges::copy(frame_.xyz, taken_.xyz.begin());
  return status == 0;
}

std::int32_t FrameMeasures::prepare(std::size_t row) {
  const CatalogueTable table = property_table();
  const std::int32_t id = table.ids[row];
  std::int32_t count = 0;
  std::int32_t status = 0;
  bool do_it = false;
  domeasures_(trj_gui_i_.trajectory_model, id, property_file(table.extensions[row]), table.on_disk[row], do_it, count,
              status);
  if (!do_it) return 0;
  if (!is_searched_) fits_ = find_atoms();
  if (!is_searched_ && !fits_) tell_misfit();
  is_searched_ = true;
  if (!fits_) return 0;
  counts_.push_back({id, count});
  std::int32_t width = 0;
  setupmeasures_(trj_gui_i_.trajectory_model, id, count, width, trj_gui_i_.periodicity, atoms_.span(), status);
  if (status != 0) tell_misfit();
  return status == 0 ? width : 0;
}

void FrameMeasures::take_frame(std::int32_t& status) {
  std::int32_t count = 0;
  Matrix3 cell{};
  trj_dvalue_(trajectory_.handle(), trajectory_key::cell_vectors, cell, count, status);
  taken_.cell = status == 0 ? vectors_of_matrix(cell) : frame_.cell;
  status = 0;
  if (moved_ > 0)
    trj_dvalue_(trajectory_.handle(), trajectory_key::movable_positions, taken_.xyz.first(3 * moved_), count, status);
}

// An inversion that is undefined is told.
bool FrameMeasures::may_run_beside(std::int32_t id) { return id != inversions; }

void FrameMeasures::put(std::int32_t id, std::span<double> out, std::int32_t& status) const {
  const auto measures = std::ranges::find(counts_, id, &Count::id)->measures;
  calculations[static_cast<std::size_t>(id - 501)](measures, frame_.xyz, frame_.cell.a, frame_.cell.b, frame_.cell.c,
                                                   out, status);
  if (status == undefined_inversion) status = 0;
}

}  // namespace pathstat
