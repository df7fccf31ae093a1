#include "structure/crystal_maths.h"
#include "structure/crystal_vectors.h"
#include "testing.h"

namespace pathstat {
namespace {

using namespace crystal;

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
  EXPECT_EQ(status_of(kva_cry_3dcelltoparam_, cell.a, cell.b, cell.c, p.a, p.b, p.c, p.alpha, p.beta, p.gamma), 0);
  return p;
}

Cell oriented(const Parameters& p, std::int32_t code) {
  Cell cell{};
  EXPECT_EQ(status_of(kva_cry_3dparamtocell_, p.a, p.b, p.c, p.alpha, p.beta, p.gamma, code, cell.a, cell.b, cell.c),
            0);
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
  EXPECT_EQ(status_of(kva_cry_3dmetrictoparam_, metric, q.a, q.b, q.c, q.alpha, q.beta, q.gamma), 0);
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
    ASSERT_EQ(status_of(kva_cry_3dalignmentmatrix_, made.a, made.b, made.c, code, turn), 0);
    expect_same({product(turn, made.a), product(turn, made.b), product(turn, made.c)},
                oriented(parameters_of(made), code));
  }
}

struct SlabCase {
  std::int32_t code;
  Vector3 u, v;  ///< for u = 2, v = 3 and an angle with sine 0.8, cosine 0.6
};
constexpr SlabCase slabs[] = {
    {101, {1.6, 1.2, 0}, {0, 3, 0}},  {102, {2, 0, 0}, {1.8, 2.4, 0}},  {103, {0, 2, 0}, {-2.4, 1.8, 0}},
    {104, {1.2, -1.6, 0}, {3, 0, 0}}, {105, {2, 0, 0}, {1.8, 0, 2.4}},  {106, {1.6, 0, 1.2}, {0, 0, 3}},
    {107, {0, 0, 2}, {-2.4, 0, 1.8}}, {108, {1.2, 0, -1.6}, {3, 0, 0}}, {109, {0, 2, 0}, {0, 1.8, 2.4}},
    {110, {0, 1.2, -1.6}, {0, 3, 0}}, {111, {0, 0, 2}, {0, -2.4, 1.8}}, {112, {0, 1.6, 1.2}, {0, 0, 3}},
};

TEST(SlabOrientation, every_code_places_both_vectors) {
  for (const SlabCase& slab : slabs) {
    SCOPED_TRACE(slab.code);
    Vector3 u, v;
    EXPECT_EQ(status_of(kva_cry_2dparamtocell_, 2, 3, std::acos(0.6), slab.code, u, v), 0);
    EXPECT_THAT(u, Pointwise(NearEach(1e-12), slab.u));
    EXPECT_THAT(v, Pointwise(NearEach(1e-12), slab.v));
  }
}

TEST(CellFromParameters, refuses_what_makes_no_cell) {
  struct {
    Parameters parameters;
    std::int32_t code, status;
  } const refusals[] = {
      {{1, 1, 1, 3 * pi / 4, 3 * pi / 4, pi / 2}, 4, 50301},
      {{1, 1, 1, 0.3, 1, 0.3}, 4, 50301},
      {{1, 1, 1, std::nan(""), 1, 1}, 4, 50301},
      {{1, 1e-100, 1, 1, 1, 1}, 0, 50302},

      {{1, 1, 1, 1, 1, 1}, 20, 50306},
  };
  for (const auto& [p, code, expected] : refusals) {
    Vector3 a{7, 7, 7}, b = a, c = a;
    EXPECT_EQ(status_of(kva_cry_3dparamtocell_, p.a, p.b, p.c, p.alpha, p.beta, p.gamma, code, a, b, c), expected);
    EXPECT_THAT(a, ElementsAre(7, 7, 7));
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
    ASSERT_EQ(status_of(kva_cry_toincell_, type, matrix, points, offsets), 0);
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

}  // namespace
}  // namespace pathstat
