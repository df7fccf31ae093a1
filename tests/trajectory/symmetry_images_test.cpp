#include "trajectory/symmetry_images.h"

#include "in_process_core.h"
#include "testing.h"
#include "trajectory/model_frame.h"

namespace pathstat {
namespace {

using Doubles = std::vector<double>;
using Kind = SymmetryImages::Kind;

constexpr const char* orthorhombic = "((8 0 0) (0 16 0) (0 0 32))";
/// Four operators: the identity and three screw axes.
constexpr const char* screws =
    " (A D Rotation (1 0 0 0 1 0 0 0 1  -1 0 0 0 -1 0 0 0 1  -1 0 0 0 1 0 0 0 -1  1 0 0 0 -1 0 0 0 -1))\n"
    " (A D Translation (0 0 0  0.5 0 0.5  0 0.5 0.5  0.5 0.5 0))\n";
/// x, y, z; then the turns by 120 and 240 degrees about c, and the first turned upside down.
constexpr const char* hexagonal = "((4 0 0) (-2 3.4641016151377544 0) (0 0 5))";
constexpr const char* turns =
    " (A D Rotation (1 0 0 0 1 0 0 0 1  0 1 0 -1 -1 0 0 0 1  -1 -1 0 1 0 0 0 0 1  0 1 0 1 0 0 0 0 -1))\n"
    " (A D Translation (0 0 0  0 0 0  0 0 0  0 0 0))\n";

class Images : public testing::Test {
 protected:
  /// A crystal of atoms with the identifiers 7, 8, ...; its stored atoms are the last first.
  SymmetryImages images(const char* cell, const char* operators, const std::vector<const char*>& xyz,
                        std::int32_t& status) {
    std::string id, element, positions;
    for (std::size_t k = 0; k < xyz.size(); ++k) {
      id += " " + std::to_string(7 + k);
      element += " C";
      positions += std::string(" (") + xyz[k] + ")";
    }
    const auto model = core.import_text(std::string("(1 Model crystal\n (A I PeriodicType 100)\n (A V Cell ") + cell +
                                        ")\n (A I AtomId (" + id + "))\n (A C Element (" + element + "))\n (A V XYZ (" +
                                        positions + "))\n" + operators + ")\n");
    auto stored = atoms_of_model(model, status, ModelAtoms::stored);
    std::reverse(stored.begin(), stored.end());
    return SymmetryImages("Trj/His/", model, stored, status);
  }

  InProcessCore core;
};

TEST_F(Images, stand_behind_the_stored_atoms_parent_by_parent) {
  std::int32_t status = 0;
  const auto crystal = images(orthorhombic, screws, {"1 2 3", "2 5 7"}, status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(crystal.operators(), 4);
  EXPECT_THAT(crystal.parents(), ElementsAre(1, 2, 1, 1, 1, 2, 2, 2));
  EXPECT_THAT(crystal.ids(), ElementsAre(8, 7, 10, 12, 14, 9, 11, 13));
  EXPECT_EQ(crystal.atoms_of(1), 4);

  // The run's cell is not that of the model: half of its lengths are 5, 10 and 20.
  constexpr CellVectors cell{{10, 0, 0}, {0, 20, 0}, {0, 0, 40}};
  Doubles xyz(24, 0.0);
  std::copy_n(Doubles{2, 5, 7, 1, 2, 3}.begin(), 6, xyz.begin());
  crystal.add_images(xyz, 2, cell, Kind::positions, status);
  EXPECT_THAT(
      xyz, ElementsAreArray({2,     5,       7,  1,      2,  3,      -2 + 5, -5,     7 + 20,  -2,    5 + 10,  -7 + 20,
                             2 + 5, -5 + 10, -7, -1 + 5, -2, 3 + 20, -1,     2 + 10, -3 + 20, 1 + 5, -2 + 10, -3}));
  Doubles velocities(24, 0.0);
  std::copy_n(Doubles{1, 2, 3, 4, 5, 6}.begin(), 6, velocities.begin());
  crystal.add_images(velocities, 2, cell, Kind::velocities, status);
  EXPECT_THAT(std::span(velocities).subspan(6, 9), ElementsAre(-1, -2, 3, -1, 2, -3, 1, -2, -3));
  EXPECT_EQ(status, 0);
}

TEST_F(Images, of_the_first_atoms_follow_them_as_far_as_there_is_room) {
  std::int32_t status = 0;
  const auto crystal = images(orthorhombic, screws, {"1 2 3", "2 5 7"}, status);
  Doubles xyz(8, 0.0);
  xyz[0] = 1;
  crystal.add_images(xyz, 1, {{2, 0, 0}, {0, 2, 0}, {0, 0, 2}}, Kind::positions, status);
  EXPECT_THAT(xyz, ElementsAre(1, 0, 0, 0, 0, 1, 0, 0)) << "the image that does not fit is left out";
  crystal.add_images(xyz, 1, {{2, 0, 0}, {2, 0, 0}, {0, 0, 2}}, Kind::positions, status);
  EXPECT_EQ(status, 1) << "a flat cell";
}

TEST_F(Images, turn_in_space_as_the_axes_of_a_skew_cell_do) {
  std::int32_t status = 0;
  const auto crystal = images(hexagonal, turns, {"1 0.5 1"}, status);
  ASSERT_EQ(status, 0);
  ASSERT_EQ(crystal.atoms(), 4);
  Doubles xyz(12, 0.0);
  std::copy_n(Doubles{1, 0, 2}.begin(), 3, xyz.begin());
  crystal.add_images(xyz, 1, {{6, 0, 0}, {-3, 3 * std::sqrt(3.0), 0}, {0, 0, 9}}, Kind::positions, status);
  const double sine = std::sqrt(0.75);
  const Doubles expected{1, 0, 2, -0.5, sine, 2, -0.5, -sine, 2, -0.5, sine, -2};
  for (std::size_t k = 0; k < expected.size(); ++k) EXPECT_NEAR(xyz[k], expected[k], 1e-12) << k;
}

TEST_F(Images, on_a_special_position_are_as_few_as_the_model_has) {
  std::int32_t status = 0;
  const auto crystal = images(hexagonal, turns, {"0 0 1", "1 0.5 1"}, status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(crystal.atoms(), 6);
  EXPECT_THAT(crystal.parents(), ElementsAre(1, 2, 1, 1, 1, 2));
}

TEST_F(Images, are_none_without_a_group) {
  std::int32_t status = 0;
  const auto crystal = images(orthorhombic, "", {"1 2 3", "2 5 7"}, status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(crystal.operators(), 1);
  EXPECT_THAT(crystal.parents(), ElementsAre(1, 2));
  Doubles xyz{1, 2, 3, 4, 5, 6, 7, 8, 9};
  crystal.add_images(xyz, 2, {}, Kind::positions, status);
  EXPECT_THAT(xyz, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9));
}

}  // namespace
}  // namespace pathstat
