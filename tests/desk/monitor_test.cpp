#include "desk/model/molecular_model.h"

#include "testing.h"

namespace pathstat::desk {
namespace {

struct MonitorCase {
  std::int32_t type;
  std::int32_t convention;
  std::vector<Vector3> positions;
  double value;
};

const Vector3 o{0, 0, 0}, x{1, 0, 0}, y{0, 1, 0}, z{0, 0, 1};

const MonitorCase cases[] = {
    {distance_monitor, 0, {{1, 2, 3}, {3, 5, 9}}, 7}, {angle_monitor, 0, {x, o, {1, 1, 0}}, 45},
    {torsion_monitor, 0, {x, o, z, {-1, 1, 3}}, 135}, {plane_monitor, 0, {x, o, y, x, o, {0, 1, 1}}, 45},
    {inversion_monitor, 1, {x, z, o, y}, -90},        {inversion_monitor, 2, {o, x, y, z}, 90},
    {inversion_monitor, 4, {o, x, {2, 0, 0}, z}, 0}};

TEST(MonitorValue, is_that_of_the_closed_form) {
  for (const auto& c : cases) {
    EXPECT_NEAR(monitor_value({c.type, c.convention, {}, {}}, c.positions), c.value, 1e-10);
  }
}

}  // namespace
}  // namespace pathstat::desk
