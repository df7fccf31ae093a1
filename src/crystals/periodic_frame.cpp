#include "crystals/periodic_frame.h"

#include <algorithm>

#include "structure/crystal_cell.h"
#include "structure/crystal_vectors.h"

namespace pathstat {

using namespace crystal;

PeriodicFrame crystal_frame(const Vector3& a, const Vector3& b, const Vector3& c, double tolerance,
                            std::int32_t& status) {
  PeriodicFrame frame;
  frame.axes = 3;
  kva_cry_3dfractocartmatrix_(a, b, c, frame.to_cartesian, status);
  if (status == 0) kva_cry_3dcarttofracmatrix_(a, b, c, frame.to_fractional, status);
  frame.length = tolerance;
  frame.tolerance = tolerance / std::min({length(a), length(b), length(c)});
  return frame;
}

PeriodicFrame slab_frame(const Vector3& u, const Vector3& v, double tolerance, std::int32_t& status) {
  PeriodicFrame frame;
  frame.axes = 2;
  const double shorter = std::min(length(u), length(v));
  kva_cry_2dfractocartmatrix_(u, v, frame.to_cartesian, status);
  for (std::size_t k = 6; k < 9; ++k) frame.to_cartesian[k] *= shorter;
  if (status == 0) dmatinv_(frame.to_cartesian, frame.to_fractional, status);
  frame.length = tolerance;
  frame.tolerance = tolerance / shorter;
  return frame;
}

Folded folded(const PeriodicFrame& frame, const Vector3& fraction, bool face_flags) {
  const double t = frame.tolerance;
  Folded result{fraction, {}, {}};
  for (std::size_t axis = 0; axis < frame.axes; ++axis) {
    double& f = result.fraction[axis];
    f -= std::trunc(f);
    if (f < -t) f += 1;
    if (f > 1 - t) f -= 1;
    result.offset[axis] = static_cast<std::int32_t>(std::lround(f - fraction[axis]));
    result.faces[axis] = face_flags && f < t ? 1 : 0;
  }
  return result;
}

bool can_be_folded(const Vector3& fraction) {
  constexpr double most_cells = 1e9;
  return std::ranges::all_of(fraction, [](double f) { return std::abs(f) < most_cells; });
}

}  // namespace pathstat
