#include "extraction/radius_of_gyration.h"

#include "testing.h"

namespace pathstat {
namespace {

TEST(RadiusOfGyration, of_two_masses_on_a_line_is_the_reduced_mass_form) {
  // m1 m2 / (m1 + m2)^2 d^2 with m 1 and 3, d 4
  const std::vector<double> masses{1.0, 3.0};
  const std::vector<double> coordinates{10.0, 0.0, 0.0, 14.0, 0.0, 0.0};
  EXPECT_NEAR(radius_of_gyration(masses, coordinates), std::sqrt(3.0), 1e-14);
}

TEST(RadiusOfGyration, without_atoms_or_mass_is_zero) {
  EXPECT_EQ(radius_of_gyration({}, {}), 0.0);
  const std::vector<double> massless{0.0};
  const std::vector<double> somewhere{1.0, 2.0, 3.0};
  EXPECT_EQ(radius_of_gyration(massless, somewhere), 0.0);
}

}  // namespace
}  // namespace pathstat
