#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "desk/model/molecular_model.h"

namespace pathstat::desk {

/// A frame on its way into a file: a model of the atoms that are exported, as they stand in it.
struct ExportedFrame {
  const MolecularModel& model;
  std::optional<double> time;  ///< ps
  int number = 1;              ///< in the new file, from 1
  bool of_several = false;
  bool as_unit = false;  ///< a format that can state symmetry gets it with the atoms that are no images
};

/// The atoms at places of a model as a model of their own: with the bonds between them and the measures that have all
/// their atoms.
/// @param atoms  in rising order
MolecularModel part_of(const MolecularModel& model, std::span<const std::uint32_t> atoms);

/// Gives a part the cell, positions and velocities that its atoms have in the whole model.
void refresh_part(const MolecularModel& model, std::span<const std::uint32_t> atoms, MolecularModel& part);

/// A model that repeats in three directions, turned so that a lies on x and b in the xy plane, as the columns of most
/// formats take a cell for granted. A left-handed cell is taken with its vectors reversed, which repeats the same.
struct StandardOrientation {
  bool has_cell = false;  ///< for other models all stays as it is
  Cell cell{};
  Matrix3 turn{1, 0, 0, 0, 1, 0, 0, 0, 1};

  explicit StandardOrientation(const MolecularModel& model);
  /// @param usable_cell  of three directions
  explicit StandardOrientation(const Cell& usable_cell);
  Vector3 turned(const Vector3& vector) const;
};

/// Lengths (Å) and angles (degrees) of a cell: a, b, c, alpha, beta, gamma.
std::array<double, 6> cell_parameters(const Cell& cell);

}  // namespace pathstat::desk
