#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "crystals/crystal_settings.h"
#include "structure/cell_bonds.h"
#include "support/vectors.h"

namespace pathstat {

/// The cell of a crystal or slab as a frame of coordinates: fractions along its periodic directions. The third
/// coordinate of a slab is its height in units of the shorter cell vector, so that a tolerance means one length along
/// all three.
struct PeriodicFrame {
  std::size_t axes = 3;  ///< periodic directions: 3 or 2, the first ones
  Matrix3 to_cartesian{}, to_fractional{};
  double tolerance = 0;  ///< fractional: the length below over the shortest cell vector
  double length = 0;     ///< Å

  Vector3 fractional(const Vector3& x) const {
    Vector3 f;
    dmatmul_(to_fractional, x, f);
    return f;
  }
  Vector3 cartesian(const Vector3& f) const {
    Vector3 x;
    dmatmul_(to_cartesian, f, x);
    return x;
  }
  /// The Cartesian move of a shift.
  Vector3 cartesian(const CellShift& shift) const {
    return cartesian(Vector3{double(shift[0]), double(shift[1]), double(shift[2])});
  }
  /// A position moved by a shift.
  Vector3 moved(const Vector3& x, const CellShift& shift) const {
    Vector3 result;
    dvecadd_(x, cartesian(shift), result);
    return result;
  }
  /// The shift nearest to a difference of fractions.
  CellShift nearest_shift(const Vector3& difference) const {
    CellShift shift{};
    for (std::size_t axis = 0; axis < axes; ++axis)
      shift[axis] = static_cast<std::int32_t>(std::lround(difference[axis]));
    return shift;
  }
  /// True if two points fall together in some cell.
  bool coincide(const Vector3& f, const Vector3& g) const {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const double d = std::abs(f[axis] - g[axis]);
      if (!((axis < axes ? std::min(d, std::abs(1 - d)) : d) < tolerance)) return false;
    }
    return true;
  }
};

/// The frame of a crystal. @param tolerance  Å  @param status  that of the crystal routines for a flat cell
PeriodicFrame crystal_frame(const Vector3& a, const Vector3& b, const Vector3& c, double tolerance,
                            std::int32_t& status);
/// The frame of a slab. @param tolerance  Å  @param status  that of the crystal routines for a flat cell
PeriodicFrame slab_frame(const Vector3& u, const Vector3& v, double tolerance, std::int32_t& status);

/// What folding a point into the cell did.
struct Folded {
  Vector3 fraction{};  ///< −t ... 1 − t along the periodic directions, with t the tolerance
  CellShift offset{};  ///< the cells that the point was moved by
  CellShift faces{};   ///< 1 for the directions whose lower face the point lies on, when face flags are asked for
};
Folded folded(const PeriodicFrame& frame, const Vector3& fraction, bool face_flags);

/// True if folding can deal with a fraction: finite, and less than billions of cells away.
bool can_be_folded(const Vector3& fraction);

/// The positions at which a point on faces of the cell is seen: along a direction in which it lies on a face it stands
/// at f and at f ± 1.
///
/// @param visit  bool(const Vector3&); false ends the round
template <class Visit>
void visit_face_positions(const PeriodicFrame& frame, const Vector3& f, Visit visit) {
  std::array<Vector3, 8> positions{f};
  std::size_t count = 1;
  for (std::size_t axis = 0; axis < frame.axes; ++axis) {
    if (std::min(std::abs(f[axis]), std::abs(1 - f[axis])) >= frame.tolerance) continue;
    const double other = f[axis] < 0.5 ? f[axis] + 1 : f[axis] - 1;
    for (std::size_t k = 0; k < count; ++k) {
      positions[count + k] = positions[k];
      positions[count + k][axis] = other;
    }
    count *= 2;
  }
  for (std::size_t k = 0; k < count; ++k) {
    if (!visit(positions[k])) return;
  }
}

}  // namespace pathstat
