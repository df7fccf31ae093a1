#pragma once

#include <cstdint>
#include <span>

#include "support/vectors.h"

/// Cells in their forms. A, B, C are the cell vectors of a crystal and U, V those of a slab, in Å; alpha (B, C), beta
/// (A, C) and gamma (A, B, or U, V) the angles between them in radians. The cell matrix has the cell vectors as columns
/// and takes fractional to Cartesian coordinates. A metric tensor holds the scalar products of the cell vectors.
///
/// Each routine sets the status to 0 or a code below, and leaves its outputs as they were if it fails.
/// Source of the formulas: International Tables for Crystallography, volume B, chapter 1.1.
namespace pathstat {

constexpr std::int32_t cell_angles_impossible = 50301;
constexpr std::int32_t cell_length_vanishes = 50302;
constexpr std::int32_t matrix_singular = 50303;
constexpr std::int32_t cell_volume_vanishes = 50304;
constexpr std::int32_t cell_area_vanishes = 50305;
constexpr std::int32_t orientation_unknown = 50306;

/// The matrix of the columns A, B, C.
void kva_cry_3dfractocartmatrix_(const Vector3& a, const Vector3& b, const Vector3& c, Matrix3& m,
                                 std::int32_t& status);
/// Its inverse. @param status  matrix_singular
void kva_cry_3dcarttofracmatrix_(const Vector3& a, const Vector3& b, const Vector3& c, Matrix3& m,
                                 std::int32_t& status);
/// The matrix of the columns U, V and the unit vector along V x U. @param status  cell_area_vanishes
void kva_cry_2dfractocartmatrix_(const Vector3& u, const Vector3& v, Matrix3& m, std::int32_t& status);
/// Its inverse. @param status  cell_area_vanishes, matrix_singular
void kva_cry_2dcarttofracmatrix_(const Vector3& u, const Vector3& v, Matrix3& m, std::int32_t& status);

/// Lengths and angles of the cell vectors. @param status  cell_length_vanishes
void kva_cry_3dcelltoparam_(const Vector3& a_vector, const Vector3& b_vector, const Vector3& c_vector, double& a,
                            double& b, double& c, double& alpha, double& beta, double& gamma, std::int32_t& status);
/// @param status  cell_length_vanishes, for U alone
void kva_cry_2dcelltoparam_(const Vector3& u_vector, const Vector3& v_vector, double& u, double& v, double& gamma,
                            std::int32_t& status);
/// @param status  cell_length_vanishes
void kva_cry_3dmetrictoparam_(const Matrix3& metric, double& a, double& b, double& c, double& alpha, double& beta,
                              double& gamma, std::int32_t& status);
/// @param status  cell_length_vanishes
void kva_cry_2dmetrictoparam_(const Matrix3& metric, double& u, double& v, double& gamma, std::int32_t& status);
void kva_cry_3dparamtometric_(double a, double b, double c, double alpha, double beta, double gamma, Matrix3& metric,
                              std::int32_t& status);
/// The third row and column are those of the identity.
void kva_cry_2dparamtometric_(double u, double v, double gamma, Matrix3& metric, std::int32_t& status);

void kva_cry_3dparamtocellvolume_(double a, double b, double c, double alpha, double beta, double gamma, double& volume,
                                  std::int32_t& status);
/// A . (B x C), negative for a left-handed cell.
void kva_cry_3dabctocellvolume_(const Vector3& a, const Vector3& b, const Vector3& c, double& volume,
                                std::int32_t& status);
void kva_cry_2dparamtocellarea_(double u, double v, double gamma, double& area, std::int32_t& status);
void kva_cry_2duvtocellarea_(const Vector3& u, const Vector3& v, double& area, std::int32_t& status);

/// The columns of the transformation from the conventional to the primitive cell.
/// @param centring  0 primitive, 1 body, 2 face, 3 A, 4 B, 5 C, 6 rhombohedral
/// @param status    1 for any other centring
void kva_cry_getprimitive_(std::int32_t centring, Matrix3& m, std::int32_t& status);

}  // namespace pathstat
