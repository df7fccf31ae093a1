#include "desk/model/connectivity.h"
#include "small_models.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

constexpr Cell cube(double edge) { return {{{edge, 0, 0}, {0, edge, 0}, {0, 0, edge}}}; }

MolecularModel periodic(std::vector<Vector3> positions, const Cell& cell, std::int32_t type = periodic_3d) {
  auto model = carbon_model(std::move(positions));
  model.periodic_type = type;
  model.cell = cell;
  return model;
}

/// Bonds of all pairs whose nearest images are at most `reach` apart, by the definition.
void bond_within(MolecularModel& model, double reach) {
  const Lattice lattice(model.periodic_type, model.cell);
  for (std::uint32_t i = 0; i < model.atoms(); ++i) {
    for (std::uint32_t j = i + 1; j < model.atoms(); ++j) {
      Vector3 d{};
      dvecsub_(model.positions[j], model.positions[i], d);
      if (dveclen_(translated(d, model.cell, lattice.nearest_image(d))) <= reach) model.bonds.emplace_back(i, j);
    }
  }
}

int periodicity_of_first(const Connectivity& found) {
  const auto network = found.networks.find(0);
  return network == found.networks.end() ? 0 : network->second.periodicity();
}

TEST(Molecules, are_numbered_by_their_first_atoms_and_listed_along_bonds) {
  auto model = carbon_model(std::vector<Vector3>(6));
  model.bonds = {{4, 0}, {2, 4}, {3, 5}};
  const auto found = find_molecules(model);
  EXPECT_THAT(found.molecule, ElementsAre(0, 1, 0, 2, 0, 2));
  EXPECT_THAT(found.order, ElementsAre(0, 4, 2, 1, 3, 5));
  EXPECT_THAT(found.starts, ElementsAre(0, 3, 4, 6));
}

TEST(Molecules, that_lie_on_both_sides_of_a_face_are_whole_by_their_images) {
  auto model = periodic({{9.5, 5, 0.2}, {0.5, 5, 9.9}, {1.5, 5, 9.9}}, cube(10));
  model.bonds = {{0, 1}, {1, 2}};
  const auto found = find_molecules(model);
  EXPECT_THAT(found.image, ElementsAre(Translation{0, 0, 0}, Translation{1, 0, -1}, Translation{1, 0, -1}));
  EXPECT_TRUE(found.networks.empty());
  model.periodic_type = periodic_2d;
  EXPECT_EQ(find_molecules(model).image[1], (Translation{0, 0, -1}));
  model.periodic_type = periodic_1d;
  EXPECT_EQ(find_molecules(model).image[1], (Translation{0, 0, -1}));
}

TEST(Molecules, that_join_their_own_images_are_networks_of_as_many_dimensions) {
  std::vector<Vector3> chain, sheet, grid;
  for (int a = 0; a < 3; ++a) {
    chain.push_back({0, 0, 1.5 * a});
    for (int b = 0; b < 3; ++b) {
      sheet.push_back({0, 1.5 * b, 1.5 * a});
      for (int c = 0; c < 3; ++c) grid.push_back({1.5 * c, 1.5 * b, 1.5 * a});
    }
  }
  int dimensions = 1;
  for (const auto& positions : {chain, sheet, grid}) {
    auto model = periodic(positions, cube(4.5));
    bond_within(model, 1.6);
    EXPECT_EQ(periodicity_of_first(find_molecules(model)), dimensions++);
  }
  // A gap of a cell edge leaves a chain finite.
  auto model = periodic(chain, cube(9));
  bond_within(model, 1.6);
  EXPECT_EQ(periodicity_of_first(find_molecules(model)), 0);
}

TEST(Molecules, of_diamond_are_one_network_that_repeats_with_the_cell) {
  const double q = 3.567 / 4;
  std::vector<Vector3> positions;
  for (const auto& corner : {Vector3{0, 0, 0}, Vector3{0, 2, 2}, Vector3{2, 0, 2}, Vector3{2, 2, 0}}) {
    positions.push_back({q * corner[0], q * corner[1], q * corner[2]});
    positions.push_back({q * (corner[0] + 1), q * (corner[1] + 1), q * (corner[2] + 1)});
  }
  auto model = periodic(positions, cube(4 * q));
  bond_within(model, 1.6);
  ASSERT_EQ(model.bonds.size(), 16u);
  const auto found = find_molecules(model);
  EXPECT_EQ(found.molecules(), 1u);
  const auto basis = found.networks.at(0).vectors();
  std::int32_t determinant = basis[0][0] * basis[1][1] * basis[2][2];
  EXPECT_EQ(std::abs(determinant), 1);
}

TEST(NetworkBasis, spans_just_the_translations_that_follow_from_those_added) {
  NetworkBasis basis;
  basis.add({0, 0, 0});
  EXPECT_EQ(basis.periodicity(), 0);
  basis.add({4, 0, 0});
  basis.add({-6, 0, 0});
  EXPECT_EQ(basis.periodicity(), 1);
  EXPECT_EQ(std::abs(basis.vectors()[0][0]), 2);
  basis.add({0, 1, 1});
  basis.add({0, 1, -1});
  EXPECT_EQ(basis.periodicity(), 3);
  const auto rows = basis.vectors();
  EXPECT_EQ(std::abs(rows[0][0] * rows[1][1] * rows[2][2]), 4);
}

TEST(Molecules, agree_with_label_merging_and_close_every_bond_on_random_graphs) {
  const auto seed = std::random_device{}();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> within(-15, 25);
  for (int round = 0; round < 20; ++round) {
    std::vector<Vector3> positions(60);
    for (auto& p : positions) p = {within(random), within(random), within(random)};
    auto model = periodic(positions, {{{10, 1, 2}, {-3, 9, 0}, {4, 2, 8}}});
    for (int k = 0; k < 45; ++k) {
      const auto i = static_cast<std::uint32_t>(random() % 60), j = static_cast<std::uint32_t>(random() % 60);
      if (i != j) model.bonds.emplace_back(i, j);
    }
    const auto found = find_molecules(model);

    std::vector<std::uint32_t> label(60);
    for (std::uint32_t k = 0; k < 60; ++k) label[k] = k;
    for (int pass = 0; pass < 60; ++pass) {
      for (const auto& [i, j] : model.bonds) label[i] = label[j] = std::min(label[i], label[j]);
    }
    for (std::uint32_t i = 0; i < 60; ++i) {
      for (std::uint32_t j = 0; j < i; ++j) {
        ASSERT_EQ(found.molecule[i] == found.molecule[j], label[i] == label[j]);
      }
    }
    const Lattice lattice(model.periodic_type, model.cell);
    for (const auto& [i, j] : model.bonds) {
      Vector3 d{};
      dvecsub_(model.positions[j], model.positions[i], d);
      const auto t = lattice.nearest_image(d);
      Translation closure{};
      for (std::size_t k = 0; k < 3; ++k) closure[k] = found.image[i][k] + t[k] - found.image[j][k];
      if (closure == Translation{}) continue;
      // A translation that follows from the basis does not change it.
      auto basis = found.networks.at(found.molecule[i]);
      const auto before = basis.vectors();
      basis.add(closure);
      ASSERT_EQ(basis.vectors(), before);
    }
  }
}

TEST(Lattice, finds_the_nearest_of_all_images_in_a_skewed_cell) {
  const auto seed = std::random_device{}();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> within(-12, 12);
  const Cell cell{{{6, 0, 0}, {2.9, 6, 0}, {-2.5, 2.8, 7}}};
  for (const auto type : {periodic_3d, periodic_2d, periodic_1d}) {
    const Lattice lattice(type, cell);
    for (int round = 0; round < 300; ++round) {
      const Vector3 d{within(random), within(random), within(random)};
      double nearest = INFINITY;
      const int a = type == periodic_3d ? 5 : 0, b = type == periodic_1d ? 0 : 5;
      for (int i = -a; i <= a; ++i) {
        for (int j = -b; j <= b; ++j) {
          for (int k = -7; k <= 7; ++k) nearest = std::min(nearest, dveclen_(translated(d, cell, {i, j, k})));
        }
      }
      ASSERT_NEAR(dveclen_(translated(d, cell, lattice.nearest_image(d))), nearest, 1e-9) << type;
    }
  }
}

TEST(Lattice, leaves_differences_beyond_all_reason_where_they_are) {
  const Lattice lattice(periodic_3d, cube(10));
  EXPECT_EQ(lattice.nearest_image({NAN, 0, 0}), Translation{});
  EXPECT_EQ(lattice.nearest_image({0, 1e300, 0}), Translation{});
}

}  // namespace
}  // namespace pathstat::desk
