#include "desk/summary/curve_features.h"

#include "testing.h"

namespace pathstat::desk {
namespace {

/// A function at the middles of `count` bins.
std::vector<PlotPoint> bins(double width, std::size_t count, const std::function<double(double)>& function) {
  std::vector<PlotPoint> points;
  for (std::size_t k = 0; k < count; ++k) {
    const double x = (static_cast<double>(k) + 0.5) * width;
    points.push_back({static_cast<float>(x), static_cast<float>(function(x))});
  }
  return points;
}

double bell(double x, double centre, double width) { return std::exp(-0.5 * std::pow((x - centre) / width, 2)); }

TEST(FirstShell, is_found_between_bins_and_over_noise) {
  const auto g = [](double x) { return 2 * bell(x, 3.33, 0.25) + (x > 3.33 ? 1 - bell(x, 4.27, 0.4) : 0); };
  const auto clean = first_shell(bins(0.05, 160, g));
  EXPECT_NEAR(clean.peak.value().x, 3.36, 0.06);
  EXPECT_NEAR(clean.minimum.value().x, 4.27, 0.03);
  const auto noisy = first_shell(bins(0.05, 160, [&](double x) { return g(x) + 0.02 * std::sin(70 * x); }));
  EXPECT_NEAR(noisy.peak.value().x, clean.peak->x, 0.05);
  EXPECT_NEAR(noisy.minimum.value().x, clean.minimum->x, 0.2);

  const auto parabola = first_shell(bins(0.1, 60, [](double x) { return 3 - std::pow(x - 3.02, 2); }));
  EXPECT_NEAR(parabola.peak.value().x, 3.02, 1e-4);
  EXPECT_NEAR(parabola.peak.value().y, 3, 1e-4);
}

TEST(FirstShell, of_a_bond_ends_in_front_of_the_low_peak_of_the_neighbours) {
  const auto shell =
      first_shell(bins(0.02, 400, [](double x) { return 68 * bell(x, 1, 0.03) + 1.5 * bell(x, 1.8, 0.15); }));
  EXPECT_NEAR(shell.peak.value().x, 1, 0.01);
  EXPECT_NEAR(shell.minimum.value().x, 1.2, 0.15);
}

TEST(FirstShell, is_none_without_a_peak_or_a_rise_behind_it) {
  EXPECT_FALSE(first_shell(bins(0.1, 50, [](double) { return 1.0; })).peak);
  EXPECT_FALSE(first_shell({}).peak);
  const auto falling = first_shell(bins(0.1, 80, [](double x) { return 3 * bell(x, 3, 0.5); }));
  EXPECT_TRUE(falling.peak);
  EXPECT_FALSE(falling.minimum);
}

TEST(RunningCoordination, of_an_ideal_gas_is_the_number_in_the_sphere) {
  const auto numbers = running_coordination(bins(0.01, 1000, [](double) { return 1.0; }), 0.03);
  EXPECT_NEAR(numbers.back().x, 10, 1e-4);
  EXPECT_NEAR(numbers.back().y, 0.03 * 4.0 / 3 * std::numbers::pi * 1000, 1e-3);
  EXPECT_TRUE(running_coordination({}, 1).empty());
}

TEST(HighestPeaks, come_by_height_and_leave_out_ends_and_ripples) {
  const auto curve = bins(1, 1000, [](double x) {
    return 10 * bell(x, 0, 5) + 3 * bell(x, 301.3, 20) + 5 * bell(x, 700, 30) + bell(x, 900, 10) + 0.1 * std::sin(x);
  });
  const auto peaks = highest_peaks(curve, 2);
  ASSERT_EQ(peaks.size(), 2u);
  EXPECT_NEAR(peaks[0].x, 700, 3);
  EXPECT_NEAR(peaks[1].x, 301.3, 3);
  EXPECT_EQ(highest_peaks(curve, 9).size(), 3u);
  EXPECT_TRUE(highest_peaks({}, 3).empty());
}

TEST(Fit, tells_exponent_and_determination) {
  const auto power = bins(0.1, 100, [](double x) { return 3 * std::pow(x, 0.7); });
  EXPECT_NEAR(exponent(within(power, 1, 5)).value(), 0.7, 1e-5);
  EXPECT_EQ(within(power, 1, 5).size(), 40u);
  const std::vector<PlotPoint> points{{0, 0}, {1, 2}, {2, 1}, {3, 3}};
  EXPECT_NEAR(determination(points, 0.8, 0.3).value(), 0.64, 1e-6);
  EXPECT_FALSE(determination(std::span(points).first(2), 1, 0));
  EXPECT_FALSE(exponent(std::span(points).first(3)));
}

}  // namespace
}  // namespace pathstat::desk
