#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <string_view>

#include "state/analysis_settings.h"
#include "structure/crystal_maths.h"
#include "trajectory/coordinate_alignment.h"
#include "trajectory/frame_cell.h"
#include "trajectory/history_adapter.h"
#include "trajectory/history_file.h"
#include "trajectory/value_delivery.h"

namespace pathstat {
namespace {

using namespace trajectory_status;

constexpr std::int32_t model_orientation = 1;
constexpr std::int32_t text_cut = -50000;

using Doubles = std::span<double>;

/// What a key yields: at most as many numbers as there is room for.
struct Answer {
  Doubles out;
  std::int32_t& count;
  std::int32_t& status;

  void give(std::span<const double> values) const { deliver(values, out, count, status); }
  void give(double value) const { deliver_one(value, out, count, status); }
};

/// Components are numbered by the version of the file.
enum EnergyClass : std::size_t { below_251, version_260, other };

/// @param joins_older  the versions from 2.51 to 2.59 count as 2.60
EnergyClass energy_class(bool joins_older) {
  const std::int32_t minor = histrj_i_.his_version_minor;
  if (histrj_i_.his_version_major >= 3) return other;
  if (minor < 51) return below_251;
  return minor == 60 || (joins_older && minor < 60) ? version_260 : other;
}

constexpr std::int32_t zero = -1;  // a component that the class lacks counts as 0

/// The component, counted from 0, of a key in each class.
struct ComponentKey {
  std::int32_t key;
  std::array<std::int32_t, 3> component;
  bool joins_older = false;
};

constexpr std::array<ComponentKey, 18> component_keys{{
    {400026, {0, 0, 0}},               // bond
    {400027, {1, 1, 1}},               // angle
    {400028, {2, 2, 2}},               // torsion
    {400029, {3, 3, 3}},               // inversion
    {400106, {4, 4, 4}},               // stretch-stretch
    {400107, {5, 5, 5}},               // stretch-bend-stretch
    {400108, {6, 6, 6}},               // bend-bend
    {400109, {zero, 7, 7}},            // torsion-stretch
    {400110, {zero, 8, 8}},            // bend-torsion-bend
    {400111, {7, 9, 9}},               // torsion-bend-bend
    {400112, {zero, 10, 10}},          // separated stretch-stretch
    {400113, {8, 11, 11}},             // inversion-inversion
    {400114, {zero, zero, 12}, true},  // torsion-torsion
    {400030, {9, 12, 13}},             // van der Waals
    {400115, {10, 13, 14}},            // repulsive
    {400116, {11, 14, 15}},            // attractive
    {400031, {12, 15, 16}},            // Coulomb
    {400032, {13, 16, 17}},            // hydrogen bond
}};

/// The same for the components of each molecule.
constexpr std::array<ComponentKey, 14> molecule_component_keys{{
    {400118, {0, 0, 0}},
    {400119, {1, 1, 1}},
    {400120, {2, 2, 2}},
    {400121, {3, 3, 3}},
    {400122, {4, 4, 4}},
    {400123, {5, 5, 5}},
    {400124, {6, 6, 6}},
    {400125, {zero, 7, 7}},
    {400126, {zero, 8, 8}},
    {400127, {7, 9, 9}},
    {400128, {zero, 10, 10}},
    {400129, {8, 11, 11}},
    {400130, {zero, zero, 12}, true},
    {400134, {13, 16, 17}, true},
}};

/// Keys that are a part of the energy record as it stands.
struct PartKey {
  std::int32_t key;
  HistoryEnergy part;
  double unit = 1.0;
};

constexpr std::array<PartKey, 10> part_keys{{
    {400025, HistoryEnergy::potential},
    {400049, HistoryEnergy::total},
    {400050, HistoryEnergy::kinetic},
    {400057, HistoryEnergy::pressure, history_pressure_unit},
    {400063, HistoryEnergy::pressure, history_pressure_unit},
    {400117, HistoryEnergy::potential_of},
    {400131, HistoryEnergy::repulsive_of},
    {400132, HistoryEnergy::attractive_of},
    {400133, HistoryEnergy::coulomb_of},
    {400154, HistoryEnergy::van_der_waals_of},
}};

/// Numbers of a part of the energy record, from `first` on.
void give_energies(const Answer& answer, HistoryEnergy part, std::int64_t first, std::int64_t count,
                   double unit = 1.0) {
  const auto all = static_cast<std::size_t>(count);
  const auto out = answer.out.first(std::min(all, answer.out.size()));
  get_history_energies(part, first, out);
  for (double& value : out) value *= unit;
  answer.count = static_cast<std::int32_t>(count);
  if (out.size() < all) answer.status = too_small;
}

/// One component, of the whole system or of each molecule.
void give_component(const Answer& answer, const ComponentKey& row, HistoryEnergy part, std::int64_t values) {
  const std::int32_t component = row.component[energy_class(row.joins_older)];
  if (component >= histrj_i_.his_components) {
    answer.status = no_such_key;
  } else if (component == zero) {
    std::ranges::fill(answer.out.first(std::min(static_cast<std::size_t>(values), answer.out.size())), 0.0);
    answer.count = static_cast<std::int32_t>(values);
    if (answer.out.size() < static_cast<std::size_t>(values)) answer.status = too_small;
  } else {
    give_energies(answer, part, component * values, values);
  }
}

void give_time(const Answer& answer) {
  const auto& his = histrj_i_;
  answer.give(histrj_d_.his_time_step *
              (his.his_first_step + static_cast<double>(his.his_interval) * (trj_i_.trj_current_frame - 1)));
}

void give_time_step(const Answer& answer) { answer.give(histrj_d_.his_time_step); }

void give_cross_terms(const Answer& answer) {
  constexpr std::array<std::int64_t, 3> last{8, 11, 12};
  constexpr std::int64_t first = 4;
  std::array<double, 9> terms{};
  const auto used = std::span(terms).first(static_cast<std::size_t>(last[energy_class(false)] - first + 1));
  if (first + std::ssize(used) > histrj_i_.his_components) {
    answer.status = no_such_key;
    return;
  }
  get_history_energies(HistoryEnergy::components, first, used);
  answer.give(std::accumulate(used.begin(), used.end(), 0.0));
}

/// The cell as it lies in the model.
CellVectors cell_in_model(std::int32_t& status) {
  const auto& p = histrj_d_.cell;
  CellVectors cell;
  if (status == 0) {
    kva_cry_3dparamtocell_(p[0], p[1], p[2], p[3], p[4], p[5], model_orientation, cell.a, cell.b, cell.c, status);
  }
  return cell;
}

/// The rotation that takes the file's vectors into the model's orientation.
Matrix3 alignment(std::int32_t& status) {
  const auto [a, b, c] = vectors_of_matrix(histrj_d_.vectors);
  Matrix3 matrix{};
  if (status == 0) trjcoordalignmat_(a, b, c, histrj_d_.cell, histrj_i_.his_period_type, matrix, status);
  return matrix;
}

void give_volume(const Answer& answer) {
  if (histrj_i_.his_period_type != periodic_type::three_dimensional) {
    answer.status = not_three_dimensional;
    return;
  }
  const auto cell = cell_in_model(answer.status);
  double volume = 0;
  if (answer.status == 0) kva_cry_3dabctocellvolume_(cell.a, cell.b, cell.c, volume, answer.status);
  if (answer.status == 0) answer.give(volume);
}

void give_area(const Answer& answer) {
  if (histrj_i_.his_period_type != periodic_type::two_dimensional) {
    answer.status = not_two_dimensional;
    return;
  }
  const auto cell = cell_in_model(answer.status);
  double area = 0;
  if (answer.status == 0) kva_cry_3dabctocellvolume_({1, 0, 0}, cell.b, cell.c, area, answer.status);
  if (answer.status == 0) answer.give(area);
}

void give_six_number_cell(const Answer& answer) {
  constexpr std::int32_t second_on_z = 112;
  CellVectors cell;
  if (histrj_i_.his_period_type == periodic_type::two_dimensional) {
    const auto& p = histrj_d_.cell;
    kva_cry_2dparamtocell_(p[1], p[0], p[3], second_on_z, cell.b, cell.a, answer.status);
    cell.c = {0, 0, 1};
  } else {
    cell = cell_in_model(answer.status);
  }
  const auto& [a, b, c] = cell;
  if (answer.status == 0) answer.give(std::array{a[0], b[1], c[2], b[2], a[2], a[1]});
}

void give_cell_matrix(const Answer& answer) {
  const auto cell = cell_in_model(answer.status);
  if (answer.status == 0) answer.give(cell.matrix());
}

void give_cell_parameters(const Answer& answer) { answer.give(histrj_d_.cell); }

/// R S R^T in the order XX, YY, ZZ, YZ, XZ, XY.
void give_stress(const Answer& answer) {
  const Matrix3 turn = alignment(answer.status);
  if (answer.status != 0) return;
  Matrix3 stress{}, back{}, turned{};
  get_history_energies(HistoryEnergy::stress, 0, stress);
  for (std::size_t k = 0; k < 9; ++k) back[k] = turn[3 * (k % 3) + k / 3];
  dmatmat_(turn, stress, turned);
  dmatmat_(turned, back, turned);
  std::array<double, 6> six{turned[0], turned[4], turned[8], turned[5], turned[2], turned[1]};
  for (double& value : six) value *= history_pressure_unit;
  answer.give(six);
}

/// Whose vectors a key yields.
struct VectorKey {
  std::int32_t key;
  HistoryVectors which;
  bool fixed_too;
  bool images_too;
};
constexpr std::array<VectorKey, 8> vector_keys{{
    {200160, HistoryVectors::positions, true, true},
    {200161, HistoryVectors::positions, false, true},
    {200162, HistoryVectors::velocities, true, true},
    {200163, HistoryVectors::velocities, false, true},
    {200169, HistoryVectors::positions, true, false},
    {200170, HistoryVectors::positions, false, false},
    {200171, HistoryVectors::velocities, true, false},
    {200172, HistoryVectors::velocities, false, false},
}};

/// Behind the movable atoms: the file's positions where it stores all atoms, else those of the model, which lies in its
/// own orientation already. Fixed atoms have no velocity.
void add_fixed(const VectorKey& key, Doubles stored) {
  if (key.which == HistoryVectors::velocities) {
    const auto moving = 3 * static_cast<std::size_t>(histrj_i_.his_movable);
    if (moving < stored.size()) std::ranges::fill(stored.subspan(moving), 0.0);
    return;
  }
  const auto from_file = 3 * static_cast<std::size_t>(histrj_i_.his_stored_atoms);
  if (from_file >= stored.size()) return;
  const auto rest = stored.subspan(from_file);
  std::ranges::copy(history_model.fixed_positions.span().first(rest.size()), rest.begin());
}

void give_vectors(const Answer& answer, const VectorKey& key) {
  const auto& his = histrj_i_;
  const std::int32_t parents = key.fixed_too ? his.his_atoms : his.his_movable;
  const std::int32_t atoms = !key.images_too ? parents : key.fixed_too ? his.his_total_atoms : his.his_total_movable;
  const Doubles out = answer.out.first(std::min(3 * static_cast<std::size_t>(atoms), answer.out.size() / 3 * 3));
  const auto stored = out.first(std::min(out.size(), 3 * static_cast<std::size_t>(parents)));
  const bool periodic = his.his_period_type != periodic_type::none;
  Matrix3 turn{};
  if (periodic) turn = alignment(answer.status);
  if (answer.status == 0) get_history_vectors(key.which, periodic ? &turn : nullptr, stored, answer.status);
  if (answer.status != 0) return;
  add_fixed(key, stored);
  if (out.size() > stored.size()) {
    const auto kind =
        key.which == HistoryVectors::positions ? SymmetryImages::Kind::positions : SymmetryImages::Kind::velocities;
    history_model.images.add_images(out, parents, cell_in_model(answer.status), kind, answer.status);
  }
  answer.count = static_cast<std::int32_t>(std::min<std::int64_t>(std::int64_t{3} * atoms, INT32_MAX));
  if (answer.status == 0 && out.size() < 3 * static_cast<std::size_t>(atoms)) answer.status = too_small;
}

/// What a key needs beside an open file.
enum class Needs : std::uint8_t { frame, attach, cell };

/// Keys whose values are worked out.
struct DerivedKey {
  std::int32_t key;
  Needs needs;
  void (*give)(const Answer& answer);
};
constexpr std::array<DerivedKey, 11> derived_keys{{
    {400017, Needs::frame, give_time},
    {400022, Needs::frame, give_time_step},
    {400058, Needs::frame, give_volume},
    {400064, Needs::frame, give_volume},
    {400078, Needs::cell, give_six_number_cell},
    {400084, Needs::cell, give_stress},
    {400085, Needs::cell, give_stress},
    {400105, Needs::cell, give_cell_matrix},
    {400149, Needs::cell, give_cell_parameters},
    {400151, Needs::attach, give_area},
    {400179, Needs::frame, give_cross_terms},
}};

std::int32_t status_of(Needs needs) {
  if (needs != Needs::frame && !histrj_l_.his_attached) return not_attached;
  if (needs == Needs::cell && histrj_i_.his_period_type == periodic_type::none) return not_periodic;
  return 0;
}

template <std::size_t N, class Row>
const Row* row_of(const std::array<Row, N>& rows, std::int32_t key) {
  const auto* row = std::ranges::find(rows, key, &Row::key);
  return row == rows.end() ? nullptr : row;
}

void answer_double(std::int32_t key, const Answer& answer) {
  if (const auto* derived = row_of(derived_keys, key)) {
    answer.status = status_of(derived->needs);
    if (answer.status == 0) derived->give(answer);
  } else if (const auto* vectors = row_of(vector_keys, key)) {
    answer.status = status_of(Needs::attach);
    if (answer.status == 0) give_vectors(answer, *vectors);
  } else if (const auto* part = row_of(part_keys, key)) {
    give_energies(answer, part->part, 0, history_energies(part->part), part->unit);
  } else if (const auto* component = row_of(component_keys, key)) {
    give_component(answer, *component, HistoryEnergy::components, 1);
  } else if (const auto* column = row_of(molecule_component_keys, key)) {
    give_component(answer, *column, HistoryEnergy::components_of, histrj_i_.his_molecules);
  } else {
    answer.status = no_such_key;
  }
}

using Integers = std::span<const std::int32_t>;

Integers first_ids(std::int32_t count) { return history_model.images.ids().first(static_cast<std::size_t>(count)); }

struct IntegerKey {
  std::int32_t key;
  bool needs_attach;
  std::int32_t (*value)();
};
constexpr std::array<IntegerKey, 16> integer_keys{{
    {200000, false, [] { return 6; }},
    {200001, false, [] { return 100 * histrj_i_.his_version_major + histrj_i_.his_version_minor; }},
    {200004, true, [] { return histrj_i_.his_dims; }},
    {200019, false, [] { return trj_i_.trj_current_frame; }},
    {200083, true, [] { return histrj_i_.his_total_atoms; }},
    {200135, true, [] { return histrj_i_.his_operators; }},
    {200140, false, [] { return ensemble_code::unknown; }},
    {200141, false, [] { return -1; }},
    {200142, true, [] { return histrj_i_.his_period_type; }},
    {200153, false, [] { return reader::history; }},
    {200155, true, [] { return histrj_i_.his_total_atoms; }},
    {200156, true, [] { return histrj_i_.his_total_movable; }},
    {200157, true, [] { return histrj_i_.his_total_atoms - histrj_i_.his_total_movable; }},
    {200164, false, [] { return histrj_i_.his_atoms; }},
    {200165, false, [] { return histrj_i_.his_movable; }},
    {200177, false, [] { return histrj_i_.his_molecules; }},
}};

/// Keys of identifiers in the reader's order.
struct IdentifierKey {
  std::int32_t key;
  std::int32_t (*count)();
};
constexpr std::array<IdentifierKey, 3> identifier_keys{{
    {200152, [] { return histrj_i_.his_total_atoms; }},
    {200167, [] { return histrj_i_.his_atoms; }},
    {200168, [] { return histrj_i_.his_movable; }},
}};
constexpr std::int32_t movable_identifiers = 200159;

/// Identifiers of the movable atoms, then of their images.
void give_movable_identifiers(std::span<std::int32_t> out, std::int32_t& count, std::int32_t& status) {
  const auto ids = history_model.images.ids(), parents = history_model.images.parents();
  count = histrj_i_.his_total_movable;
  std::size_t filled = 0;
  for (std::size_t k = 0; k < ids.size() && filled < out.size(); ++k) {
    if (parents[k] <= histrj_i_.his_movable) out[filled++] = ids[k];
  }
  if (filled < static_cast<std::size_t>(count)) status = too_small;
}

bool is_open() { return histrj_i_.his_unit != 0; }

}  // namespace

void gethisdatadble_(std::int32_t, std::int32_t key, std::span<double> values, std::int32_t& count,
                     std::int32_t& status) {
  status = 0;
  if (values.empty()) return;
  count = 1;
  if (trj_i_.trj_current_frame == 0 || !is_open()) {
    status = read_error;
  } else {
    answer_double(key, {values, count, status});
  }
}

void gethisdatareal_(std::int32_t, std::int32_t, std::span<float>, std::int32_t& count, std::int32_t& status) {
  count = 0;
  status = 1;
}

void gethisdataint_(std::int32_t, std::int32_t key, std::span<std::int32_t> values, std::int32_t& count,
                    std::int32_t& status) {
  count = 1;
  status = is_open() ? 0 : read_error;
  if (status != 0) return;
  const auto* single = row_of(integer_keys, key);
  const auto* list = row_of(identifier_keys, key);
  if (single == nullptr && list == nullptr && key != movable_identifiers) {
    status = no_such_key;
  } else if (!histrj_l_.his_attached && (single == nullptr || single->needs_attach)) {
    status = not_attached;
  } else if (single != nullptr) {
    deliver_one(single->value(), values, count, status);
  } else if (list != nullptr) {
    deliver(first_ids(list->count()), values, count, status);
  } else {
    give_movable_identifiers(values, count, status);
  }
}

void gethisdatalogical_(std::int32_t, std::int32_t key, std::span<Logical> values, std::int32_t& count,
                        std::int32_t& status) {
  count = 1;
  status = is_open() ? 0 : read_error;
  if (status != 0) return;
  switch (key) {
    case 100005:
      status = histrj_l_.his_attached ? 0 : not_attached;
      if (status == 0) deliver_one(histrj_l_.his_periodic, values, count, status);
      break;
    case 100008:
      deliver_one(histrj_l_.his_periodic, values, count, status);
      break;
    case 100054:
      deliver_one(Logical(true), values, count, status);
      break;
    default:
      status = no_such_key;
  }
}

void gethisdatachar_(std::int32_t, std::int32_t key, std::span<char> fields, std::int32_t width, std::int32_t& count,
                     std::int32_t& status) {
  constexpr std::int32_t comments = 2;
  constexpr std::size_t characters = 80;
  count = 0;
  status = key != comments ? no_such_key : is_open() ? 0 : read_error;
  if (status != 0) return;
  const auto step = static_cast<std::size_t>(std::max(width, 0));
  if (step < characters) status = text_cut;
  for (std::size_t k = 1; k < histrj_c_.lines.size(); ++k, ++count) {
    const std::size_t at = step * static_cast<std::size_t>(count);
    if (fields.size() < at + step) {
      if (status == 0) status = too_small;
    } else {
      TextField(fields.subspan(at, step)).set(histrj_c_.lines[k].full());
    }
  }
}

}  // namespace pathstat
