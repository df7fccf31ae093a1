#include "reports/moments.h"

#include "testing.h"

namespace pathstat {
namespace {

ValueSet all_of(const std::vector<double>& numbers) {
  return {numbers, 1, static_cast<std::int32_t>(numbers.size()), {}, 0, 1};
}

TEST(Moments, of_a_coin_with_unequal_sides_are_those_of_the_closed_form) {
  // k of n numbers are 1, the others 0: p = 1/5.
  std::vector<double> numbers(1000, 0.0);
  for (std::size_t k = 0; k < 200; ++k) numbers[5 * k] = 1.0;
  const Moments moments = moments_of(all_of(numbers));
  constexpr double p = 0.2;
  const double variance = p * (1 - p);
  EXPECT_EQ(moments.count, 1000);
  EXPECT_NEAR(moments.mean, p, 1e-14);
  EXPECT_NEAR(moments.deviation, std::sqrt(variance), 1e-14);
  EXPECT_NEAR(moments.skewness, (1 - 2 * p) / std::sqrt(variance), 1e-12);
  EXPECT_NEAR(moments.kurtosis, (1 - 6 * variance) / variance, 1e-12);
  EXPECT_EQ(moments.smallest, 0.0);
  EXPECT_EQ(moments.largest, 1.0);
}

TEST(Moments, without_spread_have_neither_skewness_nor_kurtosis) {
  const std::vector<double> numbers{4.0, 4.0, 4.0};
  const Moments moments = moments_of(all_of(numbers));
  EXPECT_EQ(moments.mean, 4.0);
  EXPECT_FALSE(moments.has_skewness);
  EXPECT_FALSE(moments.has_kurtosis);
  EXPECT_EQ(moments.skewness, 0.0);
  EXPECT_EQ(moments.kurtosis, 0.0);
}

TEST(Moments, take_of_each_row_only_what_it_holds) {
  const std::vector<double> table{1, 2, 3, 4, 99, 99, 5, 6, 99};
  const std::vector<std::int32_t> sizes{3, 1, 2};
  const Moments all = moments_of({table, 3, 3, sizes, 0, 1});
  EXPECT_EQ(all.count, 6);
  EXPECT_EQ(all.mean, 3.5);
  EXPECT_EQ(all.largest, 6.0);
  const Moments second = moments_of({table, 3, 3, sizes, 1, 3});
  EXPECT_EQ(second.count, 2);
  EXPECT_EQ(second.mean, 4.0);
  const Moments column = moments_of(column_of(table, 3, 3, 0));
  EXPECT_EQ(column.count, 3);
  EXPECT_NEAR(column.mean, 10.0 / 3, 1e-15);
}

TEST(Moments, of_nothing_count_nothing) { EXPECT_EQ(moments_of(all_of({})).count, 0); }

}  // namespace
}  // namespace pathstat
