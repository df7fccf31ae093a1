#include "structure/crystal_coordinates.h"

#include <algorithm>
#include <climits>

#include "coreapi/object_counts.h"
#include "coreapi/operations.h"
#include "structure/crystal_cell.h"
#include "structure/crystal_vectors.h"
#include "support/named_memory.h"

namespace pathstat {

using namespace crystal;

namespace {

constexpr std::int32_t with_images = 3;    ///< the atoms of a model, symmetry images included
constexpr double grams_per_cm3 = 1.66056;  ///< of one atomic mass unit per Å3

/// Moves a fractional coordinate into 0 ... 1. @return the whole cells added to it
std::int32_t fold(double& f) {
  constexpr double whole_from = 4503599627370496.0;
  const double whole = std::trunc(f);
  double fraction = std::abs(f) < whole_from ? f - whole : 0;
  double offset = -whole;
  if (std::isnan(f)) return 0;
  if (fraction < 0) fraction += 1, offset += 1;
  f = fraction;
  return static_cast<std::int32_t>(std::clamp(offset, static_cast<double>(INT_MIN), static_cast<double>(INT_MAX)));
}

}  // namespace

void kva_cry_transformcoordinates_(std::span<double> xyz, const Matrix3& m, std::int32_t& status) {
  status = 0;
  dmatvecmul_(m, xyz, xyz);
}

void kva_cry_fracoperatortocart_(const Vector3& a, const Vector3& b, const Vector3& c, std::span<double> rotations,
                                 std::span<double> translations, std::int32_t& status) {
  const Matrix3 to_cartesian = columns(a, b, c);
  Matrix3 to_fractional;
  dmatinv_(to_cartesian, to_fractional, status);
  if (status != 0) return;
  for (std::size_t at = 0; at + 9 <= rotations.size(); at += 9) {
    const auto rotation = rotations.subspan(at).first<9>();
    dmatmul_(to_cartesian, rotation, rotation);
    dmatmul_(rotation, to_fractional, rotation);
  }
  dmatvecmul_(to_cartesian, translations, translations);
}

void kva_cry_toincell_(std::int32_t periodic_type, const Matrix3& cell, std::span<double> xyz,
                       std::span<std::int32_t> offsets, std::int32_t& status) {
  status = periodic_type == 102 ? 1 : periodic_type == 0 || periodic_type == 100 || periodic_type == 101 ? 0 : 2;
  if (status != 0) return;
  const Vector3 a{cell[0], cell[1], cell[2]}, b{cell[3], cell[4], cell[5]}, c{cell[6], cell[7], cell[8]};
  Matrix3 to_cartesian{}, to_fractional{};
  if (periodic_type == 100) {
    kva_cry_3dfractocartmatrix_(a, b, c, to_cartesian, status);
    kva_cry_3dcarttofracmatrix_(a, b, c, to_fractional, status);
  } else if (periodic_type == 101) {
    kva_cry_2dfractocartmatrix_(a, b, to_cartesian, status);
    kva_cry_2dcarttofracmatrix_(a, b, to_fractional, status);
  }
  if (status != 0) return;
  std::fill(offsets.begin(), offsets.end(), 0);
  if (periodic_type == 0) return;
  const std::size_t dimensions = periodic_type == 100 ? 3 : 2;
  const std::size_t end = std::min(xyz.size(), offsets.size());
  for (std::size_t at = 0; at + 3 <= end; at += 3) {
    const auto point = xyz.subspan(at).first<3>();
    dmatmul_(to_fractional, point, point);
    for (std::size_t k = 0; k < dimensions; ++k) offsets[at + k] = fold(point[k]);
    dmatmul_(to_cartesian, point, point);
  }
}

void kva_cry_density_(std::int32_t model, double& density, std::int32_t& status) {
  std::int32_t periodic_type = 0, atoms = 0;
  kvd_mod_periodictype_(model, periodic_type, status);
  if (status == 0 && periodic_type != 100) status = 1;
  if (status == 0) count_atoms(model, with_images, atoms, status);
  if (status != 0) return;
  if (atoms < 1) {
    density = 0;
    return;
  }
  NamedBlock<std::int32_t> list("density/list", atoms, status);
  if (status != 0) return;
  NamedBlock<double> mass("density/mass", atoms, status);
  if (status != 0) return;
  NamedBlock<double> occupancy("density/occup", atoms, status);
  if (status != 0) return;

  std::int32_t listed = 0;
  Vector3 a, b, c;
  kvd_mod_atomlist_(model, with_images, list.span(), listed, status);
  if (status == 0) kvd_atm_dmass_(list.span(), mass.span(), status);
  if (status == 0) kvd_atm_occupancy_(list.span(), occupancy.span(), status);
  if (status == 0) kvd_mod_3dcellvector_(model, a, b, c, status);
  if (status != 0) return;
  double total = 0;
  for (std::size_t k = 0; k < mass.size(); ++k) total += mass.span()[k] * occupancy.span()[k];
  density = total / dvectrip_(a, b, c) * grams_per_cm3;
}

}  // namespace pathstat
