#include "trajectory/coordinate_alignment.h"

#include "testing.h"

namespace pathstat {
namespace {

Vector3 turned(const Matrix3& m, const Vector3& v) {
  Vector3 result;
  dmatmul_(m, v, result);
  return result;
}

TEST(CoordinateAlignment, a_crystal_gets_c_on_z_and_b_beside_y) {
  const Vector3 a{3, 1, 0.5}, b{-1, 4, 0.3}, c{0.2, -0.4, 5};
  Matrix3 m{};
  std::int32_t status = -1;
  trjcoordalignmat_(a, b, c, {}, 100, m, status);
  ASSERT_EQ(status, 0);
  const Vector3 on_z = turned(m, c), in_plane = turned(m, b);
  EXPECT_NEAR(on_z[0], 0, 1e-12);
  EXPECT_NEAR(on_z[1], 0, 1e-12);
  EXPECT_NEAR(on_z[2], dveclen_(c), 1e-12);
  EXPECT_NEAR(in_plane[0], 0, 1e-12);
  EXPECT_GT(in_plane[1], 0);
  EXPECT_NEAR(dveclen_(turned(m, a)), dveclen_(a), 1e-12);
}

TEST(CoordinateAlignment, a_slab_with_its_first_vector_on_x_gets_it_on_z) {
  const double alpha = 1.1;
  Matrix3 m{};
  std::int32_t status = -1;
  trjcoordalignmat_({}, {}, {}, {4, 6, 1, alpha, 0, 0}, 101, m, status);
  ASSERT_EQ(status, 0);
  const Vector3 first = turned(m, {4, 0, 0}), second = turned(m, {6 * std::cos(alpha), 6 * std::sin(alpha), 0});
  const Vector3 expected_first{0, 0, 4}, expected_second{0, 6 * std::sin(alpha), 6 * std::cos(alpha)};
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_NEAR(first[k], expected_first[k], 1e-12);
    EXPECT_NEAR(second[k], expected_second[k], 1e-12);
  }
}

TEST(CoordinateAlignment, other_systems_stay_and_flat_cells_are_refused) {
  Matrix3 m{};
  std::int32_t status = -1;
  trjcoordalignmat_({}, {}, {}, {}, 102, m, status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(m, (Matrix3{1, 0, 0, 0, 1, 0, 0, 0, 1}));
  trjcoordalignmat_({1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {}, 100, m, status);
  EXPECT_EQ(status, 50303);
}

}  // namespace
}  // namespace pathstat
