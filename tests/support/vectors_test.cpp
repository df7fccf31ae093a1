#include "support/vectors.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace pathstat {
namespace {

TEST(Vectors, sum_difference_scale_and_copy_go_to_the_last_argument) {
  const Vector3 a{1, 2, 3}, b{10, 20, 40};
  Vector3 r{};
  dvecadd_(a, b, r);
  EXPECT_EQ(r, (Vector3{11, 22, 43}));
  dvecsub_(a, b, r);
  EXPECT_EQ(r, (Vector3{-9, -18, -37}));
  dvecscale_(a, -2.0, r);
  EXPECT_EQ(r, (Vector3{-2, -4, -6}));
  dveccopy_(b, r);
  EXPECT_EQ(r, b);
}

TEST(Vectors, products_follow_the_right_hand_rule) {
  const Vector3 a{1, 2, 3}, b{4, 5, 6}, c{7, 8, 10};
  Vector3 r{};
  dvecprod_(a, b, r);
  EXPECT_EQ(r, (Vector3{-3, 6, -3}));
  EXPECT_EQ(dvecdot_(a, b), 32.0);
  EXPECT_EQ(dvectrip_(a, b, c), -3.0);

  const std::array<std::int32_t, 3> i{1, 0, 0}, j{0, 1, 0};
  std::array<std::int32_t, 3> k{};
  crossint_(i, j, k);
  EXPECT_EQ(k, (std::array<std::int32_t, 3>{0, 0, 1}));
  ivecprod_(j, i, k);
  EXPECT_EQ(k, (std::array<std::int32_t, 3>{0, 0, -1}));
}

TEST(Vectors, an_output_may_be_an_input) {
  Vector3 a{1, 2, 3};
  dvecprod_(a, Vector3{4, 5, 6}, a);
  EXPECT_EQ(a, (Vector3{-3, 6, -3}));
  const Matrix3 turn{0, 1, 0, -1, 0, 0, 0, 0, 1};  // x to y, y to -x
  Matrix3 m = turn;
  dmatmat_(m, m, m);
  EXPECT_EQ(m, (Matrix3{-1, 0, 0, 0, -1, 0, 0, 0, 1}));
  dmatmul_(turn, a, a);
  EXPECT_EQ(a, (Vector3{-6, -3, -3}));
}

TEST(Vectors, normalising_gives_length_one_and_leaves_zero) {
  Vector3 r{};
  dvecnorm_(Vector3{0, -3, 4}, r);
  EXPECT_EQ(r, (Vector3{0, -0.6, 0.8}));
  EXPECT_EQ(dveclen_(Vector3{2, 3, 6}), 7.0);
  r = {9, 9, 9};
  dvecnorm_(Vector3{0, 0, 0}, r);
  EXPECT_EQ(r, (Vector3{0, 0, 0}));
  EXPECT_EQ(rveclen_(std::array{3e30f, 0.f, 4e30f}), 5e30f);
}

TEST(Matrices, are_stored_by_columns) {
  const Matrix3 m{1, 2, 3, 4, 5, 6, 7, 8, 9};
  Vector3 r{};
  dmatmul_(m, Vector3{1, 10, 100}, r);
  EXPECT_EQ(r, (Vector3{741, 852, 963}));
  std::array<double, 6> two{1, 0, 0, 0, 0, 1};
  dmatvecmul_(m, two, two);
  EXPECT_EQ(two, (std::array<double, 6>{1, 2, 3, 7, 8, 9}));
  Matrix3 product{};
  const Matrix3 swap_columns{0, 1, 0, 1, 0, 0, 0, 0, 1};
  dmatmat_(m, swap_columns, product);
  EXPECT_EQ(product, (Matrix3{4, 5, 6, 1, 2, 3, 7, 8, 9}));
}

TEST(Matrices, inverse_times_matrix_is_the_unit) {
  const auto seed = std::random_device{}();
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> element(-1, 1);
  Matrix3 unit{};
  dmatunit_(unit);
  for (int trial = 0; trial < 1000; ++trial) {
    Matrix3 m{}, inverse{}, product{};
    for (auto& e : m) e = element(random);
    for (std::size_t k = 0; k < 9; k += 4) m[k] += 3;  // dominant diagonal: the determinant stays away from 0
    std::int32_t status = -7;
    dmatinv_(m, inverse, status);
    ASSERT_EQ(status, 0);
    dmatmat_(inverse, m, product);
    for (std::size_t k = 0; k < 9; ++k) ASSERT_NEAR(product[k], unit[k], 1e-13);
  }
}

TEST(Matrices, a_singular_matrix_is_refused_and_the_output_kept) {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  struct Case {
    Matrix3 m;
    std::int32_t status;
  };
  const Case cases[] = {{{1, 2, 3, 2, 4, 6, 0, 0, 1}, 1},
                        {{1e-34, 0, 0, 0, 1e-33, 0, 0, 0, 1e-33}, 1},  // determinant 1e-100
                        {{1e-32, 0, 0, 0, 1e-33, 0, 0, 0, 1e-33}, 0},  // determinant 1e-98
                        {{nan, 0, 0, 0, 1, 0, 0, 0, 1}, 1}};
  for (const auto& c : cases) {
    Matrix3 inverse{};
    inverse.fill(5);
    std::int32_t status = -7;
    dmatinv_(c.m, inverse, status);
    EXPECT_EQ(status, c.status);
    EXPECT_EQ(inverse[1] == 5, c.status == 1);
  }
}

}  // namespace
}  // namespace pathstat
