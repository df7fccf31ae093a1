#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "state/analysis_settings.h"
#include "structure/crystal_maths.h"
#include "support/named_memory.h"
#include "support/plain_array.h"
#include "trajectory/binary_adapter.h"
#include "trajectory/binary_trajectory.h"
#include "trajectory/frame_cell.h"
#include "trajectory/value_delivery.h"

namespace pathstat {

namespace {

using namespace trajectory_status;

/// Keys of the front end, from `first` to `last`, that stand for the binary file's keys from `binary` on.
struct KeyRange {
  std::int32_t first;
  std::int32_t last;
  std::int32_t binary;
};

constexpr std::array<KeyRange, 5> logical_keys{{
    {100007, 100008, 3002},
    {100010, 100010, 3005},
    {100011, 100011, 3006},
    {100012, 100012, 3007},
    {100054, 100054, 3008},
}};

constexpr std::array<KeyRange, 6> integer_keys{{
    {200001, 200001, 2001},
    {200004, 200004, 2018},
    {200018, 200018, 2011},
    {200019, 200019, 2019},
    {200156, 200156, 2007},
    {200159, 200159, 2008},
}};

constexpr std::array<KeyRange, 27> floating_keys{{
    {200161, 200161, 1071},  // positions of the movable atoms
    {200163, 200163, 1072},  // their velocities
    {200170, 200170, 1071},  // positions, without images
    {400017, 400017, 1000}, {400020, 400034, 1001}, {400035, 400046, 1017}, {400047, 400048, 1030},
    {400049, 400049, 1032}, {400050, 400050, 1034}, {400051, 400051, 1033}, {400052, 400052, 1035},
    {400057, 400068, 1036}, {400076, 400077, 1056}, {400078, 400078, 1058}, {400081, 400082, 1061},
    {400084, 400084, 1063}, {400085, 400085, 1065}, {400086, 400086, 1064}, {400087, 400087, 1066},
    {400106, 400108, 1083}, {400109, 400113, 1087}, {400147, 400148, 1074}, {400174, 400174, 1016},
    {400175, 400175, 1029}, {400176, 400176, 1073}, {400178, 400178, 1086}, {400179, 400179, 1101},
}};

/// The binary file's key, or 0.
template <std::size_t N>
std::int32_t binary_key(const std::array<KeyRange, N>& ranges, std::int32_t key) {
  for (const KeyRange& range : ranges) {
    if (key >= range.first && key <= range.last) return range.binary + key - range.first;
  }
  return 0;
}

/// The first check of every getter.
std::int32_t open_status() { return xgraftrj_l_.xgraf_open ? 0 : binary_status::no_such_handle; }

/// The status as the front end's callers know it.
std::int32_t translated(std::int32_t status) {
  if (status == binary_status::not_present || status == binary_status::unknown_key) return no_such_key;
  return status == binary_status::too_small ? too_small : status;
}

std::size_t numbers_of(std::int32_t atoms) { return 3 * static_cast<std::size_t>(atoms); }

/// Values of the current frame by the binary file's keys; the first failure stays in the status.
class Frame {
 public:
  explicit Frame(std::int32_t& status) : status_(status) {}

  double operator()(std::int32_t key) {
    double value = 0;
    fill(key, std::span(&value, 1));
    return value;
  }
  std::array<double, 6> six(std::int32_t key) {
    std::array<double, 6> values{};
    fill(key, values);
    return values;
  }
  bool ok() const { return status_ == 0; }

 private:
  void fill(std::int32_t key, std::span<double> values) {
    std::int32_t count = 0;
    if (status_ == 0) kva_trj_valuedouble_(xgraftrj_i_.xgraf_handle, key, values, count, status_);
  }
  std::int32_t& status_;
};

/// The conserved energy of a run's ensemble and thermostat (energies in kcal/mol).
/// Sources: S. Nosé, J. Chem. Phys. 81, 511 (1984); W. G. Hoover, Phys. Rev. A 31, 1695 (1985).
double conserved_energy(Frame& frame) {
  constexpr double gas_constant = 0.00198717;
  constexpr double cell_energy_unit = 0.00596151;
  const std::int32_t ensemble = xgraftrj_i_.xgraf_ensemble, thermostat = xgraftrj_i_.xgraf_thermostat;
  const double dof = xgraftrj_i_.xgraf_dof;
  const bool with_cell = ensemble == ensemble_code::constant_temperature_and_pressure;
  double energy = frame(1032);
  if (ensemble == ensemble_code::constant_pressure) energy += frame(1064) + cell_energy_unit * frame(1056);
  if (with_cell) energy += frame(1064) + 3 * frame(1056) * gas_constant;
  if (thermostat == 2) {
    const std::int32_t first = with_cell ? 1067 : 1052;  // integrated variable, rate, inertia factor
    const double rate = frame(first + 1), inertia = frame(with_cell ? 1069 : 1055);
    energy += dof * (inertia * rate * rate + 2 * frame(first)) * 0.5 * frame(1004) * gas_constant;
  } else if (thermostat == 3) {
    const std::int32_t first = with_cell ? 1067 : 1048;  // variable with the logarithm; rate, inertia factor
    const double rate = frame(with_cell ? 1068 : 1050), inertia = frame(with_cell ? 1069 : 1051);
    energy += ((dof + 1) * 2 * std::log(frame(first)) + inertia * rate * rate * dof) * 0.5 * frame(1004) * gas_constant;
  }
  return energy;
}

/// The cell of the frame as it is stored, or that of the attached model where frames do not carry one.
CellVectors stored_cell(std::int32_t& status) {
  const auto numbers = Frame(status).six(1058);
  if (status != binary_status::not_present || !xgraftrj_l_.xgraf_attached) return vectors_of_cell(numbers);
  const std::int32_t type = xgraftrj_i_.xgraf_period_type;
  return type == periodic_type::one_dimensional ? CellVectors{} : cell_of_model(xgraf_model, type, status);
}

/// The cell's vectors along its periodic directions, and unit vectors along the others.
CellVectors cell_vectors(std::int32_t& status) {
  CellVectors cell = stored_cell(status);
  if (xgraftrj_i_.xgraf_period_type != periodic_type::three_dimensional) cell.a = {1, 0, 0};
  if (xgraftrj_i_.xgraf_period_type == periodic_type::one_dimensional) cell.b = {0, 1, 0};
  return cell;
}

void get_cell_matrix(std::span<double> out, std::int32_t& count, std::int32_t& status) {
  CellVectors cell;
  if (xgraftrj_i_.xgraf_period_type != periodic_type::none) cell = stored_cell(status);
  if (status != 0) return;
  deliver<double>(cell.matrix(), out, count, status);
}

void get_cell_parameters(std::span<double> out, std::int32_t& count, std::int32_t& status) {
  if (xgraftrj_i_.xgraf_period_type == periodic_type::none) status = not_periodic;
  if (status != 0) return;
  const auto [a, b, c] = cell_vectors(status);
  if (status != 0) return;
  std::array<double, 6> p{};
  kva_cry_3dcelltoparam_(a, b, c, p[0], p[1], p[2], p[3], p[4], p[5], status);
  if (status == 0) deliver<double>(p, out, count, status);
}

void get_cell_area(std::span<double> out, std::int32_t& count, std::int32_t& status) {
  if (xgraftrj_i_.xgraf_period_type != periodic_type::two_dimensional) status = not_two_dimensional;
  if (status != 0) return;
  const auto [a, b, c] = cell_vectors(status);
  if (status != 0) return;
  double area = 0;
  kva_cry_3dabctocellvolume_(a, b, c, area, status);
  deliver_one(area, out, count, status);
}

void get_conserved_energy(std::span<double> out, std::int32_t& count, std::int32_t& status) {
  count = 1;
  if (xgraftrj_i_.xgraf_ensemble == ensemble_code::unknown) return;
  Frame frame(status);
  const double energy = conserved_energy(frame);
  if (frame.ok()) deliver_one(energy, out, count, status);
}

void get_enthalpy(std::span<double> out, std::int32_t& count, std::int32_t& status) {
  Frame frame(status);
  const double enthalpy = frame(1032) + frame(1064);
  if (frame.ok()) deliver_one(enthalpy, out, count, status);
}

/// All positions: those of the movable atoms from the frame, those of the fixed atoms from the attach.
void get_all_positions(std::span<double> out, std::int32_t& count, std::int32_t& status) {
  const std::size_t moving = numbers_of(xgraftrj_i_.xgraf_movable_atoms);
  const std::span all(pointer_at<double>(xgraftrj_p_.xgraf_xyz), numbers_of(xgraftrj_i_.xgraf_total_atoms));
  if (all.size() > moving && !xgraftrj_l_.xgraf_attached) status = not_attached;
  if (status != 0) return;
  if (moving > 0) kva_trj_valuedouble_(xgraftrj_i_.xgraf_handle, 1071, all.first(moving), count, status);
  if (status == 0) deliver<double>(all, out, count, status);
}

/// A key's vectors of the movable atoms, as far as there is room.
void get_movable(std::int32_t key, std::span<double> out, std::int32_t& status) {
  const std::size_t moving = numbers_of(xgraftrj_i_.xgraf_movable_atoms);
  std::int32_t count = 0;
  if (out.size() >= moving) return kva_trj_valuedouble_(xgraftrj_i_.xgraf_handle, key, out, count, status);
  const PlainArray<double> values(static_cast<std::int64_t>(moving));
  status = values.allocated() ? 0 : binary_status::no_atom_arrays;
  if (status == 0) kva_trj_valuedouble_(xgraftrj_i_.xgraf_handle, key, values.span(), count, status);
  if (status == 0) std::copy_n(values.span().begin(), out.size(), out.begin());
}

/// A key's vectors of the movable atoms, then zeros for the fixed ones.
void get_zero_filled(std::int32_t key, std::span<double> out, std::int32_t& count, std::int32_t& status) {
  const std::size_t moving = numbers_of(xgraftrj_i_.xgraf_movable_atoms);
  const std::size_t all = numbers_of(xgraftrj_i_.xgraf_total_atoms);
  get_movable(key, out, status);
  if (status != 0) return;
  count = static_cast<std::int32_t>(std::min<std::size_t>(all, INT32_MAX));
  const std::size_t end = std::min(all, out.size() / 3 * 3);
  if (moving < end) std::ranges::fill(out.subspan(moving, end - moving), 0.0);
  if (all > out.size()) status = too_small;
}

/// Keys of which the file's own values are not the answer.
struct DerivedKey {
  std::int32_t key;
  void (*get)(std::span<double> out, std::int32_t& count, std::int32_t& status);
};
constexpr std::array<DerivedKey, 10> derived_keys{{
    {200160, get_all_positions},
    {200169, get_all_positions},
    {200162, [](std::span<double> out, std::int32_t& n, std::int32_t& s) { get_zero_filled(1072, out, n, s); }},
    {200171, [](std::span<double> out, std::int32_t& n, std::int32_t& s) { get_zero_filled(1072, out, n, s); }},
    {400180, [](std::span<double> out, std::int32_t& n, std::int32_t& s) { get_zero_filled(1073, out, n, s); }},
    {400105, get_cell_matrix},
    {400144, get_conserved_energy},
    {400149, get_cell_parameters},
    {400150, get_enthalpy},
    {400151, get_cell_area},
}};

/// File kinds by their magic, from 1 on.
constexpr std::array<std::string_view, 4> magics{"MDTR", "QDTR", "SNAP", "AMFT"};

void get_file_kind(std::span<std::int32_t> out, std::int32_t& count, std::int32_t& status) {
  std::array<char, 4> magic{};
  kva_trj_valuechar_(xgraftrj_i_.xgraf_handle, 4001, magic, 4, count, status);
  if (status != 0) return;
  const auto* found = std::ranges::find(magics, std::string_view(magic.data(), magic.size()));
  const auto kind = found == magics.end() ? 0 : static_cast<std::int32_t>(found - magics.begin()) + 1;
  deliver_one(kind, out, count, status);
}

void get_identifiers(std::span<std::int32_t> out, std::int32_t& count, std::int32_t& status) {
  const std::span<const std::int32_t> ids(pointer_at<std::int32_t>(xgraftrj_p_.xgraf_atom_ids),
                                          static_cast<std::size_t>(xgraftrj_i_.xgraf_total_atoms));
  deliver(ids, out, count, status);
}

/// Integers that are known from the open or the attach.
struct KnownInteger {
  std::int32_t key;
  bool needs_attach;
  std::int32_t (*value)();
};
constexpr std::array<KnownInteger, 7> known_integers{{
    {200140, false, [] { return xgraftrj_i_.xgraf_ensemble; }},
    {200141, false, [] { return xgraftrj_i_.xgraf_thermostat; }},
    {200142, false, [] { return xgraftrj_i_.xgraf_period_type; }},
    {200145, false, [] { return xgraftrj_i_.xgraf_dof; }},
    {200153, false, [] { return reader::binary; }},
    {200155, true, [] { return xgraftrj_i_.xgraf_total_atoms; }},
    {200157, true, [] { return xgraftrj_i_.xgraf_total_atoms - xgraftrj_i_.xgraf_movable_atoms; }},
}};

void get_known_integer(const KnownInteger& known, std::span<std::int32_t> out, std::int32_t& count,
                       std::int32_t& status) {
  count = 1;
  if (known.needs_attach && !xgraftrj_l_.xgraf_attached) status = not_attached;
  if (status == 0) deliver_one(known.value(), out, count, status);
}

}  // namespace

void getxgrafdatadble_(std::int32_t, std::int32_t key, std::span<double> values, std::int32_t& count,
                       std::int32_t& status) {
  count = 1;
  status = open_status();
  if (status != 0) return;
  const auto derived = std::ranges::find(derived_keys, key, &DerivedKey::key);
  const std::int32_t binary = binary_key(floating_keys, key);
  if (derived != derived_keys.end()) {
    derived->get(values, count, status);
  } else if (key == 400078 && xgraftrj_i_.xgraf_period_type == periodic_type::none) {
    status = not_periodic;
  } else if (binary != 0) {
    kva_trj_valuedouble_(xgraftrj_i_.xgraf_handle, binary, values, count, status);
  } else {
    status = no_such_key;
  }
  status = translated(status);
}

void getxgrafdatareal_(std::int32_t, std::int32_t, std::span<float>, std::int32_t& count, std::int32_t& status) {
  count = 0;
  status = 1;
}

void getxgrafdataint_(std::int32_t, std::int32_t key, std::span<std::int32_t> values, std::int32_t& count,
                      std::int32_t& status) {
  count = 1;
  status = open_status();
  if (status != 0) return;
  const auto known = std::ranges::find(known_integers, key, &KnownInteger::key);
  if (known != known_integers.end()) {
    get_known_integer(*known, values, count, status);
  } else if (key == 200000) {
    get_file_kind(values, count, status);
  } else if (key == 200152) {
    if (!xgraftrj_l_.xgraf_attached) status = not_attached;
    if (status == 0) get_identifiers(values, count, status);
  } else if (const std::int32_t binary = binary_key(integer_keys, key); binary != 0) {
    kva_trj_valueint_(xgraftrj_i_.xgraf_handle, binary, values, count, status);
  } else {
    status = no_such_key;
  }
  status = translated(status);
}

void getxgrafdatalogical_(std::int32_t, std::int32_t key, std::span<Logical> values, std::int32_t& count,
                          std::int32_t& status) {
  count = 1;
  status = open_status();
  if (status != 0) return;
  if (key == 100005) {
    deliver_one(Logical(xgraftrj_i_.xgraf_period_type != periodic_type::none), values, count, status);
  } else if (const std::int32_t binary = binary_key(logical_keys, key); binary != 0) {
    kva_trj_valuelogical_(xgraftrj_i_.xgraf_handle, binary, values, count, status);
  } else {
    status = no_such_key;
  }
  status = translated(status);
}

void getxgrafdatachar_(std::int32_t, std::int32_t key, std::span<char> fields, std::int32_t width, std::int32_t& count,
                       std::int32_t& status) {
  count = 0;
  status = no_such_key;
  if (key == 2) kva_trj_valuechar_(xgraftrj_i_.xgraf_handle, 4002, fields, width, count, status);
  status = translated(status);
}

}  // namespace pathstat
