#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "support/vectors.h"

/// Vector operations in the form in which crystal formulas are written.
namespace pathstat::crystal {

inline Vector3 cross(const Vector3& a, const Vector3& b) {
  Vector3 product;
  dvecprod_(a, b, product);
  return product;
}
inline double dot(const Vector3& a, const Vector3& b) { return dvecdot_(a, b); }
inline double length(const Vector3& v) { return dveclen_(v); }
inline Vector3 scaled(const Vector3& v, double factor) { return {v[0] * factor, v[1] * factor, v[2] * factor}; }
inline Vector3 sum(const Vector3& a, const Vector3& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
/// v / |v|; a zero vector stays zero.
inline Vector3 unit(const Vector3& v) {
  Vector3 result;
  dvecnorm_(v, result);
  return result;
}
inline Vector3 product(const Matrix3& m, const Vector3& v) {
  Vector3 result;
  dmatmul_(m, v, result);
  return result;
}
inline Matrix3 columns(const Vector3& a, const Vector3& b, const Vector3& c) {
  return {a[0], a[1], a[2], b[0], b[1], b[2], c[0], c[1], c[2]};
}

/// The angle of a cosine that rounding may have driven beyond -1 or 1.
inline double angle_of(double cosine) { return std::acos(std::clamp(cosine, -1.0, 1.0)); }

/// True for a size that counts as nothing, or is no number.
inline bool vanishes(double size) { return !(size >= 1e-99); }

}  // namespace pathstat::crystal
