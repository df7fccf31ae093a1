#include "structure/crystal_planes.h"
#include "structure/crystal_vectors.h"
#include "testing.h"

namespace pathstat {
namespace {

using namespace crystal;

const Vector3 x5{5, 0, 0}, y5{0, 5, 0}, z5{0, 0, 5};

struct Skew {
  Vector3 a, b, c;
};
Skew skew_cell(unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> part(-3, 3);
  return {{8 + part(random), part(random), part(random)},
          {part(random), 7 + part(random), part(random)},
          {part(random), part(random), 9 + part(random)}};
}

TEST(Reciprocal, vectors_are_dual_to_the_cell) {
  const auto [a, b, c] = skew_cell(1);
  Vector3 a_star, b_star, c_star;
  ASSERT_EQ(status_of(kva_cry_3dreciprocalvectors_, a, b, c, a_star, b_star, c_star), 0);
  const Matrix3 dual{dot(a, a_star), dot(b, a_star), dot(c, a_star), dot(a, b_star), dot(b, b_star),
                     dot(c, b_star), dot(a, c_star), dot(b, c_star), dot(c, c_star)};
  for (std::size_t k = 0; k < 9; ++k) EXPECT_NEAR(dual[k], k % 4 == 0 ? 1 : 0, 1e-12);

  ASSERT_EQ(status_of(kva_cry_2dreciprocalvectors_, a, b, a_star, b_star), 0);
  EXPECT_NEAR(dot(a, a_star), 1, 1e-12);
  EXPECT_NEAR(dot(b, a_star), 0, 1e-12);
  EXPECT_NEAR(dot(b, b_star), 1, 1e-12);
  EXPECT_NEAR(dot(a_star, cross(a, b)), 0, 1e-12);

  EXPECT_EQ(status_of(kva_cry_3dreciprocalvectors_, b, a, c, a_star, b_star, c_star), 50304) << "left-handed";
}

TEST(Miller, planes_of_a_cube_are_spaced_by_its_edge_over_the_length_of_the_indices) {
  double spacing = 0, distance = 0;
  Vector3 normal;
  std::int32_t status = -1;
  kva_cry_millerspacing_(x5, y5, z5, 1, -2, 2, spacing, status);
  EXPECT_NEAR(spacing, 5.0 / 3, 1e-12);
  kva_cry_millernormal_(x5, y5, z5, 1, -2, 2, {0.5, 0, 1}, normal, distance, status);
  EXPECT_EQ(status, 0);
  EXPECT_NEAR(normal[1], -2.0 / 3, 1e-12);
  EXPECT_NEAR(distance, (2.5 + 10) / 3, 1e-12);
}

/// Lengths of the two shortest planes of a zone that are not parallel, by trying all up to a bound.
std::array<double, 2> shortest_by_trial(const Indices& zone, const Vector3 (&star)[3]) {
  constexpr int bound = 12;
  struct Plane {
    Vector3 vector;
    double length;
  };
  std::vector<Plane> planes;
  for (int h = -bound; h <= bound; ++h) {
    for (int k = -bound; k <= bound; ++k) {
      for (int l = -bound; l <= bound; ++l) {
        if (h * zone[0] + k * zone[1] + l * zone[2] != 0 || (h == 0 && k == 0 && l == 0)) continue;
        const Vector3 g = sum(sum(scaled(star[0], h), scaled(star[1], k)), scaled(star[2], l));
        planes.push_back({g, length(g)});
      }
    }
  }
  std::sort(planes.begin(), planes.end(), [](const Plane& p, const Plane& q) { return p.length < q.length; });
  for (const Plane& plane : planes) {
    if (length(cross(plane.vector, planes.front().vector)) > 1e-9) return {planes.front().length, plane.length};
  }
  return {};
}

TEST(ZonePlanes, are_the_shortest_of_their_zone) {
  const Indices zones[] = {{0, 0, 1}, {1, 1, 0}, {1, -1, 1}, {2, 1, 0}, {1, 2, 3}, {-1, 0, 2}, {3, -2, 1}};
  for (unsigned seed = 1; seed <= 10; ++seed) {
    const Skew cell = skew_cell(seed);
    Vector3 star[3];
    std::int32_t status = -1;
    kva_cry_3dreciprocalvectors_(cell.a, cell.b, cell.c, star[0], star[1], star[2], status);
    for (const Indices& zone : zones) {
      SCOPED_TRACE(testing::Message() << "seed " << seed << " zone " << zone[0] << zone[1] << zone[2]);
      Indices planes[2];
      ASSERT_EQ(status_of(kva_cry_zoneplanes_, zone, cell.a, cell.b, cell.c, planes[0], planes[1]), 0);
      Vector3 g[2];
      for (int k = 0; k < 2; ++k) {
        EXPECT_EQ(planes[k][0] * zone[0] + planes[k][1] * zone[1] + planes[k][2] * zone[2], 0);
        g[k] = sum(sum(scaled(star[0], planes[k][0]), scaled(star[1], planes[k][1])), scaled(star[2], planes[k][2]));
      }
      const auto shortest = shortest_by_trial(zone, star);
      EXPECT_NEAR(std::min(length(g[0]), length(g[1])), shortest[0], 1e-12);
      EXPECT_NEAR(std::max(length(g[0]), length(g[1])), shortest[1], 1e-12);
      Indices along;
      crossint_(planes[0], planes[1], along);
      EXPECT_GT(along[0] * zone[0] + along[1] * zone[1] + along[2] * zone[2], 0);
    }
  }
}

}  // namespace
}  // namespace pathstat
