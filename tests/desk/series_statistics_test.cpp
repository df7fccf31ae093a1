#include "desk/summary/series_statistics.h"

#include "testing.h"

namespace {

using namespace pathstat::desk;

/// A series x(k + 1) = φ x(k) + noise of variance 1, from its equilibrium on.
std::vector<double> autoregressive(double phi, std::size_t count, unsigned seed) {
  std::mt19937_64 random(seed);
  std::normal_distribution<double> normal;
  std::vector<double> series(count);
  double x = normal(random);
  for (auto& value : series) {
    value = x;
    x = phi * x + std::sqrt(1 - phi * phi) * normal(random);
  }
  return series;
}

/// The exact error of the mean of n values of it: σ²/n [(1 + φ)/(1 − φ) − 2φ (1 − φⁿ)/(n (1 − φ)²)].
double exact_error(double phi, double n) {
  return std::sqrt(((1 + phi) / (1 - phi) - 2 * phi * (1 - std::pow(phi, n)) / (n * (1 - phi) * (1 - phi))) / n);
}

struct Series {
  double phi;
  std::size_t count;
};

void PrintTo(const Series& series, std::ostream* out) { *out << "phi " << series.phi << ", " << series.count; }

class Autoregressive : public testing::TestWithParam<Series> {};

TEST_P(Autoregressive, has_the_exact_error_and_correlation_time_on_average) {
  const auto [phi, count] = GetParam();
  const auto seeds = static_cast<unsigned>(std::clamp<std::size_t>(1'500'000 / count, 150, 500));
  double squares = 0, drift_squares = 0, drift_error_squares = 0, times = 0, inverse = 0;
  int covered = 0, doubted = 0, found_drifting = 0;
  for (unsigned seed = 1; seed <= seeds; ++seed) {
    const auto s = series_statistics(autoregressive(phi, count, seed));
    squares += *s.error * *s.error;
    drift_squares += *s.drift * *s.drift;
    drift_error_squares += *s.drift_error * *s.drift_error;
    times += s.correlation_time.value_or(0);
    inverse += 1 / *s.effective;
    covered += std::abs(s.mean) < *s.error ? 1 : 0;
    doubted += doubt_about(s) == SeriesDoubt::none ? 0 : 1;
    found_drifting += s.drifts ? 1 : 0;
  }
  const double exact = exact_error(phi, static_cast<double>(count));
  EXPECT_NEAR(std::sqrt(squares / seeds) / exact, 1, 0.06);
  EXPECT_NEAR(times / seeds / (0.5 * (1 + phi) / (1 - phi)), 1, 0.16);
  EXPECT_NEAR(inverse / seeds / (exact * exact), 1, 0.15);
  EXPECT_NEAR(std::sqrt(drift_error_squares / drift_squares), 1, 0.15);
  EXPECT_NEAR(static_cast<double>(covered) / seeds, 0.683, 0.065);
  EXPECT_LT(doubted, static_cast<int>(seeds / 3));
  EXPECT_LT(found_drifting, static_cast<int>(seeds / 20));
}

INSTANTIATE_TEST_SUITE_P(long_and_short, Autoregressive,
                         testing::Values(Series{0, 100}, Series{0, 777}, Series{0, 10000},          //
                                         Series{0.5, 300}, Series{0.5, 10000},                      //
                                         Series{0.9, 1000}, Series{0.9, 3001}, Series{0.9, 10000},  //
                                         Series{0.99, 10000}, Series{0.99, 40000}));

TEST(SeriesStatistics, doubts_a_series_of_few_correlation_times) {
  int doubted = 0;
  for (unsigned seed = 1; seed <= 100; ++seed) {
    doubted += doubt_about(series_statistics(autoregressive(0.99, 1000, seed))) == SeriesDoubt::none ? 0 : 1;
  }
  EXPECT_GE(doubted, 98);
}

TEST(SeriesStatistics, finds_the_drift_under_the_fluctuation) {
  int found = 0;
  double error = 0;
  for (unsigned seed = 1; seed <= 100; ++seed) {
    auto values = autoregressive(0.9, 4000, seed);
    for (std::size_t k = 0; k < values.size(); ++k) values[k] += 1e5 + 2.0 * static_cast<double>(k) / 3999;
    const auto s = series_statistics(values);
    EXPECT_NEAR(*s.drift, 2, 5 * *s.drift_error);
    EXPECT_NEAR(s.mean, 1e5 + 1, 0.5);
    error += *s.drift_error;
    found += doubt_about(s) == SeriesDoubt::drifting ? 1 : 0;
  }
  EXPECT_GE(found, 99);
  EXPECT_NEAR(error / 100, std::sqrt(12.0) * exact_error(0.9, 4000), 0.03);
}

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(SeriesStatistics, leaves_out_what_few_values_cannot_tell) {
  const auto none = series_statistics({});
  EXPECT_EQ(none.values, 0u);
  EXPECT_FALSE(none.error || none.deviation || none.drift || none.correlation_time || none.effective);

  const auto one = series_statistics(std::vector{7.5});
  EXPECT_EQ(one.mean, 7.5);
  EXPECT_FALSE(one.error || one.deviation || one.drift || one.correlation_time || one.effective);
  EXPECT_EQ(doubt_about(one), SeriesDoubt::too_short);

  const auto two = series_statistics(std::vector{1.0, 3.0});
  EXPECT_EQ(two.mean, 2);
  EXPECT_DOUBLE_EQ(two.error.value(), 1);
  EXPECT_DOUBLE_EQ(two.deviation.value(), std::sqrt(2.0));
  EXPECT_FALSE(two.drift || two.correlation_time);
  EXPECT_EQ(doubt_about(two), SeriesDoubt::too_short);

  const auto three = series_statistics(std::vector{1.0, 2.0, 6.0});
  EXPECT_EQ(three.mean, 3);
  EXPECT_DOUBLE_EQ(three.error.value(), std::sqrt(7.0 / 3));
  EXPECT_DOUBLE_EQ(three.drift.value(), 5);
  EXPECT_EQ(doubt_about(three), SeriesDoubt::too_short);
}

TEST(SeriesStatistics, of_a_constant_series_has_no_error) {
  const auto s = series_statistics(std::vector<double>(1000, 0.1));
  EXPECT_EQ(s.mean, 0.1);
  EXPECT_EQ(s.error.value(), 0);
  EXPECT_EQ(s.drift.value(), 0);
  EXPECT_FALSE(s.correlation_time);
  EXPECT_EQ(doubt_about(s), SeriesDoubt::constant);
}

TEST(SeriesStatistics, skips_and_counts_what_is_not_finite) {
  auto values = autoregressive(0.5, 500, 3);
  const auto clean = series_statistics(values);
  values.insert(values.begin() + 100, {nan, std::numeric_limits<double>::infinity()});
  values.push_back(nan);
  const auto s = series_statistics(values);
  EXPECT_EQ(s.skipped, 3u);
  EXPECT_EQ(s.values, 500u);
  EXPECT_EQ(s.mean, clean.mean);
  EXPECT_EQ(s.error, clean.error);
}

TEST(SeriesStatistics, of_values_that_alternate_are_no_more_than_they_are) {
  std::vector<double> values(1000);
  for (std::size_t k = 0; k < values.size(); ++k) values[k] = k % 2 == 0 ? 1 : -1;
  EXPECT_LE(series_statistics(values).effective.value(), 1000);
}

}  // namespace
