#include "structure/measure_geometry.h"

#include "testing.h"

namespace pathstat {
namespace {

struct InversionCase {
  const char* what;
  Vector3 a, b, c, d;
  std::int32_t convention;
  double degrees;
  InversionFault fault = InversionFault::none;
};

constexpr Vector3 o{0, 0, 0}, x{1, 0, 0}, y{0, 1, 0}, z{0, 0, 1};
// The angle of the diagonal of a cube with its faces: sine 1 / sqrt 3.
const double rise = std::asin(1 / std::sqrt(3.0)) * degrees_per_radian;

const InversionCase inversions[] = {{"ijkl is about the third atom", x, z, o, y, 1, -90},
                                    {"ijkl with the wings changed", y, z, o, x, 1, 90},
                                    {"jilk is about the first atom", o, x, y, z, 2, 90},
                                    {"jilk of a plane", o, x, {-1, 0, 1e-9}, z, 2, 180},
                                    {"umbrella away from the wings", o, x, y, {-1, -1, 1}, 4, rise},
                                    {"umbrella away from them, below", o, x, y, {-1, -1, -1}, 4, -rise},
                                    {"umbrella to their side", o, x, y, {1, 1, 1}, 4, 180 - rise},
                                    {"umbrella to their side, below", o, x, y, {1, 1, -1}, 4, rise - 180},
                                    {"umbrella upright", o, x, y, z, 4, 90},
                                    {"umbrella upright, below", o, x, y, {0, 0, -2}, 4, -90},
                                    {"umbrella in the plane", o, x, y, {-1, -1, 0}, 4, 0},
                                    {"no such convention", o, x, y, z, 3, 0},
                                    {"atoms that coincide", o, x, y, o, 2, 0, InversionFault::bond_vectors},
                                    {"just too near, ijkl", x, {1e-3, 0, 0}, o, y, 1, 0, InversionFault::bond_vectors},
                                    {"atoms in a row, jilk", o, x, y, {2, 0, 0}, 2, 0, InversionFault::plane},
                                    {"atoms in a row, umbrella", o, x, {2, 0, 0}, z, 4, 0, InversionFault::plane}};

TEST(InversionOf, is_the_angle_of_the_convention) {
  for (const auto& [what, a, b, c, d, convention, degrees, fault] : inversions) {
    const Inversion found = inversion_of(a, b, c, d, convention);
    EXPECT_NEAR(found.angle * degrees_per_radian, degrees, 1e-12) << what;
    EXPECT_EQ(found.fault, fault) << what;
  }
}

struct TorsionCase {
  const char* what;
  Vector3 p1, p4;
  double degrees;
};

TEST(TorsionOf, has_the_sign_of_the_turn_seen_along_the_bond) {
  const TorsionCase cases[] = {{"cis", {1, 0, 0}, {1, 0, 1}, 0},
                               {"trans", {1, 0, 0}, {-1, 0, 1}, 180},
                               {"clockwise", {1, 0, 0}, {0, 1, 1}, 90},
                               {"against the clock", {1, 0, 0}, {0, -1, 1}, -90},
                               {"gauche", {1, 0, 0}, {0.5, std::sqrt(0.75), 2}, 60}};
  for (const auto& [what, p1, p4, degrees] : cases) {
    EXPECT_NEAR(torsion_of(p1, o, z, p4) * degrees_per_radian, degrees, 1e-12) << what;
  }
}

TEST(AngleOf, passes_rounding_and_empty_vectors) {
  for (int k = 1; k < 100; ++k) {  // some of the cosines round to more than 1
    const Vector3 u{0.1 * k, 0.2, 0.3}, back{-0.1 * k, -0.2, -0.3};
    EXPECT_NEAR(angle_of(u, o, u), 0, 1e-7);
    EXPECT_NEAR(angle_of(u, o, back) * degrees_per_radian, 180, 1e-5);
  }
  EXPECT_DOUBLE_EQ(angle_of(x, o, o) * degrees_per_radian, 90.0) << "a vector of no length stays as it is";
  EXPECT_DOUBLE_EQ(plane_angle_of(x, o, y, y, o, z) * degrees_per_radian, 90.0);
  EXPECT_DOUBLE_EQ(plane_angle_of(x, o, y, y, o, x) * degrees_per_radian, 180.0) << "turned over";
}

// The plain definitions: angles as the arc tangent of their sine and cosine, up to a common factor.

Vector3 minus(const Vector3& p, const Vector3& q) { return {p[0] - q[0], p[1] - q[1], p[2] - q[2]}; }
Vector3 cross(const Vector3& u, const Vector3& v) {
  return {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
}
double dot(const Vector3& u, const Vector3& v) { return u[0] * v[0] + u[1] * v[1] + u[2] * v[2]; }
double length(const Vector3& v) { return std::sqrt(dot(v, v)); }
double angle_between(const Vector3& u, const Vector3& v) { return std::atan2(length(cross(u, v)), dot(u, v)); }

double plain_inversion(const Vector3& v1, const Vector3& v2, const Vector3& v3) {
  return std::atan2(length(v3) * dot(v3, cross(v1, v2)), dot(cross(v3, v1), cross(v3, v2)));
}

double plain_umbrella(const Vector3& v1, const Vector3& v2, const Vector3& v3) {
  const Vector3 n = cross(v1, v2);
  const double elevation = std::asin(dot(v3, n) / (length(v3) * length(n)));
  const double lean = dot(v3, v1) / length(v1) + dot(v3, v2) / length(v2);
  return lean < 0 ? elevation : std::copysign(180 / degrees_per_radian, elevation) - elevation;
}

TEST(MeasureGeometry, is_that_of_the_plain_definitions) {
  constexpr unsigned seed = 2909;
  RecordProperty("seed", static_cast<int>(seed));
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> place(-3, 3);
  const auto point = [&] { return Vector3{place(random), place(random), place(random)}; };
  for (int k = 0; k < 2000; ++k) {
    const Vector3 a = point(), b = point(), c = point(), d = point(), e = point(), f = point();
    EXPECT_NEAR(angle_of(a, b, c), angle_between(minus(a, b), minus(c, b)), 1e-7);
    const Vector3 b1 = minus(b, a), b2 = minus(c, b), b3 = minus(d, c);
    const double torsion = std::atan2(length(b2) * dot(b1, cross(b2, b3)), dot(cross(b1, b2), cross(b2, b3)));
    EXPECT_NEAR(torsion_of(a, b, c, d), torsion, 1e-7);
    const double planes = angle_between(cross(minus(c, b), minus(a, b)), cross(minus(f, e), minus(d, e)));
    EXPECT_NEAR(plane_angle_of(a, b, c, d, e, f), planes, 1e-7);
    EXPECT_NEAR(inversion_of(a, b, c, d, 1).angle, -plain_inversion(minus(a, c), minus(d, c), minus(b, c)), 1e-7);
    EXPECT_NEAR(inversion_of(a, b, c, d, 2).angle, plain_inversion(minus(b, a), minus(c, a), minus(d, a)), 1e-7);
    EXPECT_NEAR(inversion_of(a, b, c, d, 4).angle, plain_umbrella(minus(b, a), minus(c, a), minus(d, a)), 1e-7);
  }
}

}  // namespace
}  // namespace pathstat
