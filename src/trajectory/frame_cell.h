#pragma once

#include <cstdint>
#include <span>

#include "support/vectors.h"

// The cells of frames and models.

namespace pathstat {

/// The vectors of a cell, Å.
struct CellVectors {
  Vector3 a{};
  Vector3 b{};
  Vector3 c{};

  /// The vectors one after the other: the columns of a matrix.
  Matrix3 matrix() const { return {a[0], a[1], a[2], b[0], b[1], b[2], c[0], c[1], c[2]}; }
};

/// The vectors that are the columns of a matrix.
CellVectors vectors_of_matrix(MatrixIn<double> matrix);

/// The vectors of the six-number cell of a trajectory: a = (c0, c5, c4), b = (0, c1, c3), c = (0, 0, c2).
CellVectors vectors_of_cell(std::span<const double, 6> cell);

/// The cell of a model; that of a two-dimensional one gets the unit vector across it for a.
/// @param error  the Core's; 0 and zeros for other periodic types
CellVectors cell_of_model(std::int32_t model, std::int32_t periodic_type, std::int32_t& error);

/// The cell of the loaded frame. Where frames do not carry it, as at constant volume, that of the attached model holds.
/// @param status  0, or that of the reader
CellVectors cell_of_frame(std::int32_t handle, std::int32_t& status);

/// Sets the cell of a model: three vectors of a three-dimensional one, b and c of a two-dimensional one.
/// @param error  the Core's; 0 for other periodic types, which have no cell to set
void set_model_cell(std::int32_t model, std::int32_t periodic_type, const CellVectors& cell, std::int32_t& error);

}  // namespace pathstat
