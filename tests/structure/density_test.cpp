#include "in_process_core.h"
#include "structure/crystal_coordinates.h"
#include "testing.h"

namespace pathstat {
namespace {

class Density : public testing::Test {
 protected:
  /// Two atoms of mass 20 and 30, the second half occupied, in a box of 2 x 4 x 5 Å.
  std::int32_t model(std::int32_t type) {
    return core.import_text("(1 Model box\n (A I PeriodicType " + std::to_string(type) +
                            ")\n (A V Cell ((2 0 0) (0 4 0) (0 0 5)))\n (A I AtomId (1 2))\n (A C Element (Ar Ar))\n"
                            " (A V XYZ ((0 0 0) (1 1 1)))\n (A D Mass (20 30))\n (A D Occupancy (1 0.5))\n)\n");
  }
  InProcessCore core;
};

TEST_F(Density, is_the_mass_of_the_occupied_atoms_over_the_volume) {
  double density = 0;
  EXPECT_EQ(status_of(kva_cry_density_, model(100), density), 0);
  EXPECT_NEAR(density, 35.0 / 40 * 1.66056, 1e-12);
}

}  // namespace
}  // namespace pathstat
