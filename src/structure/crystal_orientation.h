#pragma once

#include <cstdint>

#include "support/vectors.h"

/// How a cell lies in space. An orientation is a code: 1 to 18 place one cell vector on an axis and a second one in a
/// plane with it, for slabs 101 to 112 place one vector on an axis and the other beside it. 19 puts x
/// midway between A and B, and both in the xy plane.
namespace pathstat {

/// The cell vectors of cell parameters (Å, radians) in an orientation.
/// @param status  cell_angles_impossible, cell_length_vanishes, orientation_unknown, tested in this order
void kva_cry_3dparamtocell_(double a, double b, double c, double alpha, double beta, double gamma,
                            std::int32_t orientation, Vector3& a_vector, Vector3& b_vector, Vector3& c_vector,
                            std::int32_t& status);
/// @param status  cell_length_vanishes, for u alone; orientation_unknown
void kva_cry_2dparamtocell_(double u, double v, double gamma, std::int32_t orientation, Vector3& u_vector,
                            Vector3& v_vector, std::int32_t& status);

/// The matrix that takes the cell from where it lies into an orientation.
/// @param status  orientation_unknown, matrix_singular for a flat cell
void kva_cry_3dalignmentmatrix_(const Vector3& a, const Vector3& b, const Vector3& c, std::int32_t orientation,
                                Matrix3& m, std::int32_t& status);
/// The same for a slab. Codes 103 to 106 and 110 mirror as well, and 103, 104, 107, 108 and 110 put the second vector
/// on the other side of the first than kva_cry_2dparamtocell_ does.
void kva_cry_2dalignmentmatrix_(const Vector3& u, const Vector3& v, std::int32_t orientation, Matrix3& m,
                                std::int32_t& status);

}  // namespace pathstat
