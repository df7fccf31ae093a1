#include "trajectory/binary_adapter.h"

#include <algorithm>
#include <array>
#include <string>

#include "coreapi/object_counts.h"
#include "coreapi/operations.h"
#include "services/file_names.h"
#include "state/analysis_settings.h"
#include "support/identifier_index.h"
#include "support/named_memory.h"
#include "support/plain_array.h"
#include "trajectory/binary_trajectory.h"
#include "trajectory/reader_checks.h"

namespace pathstat {

namespace {

using namespace trajectory_status;

constexpr std::string_view positions_label = "Trj/XGraf/dxyz";
constexpr std::string_view identifiers_label = "Trj/XGraf/AtIds";
constexpr std::int32_t with_images = 3;  ///< the atoms of a model, symmetry images included

/// Single values of the open file; the first failure stays in the status.
std::int32_t integer(std::int32_t key, std::int32_t& status) {
  std::int32_t value = 0, count = 0;
  if (status == 0) kva_trj_valueint_(xgraftrj_i_.xgraf_handle, key, std::span(&value, 1), count, status);
  return value;
}

bool flag(std::int32_t key, std::int32_t& status) {
  Logical value;
  std::int32_t count = 0;
  if (status == 0) kva_trj_valuelogical_(xgraftrj_i_.xgraf_handle, key, std::span(&value, 1), count, status);
  return value;
}

struct FlagWeight {
  std::int32_t key;
  std::int32_t weight;
};
constexpr std::array<FlagWeight, 5> run_flags{{{3007, 1}, {3006, 2}, {3002, 4}, {3005, 8}, {3003, 16}}};

struct RunKind {
  std::int32_t code;  ///< sum of the weights of the flags that are set
  std::int32_t ensemble;
  std::int32_t thermostat;
};
constexpr std::array<RunKind, 8> run_kinds{{
    {0, ensemble_code::constant_energy, -1},
    {1, ensemble_code::constant_temperature, 1},
    {4, ensemble_code::constant_temperature, 2},
    {12, ensemble_code::constant_temperature, 3},
    {16, ensemble_code::constant_pressure, -1},
    {17, ensemble_code::constant_temperature_and_pressure, 1},
    {18, ensemble_code::constant_temperature_and_pressure, 2},
    {26, ensemble_code::constant_temperature_and_pressure, 3},
}};

void derive_run_kind(std::int32_t& status) {
  std::int32_t code = 0;
  for (const auto& [key, weight] : run_flags) code += flag(key, status) ? weight : 0;
  const auto kind = std::ranges::find(run_kinds, code, &RunKind::code);
  const bool known = kind != run_kinds.end();
  xgraftrj_i_.xgraf_ensemble = known ? kind->ensemble : ensemble_code::unknown;
  xgraftrj_i_.xgraf_thermostat = known ? kind->thermostat : -1;
}

constexpr std::array period_types{periodic_type::none, periodic_type::one_dimensional, periodic_type::two_dimensional,
                                  periodic_type::three_dimensional};

/// Momentum is conserved where all atoms move, and angular momentum in a system without a cell.
std::int32_t degrees_of_freedom(std::int32_t movable, bool all_move, bool periodic) {
  const auto free = static_cast<std::int32_t>(std::min<std::int64_t>(std::int64_t{3} * movable, INT32_MAX));
  if (!all_move) return free;
  if (periodic) return free - 3;
  return movable < 2 ? 0 : movable == 2 ? 1 : free - 6;
}

void derive_atoms(std::int32_t& status) {
  auto& trj = xgraftrj_i_;
  const std::int32_t directions = integer(2018, status);
  trj.xgraf_movable_atoms = integer(2007, status);
  const std::int32_t groups = integer(2004, status);
  if (status == 0 && groups != 1) status = several_groups;
  trj.xgraf_total_atoms = integer(2020, status);
  const bool possible = directions >= 0 && directions <= 3 && trj.xgraf_movable_atoms <= trj.xgraf_total_atoms;
  if (status == 0 && !possible) status = binary_status::not_opened;
  if (status != 0) return;
  trj.xgraf_period_type = period_types[static_cast<std::size_t>(directions)];
  trj.xgraf_dof = degrees_of_freedom(trj.xgraf_movable_atoms, trj.xgraf_movable_atoms == trj.xgraf_total_atoms,
                                     trj.xgraf_period_type != periodic_type::none);
}

void free_arrays() {
  std::int32_t ignored = 0;
  kvs_msd_free_(positions_label, ignored);
  kvs_msd_free_(identifiers_label, ignored);
  xgraftrj_p_ = {};
}

std::span<std::int32_t> identifiers() {
  return {pointer_at<std::int32_t>(xgraftrj_p_.xgraf_atom_ids),
          static_cast<std::size_t>(xgraftrj_i_.xgraf_total_atoms)};
}

std::span<double> positions() {
  return {pointer_at<double>(xgraftrj_p_.xgraf_xyz), 3 * static_cast<std::size_t>(xgraftrj_i_.xgraf_total_atoms)};
}

/// Makes the arrays of all atoms. Called when the model has as many: the count of the file alone is not to be trusted.
bool make_arrays() {
  const std::int64_t atoms = xgraftrj_i_.xgraf_total_atoms;
  std::int32_t status = 0;
  free_arrays();
  if (kvs_msd_alloc_(identifiers_label, "int", atoms, xgraftrj_p_.xgraf_atom_ids, status) != 0) return false;
  if (kvs_msd_alloc_(positions_label, "double", 3 * atoms, xgraftrj_p_.xgraf_xyz, status) != 0) return false;
  if (xgraftrj_i_.xgraf_movable_atoms == 0) return true;
  std::int32_t count = 0;
  kva_trj_valueint_(xgraftrj_i_.xgraf_handle, 2008, identifiers(), count, status);
  return status == 0;
}

/// The atoms of a model, as the attach needs them.
struct ModelAtoms {
  explicit ModelAtoms(std::int32_t count) : objects(count), ids(count), movable(count) {}
  bool read(std::int32_t model) {
    if (!objects.allocated() || !ids.allocated() || !movable.allocated()) return false;
    std::int32_t listed = 0, error = 0;
    kvd_mod_atomlist_(model, with_images, objects.span(), listed, error);
    if (error == 0) kvd_id_(objects.span(), ids.span(), error);
    if (error == 0) kvd_ismovable_(objects.span(), movable.span(), error);
    return error == 0;
  }
  PlainArray<std::int32_t> objects, ids, movable;
};

/// Puts the fixed atoms of the model behind the movable ones. False if the model's atoms are not the trajectory's.
bool append_fixed_atoms(std::int32_t model) {
  const auto moving = static_cast<std::size_t>(xgraftrj_i_.xgraf_movable_atoms);
  const auto total = static_cast<std::size_t>(xgraftrj_i_.xgraf_total_atoms);
  ModelAtoms atoms(xgraftrj_i_.xgraf_total_atoms);
  PlainArray<std::int32_t> found(xgraftrj_i_.xgraf_movable_atoms), fixed(static_cast<std::int64_t>(total - moving));
  std::int32_t error = 0;
  const IdentifierIndex index(identifiers().first(moving), error);
  if (error != 0 || !found.allocated() || !fixed.allocated() || !atoms.read(model)) return false;

  std::ranges::fill(found.span(), 0);
  std::size_t matched = 0, appended = 0;
  for (std::size_t k = 0; k < total; ++k) {
    const std::int32_t place = index.find(atoms.ids.span()[k]);
    if (place >= 0) {
      matched += found.span()[static_cast<std::size_t>(place)]++ == 0 ? 1 : 0;
      continue;
    }
    if (atoms.movable.span()[k] != 0 || appended == total - moving) return false;
    identifiers()[moving + appended] = atoms.ids.span()[k];
    fixed.span()[appended++] = atoms.objects.span()[k];
  }
  if (matched != moving || appended != total - moving) return false;
  kvd_xyz_(fixed.span(), positions().subspan(3 * moving), error);
  return error == 0;
}

bool fits_model(std::int32_t model) {
  std::int32_t atoms = 0, type = 0, error = 0;
  count_atoms(model, with_images, atoms, error);
  if (error == 0) kvd_mod_periodictype_(model, type, error);
  if (error != 0 || atoms != xgraftrj_i_.xgraf_total_atoms || type != xgraftrj_i_.xgraf_period_type) return false;
  if (!make_arrays()) return false;
  return xgraftrj_i_.xgraf_movable_atoms == xgraftrj_i_.xgraf_total_atoms || append_fixed_atoms(model);
}

/// True if the last read met the end of the file with a part of a frame there.
bool file_is_cut() {
  const TrjStruct* trj = binary_trajectory(xgraftrj_i_.xgraf_handle);
  return trj != nullptr && trj->ended_inside_frame;
}

}  // namespace

void openxgraftrajectory_(std::string_view name, std::int32_t mode, std::int32_t& handle, std::int32_t& status) {
  std::int32_t ignored = 0;
  closexgraf_(open_trajectory_handle, ignored);
  handle = 0;
  trj_i_.trj_current_frame = 0;
  name = trimmed(name);
  status = check_open(name, mode);
  if (status != 0) return;
  kva_trj_open_(expanded_name(name), binary_mode::read, xgraftrj_i_.xgraf_handle, status);
  derive_run_kind(status);
  derive_atoms(status);
  if (status != 0) return closexgraf_(open_trajectory_handle, ignored);
  xgraftrj_l_.xgraf_open = true;
  handle = open_trajectory_handle;
}

void attachxgrafmodels_(std::int32_t, std::span<const std::int32_t> models, std::int32_t& status) {
  xgraftrj_l_.xgraf_attached = false;
  status = check_attach(models, xgraftrj_l_.xgraf_open, fits_model);
  xgraftrj_l_.xgraf_attached = status == 0;
  xgraf_model = status == 0 ? models[0] : 0;
}

void readxgrafframe_(std::int32_t, std::int32_t frame, std::int32_t& status) {
  status = 0;
  if (frame == trj_i_.trj_current_frame) return;
  kva_trj_readframe_(xgraftrj_i_.xgraf_handle, frame, status);
  trj_i_.trj_current_frame = status == 0 ? frame : 0;
  if (status == binary_status::end_of_file && !file_is_cut()) {
    status = end_of_file;
  } else if (status != 0) {
    status = read_error;
  }
}

void closexgraf_(std::int32_t, std::int32_t& status) {
  status = 0;
  if (xgraftrj_i_.xgraf_handle != 0) kva_trj_close_(xgraftrj_i_.xgraf_handle, status);
  free_arrays();
  xgraftrj_i_ = {};
  xgraftrj_l_ = {};
}

}  // namespace pathstat
