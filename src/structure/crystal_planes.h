#pragma once

#include <array>
#include <cstdint>

#include "support/vectors.h"

/// Reciprocal vectors and lattice planes, without a factor of 2 pi.
/// Source: International Tables for Crystallography, volume B, chapter 1.1.
namespace pathstat {

/// Miller indices of a plane, or a zone axis.
using Indices = std::array<std::int32_t, 3>;

/// Reciprocal to A, B, C, in 1/Å. @param status  cell_volume_vanishes, also for a left-handed cell
void kva_cry_3dreciprocalvectors_(const Vector3& a, const Vector3& b, const Vector3& c, Vector3& a_star,
                                  Vector3& b_star, Vector3& c_star, std::int32_t& status);
/// Reciprocal to U, V, in their plane. @param status  cell_volume_vanishes
void kva_cry_2dreciprocalvectors_(const Vector3& u, const Vector3& v, Vector3& u_star, Vector3& v_star,
                                  std::int32_t& status);

/// The distance between planes (hkl), in Å.
/// @param status  cell_volume_vanishes, also for a left-handed cell; 1 for (000)
void kva_cry_millerspacing_(const Vector3& a, const Vector3& b, const Vector3& c, std::int32_t h, std::int32_t k,
                            std::int32_t l, double& spacing, std::int32_t& status);
/// The unit normal of the plane (hkl) through a fractional point, and the plane's distance from the origin along it.
/// @param status  cell_volume_vanishes, for a volume of exactly 0; 1 for (000)
void kva_cry_millernormal_(const Vector3& a, const Vector3& b, const Vector3& c, std::int32_t h, std::int32_t k,
                           std::int32_t l, const Vector3& point, Vector3& normal, double& distance,
                           std::int32_t& status);

/// The two planes of the zone with the shortest reciprocal vectors that are not parallel, so ordered that their cross
/// product points along the zone.
/// @param status  1 for a zone of zeros; cell_volume_vanishes for a cell that is flat or far too long for the zone
void kva_cry_zoneplanes_(const Indices& zone, const Vector3& a, const Vector3& b, const Vector3& c, Indices& plane1,
                         Indices& plane2, std::int32_t& status);

}  // namespace pathstat
