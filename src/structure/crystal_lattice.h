#pragma once

#include <cstdint>

#include "support/vectors.h"

namespace pathstat {

/// Forces the constraints of a lattice type on a cell that has just been edited. A parameter that the constraint ties
/// to others takes the value of the first of them that was edited. The cell keeps its place in space.
///
/// @param a, b, c     the edited cell vectors; changed where the constraints ask for it
/// @param a0, b0, c0  the cell vectors before the edit
/// @param lattice     1 to 16; no other type has constraints
/// @param result      0 nothing was changed, 1 lengths, 2 angles, 3 both
/// @param status      that of the crystal routines for a flat or impossible cell; the vectors are then left alone
void kva_cry_checklattice_(Vector3& a, Vector3& b, Vector3& c, const Vector3& a0, const Vector3& b0, const Vector3& c0,
                           std::int32_t lattice, std::int32_t& result, std::int32_t& status);

}  // namespace pathstat
