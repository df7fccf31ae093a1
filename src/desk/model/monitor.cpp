#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <utility>

#include "desk/model/molecular_model.h"

namespace pathstat::desk {
namespace {

constexpr double degrees = 180 / std::numbers::pi;
constexpr double shortest_squared = 1e-6;

Vector3 between(const Vector3& from, const Vector3& to) {
  Vector3 v{};
  dvecsub_(to, from, v);
  return v;
}

Vector3 cross(const Vector3& a, const Vector3& b) {
  Vector3 product{};
  dvecprod_(a, b, product);
  return product;
}

Vector3 unit(Vector3 v) {
  dvecnorm_(v, v);
  return v;
}

double arc_cosine(double c) { return std::acos(std::clamp(c, -1.0, 1.0)); }

double angle_between(const Vector3& u, const Vector3& w) { return arc_cosine(dvecdot_(unit(u), unit(w))); }

bool is_short(const Vector3& v) { return dvecdot_(v, v) <= shortest_squared; }

/// Angle about the middle bond: 0 for cis, 180 for trans; negative if the first atom stands before the last plane.
double torsion(const Vector3& p1, const Vector3& p2, const Vector3& p3, const Vector3& p4) {
  const auto first = between(p2, p1), middle = between(p2, p3);
  const auto n1 = unit(cross(first, middle));
  const auto n2 = unit(cross(between(p4, p3), middle));
  const double angle = arc_cosine(-dvecdot_(n1, n2));
  return dvecdot_(first, n2) > 0 ? -angle : angle;
}

Vector3 plane_normal(const Vector3& q1, const Vector3& q2, const Vector3& q3) {
  return cross(between(q2, q3), between(q2, q1));
}

/// The signed angle between the planes that v3 makes with v1 and with v2.
double wing_angle(const Vector3& v1, const Vector3& v2, const Vector3& v3) {
  const auto n1 = cross(v3, v1), n2 = cross(v3, v2);
  if (is_short(v1) || is_short(v2) || is_short(v3) || is_short(n1) || is_short(n2)) return 0;
  const double angle = arc_cosine(dvecdot_(n1, n2) / std::sqrt(dvecdot_(n1, n1) * dvecdot_(n2, n2)));
  return dvectrip_(v3, n1, n2) < 0 ? -angle : angle;
}

/// The angle of the third bond with the plane of the other two, past the right angle where it leans to their side.
double umbrella_angle(const Vector3& v1, const Vector3& v2, const Vector3& v3) {
  const auto n = cross(v1, v2);
  if (is_short(v1) || is_short(v2) || is_short(v3) || is_short(n)) return 0;
  const double above = dvecdot_(n, v3);
  const double theta = arc_cosine(above / std::sqrt(dvecdot_(v3, v3) * dvecdot_(n, n)));
  Vector3 wings{};
  dvecadd_(unit(v1), unit(v2), wings);
  const double lean = dvecdot_(v3, wings);
  constexpr double quarter = std::numbers::pi / 2;
  if (lean > shortest_squared) return above >= 0 ? theta + quarter : theta - 3 * quarter;
  if (lean < -shortest_squared) return quarter - theta;
  return above >= 0 ? quarter : -quarter;
}

double inversion(std::int32_t convention, const std::vector<Vector3>& p) {
  const auto &a = p[0], &b = p[1], &c = p[2], &d = p[3];
  switch (convention) {
    case 1:
      return -wing_angle(between(c, a), between(c, d), between(c, b));
    case 2:
      return wing_angle(between(a, b), between(a, c), between(a, d));
    case 4:
      return umbrella_angle(between(a, b), between(a, c), between(a, d));
    default:
      return 0;
  }
}

constexpr std::array atoms_of_type{
    std::pair{distance_monitor, 2}, std::pair{angle_monitor, 3},     std::pair{torsion_monitor, 4},
    std::pair{plane_monitor, 6},    std::pair{inversion_monitor, 4},
};

}  // namespace

std::size_t monitor_atoms(std::int32_t type) {
  for (const auto& [known, atoms] : atoms_of_type) {
    if (known == type) return static_cast<std::size_t>(atoms);
  }
  return 0;
}

double monitor_value(const Monitor& monitor, const std::vector<Vector3>& p) {
  switch (monitor.type) {
    case distance_monitor:
      return dveclen_(between(p[0], p[1]));
    case angle_monitor:
      return degrees * angle_between(between(p[1], p[0]), between(p[1], p[2]));
    case torsion_monitor:
      return degrees * torsion(p[0], p[1], p[2], p[3]);
    case plane_monitor:
      return degrees * angle_between(plane_normal(p[0], p[1], p[2]), plane_normal(p[3], p[4], p[5]));
    case inversion_monitor:
      return degrees * inversion(monitor.convention, p);
    default:
      return 0;
  }
}

}  // namespace pathstat::desk
