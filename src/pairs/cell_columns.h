#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "pairs/pair_vectors.h"

namespace pathstat {

/// Atoms sorted into columns of cells along one axis, so that those of a column within any stretch of that axis stand
/// one behind another. Atoms with coordinates that are not finite have no place here.
class CellColumns {
 public:
  /// A stretch of atoms in cell order.
  struct Run {
    std::size_t first = 0;
    std::size_t last = 0;  ///< one behind
  };
  /// The box of a column, or of all atoms, along one axis.
  struct Extent {
    double low = 0.0;
    double high = 0.0;
  };

  static constexpr std::size_t longest_axis = 3;

  /// Sorts atoms for searches within a reach. Cells are as wide as makes searches cheap, and no more than a few times
  /// as many as the atoms; few atoms make one cell. Linear in the atoms; memory is kept from call to call.
  /// @param coordinates  x, y, z of each atom
  /// @param along        axis of the columns, or longest_axis for that of the box around the atoms
  void sort(std::span<const double> coordinates, double reach, std::size_t along = longest_axis);

  /// The atoms, each with its number in the list that was sorted, from 0.
  PairAtoms atoms() const { return {axes_[0].data(), axes_[1].data(), axes_[2].data(), order_.data()}; }
  /// The axes across the columns, and the one along them.
  std::size_t across(std::size_t k) const { return axis_[k]; }
  std::size_t along() const { return axis_[2]; }
  Extent box(std::size_t axis) const { return box_[axis]; }

  std::size_t columns(std::size_t k) const { return counts_[k]; }
  /// The place of a column among its likes across axis k.
  std::size_t place(std::size_t column, std::size_t k) const {
    return k == 0 ? column / counts_[1] : column % counts_[1];
  }
  std::size_t column(std::size_t first, std::size_t second) const { return first * counts_[1] + second; }
  /// The columns that have a part between two coordinates across axis k.
  Run columns_between(std::size_t k, double low, double high) const { return cells_between(k, low, high); }
  /// The stretch of a column across axis k.
  Extent stretch(std::size_t k, std::size_t place) const {
    const double low = box_[axis_[k]].low;
    return {low + size_[k] * static_cast<double>(place), low + size_[k] * static_cast<double>(place + 1)};
  }
  /// The atoms of a column that may lie between two coordinates along it, and maybe a few more.
  Run atoms_between(std::size_t column, double low, double high) const {
    const Run cells = cells_between(2, low, high);
    return atoms_of(column, static_cast<std::int32_t>(cells.first), static_cast<std::int32_t>(cells.last));
  }
  /// The atoms in the cells of a column from one up to the one before another.
  Run atoms_of(std::size_t column, std::int32_t first_cell, std::int32_t last_cell) const {
    return {starts(column)[first_cell], starts(column)[last_cell]};
  }
  /// Where the atoms of each cell of a column begin, and those behind its last.
  const std::uint32_t* starts(std::size_t column) const { return &starts_[column * counts_[2]]; }
  /// A search of this column for what is near the atoms of `searching` from one on, seen in an image.
  ColumnSearch search_of(std::size_t column, const Vector3& image, double reach, const CellColumns& searching,
                         std::size_t first_atom) const;

 private:
  Run cells_between(std::size_t k, double low, double high) const {
    const double origin = box_[axis_[k]].low;
    const double most = static_cast<double>(counts_[k]);
    const double first = (low - origin) * per_length_[k], last = (high - origin) * per_length_[k] + 1.0;
    const auto begin = static_cast<std::size_t>(first > 0.0 ? (first < most ? first : most) : 0.0);
    const auto end = static_cast<std::size_t>(last > 0.0 ? (last < most ? last : most) : 0.0);
    return {begin, end < begin ? begin : end};
  }
  void find_box(std::span<const double> coordinates);
  void choose_cells(double reach, std::size_t along);
  void fill(std::span<const double> coordinates);

  std::array<Extent, 3> box_{};
  std::array<std::size_t, 3> axis_{0, 1, 2};
  std::array<std::size_t, 3> counts_{1, 1, 1};  // in the order of axis_
  std::array<double, 3> size_{};
  std::array<double, 3> per_length_{};
  std::size_t finite_ = 0;

  std::array<std::vector<double>, 3> axes_;
  std::vector<std::int32_t> order_;
  std::vector<std::uint32_t> starts_;
  std::vector<std::uint32_t> cells_;
};

}  // namespace pathstat
