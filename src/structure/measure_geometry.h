#pragma once

#include <cstdint>
#include <string_view>

#include "support/vectors.h"

/// What can be measured between points. Lengths are in the unit of the points, angles in radians. A vector of length 0
/// stays as it is where a direction is wanted, and a cosine that rounding has taken out of -1 ... 1 is put back.
namespace pathstat {

constexpr double degrees_per_radian = 57.29577951308232;

/// The angle at p2, 0 to pi.
double angle_of(const Vector3& p1, const Vector3& p2, const Vector3& p3);

/// The torsion about the bond from p2 to p3, -pi to pi: 0 for cis, pi for trans. Looked at from p2, it is positive if
/// the far bond stands clockwise of the near one.
/// Source: IUPAC-IUB, Biochemistry 9, 3471 (1970).
double torsion_of(const Vector3& p1, const Vector3& p2, const Vector3& p3, const Vector3& p4);

/// The angle between the normals (q3 - q2) x (q1 - q2) of two planes, 0 to pi.
double plane_angle_of(const Vector3& p1, const Vector3& p2, const Vector3& p3, const Vector3& q1, const Vector3& q2,
                      const Vector3& q3);

/// How an inversion is measured.
enum InversionConvention : std::int32_t {
  inversion_ijkl = 1,      ///< about the third atom: minus the angle from the plane of b and a to that of b and d
  inversion_jilk = 2,      ///< about the first atom: the angle from the plane of d and b to that of d and c
  inversion_umbrella = 4,  ///< about the first atom: how far d stands out of the plane of b and c
};

/// Why an inversion has no value.
enum class InversionFault { none, bond_vectors, plane };

struct Inversion {
  double angle = 0;  ///< 0 with a fault, and for a convention that there is not
  InversionFault fault = InversionFault::none;
};

/// The inversion of four points. Vectors whose squared length is not above 1e-6 make it undefined.
Inversion inversion_of(const Vector3& a, const Vector3& b, const Vector3& c, const Vector3& d, std::int32_t convention);

/// A sentence on a fault, as it is shown to the user; empty for none.
std::string_view inversion_fault_text(InversionFault fault);

}  // namespace pathstat
