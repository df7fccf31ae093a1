#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "trajectory/binary_bytes.h"

// A writer of history trajectories for tests and for the example: any version, record by record, and nothing of it
// shared with the library's reader.

namespace pathstat::testing_bytes {

/// What the head of a history file tells.
struct HistoryPlan {
  double version = 2.9;
  std::int32_t atoms = 2;
  std::vector<std::int32_t> movable{1, 2};  ///< written above version 2.59, else only their number
  std::int32_t molecules = 1;
  std::int32_t components = 18;
  std::vector<std::pair<std::int32_t, std::int32_t>> bonds{};
  double time_step_fs = 2;
  std::int32_t interval = 5;
  std::int32_t first_step = 10;
  std::string title = "a title", first_line = "one line", second_line = "another line";

  bool has_movable_list() const { return version > 2.595; }
  std::size_t stored_atoms() const { return has_movable_list() ? movable.size() : static_cast<std::size_t>(atoms); }
  /// Numbers of the energy record.
  std::size_t energies() const {
    const auto c = static_cast<std::size_t>(components), m = static_cast<std::size_t>(molecules);
    return 3 + c + m + m * c + 4 * m + 2 + 54;
  }
};

/// A frame: the energy record's numbers in their order, and vectors of as many atoms as its records hold.
struct HistoryFrame {
  std::vector<double> energies;
  std::array<double, 6> cell{};
  std::array<double, 9> vectors{};
  std::vector<double> positions, velocities;
};

inline Bytes eighty(const std::string& text) {
  Bytes payload;
  payload.text(padded(text, 80));
  return payload;
}

template <class... Values>
Bytes integers(Values... values) {
  Bytes payload;
  (payload.i32(static_cast<std::int32_t>(values)), ...);
  return payload;
}

inline void repeat(Bytes& payload, std::int32_t count, std::int32_t value) {
  for (std::int32_t k = 0; k < count; ++k) payload.i32(value);
}

/// H1 to H12.
inline Bytes history_head(const HistoryPlan& plan) {
  Bytes file;
  file.record(integers(0));
  Bytes title = eighty(plan.title);
  title.f64(plan.version);
  file.record(title);
  file.record(eighty(plan.first_line));
  file.record(eighty(plan.second_line));

  Bytes types = integers(2);
  types.text("c3  hc  ");
  types.f64(12.011);
  types.f64(1.00794);
  file.record(types);
  Bytes residue_types = integers(1);
  residue_types.text("RES ");
  file.record(residue_types);

  Bytes atoms = integers(plan.atoms);
  repeat(atoms, plan.atoms, 1);
  for (std::int32_t k = 0; k < plan.atoms; ++k) {
    atoms.text(padded("A" + std::to_string(k % 100 + 1), plan.version < 2.895 ? 4 : 5));
  }
  file.record(atoms);

  Bytes movable = integers(99, plan.movable.size());
  if (plan.has_movable_list()) {
    for (const auto place : plan.movable) movable.i32(place);
  }
  file.record(movable);

  Bytes molecules = integers(plan.molecules);
  repeat(molecules, plan.molecules, plan.atoms / plan.molecules);
  repeat(molecules, plan.molecules, 1);
  file.record(molecules);
  file.record(integers(1, 1, plan.atoms, 1));

  Bytes pairs;
  for (const auto& [first, second] : plan.bonds) pairs.add(integers(first, second));
  Bytes bonds = integers(plan.bonds.size());
  if (plan.version < 2.795) bonds.add(pairs);
  file.record(bonds);
  if (plan.version > 2.795 && !plan.bonds.empty()) file.record(pairs);
  return file;
}

template <class Numbers>
Bytes doubles(const Numbers& numbers) {
  Bytes payload;
  for (const double number : numbers) payload.f64(number);
  return payload;
}

inline void add_vectors(Bytes& file, const HistoryFrame& frame) {
  for (const auto* vectors : {&frame.positions, &frame.velocities}) {
    Bytes payload;
    for (const double number : *vectors) payload.f32(number);
    file.record(payload);
  }
}

/// F1 to F5.
inline Bytes history_first_frame(const HistoryPlan& plan, const HistoryFrame& frame) {
  Bytes file;
  Bytes cell = doubles(frame.cell);
  cell.add(doubles(frame.vectors));
  cell.zeros(544 - 120);
  file.record(cell);
  Bytes run = integers(plan.components);
  run.f64(plan.time_step_fs);
  run.add(integers(plan.interval, plan.first_step));
  file.record(run);
  file.record(doubles(frame.energies));
  add_vectors(file, frame);
  return file;
}

/// G1 to G5.
inline Bytes history_later_frame(const HistoryFrame& frame) {
  Bytes file;
  file.record(integers(1));
  file.record(doubles(frame.energies));
  Bytes cell = doubles(frame.cell);
  cell.add(doubles(frame.vectors));
  file.record(cell);
  add_vectors(file, frame);
  return file;
}

/// Where the parts of the energy record stand, counted in numbers.
struct EnergyPlaces {
  explicit EnergyPlaces(const HistoryPlan& plan) {
    const auto c = static_cast<std::size_t>(plan.components), m = static_cast<std::size_t>(plan.molecules);
    potential_of = components + c;
    components_of = potential_of + m;
    attractive_of = components_of + m * c;
    repulsive_of = attractive_of + m;
    van_der_waals_of = repulsive_of + m;
    coulomb_of = van_der_waals_of + m;
    pressure = coulomb_of + m;
    stress = pressure + 2;
  }
  std::size_t total = 0, potential = 1, kinetic = 2, components = 3;
  std::size_t potential_of, components_of, attractive_of, repulsive_of, van_der_waals_of, coulomb_of, pressure, stress;
};

/// A number that no other place of any frame has, and exact in 64 bits.
inline double energy_number(int frame, std::size_t place) { return 1000.0 * frame + static_cast<double>(place) / 4; }
/// The same for vectors, exact in 32 bits. @param kind  1 for positions, 2 for velocities
inline double vector_number(int frame, int kind, std::size_t atom, std::size_t axis) {
  return 64.0 * kind + 8.0 * frame + static_cast<double>(atom) + static_cast<double>(axis) / 4;
}

/// A frame of such numbers in a cell of right angles. Its atoms are those named, by their places from 1.
inline HistoryFrame numbered_frame(const HistoryPlan& plan, int number) {
  HistoryFrame frame;
  for (std::size_t k = 0; k < plan.energies(); ++k) frame.energies.push_back(energy_number(number, k));
  const double edge = 16.0 + number, right = std::acos(0.0);
  frame.cell = {edge, edge + 1, edge + 2, right, right, right};
  frame.vectors = {edge, 0, 0, 0, edge + 1, 0, 0, 0, edge + 2};
  const auto atoms = number == 1 ? static_cast<std::size_t>(plan.atoms) : plan.stored_atoms();
  for (std::size_t k = 0; k < atoms; ++k) {
    const bool listed = number > 1 && plan.has_movable_list();
    const std::size_t atom = listed ? static_cast<std::size_t>(plan.movable[k]) : k + 1;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      frame.positions.push_back(vector_number(number, 1, atom, axis));
      frame.velocities.push_back(vector_number(number, 2, atom, axis));
    }
  }
  return frame;
}

inline Bytes history_file(const HistoryPlan& plan, int frames) {
  Bytes file = history_head(plan);
  file.add(history_first_frame(plan, numbered_frame(plan, 1)));
  for (int k = 2; k <= frames; ++k) file.add(history_later_frame(numbered_frame(plan, k)));
  return file;
}

}  // namespace pathstat::testing_bytes
