#pragma once

#include <cstdint>

#include "support/vectors.h"

/// How the cell of a volume stands in space.
namespace pathstat {

/// Makes the matrix from fractions of the cell in volorthog_ to space, in the orientation of its `frame`, and its
/// inverse.
/// @param status  0; 1 for an unknown frame, a flat cell and a failed eigenvalue search
void kva_vol_corfrm_(std::int32_t& status);

/// The symmetric square root of a cell's metric tensor.
/// @param lengths, angles  Å and degrees; an angle within 1e-10 of 90 is right
/// @param status           0; 1 if the eigenvalue search failed, which is then told, or the cell is flat
void kva_vol_xtlaxs_(const Vector3& lengths, const Vector3& angles, Matrix3& root, std::int32_t& status);

/// Eigenvalues of a symmetric matrix and, as columns, its unit eigenvectors: one Householder reflection makes it
/// tridiagonal, implicit QL steps make it diagonal.
/// @param failed  0, or the number of the first eigenvalue that was not found
/// Source: Wilkinson & Reinsch, Handbook for Automatic Computation II (1971), II/2 and II/4.
void kva_vol_house_(const Matrix3& matrix, Vector3& values, Matrix3& vectors, std::int32_t& failed);

}  // namespace pathstat
