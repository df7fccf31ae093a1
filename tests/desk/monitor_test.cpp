#include <gtest/gtest.h>

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
  EXPECT_NEAR(monitor_value({c.type, c.convention, {}, {}}, c.positions), c.value, 1e-10);
}

const Vector3 o{0, 0, 0}, x{1, 0, 0}, y{0, 1, 0}, z{0, 0, 1};

INSTANTIATE_TEST_SUITE_P(types, MonitorValue,
                         testing::Values(MonitorCase{distance_monitor, 0, {{1, 2, 3}, {3, 5, 9}}, 7},
                                         MonitorCase{angle_monitor, 0, {x, o, {1, 1, 0}}, 45},
                                         MonitorCase{torsion_monitor, 0, {x, o, z, {-1, 1, 3}}, 135},
                                         MonitorCase{plane_monitor, 0, {x, o, y, x, o, {0, 1, 1}}, 45},
                                         MonitorCase{inversion_monitor, 1, {x, z, o, y}, -90},
                                         MonitorCase{inversion_monitor, 2, {o, x, y, z}, 90},
                                         MonitorCase{inversion_monitor, 4, {o, x, {2, 0, 0}, z}, 0}));

}  // namespace
}  // namespace pathstat::desk
