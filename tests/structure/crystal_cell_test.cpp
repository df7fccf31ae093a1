#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <random>

#include "structure/crystal_maths.h"
#include "structure/crystal_vectors.h"

namespace pathstat {
namespace {

using namespace crystal;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::Pointwise;

constexpr double pi = std::numbers::pi;

MATCHER_P(NearEach, tolerance, "") { return std::abs(std::get<0>(arg) - std::get<1>(arg)) <= tolerance; }

struct Cell {
  Vector3 a, b, c;
};
struct Parameters {
  double a, b, c, alpha, beta, gamma;
};

/// Right-handed cells of no special shape or place, with a seed that a failure prints.
class RandomCells : public testing::TestWithParam<unsigned> {
 protected:
  double uniform(double low, double high) { return std::uniform_real_distribution<double>(low, high)(random_); }
  Vector3 vector(double size) { return {uniform(-size, size), uniform(-size, size), uniform(-size, size)}; }
  Cell cell() {
    while (true) {
      Cell made{vector(20), vector(20), vector(20)};
      const double volume = dvectrip_(made.a, made.b, made.c);
      if (std::abs(volume) < 0.1 * length(made.a) * length(made.b) * length(made.c)) continue;
      if (volume < 0) std::swap(made.a, made.b);
      return made;
    }
  }
  std::mt19937 random_{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(seeds, RandomCells, testing::Range(1u, 21u));

Parameters parameters_of(const Cell& cell) {
  Parameters p{};
  std::int32_t status = -1;
  kva_cry_3dcelltoparam_(cell.a, cell.b, cell.c, p.a, p.b, p.c, p.alpha, p.beta, p.gamma, status);
  EXPECT_EQ(status, 0);
  return p;
}

Cell oriented(const Parameters& p, std::int32_t code) {
  Cell cell{};
  std::int32_t status = -1;
  kva_cry_3dparamtocell_(p.a, p.b, p.c, p.alpha, p.beta, p.gamma, code, cell.a, cell.b, cell.c, status);
  EXPECT_EQ(status, 0);
  return cell;
}

void expect_same(const Parameters& p, const Parameters& q) {
  EXPECT_THAT((std::array{p.a, p.b, p.c, p.alpha, p.beta, p.gamma}),
              Pointwise(NearEach(1e-9), std::array{q.a, q.b, q.c, q.alpha, q.beta, q.gamma}));
}

void expect_same(const Cell& cell, const Cell& other) {
  EXPECT_THAT(columns(cell.a, cell.b, cell.c), Pointwise(NearEach(1e-9), columns(other.a, other.b, other.c)));
}

TEST_P(RandomCells, parameters_and_metric_and_vectors_tell_the_same_cell) {
  const Cell made = cell();
  const Parameters p = parameters_of(made);
  Matrix3 metric;
  Parameters q{};
  std::int32_t status = -1;
  kva_cry_3dparamtometric_(p.a, p.b, p.c, p.alpha, p.beta, p.gamma, metric, status);
  EXPECT_THAT(metric,
              Pointwise(NearEach(1e-9), Matrix3{dot(made.a, made.a), dot(made.a, made.b), dot(made.a, made.c),
                                                dot(made.b, made.a), dot(made.b, made.b), dot(made.b, made.c),
                                                dot(made.c, made.a), dot(made.c, made.b), dot(made.c, made.c)}));
  kva_cry_3dmetrictoparam_(metric, q.a, q.b, q.c, q.alpha, q.beta, q.gamma, status);
  EXPECT_EQ(status, 0);
  expect_same(p, q);
  double by_parameters = 0, by_vectors = 0;
  kva_cry_3dparamtocellvolume_(p.a, p.b, p.c, p.alpha, p.beta, p.gamma, by_parameters, status);
  kva_cry_3dabctocellvolume_(made.a, made.b, made.c, by_vectors, status);
  EXPECT_NEAR(by_parameters, by_vectors, 1e-9 * by_vectors);
}

TEST_P(RandomCells, fractional_coordinates_turn_back) {
  const Cell made = cell();
  Matrix3 to_cartesian, to_fractional;
  std::int32_t status = -1;
  std::array<double, 6> points{0.25, -1.5, 3, 7, 0, -0.125};
  const auto fractions = points;
  kva_cry_3dfractocartmatrix_(made.a, made.b, made.c, to_cartesian, status);
  kva_cry_transformcoordinates_(points, to_cartesian, status);
  for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(points[k], 0.25 * made.a[k] - 1.5 * made.b[k] + 3 * made.c[k], 1e-9);
  kva_cry_3dcarttofracmatrix_(made.a, made.b, made.c, to_fractional, status);
  kva_cry_transformcoordinates_(points, to_fractional, status);
  EXPECT_THAT(points, Pointwise(NearEach(1e-9), fractions));
}

TEST_P(RandomCells, slab_matrices_have_the_normal_as_third_column) {
  const Cell made = cell();
  Matrix3 m, inverse, product_of_both;
  std::int32_t status = -1;
  kva_cry_2dfractocartmatrix_(made.a, made.b, m, status);
  EXPECT_EQ(status, 0);
  const Vector3 normal{m[6], m[7], m[8]};
  EXPECT_NEAR(length(normal), 1, 1e-12);
  EXPECT_NEAR(dot(normal, cross(made.b, made.a)), length(cross(made.a, made.b)), 1e-9);
  kva_cry_2dcarttofracmatrix_(made.a, made.b, inverse, status);
  dmatmat_(m, inverse, product_of_both);
  EXPECT_THAT(product_of_both, Pointwise(NearEach(1e-10), Matrix3{1, 0, 0, 0, 1, 0, 0, 0, 1}));
}

TEST_P(RandomCells, slab_parameters_tell_the_same_slab) {
  const Cell made = cell();
  double u = 0, v = 0, gamma = 0, u2 = 0, v2 = 0, gamma2 = 0, area = 0, by_vectors = 0;
  Matrix3 metric;
  std::int32_t status = -1;
  kva_cry_2dcelltoparam_(made.a, made.b, u, v, gamma, status);
  kva_cry_2dparamtometric_(u, v, gamma, metric, status);
  kva_cry_2dmetrictoparam_(metric, u2, v2, gamma2, status);
  EXPECT_THAT((std::array{u2, v2, gamma2}), Pointwise(NearEach(1e-9), std::array{u, v, gamma}));
  EXPECT_THAT(metric, Pointwise(NearEach(1e-9), Matrix3{dot(made.a, made.a), dot(made.a, made.b), 0,
                                                        dot(made.a, made.b), dot(made.b, made.b), 0, 0, 0, 1}));
  kva_cry_2dparamtocellarea_(u, v, gamma, area, status);
  kva_cry_2duvtocellarea_(made.a, made.b, by_vectors, status);
  EXPECT_NEAR(area, by_vectors, 1e-9 * area);
}

TEST_P(RandomCells, cartesian_operators_act_as_the_fractional_ones) {
  const Cell made = cell();
  std::array<double, 18> rotations{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 0, 0, 0, -1, -1, 0, 1};
  std::array<double, 6> translations{0, 0, 0, 0.5, -0.25, 1.0 / 3};
  const Vector3 fraction{0.1, 0.2, -0.7};
  const Vector3 image{rotations[9] * 0.1 + rotations[12] * 0.2 + rotations[15] * -0.7 + 0.5,
                      rotations[10] * 0.1 + rotations[13] * 0.2 + rotations[16] * -0.7 - 0.25,
                      rotations[11] * 0.1 + rotations[14] * 0.2 + rotations[17] * -0.7 + 1.0 / 3};
  const Matrix3 m = columns(made.a, made.b, made.c);
  std::int32_t status = -1;
  kva_cry_fracoperatortocart_(made.a, made.b, made.c, rotations, translations, status);
  ASSERT_EQ(status, 0);
  Matrix3 rotation;
  std::copy_n(rotations.begin() + 9, 9, rotation.begin());
  const Vector3 turned =
      sum(product(rotation, product(m, fraction)), {translations[3], translations[4], translations[5]});
  EXPECT_THAT(turned, Pointwise(NearEach(1e-9), product(m, image)));
}

/// Where each orientation puts the vectors: p on the axis, q in the plane of both axes, r in front of it.
struct Placing {
  std::int32_t code;
  char p, axis, q, next;
};
constexpr Placing placings[] = {
    {1, 'C', 'Z', 'B', 'Y'},  {2, 'B', 'Z', 'A', 'Y'},  {3, 'A', 'Z', 'C', 'Y'},  {4, 'A', 'X', 'B', 'Y'},
    {5, 'C', 'X', 'A', 'Y'},  {6, 'B', 'X', 'C', 'Y'},  {7, 'B', 'Y', 'A', 'X'},  {8, 'A', 'Y', 'C', 'X'},
    {9, 'C', 'Y', 'B', 'X'},  {10, 'C', 'Z', 'A', 'X'}, {11, 'B', 'Z', 'C', 'X'}, {12, 'A', 'Z', 'B', 'X'},
    {13, 'A', 'X', 'C', 'Z'}, {14, 'C', 'X', 'B', 'Z'}, {15, 'B', 'X', 'A', 'Z'}, {16, 'B', 'Y', 'C', 'Z'},
    {17, 'A', 'Y', 'B', 'Z'}, {18, 'C', 'Y', 'A', 'Z'},
};

TEST_P(RandomCells, every_orientation_keeps_the_parameters_and_puts_p_on_its_axis_and_q_in_its_plane) {
  const Parameters p = parameters_of(cell());
  for (const Placing& placing : placings) {
    SCOPED_TRACE(placing.code);
    const Cell placed = oriented(p, placing.code);
    expect_same(parameters_of(placed), p);
    const Vector3* const vectors[] = {&placed.a, &placed.b, &placed.c};
    const auto part = [&](char which, char axis) {
      return (*vectors[which - 'A'])[static_cast<std::size_t>(axis - 'X')];
    };
    const char last = static_cast<char>('X' + 'Y' + 'Z' - placing.axis - placing.next);
    const char r = static_cast<char>('A' + 'B' + 'C' - placing.p - placing.q);
    EXPECT_GT(part(placing.p, placing.axis), 0);
    EXPECT_EQ(part(placing.p, placing.next), 0);
    EXPECT_EQ(part(placing.p, last), 0);
    EXPECT_GT(part(placing.q, placing.next), 0);
    EXPECT_EQ(part(placing.q, last), 0);
    EXPECT_GT(part(r, last), 0);
  }
  const Cell diagonal = oriented(p, 19);
  expect_same(parameters_of(diagonal), p);
  const Vector3 both = sum(unit(diagonal.a), unit(diagonal.b));
  EXPECT_THAT(both, ElementsAre(DoubleNear(length(both), 1e-9), DoubleNear(0, 1e-9), DoubleNear(0, 1e-9)));
  EXPECT_NEAR(diagonal.a[2], 0, 1e-9);
  EXPECT_GT(diagonal.c[2], 0);
}

TEST_P(RandomCells, the_alignment_matrix_takes_a_cell_into_its_orientation) {
  const Cell made = cell();
  for (std::int32_t code = 1; code <= 19; ++code) {
    SCOPED_TRACE(code);
    Matrix3 turn;
    std::int32_t status = -1;
    kva_cry_3dalignmentmatrix_(made.a, made.b, made.c, code, turn, status);
    ASSERT_EQ(status, 0);
    expect_same({product(turn, made.a), product(turn, made.b), product(turn, made.c)},
                oriented(parameters_of(made), code));
  }
}

struct SlabCase {
  std::int32_t code;
  Vector3 u, v;     ///< for u = 2, v = 3 and an angle with sine 0.8, cosine 0.6
  bool other_side;  ///< the alignment puts the second vector on the other side
  bool mirrors;
};
constexpr SlabCase slabs[] = {
    {101, {1.6, 1.2, 0}, {0, 3, 0}, false, false},  {102, {2, 0, 0}, {1.8, 2.4, 0}, false, false},
    {103, {0, 2, 0}, {-2.4, 1.8, 0}, true, true},   {104, {1.2, -1.6, 0}, {3, 0, 0}, true, true},
    {105, {2, 0, 0}, {1.8, 0, 2.4}, false, true},   {106, {1.6, 0, 1.2}, {0, 0, 3}, false, true},
    {107, {0, 0, 2}, {-2.4, 0, 1.8}, true, false},  {108, {1.2, 0, -1.6}, {3, 0, 0}, true, false},
    {109, {0, 2, 0}, {0, 1.8, 2.4}, false, false},  {110, {0, 1.2, -1.6}, {0, 3, 0}, true, true},
    {111, {0, 0, 2}, {0, -2.4, 1.8}, false, false}, {112, {0, 1.6, 1.2}, {0, 0, 3}, false, false},
};

TEST(SlabOrientation, every_code_places_both_vectors) {
  for (const SlabCase& slab : slabs) {
    SCOPED_TRACE(slab.code);
    Vector3 u, v;
    std::int32_t status = -1;
    kva_cry_2dparamtocell_(2, 3, std::acos(0.6), slab.code, u, v, status);
    EXPECT_EQ(status, 0);
    EXPECT_THAT(u, Pointwise(NearEach(1e-12), slab.u));
    EXPECT_THAT(v, Pointwise(NearEach(1e-12), slab.v));
  }
}

TEST(SlabOrientation, the_alignment_matrix_takes_a_slab_into_its_frame) {
  const Vector3 u{2 * 0.36, 2 * 0.48, 2 * 0.8};  // 2 times a unit vector
  const Vector3 beside{0.8, -0.6, 0};            // of length 1, across u
  const Vector3 v = sum(scaled(u, 0.5 * 3 * 0.6), scaled(beside, 3 * 0.8));
  for (const SlabCase& slab : slabs) {
    SCOPED_TRACE(slab.code);
    Matrix3 turn;
    std::int32_t status = -1;
    kva_cry_2dalignmentmatrix_(u, v, slab.code, turn, status);
    ASSERT_EQ(status, 0);
    Vector3 expected_u = slab.u, expected_v = slab.v;
    if (slab.other_side) {
      const bool u_on_axis = std::abs(slab.u[0]) + std::abs(slab.u[1]) + std::abs(slab.u[2]) == 2;
      Vector3& second = u_on_axis ? expected_v : expected_u;
      const Vector3& first = u_on_axis ? expected_u : expected_v;
      for (std::size_t k = 0; k < 3; ++k) {
        if (first[k] == 0) second[k] = -second[k];
      }
    }
    EXPECT_THAT(product(turn, u), Pointwise(NearEach(1e-12), expected_u));
    EXPECT_THAT(product(turn, v), Pointwise(NearEach(1e-12), expected_v));
    const double determinant =
        dvectrip_(std::span(turn).first<3>(), std::span(turn).subspan<3, 3>(), std::span(turn).subspan<6, 3>());
    EXPECT_NEAR(determinant, slab.mirrors ? -1 : 1, 1e-12);
  }
}

TEST(CellFromParameters, a_cube_lies_along_the_axes) {
  expect_same(oriented({5, 5, 5, pi / 2, pi / 2, pi / 2}, 4), {{5, 0, 0}, {0, 5, 0}, {0, 0, 5}});
}

struct Refusal {
  Parameters parameters;
  std::int32_t code;
  std::int32_t status;
};

TEST(CellFromParameters, refuses_what_makes_no_cell) {
  const Refusal refusals[] = {
      {{1, 1, 1, pi / 2, pi / 2, pi}, 4, 50301}, {{1, 1, 1, 3 * pi / 4, 3 * pi / 4, pi / 2}, 4, 50301},
      {{1, 1, 1, 0.3, 1, 0.3}, 4, 50301},        {{1, 1, 1, std::nan(""), 1, 1}, 4, 50301},
      {{0, 1, 1, pi / 2, pi / 2, pi}, 0, 50301}, {{1, 1e-100, 1, 1, 1, 1}, 0, 50302},
      {{1, 1, std::nan(""), 1, 1, 1}, 4, 50302}, {{1, 1, 1, 1, 1, 1}, 0, 50306},
      {{1, 1, 1, 1, 1, 1}, 20, 50306},
  };
  for (const auto& [p, code, expected] : refusals) {
    Vector3 a{7, 7, 7}, b = a, c = a;
    std::int32_t status = 0;
    kva_cry_3dparamtocell_(p.a, p.b, p.c, p.alpha, p.beta, p.gamma, code, a, b, c, status);
    EXPECT_EQ(status, expected);
    EXPECT_THAT(a, ElementsAre(7, 7, 7));
  }
}

TEST(Alignment, refuses_unknown_codes_and_flat_cells_and_leaves_the_matrix) {
  const Vector3 x{1, 0, 0}, y{0, 1, 0}, z{0, 0, 1}, zero{};
  Matrix3 m{9};
  for (const std::int32_t code : {0, 20, -1, 101}) {
    std::int32_t status = 0;
    kva_cry_3dalignmentmatrix_(x, y, z, code, m, status);
    EXPECT_EQ(status, 50306);
    kva_cry_2dalignmentmatrix_(x, y, code == 101 ? 113 : code, m, status);
    EXPECT_EQ(status, 50306);
  }
  std::int32_t status = 0;
  kva_cry_3dalignmentmatrix_(x, y, zero, 1, m, status);
  EXPECT_EQ(status, 50303);
  kva_cry_2dalignmentmatrix_(x, x, 102, m, status);
  EXPECT_EQ(status, 50303);
  EXPECT_EQ(m, Matrix3{9});
}

TEST(CellForms, flat_cells_are_refused_by_their_own_codes) {
  const Vector3 x{1, 0, 0}, y{0, 1, 0}, zero{};
  Matrix3 m;
  double n = 0;
  std::int32_t status = 0;
  kva_cry_3dcarttofracmatrix_(x, y, sum(x, y), m, status);
  EXPECT_EQ(status, 50303);
  kva_cry_2dfractocartmatrix_(x, scaled(x, 2), m, status);
  EXPECT_EQ(status, 50305);
  kva_cry_2dcarttofracmatrix_(x, zero, m, status);
  EXPECT_EQ(status, 50305);
  kva_cry_3dcelltoparam_(x, y, zero, n, n, n, n, n, n, status);
  EXPECT_EQ(status, 50302);
  kva_cry_2dcelltoparam_(zero, x, n, n, n, status);
  EXPECT_EQ(status, 50302);
  kva_cry_2dcelltoparam_(x, zero, n, n, n, status);
  EXPECT_EQ(status, 0);
  kva_cry_2dmetrictoparam_({1, 0, 0, 0, 0, 0, 0, 0, 1}, n, n, n, status);
  EXPECT_EQ(status, 50302);
}

TEST(CellForms, parallel_vectors_have_the_angle_zero_in_spite_of_rounding) {
  const Vector3 u{0.1, 0.2, 0.3}, v{0.3, 0.6, 0.9};
  double lu = 0, lv = 0, gamma = -1;
  std::int32_t status = 0;
  kva_cry_2dcelltoparam_(u, v, lu, lv, gamma, status);
  EXPECT_NEAR(gamma, 0, 1e-7);
}

TEST(PrimitiveCell, holds_one_of_the_lattice_points_of_the_conventional_cell) {
  const int points[] = {1, 2, 4, 2, 2, 2, 3};
  for (std::int32_t centring = 0; centring < 7; ++centring) {
    SCOPED_TRACE(centring);
    Matrix3 m;
    std::int32_t status = -1;
    kva_cry_getprimitive_(centring, m, status);
    ASSERT_EQ(status, 0);
    const auto columns_of = std::span<const double>(m);
    EXPECT_NEAR(dvectrip_(columns_of.subspan<0, 3>(), columns_of.subspan<3, 3>(), columns_of.subspan<6, 3>()),
                1.0 / points[centring], 1e-12);
  }
  Matrix3 m{9};
  for (const std::int32_t bad : {-1, 7}) {
    std::int32_t status = 0;
    kva_cry_getprimitive_(bad, m, status);
    EXPECT_EQ(status, 1);
  }
  EXPECT_EQ(m, Matrix3{9});
}

struct Fold {
  double from, to;
  std::int32_t offset;
};

TEST(ToInCell, moves_each_fraction_by_whole_cells) {
  const Fold folds[] = {{-0.25, 0.75, 1}, {2.5, 0.5, -2},   {0, 0, 0},
                        {-1, 0, 1},       {-2.75, 0.25, 3}, {1e300, 0, INT32_MIN}};
  for (const auto& [from, to, offset] : folds) {
    Vector3 point{from, 0.5, 0.5};
    std::array<std::int32_t, 3> offsets{9, 9, 9};
    std::int32_t status = -1;
    kva_cry_toincell_(100, {1, 0, 0, 0, 1, 0, 0, 0, 1}, point, offsets, status);
    EXPECT_EQ(status, 0);
    EXPECT_THAT(point, ElementsAre(to, 0.5, 0.5));
    EXPECT_THAT(offsets, ElementsAre(offset, 0, 0));
  }
}

TEST_P(RandomCells, points_move_into_the_cell_by_their_offsets) {
  const Cell made = cell();
  for (const std::int32_t type : {100, 101}) {
    std::array<double, 30> points;
    std::array<std::int32_t, 30> offsets;
    for (double& x : points) x = uniform(-90, 90);
    const auto before = points;
    const Matrix3 matrix = columns(made.a, made.b, made.c);
    Matrix3 to_fractional;
    std::int32_t status = -1;
    kva_cry_toincell_(type, matrix, points, offsets, status);
    ASSERT_EQ(status, 0);
    if (type == 100) kva_cry_3dcarttofracmatrix_(made.a, made.b, made.c, to_fractional, status);
    if (type == 101) kva_cry_2dcarttofracmatrix_(made.a, made.b, to_fractional, status);
    for (std::size_t at = 0; at < points.size(); at += 3) {
      Vector3 moved{before[at], before[at + 1], before[at + 2]};
      for (std::size_t k = 0; k < 3; ++k) {
        moved[k] += offsets[at] * made.a[k] + offsets[at + 1] * made.b[k] + offsets[at + 2] * made.c[k];
        EXPECT_NEAR(points[at + k], moved[k], 1e-9);
      }
      const Vector3 f = product(to_fractional, moved);
      EXPECT_TRUE(f[0] > -1e-9 && f[0] < 1 + 1e-9 && f[1] > -1e-9 && f[1] < 1 + 1e-9);
      EXPECT_TRUE(type == 100 || offsets[at + 2] == 0);
    }
  }
}

TEST(ToInCell, other_periodic_types_move_nothing) {
  for (const auto& [type, expected, offset] : {std::array{0, 0, 0}, std::array{102, 1, 9}, std::array{7, 2, 9}}) {
    Vector3 point{1.5, 2, -3};
    std::array<std::int32_t, 3> offsets{9, 9, 9};
    std::int32_t status = -1;
    kva_cry_toincell_(type, {1, 0, 0, 0, 1, 0, 0, 0, 1}, point, offsets, status);
    EXPECT_EQ(status, expected);
    EXPECT_THAT(point, ElementsAre(1.5, 2, -3));
    EXPECT_THAT(offsets, ElementsAre(offset, offset, offset));
  }
}

}  // namespace
}  // namespace pathstat
