#pragma once

#include <cstdint>
#include <span>

#include "support/vectors.h"

namespace pathstat {

/// Replaces each vector of xyz (three numbers per vector) by m times it.
void kva_cry_transformcoordinates_(std::span<double> xyz, const Matrix3& m, std::int32_t& status);

/// Turns fractional symmetry operators into Cartesian ones, in place: R' = M R M^-1, t' = M t with the cell matrix M.
/// @param rotations, translations  nine and three numbers per operator, matrices by columns
/// @param status                   1 for a flat cell
void kva_cry_fracoperatortocart_(const Vector3& a, const Vector3& b, const Vector3& c, std::span<double> rotations,
                                 std::span<double> translations, std::int32_t& status);

/// Moves points into the cell along its periodic directions, to fractions in 0 ... 1.
/// @param periodic_type  0, 100, or 101 for the first two vectors of the cell
/// @param cell           A, B, C one after the other
/// @param xyz            n points, Cartesian; changed
/// @param offsets        n triples: the whole cells that each point was moved by
/// @param status         1 for type 102, 2 for an unknown type, matrix_singular or cell_area_vanishes
void kva_cry_toincell_(std::int32_t periodic_type, const Matrix3& cell, std::span<double> xyz,
                       std::span<std::int32_t> offsets, std::int32_t& status);

/// The density of a model in g/cm3, by the masses and occupancies of its atoms and the signed volume of its cell.
/// @param status  1 for a model that isn't periodic in three directions; the Core's or the allocator's failure
void kva_cry_density_(std::int32_t model, double& density, std::int32_t& status);

}  // namespace pathstat
