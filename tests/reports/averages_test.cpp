#include "reports/averages.h"

#include <cstddef>

#include "testing.h"

namespace pathstat {
namespace {

using Table = std::vector<double>;

Table random_table(std::size_t size, unsigned seed) {
  std::mt19937 generator(seed);
  std::normal_distribution<double> numbers(3.0, 2.0);
  Table table(size);
  std::ranges::generate(table, [&] { return numbers(generator); });
  return table;
}

double mean_of(const Table& table, std::size_t values, std::size_t column, std::int32_t first, std::int32_t last) {
  double sum = 0;
  for (std::int32_t f = first; f <= last; ++f) sum += table[static_cast<std::size_t>(f - 1) * values + column];
  return sum / (last - first + 1);
}

TEST(RunningAverage, is_the_mean_of_all_frames_so_far) {
  constexpr unsigned seed = 11;
  SCOPED_TRACE(seed);
  constexpr std::size_t values = 3;
  const Table table = random_table(values * 200, seed);
  Table averaged = table;
  ASSERT_EQ(status_of(runningaverage_, static_cast<std::int32_t>(values), 200, averaged), 0);
  for (std::size_t j = 0; j < values; ++j) {
    EXPECT_EQ(averaged[j], table[j]) << "the first frame stays";
    for (std::int32_t f = 1; f <= 200; ++f) {
      EXPECT_NEAR(averaged[static_cast<std::size_t>(f - 1) * values + j], mean_of(table, values, j, 1, f), 1e-12);
    }
  }
}

struct Blocks {
  std::int32_t frames, width, interval, values;
};
class BlockAverage : public testing::TestWithParam<Blocks> {};
TEST_P(BlockAverage, is_the_mean_over_each_window) {
  const auto& [frames, width, interval, values] = GetParam();
  constexpr unsigned seed = 12;
  SCOPED_TRACE(seed);
  const auto row = static_cast<std::size_t>(values);
  const Table table = random_table(row * static_cast<std::size_t>(frames), seed);
  Table averaged = table;
  Table work(static_cast<std::size_t>(frames));
  ASSERT_EQ(status_of(blockaverage_, values, frames, averaged, work, width, interval, width / 2), 0);
  const std::int32_t blocks = (frames + interval - 1) / interval;
  ASSERT_EQ(block_count(frames, interval), blocks);
  for (std::int32_t b = 1; b <= blocks; ++b) {
    const std::int32_t s = (b - 1) * interval;
    const std::int32_t low = std::max(1, 1 - width / 2 + s);
    const std::int32_t high = std::max(low, std::min(frames, width - width / 2 + s));
    for (std::size_t j = 0; j < row; ++j) {
      EXPECT_NEAR(averaged[static_cast<std::size_t>(b - 1) * row + j], mean_of(table, row, j, low, high), 1e-12)
          << "block " << b;
    }
  }
}
INSTANTIATE_TEST_SUITE_P(shapes, BlockAverage,
                         testing::Values(Blocks{100, 50, 1, 1}, Blocks{101, 7, 3, 6}, Blocks{10, 4, 25, 2},
                                         Blocks{1, 50, 1, 1}, Blocks{64, 64, 64, 3}));

struct Histogram {
  Table table;
  Table bin_data;
  std::int32_t status = 7;
};

Histogram histogram(Table table, std::int32_t values, std::int32_t frames, std::int32_t bins, std::int32_t stride = 0,
                    std::vector<std::int32_t> sizes = {}) {
  table.resize(static_cast<std::size_t>(values) * static_cast<std::size_t>(std::max(frames, bins)));
  Histogram made{std::move(table), Table(3 * static_cast<std::size_t>(values)), 7};
  Table counts(static_cast<std::size_t>(bins));
  histogram_(values, frames, sizes, made.table, counts, bins, stride > 0, stride, made.bin_data, made.status);
  return made;
}

TEST(Histogram, collects_values_round_the_lower_edge_of_each_bin) {
  // Range 4 in 4 bins: bin k takes what lies round k - 1, the first half as wide, the last half as wide again.
  const Histogram made = histogram({0, 0.4, 0.5, 1.4, 1.5, 2.6, 3.4, 4}, 1, 8, 4);
  EXPECT_EQ(made.status, 0);
  EXPECT_THAT(made.bin_data, ElementsAre(0.5, 4.0, 1.0));
  EXPECT_EQ(made.table[0], 2.0 / 8) << "0 and 0.4; 0.5 rounds up";
  EXPECT_EQ(made.table[1], 2.0 / 8) << "0.5 and 1.4";
  EXPECT_EQ(made.table[2], 1.0 / 8) << "1.5";
  EXPECT_EQ(made.table[3], 3.0 / 8) << "2.6, 3.4 and the highest";
}

TEST(Histogram, of_values_without_spread_is_full_in_every_bin) {
  for (const Table& table : {Table{2.5}, Table{1.0, 1.0 + 9e-8, 1.0}}) {
    const auto frames = static_cast<std::int32_t>(table.size());
    const Histogram made = histogram(table, 1, frames, 5);
    EXPECT_EQ(made.status, no_spread);
    EXPECT_EQ(made.bin_data[2], 0.0);
    EXPECT_EQ(made.bin_data[1], *std::ranges::max_element(table));
    EXPECT_THAT(std::vector(made.table.begin(), made.table.begin() + 5), Each(1.0));
  }
}

TEST(Histogram, pools_measures_and_counts_missing_ones_in_the_total) {
  // Two rows of up to three measures, the second row holding one: 4 numbers out of 6 places.
  const Histogram made = histogram({1, 2, 3, 5, 99, 99}, 3, 2, 4, 1, {3, 1});
  EXPECT_EQ(made.status, 0);
  EXPECT_EQ(made.bin_data[1], 5.0);
  double sum = 0;
  for (std::size_t k = 0; k < 4; ++k) sum += made.table[3 * k];
  EXPECT_NEAR(sum, 4.0 / 6, 1e-12);
}

TEST(Histogram, keeps_the_components_of_vectors_apart) {
  // Rows of two vectors: x from 0 to 3, y from 10 to 13, z without spread.
  const Histogram made = histogram({0, 10, 5, 1, 11, 5, 2, 12, 5, 3, 13, 5}, 6, 2, 3, 3, {6, 6});
  EXPECT_EQ(made.status, no_spread);
  EXPECT_EQ(made.bin_data[1], 3.0);
  EXPECT_EQ(made.bin_data[4], 13.0);
  EXPECT_EQ(made.bin_data[7], 5.0);
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_EQ(made.table[6 * k], made.table[6 * k + 1]) << "y is x moved by 10";
    EXPECT_EQ(made.table[6 * k + 2], 1.0);
  }
  EXPECT_EQ(made.table[0] + made.table[6] + made.table[12], 1.0);
}

TEST(Histogram, puts_what_is_no_number_into_the_first_bin) {
  const Histogram made = histogram({0, 1, 2, std::nan("")}, 1, 4, 2);
  EXPECT_EQ(made.table[0], 2.0 / 4);
}

}  // namespace
}  // namespace pathstat
