#include "desk/import/unwrapping.h"

#include "testing.h"

namespace pathstat::desk {
namespace {

MolecularModel atoms_at(const Cell& cell, std::vector<Vector3> positions) {
  MolecularModel model;
  model.periodic_type = periodic_3d;
  model.cell = cell;
  model.positions = std::move(positions);
  for (std::int32_t k = 1; std::cmp_less_equal(k, model.positions.size()); ++k) model.ids.push_back(k);
  return model;
}

Cell cube(double length) { return {Vector3{length, 0, 0}, Vector3{0, length, 0}, Vector3{0, 0, length}}; }

TEST(Unwrapping, an_atom_that_crossed_does_not_move_with_the_cell) {
  Unwrapping unwrapping(atoms_at(cube(10), {{9.5, 5, 5}}));
  std::vector<double> xyz{9.5, 5, 5};
  unwrapping.follow(Lattice(periodic_3d, cube(10)), xyz);
  xyz = {0.5, 5, 5};
  unwrapping.follow(Lattice(periodic_3d, cube(10)), xyz);
  EXPECT_DOUBLE_EQ(xyz[0], 10.5);
  // The cell grows by 1; the atom, wrapped, stays in place, and so does the one that is followed.
  xyz = {0.5, 5, 5};
  unwrapping.follow(Lattice(periodic_3d, cube(11)), xyz);
  EXPECT_DOUBLE_EQ(xyz[0], 10.5);
}

TEST(Unwrapping, molecules_that_stay_are_whole_at_their_first_atoms) {
  auto model = atoms_at(cube(10), {{9.5, 5, 5}, {0.4, 5, 5}});
  model.bonds = {{0, 1}};
  Unwrapping unwrapping(model, true);
  for (const auto& [in, out] :
       {std::pair{std::vector{9.5, 5.0, 5.0, 0.4, 5.0, 5.0}, std::vector{9.5, 5.0, 5.0, 10.4, 5.0, 5.0}},
        std::pair{std::vector{0.5, 5.0, 5.0, 9.6, 5.0, 5.0}, std::vector{0.5, 5.0, 5.0, -0.4, 5.0, 5.0}}}) {
    auto xyz = in;
    unwrapping.follow(Lattice(periodic_3d, cube(10)), xyz);
    EXPECT_THAT(xyz, Pointwise(DoubleNear(1e-12), out));
  }
}

TEST(Unwrapping, chains_are_whole_through_every_side_whatever_the_order_of_their_atoms) {
  const auto cell = cube(8);
  std::mt19937 random(7);
  std::normal_distribution<double> step(0, 0.9);
  // A chain of 12 atoms, 1 Å apart along x: longer than the cell. Its atoms stand in a shuffled order.
  std::vector<std::uint32_t> order{5, 2, 9, 0, 11, 7, 1, 4, 10, 3, 8, 6};
  auto model = atoms_at(cell, std::vector<Vector3>(12));
  for (std::uint32_t k = 0; k + 1 < 12; ++k) model.bonds.emplace_back(order[k], order[k + 1]);
  Vector3 head{1, 2, 3};
  const auto frame = [&] {
    std::vector<double> xyz(36);
    for (std::size_t k = 0; k < 12; ++k) {
      for (std::size_t axis = 0; axis < 3; ++axis) {
        const double x = head[axis] + (axis == 0 ? static_cast<double>(k) : 0);
        xyz[3 * order[k] + axis] = x - 8 * std::floor(x / 8);
      }
    }
    return xyz;
  };
  auto xyz = frame();
  for (std::size_t k = 0; k < 12; ++k) model.positions[k] = {xyz[3 * k], xyz[3 * k + 1], xyz[3 * k + 2]};
  Unwrapping unwrapping(model);
  EXPECT_EQ(unwrapping.molecules(), 1u);
  Vector3 first{};
  for (int count = 0; count < 200; ++count) {
    xyz = frame();
    unwrapping.follow(Lattice(periodic_3d, cell), xyz);
    for (std::size_t k = 0; k + 1 < 12; ++k) {
      EXPECT_NEAR(xyz[3 * order[k + 1]] - xyz[3 * order[k]], 1, 1e-9);
      EXPECT_NEAR(xyz[3 * order[k + 1] + 1] - xyz[3 * order[k] + 1], 0, 1e-9);
    }
    const Vector3 now{xyz[3 * order[0]] - head[0], xyz[3 * order[0] + 1] - head[1], xyz[3 * order[0] + 2] - head[2]};
    if (count == 0) first = now;
    for (std::size_t axis = 0; axis < 3; ++axis) EXPECT_NEAR(now[axis], first[axis], 1e-9);
    for (auto& x : head) x += step(random);
  }
}

}  // namespace
}  // namespace pathstat::desk
