#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "reports/profile_plots.h"

namespace pathstat {
namespace {

TEST(StepPlot, takes_its_column_and_comes_down_to_zero_on_both_sides) {
  const std::vector<double> bin_data{0, 0, 0, 10.25, 11.5, 0.5};
  const std::vector<double> table{9, 0.125, 9, 0.5, 9, 0.375};
  std::vector<float> xy(6);
  std::array<float, 2> left{};
  std::array<float, 2> right{};
  std::int32_t status = 7;
  makehistxy_(bin_data, 2, table, 2, 3, xy, left, right, status);
  EXPECT_EQ(status, 0);
  EXPECT_THAT(xy, testing::ElementsAre(10.25F, 0.125F, 10.75F, 0.5F, 11.25F, 0.375F));
  EXPECT_THAT(left, testing::ElementsAre(9.75F, 0.0F));
  EXPECT_THAT(right, testing::ElementsAre(11.75F, 0.0F));
}

}  // namespace
}  // namespace pathstat
