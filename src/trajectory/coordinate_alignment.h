#pragma once

#include <array>
#include <cstdint>

#include "support/vectors.h"

namespace pathstat {

/// The rotation that takes a trajectory's coordinates and stress into the frame of the model.
///
/// @param a, b, c       cell vectors, Å; those of a model with periodic type 100 are turned into orientation 1
/// @param parameters    a, b, c (Å), alpha, beta, gamma (radians); a, b and alpha count for periodic type 101
/// @param matrix        by columns; the identity for other periodic types
/// @param status        that of the crystal routines for a cell that is flat; the matrix is then left alone
void trjcoordalignmat_(const Vector3& a, const Vector3& b, const Vector3& c, const std::array<double, 6>& parameters,
                       std::int32_t type, Matrix3& matrix, std::int32_t& status);

}  // namespace pathstat
