#include "desk/model/primitive_setting.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "structure/crystal_vectors.h"
#include "structure/lattice_types.h"

namespace pathstat::desk {
namespace {

constexpr double near = 1e-6;
constexpr std::int32_t last_centred_lattice = 9, last_centring = 6;

/// A position in the cell, with what rounding leaves of a whole cell taken off.
Vector3 within_cell(Vector3 f) {
  for (auto& x : f) x = std::max(0.0, x - std::floor(x + near));
  return f;
}

bool are_near(const Vector3& f, const Vector3& g) {
  return std::ranges::equal(f, g, [](double x, double y) { return std::abs(x - y) < near; });
}

/// The lattice points in a centred cell, the origin first. @param primitive  the vectors of a primitive cell, columns
std::vector<Vector3> lattice_points(const Matrix3& primitive) {
  std::vector<Vector3> points;
  constexpr int most = 3;  // no table has a cell of more points along a vector
  for (int i = 0; i < most; ++i) {
    for (int j = 0; j < most; ++j) {
      for (int k = 0; k < most; ++k) {
        const auto point = within_cell(crystal::product(primitive, Vector3{double(i), double(j), double(k)}));
        if (std::ranges::none_of(points, [&](const Vector3& known) { return are_near(known, point); }))
          points.push_back(point);
      }
    }
  }
  return points;
}

/// Operators on the axes of the centred cell; empty if one of them is no operator there.
SymmetryOperators on_centred_axes(const SymmetryOperators& operators, const Matrix3& primitive) {
  Matrix3 inverse{};
  std::int32_t status = 0;
  dmatinv_(primitive, inverse, status);
  SymmetryOperators centred;
  if (status != 0) return centred;
  for (const auto& point : lattice_points(primitive)) {
    for (std::size_t k = 0; k < operators.size(); ++k) {
      Matrix3 rotation{};
      dmatmat_(primitive, operators.rotations[k], rotation);
      dmatmat_(rotation, inverse, rotation);
      for (auto& element : rotation) {
        const double whole = std::round(element);
        if (std::abs(element - whole) > near || std::abs(whole) > 1) return {};
        element = whole + 0.0;  // no zero of a negative sign
      }
      const auto translation = crystal::sum(crystal::product(primitive, operators.translations[k]), point);
      centred.rotations.push_back(rotation);
      centred.translations.push_back(within_cell(translation));
    }
  }
  return centred;
}

}  // namespace

std::vector<PrimitiveSetting> primitive_settings(const SymmetryOperators& operators) {
  std::vector<PrimitiveSetting> settings;
  if (operators.size() == 0 || group_of_operators({}, operators).centring_type != 0) return settings;
  for (std::int32_t lattice = 1; lattice <= last_centred_lattice; ++lattice) {
    for (std::int32_t centring = 1; centring <= last_centring; ++centring) {
      Vector3 a{}, b{}, c{};
      std::int32_t type = 0, status = 0;
      kva_sgr_primitivelattice_(lattice, centring, a, b, c, type, status);
      if (status != 0) continue;
      auto conventional = on_centred_axes(operators, crystal::columns(a, b, c));
      if (conventional.size() == 0) continue;
      const auto group = group_of_operators({}, conventional);
      if (group.lattice_type != lattice || group.centring_type != centring) continue;
      settings.push_back({type, std::move(conventional)});
    }
  }
  return settings;
}

}  // namespace pathstat::desk
