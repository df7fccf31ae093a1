#pragma once

#include <array>
#include <cstdint>

#include "support/vectors.h"

namespace pathstat::desk {

/// How a model repeats in space.
enum PeriodicType : std::int32_t { not_periodic = 0, periodic_3d = 100, periodic_2d = 101, periodic_1d = 102 };

/// The number of repeat directions of a periodic type: 0 to 3.
constexpr int periodic_directions(std::int32_t type) {
  return type == periodic_3d ? 3 : type == periodic_2d ? 2 : type == periodic_1d ? 1 : 0;
}

/// The vectors a, b, c in Å. A two-dimensional model repeats along b and c, a one-dimensional one along c.
using Cell = std::array<Vector3, 3>;

/// A move by whole cell vectors: multiples of a, b and c.
using Translation = std::array<std::int32_t, 3>;

/// A translation as the operations tell it: the multiples of the vectors that a model repeats along stand first.
constexpr Translation by_repeat_directions(const Translation& t, std::int32_t type) {
  if (type == periodic_2d) return {t[1], t[2], 0};
  if (type == periodic_1d) return {t[2], 0, 0};
  return t;
}

/// The same the other way round.
constexpr Translation from_repeat_directions(const Translation& t, std::int32_t type) {
  if (type == periodic_2d) return {0, t[0], t[1]};
  if (type == periodic_1d) return {0, 0, t[0]};
  return t;
}

/// True if the cell's repeat vectors span a volume, an area or a length, and are finite.
bool is_usable_cell(std::int32_t type, const Cell& cell);

/// a point moved by a translation
Vector3 translated(const Vector3& point, const Cell& cell, const Translation& translation);

/// Fractional coordinates and nearest images of a cell.
class Lattice {
 public:
  /// @param type  a periodic type whose cell is usable
  Lattice(std::int32_t type, const Cell& cell);

  /// Fractional coordinates; along directions that do not repeat they are lengths in Å.
  Vector3 fractional(const Vector3& point) const;
  Vector3 cartesian(const Vector3& fractional) const;
  bool repeats(std::size_t axis) const { return static_cast<int>(axis) >= first_; }
  /// The distance between the faces of the cell across a direction, Å; 1 where it does not repeat.
  double width(std::size_t axis) const;

  /// The translation that brings a difference of two points nearest to zero. A difference that is not finite, or of
  /// billions of cells, stays where it is.
  Translation nearest_image(const Vector3& difference) const;
  /// The difference that it brings.
  Vector3 shortest(const Vector3& difference) const { return translated(difference, cell_, nearest_image(difference)); }

 private:
  int first_;  ///< the first direction that repeats: 0, 1 or 2; 3 for none
  Cell cell_;
  Matrix3 basis_;  ///< repeat vectors as columns, with unit normals in the place of the others
  Matrix3 inverse_;
  double safe_length_squared_;  ///< (half the smallest width of the cell)²: no image of a shorter difference is nearer
};

}  // namespace pathstat::desk
