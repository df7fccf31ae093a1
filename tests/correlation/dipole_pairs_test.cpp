#include "correlation/dipole_pairs.h"

#include <cstddef>

#include "testing.h"

namespace pathstat {
namespace {

using Doubles = std::vector<double>;

Doubles random_vectors(std::size_t frames, double offset) {
  std::mt19937 generator(5);
  std::normal_distribution<double> normal(offset, 1.0);
  Doubles vectors(3 * frames);
  for (double& value : vectors) value = normal(generator);
  return vectors;
}

/// XX, YY, ZZ, XY + YX, XZ + ZX, YZ + ZY and the total, summed over the origins first, first + 1, ... before end.
Doubles plain_sums(const Doubles& v, std::size_t step, std::size_t first, std::size_t end, std::size_t lags) {
  constexpr std::array<std::array<std::size_t, 2>, 6> axes{{{0, 0}, {1, 1}, {2, 2}, {0, 1}, {0, 2}, {1, 2}}};
  Doubles table(7 * lags);
  for (std::size_t origin = first; origin < end; ++origin) {
    for (std::size_t lag = 0; lag < lags && origin * step + lag < v.size() / 3; ++lag) {
      const double* u = &v[3 * origin * step];
      const double* w = u + 3 * lag;
      for (std::size_t c = 0; c < 6; ++c) {
        const auto [p, q] = axes[c];
        table[7 * lag + c] += p == q ? u[p] * w[p] : u[p] * w[q] + u[q] * w[p];
      }
      table[7 * lag + 6] += u[0] * w[0] + u[1] * w[1] + u[2] * w[2];
    }
  }
  return table;
}

void expect_sums(const Doubles& sums, const Doubles& wanted, bool components, double tolerance) {
  ASSERT_EQ(sums.size(), wanted.size());
  for (std::size_t k = 0; k < sums.size(); ++k) {
    if (!components && k % 7 != 6) {
      EXPECT_EQ(sums[k], 0.0);
    } else {
      ASSERT_NEAR(sums[k], wanted[k], tolerance) << k;
    }
  }
}

TEST(DipolePairs, are_summed_origin_by_origin) {
  for (const std::size_t frames : {1u, 2u, 17u, 40u}) {
    const Doubles vectors = random_vectors(frames, 0.5);
    for (const std::size_t step : {1u, 2u, 5u, 39u, 100u}) {
      std::int32_t status = -1;
      const DipolePairs pairs(vectors, static_cast<std::int64_t>(step), status);
      ASSERT_EQ(status, 0);
      const auto origins = (frames + step - 1) / step;
      ASSERT_EQ(pairs.origins(), static_cast<std::int64_t>(origins));
      for (const bool components : {false, true}) {
        Doubles table(7 * frames);
        const std::size_t middle = origins / 2;
        pairs.add(0, static_cast<std::int64_t>(middle), components, table);
        expect_sums(table, plain_sums(vectors, step, 0, middle, frames), components, 1e-12 * 40);
        pairs.add(static_cast<std::int64_t>(middle), static_cast<std::int64_t>(origins), components, table);
        expect_sums(table, plain_sums(vectors, step, 0, origins, frames), components, 1e-12 * 40);
      }
    }
  }
}

TEST(DipolePairs, count_those_of_the_origins_so_far) {
  std::int32_t status = -1;
  const DipolePairs pairs(Doubles(30), 3, status);  // frames 0 ... 9, origins 0, 3, 6, 9
  EXPECT_EQ(pairs.pairs(0, 4), 4);
  EXPECT_EQ(pairs.pairs(1, 4), 3);
  EXPECT_EQ(pairs.pairs(1, 2), 2);
  EXPECT_EQ(pairs.pairs(9, 4), 1);
  EXPECT_EQ(pairs.pairs(10, 4), 0);
}

TEST(DipolePairs, are_summed_at_a_stroke_by_a_transform) {
  for (const std::size_t frames : {2u, 7u, 64u, 1001u}) {
    const Doubles vectors = random_vectors(frames, 10.0);
    std::int32_t status = -1;
    const DipolePairs pairs(vectors, 1, status);
    for (const std::size_t lags : {std::size_t{1}, frames / 2 + 1, frames}) {
      const Doubles wanted = plain_sums(vectors, 1, 0, frames, lags);
      for (const bool components : {false, true}) {
        Doubles table(7 * lags);
        ASSERT_TRUE(pairs.sum_all(components, table));
        for (std::size_t k = components ? 0 : 6; k < table.size(); k += components ? 1 : 7) {
          // The mean squares are near 100, or 300 in all.
          ASSERT_NEAR(table[k], wanted[k], 1e-11 * static_cast<double>(frames - k / 7)) << frames << ' ' << k;
        }
      }
    }
  }
}

TEST(DipolePairs, are_transformed_where_that_costs_less) {
  struct Case {
    std::size_t frames;
    std::int64_t step, lags;
    bool components, pays;
  };
  for (const auto& [frames, step, lags, components, pays] :
       std::initializer_list<Case>{{20'000, 1, 20'000, false, true},
                                   {20'000, 1, 5, false, false},
                                   {20'000, 2, 20'000, false, false},  // a transform takes every frame for an origin
                                   {400, 1, 200, false, true},
                                   {400, 1, 200, true, false},
                                   {50, 1, 50, false, false}}) {
    std::int32_t status = -1;
    EXPECT_EQ(DipolePairs(Doubles(3 * frames), step, status).transforms_pay(lags, components), pays)
        << frames << ' ' << step << ' ' << lags;
  }
}

TEST(DipolePairs, of_a_turning_dipole_are_cosines) {
  constexpr std::size_t frames = 3000;
  constexpr double turn = 0.1, length = 40.0, constant = 7.0;
  Doubles vectors(3 * frames);
  for (std::size_t t = 0; t < frames; ++t) {
    vectors[3 * t] = length * std::cos(turn * static_cast<double>(t));
    vectors[3 * t + 1] = length * std::sin(turn * static_cast<double>(t));
    vectors[3 * t + 2] = constant;
  }
  std::int32_t status = -1;
  const DipolePairs pairs(vectors, 1, status);
  Doubles by_transform(7 * frames), by_pairs(7 * frames);
  ASSERT_TRUE(pairs.sum_all(true, by_transform));
  pairs.add(0, pairs.origins(), true, by_pairs);
  for (std::size_t lag = 0; lag < frames; ++lag) {
    const auto count = static_cast<double>(frames - lag);
    const double wanted = length * length * std::cos(turn * static_cast<double>(lag)) + constant * constant;
    for (const auto& table : {by_transform, by_pairs}) {
      ASSERT_NEAR(table[7 * lag + 6] / count, wanted, 1e-10 * 1649) << lag;
      ASSERT_NEAR(table[7 * lag + 2] / count, constant * constant, 1e-10 * 1649) << lag;
    }
  }
}

}  // namespace
}  // namespace pathstat
