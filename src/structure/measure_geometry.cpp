#include "structure/measure_geometry.h"

#include <cmath>

#include "structure/crystal_vectors.h"

namespace pathstat {
namespace {

using crystal::cross;
using crystal::dot;
using crystal::unit;

constexpr double shortest_squared = 1e-6;
constexpr double quarter_turn = 1.5707963267948966;

Vector3 between(const Vector3& from, const Vector3& to) {
  Vector3 v;
  dvecsub_(to, from, v);
  return v;
}

double angle_between(const Vector3& u, const Vector3& w) { return crystal::angle_of(dot(unit(u), unit(w))); }

/// The angle between vectors whose lengths are not 0.
double angle_between_long(const Vector3& u, const Vector3& w) {
  return crystal::angle_of(dot(u, w) / std::sqrt(dot(u, u) * dot(w, w)));
}

bool is_short(const Vector3& v) { return !(dot(v, v) > shortest_squared); }

/// The signed angle between the planes that v3 makes with v1 and with v2.
Inversion wing_angle(const Vector3& v1, const Vector3& v2, const Vector3& v3) {
  const auto n1 = cross(v3, v1), n2 = cross(v3, v2);
  if (is_short(n1) || is_short(n2)) return {0, InversionFault::plane};
  const double angle = angle_between_long(n1, n2);
  return {dvectrip_(v3, n1, n2) < 0 ? -angle : angle};
}

/// The angle of v3 with the plane of the other two, past the right angle where it leans to their side.
Inversion umbrella_angle(const Vector3& v1, const Vector3& v2, const Vector3& v3) {
  const auto n = cross(v1, v2);
  if (is_short(n)) return {0, InversionFault::plane};
  const double above = dot(n, v3);
  const double theta = angle_between_long(n, v3);
  const double lean = dot(v3, crystal::sum(unit(v1), unit(v2)));
  if (lean > shortest_squared) return {above >= 0 ? theta + quarter_turn : theta - 3 * quarter_turn};
  if (lean < -shortest_squared) return {quarter_turn - theta};
  return {above >= 0 ? quarter_turn : -quarter_turn};
}

}  // namespace

double angle_of(const Vector3& p1, const Vector3& p2, const Vector3& p3) {
  return angle_between(between(p2, p1), between(p2, p3));
}

double torsion_of(const Vector3& p1, const Vector3& p2, const Vector3& p3, const Vector3& p4) {
  const auto first = between(p2, p1), middle = between(p2, p3);
  const auto n1 = unit(cross(first, middle));
  const auto n2 = unit(cross(between(p4, p3), middle));
  const double angle = crystal::angle_of(-dot(n1, n2));
  return dot(first, n2) > 0 ? -angle : angle;
}

double plane_angle_of(const Vector3& p1, const Vector3& p2, const Vector3& p3, const Vector3& q1, const Vector3& q2,
                      const Vector3& q3) {
  return angle_between(cross(between(p2, p3), between(p2, p1)), cross(between(q2, q3), between(q2, q1)));
}

Inversion inversion_of(const Vector3& a, const Vector3& b, const Vector3& c, const Vector3& d,
                       std::int32_t convention) {
  const bool about_third = convention == inversion_ijkl;
  const auto v1 = about_third ? between(c, a) : between(a, b);
  const auto v2 = about_third ? between(c, d) : between(a, c);
  const auto v3 = about_third ? between(c, b) : between(a, d);
  const bool known = about_third || convention == inversion_jilk || convention == inversion_umbrella;
  if (!known) return {};
  if (is_short(v1) || is_short(v2) || is_short(v3)) return {0, InversionFault::bond_vectors};
  if (convention == inversion_umbrella) return umbrella_angle(v1, v2, v3);
  auto found = wing_angle(v1, v2, v3);
  if (about_third) found.angle = -found.angle;
  return found;
}

std::string_view inversion_fault_text(InversionFault fault) {
  switch (fault) {
    case InversionFault::bond_vectors:
      return "Inversion angle is undefined. Since we cannot define \nsome bond vectors.";
    case InversionFault::plane:
      return "Inversion angle is undefined. Since we cannot define \na plane.";
    case InversionFault::none:
      break;
  }
  return {};
}

}  // namespace pathstat
