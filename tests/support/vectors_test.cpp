#include "support/vectors.h"

#include "testing.h"

namespace pathstat {
namespace {

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
    ASSERT_EQ(status_of(dmatinv_, m, inverse), 0);
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
