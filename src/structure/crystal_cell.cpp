#include "structure/crystal_cell.h"

#include <array>

#include "structure/crystal_vectors.h"

namespace pathstat {

using namespace crystal;

namespace {

void invert(Matrix3& m, std::int32_t& status) {
  if (status != 0) return;
  dmatinv_(m, m, status);
  if (status != 0) status = matrix_singular;
}

constexpr double half = 0.5, third = 1.0 / 3.0, two_thirds = 2.0 / 3.0;

constexpr std::array<Matrix3, 7> primitive_columns{{
    {1, 0, 0, 0, 1, 0, 0, 0, 1},
    {half, -half, half, half, half, -half, half, half, half},
    {half, 0, half, half, half, 0, 0, half, half},
    {1, 0, 0, 0, half, -half, 0, half, half},
    {half, 0, half, 0, 1, 0, -half, 0, half},
    {half, -half, 0, half, half, 0, 0, 0, 1},
    {two_thirds, -third, -third, third, third, -two_thirds, third, third, third},
}};

}  // namespace

void kva_cry_3dfractocartmatrix_(const Vector3& a, const Vector3& b, const Vector3& c, Matrix3& m,
                                 std::int32_t& status) {
  status = 0;
  m = columns(a, b, c);
}

void kva_cry_3dcarttofracmatrix_(const Vector3& a, const Vector3& b, const Vector3& c, Matrix3& m,
                                 std::int32_t& status) {
  Matrix3 inverse;
  kva_cry_3dfractocartmatrix_(a, b, c, inverse, status);
  invert(inverse, status);
  if (status == 0) m = inverse;
}

void kva_cry_2dfractocartmatrix_(const Vector3& u, const Vector3& v, Matrix3& m, std::int32_t& status) {
  const Vector3 normal = cross(v, u);
  status = vanishes(length(normal)) ? cell_area_vanishes : 0;
  if (status == 0) m = columns(u, v, unit(normal));
}

void kva_cry_2dcarttofracmatrix_(const Vector3& u, const Vector3& v, Matrix3& m, std::int32_t& status) {
  Matrix3 inverse{};
  kva_cry_2dfractocartmatrix_(u, v, inverse, status);
  invert(inverse, status);
  if (status == 0) m = inverse;
}

void kva_cry_3dcelltoparam_(const Vector3& a_vector, const Vector3& b_vector, const Vector3& c_vector, double& a,
                            double& b, double& c, double& alpha, double& beta, double& gamma, std::int32_t& status) {
  const double la = length(a_vector), lb = length(b_vector), lc = length(c_vector);
  status = vanishes(la) || vanishes(lb) || vanishes(lc) ? cell_length_vanishes : 0;
  if (status != 0) return;
  a = la, b = lb, c = lc;
  alpha = angle_of(dot(b_vector, c_vector) / (lb * lc));
  beta = angle_of(dot(a_vector, c_vector) / (la * lc));
  gamma = angle_of(dot(a_vector, b_vector) / (la * lb));
}

void kva_cry_2dcelltoparam_(const Vector3& u_vector, const Vector3& v_vector, double& u, double& v, double& gamma,
                            std::int32_t& status) {
  const double lu = length(u_vector), lv = length(v_vector);
  status = vanishes(lu) ? cell_length_vanishes : 0;
  if (status != 0) return;
  u = lu, v = lv;
  gamma = angle_of(dot(u_vector, v_vector) / (lu * lv));
}

void kva_cry_3dmetrictoparam_(const Matrix3& metric, double& a, double& b, double& c, double& alpha, double& beta,
                              double& gamma, std::int32_t& status) {
  const double la = std::sqrt(metric[0]), lb = std::sqrt(metric[4]), lc = std::sqrt(metric[8]);
  status = vanishes(la) || vanishes(lb) || vanishes(lc) ? cell_length_vanishes : 0;
  if (status != 0) return;
  a = la, b = lb, c = lc;
  alpha = angle_of(metric[7] / (lb * lc));
  beta = angle_of(metric[6] / (la * lc));
  gamma = angle_of(metric[3] / (la * lb));
}

void kva_cry_2dmetrictoparam_(const Matrix3& metric, double& u, double& v, double& gamma, std::int32_t& status) {
  const double lu = std::sqrt(metric[0]), lv = std::sqrt(metric[4]);
  status = vanishes(lu) || vanishes(lv) ? cell_length_vanishes : 0;
  if (status != 0) return;
  u = lu, v = lv;
  gamma = angle_of(metric[3] / (lu * lv));
}

void kva_cry_3dparamtometric_(double a, double b, double c, double alpha, double beta, double gamma, Matrix3& metric,
                              std::int32_t& status) {
  status = 0;
  const double ab = a * b * std::cos(gamma), ac = a * c * std::cos(beta), bc = b * c * std::cos(alpha);
  metric = {a * a, ab, ac, ab, b * b, bc, ac, bc, c * c};
}

void kva_cry_2dparamtometric_(double u, double v, double gamma, Matrix3& metric, std::int32_t& status) {
  status = 0;
  const double uv = u * v * std::cos(gamma);
  metric = {u * u, uv, 0, uv, v * v, 0, 0, 0, 1};
}

void kva_cry_3dparamtocellvolume_(double a, double b, double c, double alpha, double beta, double gamma, double& volume,
                                  std::int32_t& status) {
  status = 0;
  const double ca = std::cos(alpha), cb = std::cos(beta), cg = std::cos(gamma);
  volume = a * b * c * std::sqrt(1 - ca * ca - cb * cb - cg * cg + 2 * ca * cb * cg);
}

void kva_cry_3dabctocellvolume_(const Vector3& a, const Vector3& b, const Vector3& c, double& volume,
                                std::int32_t& status) {
  status = 0;
  volume = dvectrip_(a, b, c);
}

void kva_cry_2dparamtocellarea_(double u, double v, double gamma, double& area, std::int32_t& status) {
  status = 0;
  area = u * v * std::sin(gamma);
}

void kva_cry_2duvtocellarea_(const Vector3& u, const Vector3& v, double& area, std::int32_t& status) {
  status = 0;
  area = length(cross(u, v));
}

void kva_cry_getprimitive_(std::int32_t centring, Matrix3& m, std::int32_t& status) {
  status = centring >= 0 && centring < static_cast<std::int32_t>(primitive_columns.size()) ? 0 : 1;
  if (status == 0) m = primitive_columns[static_cast<std::size_t>(centring)];
}

}  // namespace pathstat
