#include "properties/radius_of_gyration.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace pathstat {
namespace {

TEST(RadiusOfGyration, of_two_masses_on_a_line_is_the_reduced_mass_form) {
  // m1 m2 / (m1 + m2)^2 d^2 with m 1 and 3, d 4
  const std::vector<double> masses{1.0, 3.0};
  const std::vector<double> coordinates{10.0, 0.0, 0.0, 14.0, 0.0, 0.0};
  EXPECT_NEAR(radius_of_gyration(masses, coordinates), std::sqrt(3.0), 1e-14);
}

TEST(RadiusOfGyration, is_the_mean_square_less_the_square_of_the_mean) {
  constexpr unsigned seed = 31;
  SCOPED_TRACE(seed);
  std::mt19937 generator(seed);
  std::uniform_real_distribution<double> numbers(0.5, 20.0);
  std::vector<double> masses(50);
  std::vector<double> coordinates(150);
  for (double& m : masses) m = numbers(generator);
  for (double& r : coordinates) r = numbers(generator);
  double mass = 0;
  double square = 0;
  double sum[3] = {};
  for (std::size_t k = 0; k < 50; ++k) {
    mass += masses[k];
    for (std::size_t c = 0; c < 3; ++c) {
      square += masses[k] * coordinates[3 * k + c] * coordinates[3 * k + c];
      sum[c] += masses[k] * coordinates[3 * k + c];
    }
  }
  const double expected =
      std::sqrt(square / mass - (sum[0] * sum[0] + sum[1] * sum[1] + sum[2] * sum[2]) / (mass * mass));
  EXPECT_NEAR(radius_of_gyration(masses, coordinates), expected, 1e-10);
}

TEST(RadiusOfGyration, without_atoms_or_mass_is_zero) {
  EXPECT_EQ(radius_of_gyration({}, {}), 0.0);
  const std::vector<double> massless{0.0};
  const std::vector<double> somewhere{1.0, 2.0, 3.0};
  EXPECT_EQ(radius_of_gyration(massless, somewhere), 0.0);
}

}  // namespace
}  // namespace pathstat
