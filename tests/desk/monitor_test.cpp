#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "desk/model/molecular_model.h"

namespace pathstat::desk {
namespace {

struct MonitorCase {
  std::int32_t type;
  std::int32_t convention;
  std::vector<Vector3> positions;
  double value;
};

class MonitorValue : public testing::TestWithParam<MonitorCase> {};

TEST_P(MonitorValue, is_that_of_the_closed_form) {
  const auto& c = GetParam();
  EXPECT_NEAR(monitor_value({c.type, c.convention, {}}, c.positions), c.value, 1e-10);
}

const double r2 = std::numbers::sqrt2;
const Vector3 o{0, 0, 0}, x{1, 0, 0}, y{0, 1, 0}, z{0, 0, 1};

INSTANTIATE_TEST_SUITE_P(distances_and_angles, MonitorValue,
                         testing::Values(MonitorCase{distance_monitor, 0, {{1, 2, 3}, {3, 5, 9}}, 7},
                                         MonitorCase{angle_monitor, 0, {x, o, {0, 3, 0}}, 90},
                                         MonitorCase{angle_monitor, 0, {x, o, {1, 1, 0}}, 45},
                                         MonitorCase{angle_monitor, 0, {{0.1, 0.1, 0.1}, o, {-3, -3, -3}}, 180},
                                         MonitorCase{plane_monitor, 0, {x, o, y, x, o, {0, 1, 1}}, 45},
                                         MonitorCase{plane_monitor, 0, {x, o, y, y, o, x}, 180}));

INSTANTIATE_TEST_SUITE_P(torsions, MonitorValue,
                         testing::Values(MonitorCase{torsion_monitor, 0, {x, o, z, {1, 0, 1}}, 0},
                                         MonitorCase{torsion_monitor, 0, {x, o, z, {-1, 0, 1}}, 180},
                                         MonitorCase{torsion_monitor, 0, {x, o, z, {0, 1, 1}}, 90},
                                         MonitorCase{torsion_monitor, 0, {x, o, z, {0, -1, 1}}, -90},
                                         MonitorCase{torsion_monitor, 0, {x, o, z, {-1, 1, 3}}, 135}));

// The atoms of convention 2 are centre, wing, wing, axis; those of 1 wing, axis, centre, wing.
const Vector3 wing{std::cos(0.7), std::sin(0.7), 0};
const double wing_degrees = 0.7 * 180 / std::numbers::pi;

INSTANTIATE_TEST_SUITE_P(inversions, MonitorValue,
                         testing::Values(MonitorCase{inversion_monitor, 2, {o, x, wing, z}, wing_degrees},
                                         MonitorCase{inversion_monitor, 2, {o, wing, x, z}, -wing_degrees},
                                         MonitorCase{inversion_monitor, 1, {x, z, o, wing}, -wing_degrees},
                                         MonitorCase{inversion_monitor, 4, {o, x, y, z}, 90},
                                         MonitorCase{inversion_monitor, 4, {o, x, y, {0, 0, -1}}, -90},
                                         MonitorCase{inversion_monitor, 4, {o, x, y, {1, 1, r2}}, 135},
                                         MonitorCase{inversion_monitor, 4, {o, x, y, {1, 1, -r2}}, -135},
                                         MonitorCase{inversion_monitor, 4, {o, x, y, {-1, -1, r2}}, 45},
                                         MonitorCase{inversion_monitor, 4, {o, x, {2, 0, 0}, z}, 0},
                                         MonitorCase{inversion_monitor, 2, {o, o, y, z}, 0},
                                         MonitorCase{inversion_monitor, 1, {z, {0, 0, 2}, o, x}, 0}));

}  // namespace
}  // namespace pathstat::desk
