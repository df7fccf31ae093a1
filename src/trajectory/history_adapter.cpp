#include "trajectory/history_adapter.h"

#include <new>
#include <vector>

#include "coreapi/object_counts.h"
#include "coreapi/operations.h"
#include "services/file_names.h"
#include "services/file_units.h"
#include "state/analysis_settings.h"
#include "support/text_field.h"
#include "trajectory/history_file.h"
#include "trajectory/reader_checks.h"

namespace pathstat {
namespace {

using namespace trajectory_status;

constexpr std::int32_t stored_only = 1;

/// Opens the file, and a unit for it. The reader comes first: unlike a unit's stream it does not wait for a pipe.
void assign(std::string_view name, RecordReader& reader, FileUnit& unit, std::int32_t& status) {
  std::int32_t error = 0;
  if (reader.open(expanded_name(name)) != RecordStatus::ok) {
    status = unit_not_assigned;
    return;
  }
  unit = FileUnit(name, {.status = UnitStatus::existing, .mode = UnitMode::read_only}, error);
  if (error != 0) status = error == unit_error::none_free ? no_file_unit : unit_not_assigned;
}

std::int32_t periodic_directions(std::int32_t type) {
  return type == periodic_type::three_dimensional ? 3 : type == periodic_type::two_dimensional ? 2 : 0;
}

/// The model's stored atoms in the reader's order; empty if it can't be had.
std::vector<std::int32_t> atoms_in_order(std::int32_t model) {
  std::int32_t error = 0;
  std::vector<std::int32_t> in_file(static_cast<std::size_t>(histrj_i_.his_atoms));
  kva_fil_caratomidorder_(model, in_file, error);
  if (error != 0) return {};
  const auto movable = histrj_p_.mov_atom_index.span();
  if (movable.empty()) return in_file;
  std::vector<std::int32_t> ordered;
  std::vector<bool> moves(in_file.size());
  ordered.reserve(in_file.size());
  for (const auto place : movable) {
    ordered.push_back(in_file[static_cast<std::size_t>(place - 1)]);
    moves[static_cast<std::size_t>(place - 1)] = true;
  }
  for (std::size_t k = 0; k < in_file.size(); ++k) {
    if (!moves[k]) ordered.push_back(in_file[k]);
  }
  return ordered;
}

bool fits_model(std::int32_t model) {
  std::int32_t atoms = 0, error = 0;
  count_atoms(model, stored_only, atoms, error);
  if (error == 0) kvd_mod_periodictype_(model, histrj_i_.his_period_type, error);
  if (error != 0 || atoms != histrj_i_.his_atoms) return false;
  const auto ordered = atoms_in_order(model);
  if (ordered.empty()) return false;
  history_model.images = SymmetryImages("Trj/His/", model, ordered, error);
  if (error != 0) return false;
  const auto fixed = std::span(ordered).subspan(static_cast<std::size_t>(histrj_i_.his_stored_atoms));
  if (!fixed.empty()) {
    history_model.fixed_positions = NamedBlock<double>("Trj/His/Xyz", 3 * std::ssize(fixed), error);
    if (error == 0) kvd_xyz_(fixed, history_model.fixed_positions.span(), error);
  }
  return error == 0;
}

void note_model() {
  auto& his = histrj_i_;
  const auto& images = history_model.images;
  his.his_dims = periodic_directions(his.his_period_type);
  histrj_l_.his_periodic = his.his_period_type != periodic_type::none;
  his.his_operators = images.operators();
  his.his_total_atoms = images.atoms();
  his.his_total_movable = images.atoms_of(his.his_movable);
  histrj_l_.his_attached = true;
}

void forget_model() {
  history_model = {};
  histrj_i_.his_period_type = histrj_i_.his_dims = histrj_i_.his_operators = 0;
  histrj_i_.his_total_atoms = histrj_i_.his_total_movable = 0;
  histrj_l_ = {};
}

}  // namespace

void openhistrajectory_(std::string_view name, std::int32_t mode, std::int32_t& handle, std::int32_t& status) {
  std::int32_t ignored = 0;
  closehis_(open_trajectory_handle, ignored);
  handle = 0;
  trj_i_.trj_current_frame = 0;
  name = trimmed(name);
  status = check_open(name, mode);
  if (status != 0) return;
  RecordReader reader;
  FileUnit unit;
  assign(name, reader, unit, status);
  if (status == 0) open_history(std::move(reader), status);
  if (status != 0) return;
  histrj_i_.his_unit = unit.release();
  trj_i_.trj_current_frame = history_frame();
  handle = open_trajectory_handle;
}

void attachhismodels_(std::int32_t, std::span<const std::int32_t> models, std::int32_t& status) try {
  forget_model();
  status = check_attach(models, histrj_i_.his_unit != 0, fits_model);
  status == 0 ? note_model() : forget_model();
} catch (const std::bad_alloc&) {
  forget_model();
  status = attach_refused;
}

void readhisframe_(std::int32_t, std::int32_t frame, std::int32_t& status) {
  read_history_frame(frame, status);
  trj_i_.trj_current_frame = history_frame();
}

void closehis_(std::int32_t, std::int32_t& status) {
  status = 0;
  kvs_fil_closeunit_(histrj_i_.his_unit);
  forget_model();
  close_history();
}

}  // namespace pathstat
