#include "desk/model/bond_search.h"

#include "small_models.h"
#include "structure/elements.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

using Bonds = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

class BondsOfExample : public testing::TestWithParam<const char*> {};

TEST_P(BondsOfExample, are_those_of_its_model_file) {
  const std::string name = GetParam();
  auto result = read_model_file(EXAMPLES_DIR "/" + name + "/" + name + ".qfx");
  ASSERT_THAT(result.problem, IsEmpty());
  auto& model = result.models.front();
  auto stated = model.bonds;
  for (auto& [i, j] : stated) std::tie(i, j) = std::minmax({i, j});
  std::sort(stated.begin(), stated.end());
  find_bonds(model);
  EXPECT_EQ(model.bonds, stated);
}

INSTANTIATE_TEST_SUITE_P(runs, BondsOfExample, testing::Values("butane", "water", "argon"));

TEST(BondSearch, finds_the_pairs_that_the_definition_finds) {
  const auto seed = std::random_device{}();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> within(-20, 20);
  // Cells of less than one box, of two, and of several, along the directions.
  const Cell small{{{4, 0, 0}, {1, 5, 0}, {-1, 2, 30}}};
  const Cell large{{{17, 0, 0}, {5, 15, 0}, {-4, 3, 8}}};
  for (const auto& cell : {small, large}) {
    for (const auto type : {not_periodic, periodic_1d, periodic_2d, periodic_3d}) {
      std::vector<Vector3> positions(200);
      for (auto& p : positions) p = {within(random), within(random), within(random)};
      auto model = carbon_model(positions);
      for (auto& element : model.elements) element = random() % 3 == 0 ? 1 : random() % 5 == 0 ? 121 : 15;
      model.periodic_type = type;
      model.cell = cell;
      find_bonds(model);

      Bonds expected;
      const Lattice lattice(type, cell);
      for (std::uint32_t i = 0; i < 200; ++i) {
        for (std::uint32_t j = i + 1; j < 200; ++j) {
          const auto a = elements()[model.elements[i]].bond_radius, b = elements()[model.elements[j]].bond_radius;
          Vector3 d{};
          dvecsub_(positions[j], positions[i], d);
          d = translated(d, cell, lattice.nearest_image(d));
          if (a > 0 && b > 0 && dveclen_(d) <= a + b + bond_tolerance) expected.emplace_back(i, j);
        }
      }
      ASSERT_EQ(model.bonds, expected) << type;
      ASSERT_FALSE(expected.empty());
    }
  }
}

}  // namespace
}  // namespace pathstat::desk
