#include <gemmi/symmetry.hpp>

#include "crystals/crystal_builder.h"
#include "crystals/crystal_settings.h"
#include "crystals/periodic_network.h"
#include "desk/model/group_library.h"
#include "in_process_core.h"
#include "structure/crystal_orientation.h"
#include "structure/elements.h"
#include "testing.h"

namespace pathstat {
namespace {

/// The settings of gemmi's table by name, so that its own operators are the second way.
const gemmi::SpaceGroup& known(const std::string& name) {
  for (const auto& group : gemmi::spacegroup_tables::main) {
    if (group.xhm() == name) return group;
  }
  throw std::runtime_error(name);
}

/// Lengths and angles that a lattice type allows, with nothing more alike than it asks for.
std::array<double, 6> cell_of(std::int32_t lattice) {
  switch (lattice) {
    case 0:
      return {11, 13, 17, 81, 97, 103};
    case 1:
      return {11, 13, 17, 98, 90, 90};
    case 2:
      return {11, 13, 17, 90, 98, 90};
    case 3:
      return {11, 13, 17, 90, 90, 98};
    case 4:
      return {11, 13, 17, 90, 90, 90};
    case 5:
    case 8:
      return {13, 13, 17, 90, 90, 120};
    case 6:
      return {13, 13, 13, 77, 77, 77};
    case 7:
      return {13, 13, 17, 90, 90, 90};
    default:
      return {17, 17, 17, 90, 90, 90};
  }
}

using Steps = std::array<long, 3>;
constexpr long steps = 100000;

/// A point modulo the lattice.
Steps in_cell(const Vector3& f) {
  Steps point{};
  for (std::size_t k = 0; k < 3; ++k) point[k] = (std::lround(f[k] * steps) % steps + steps) % steps;
  return point;
}

/// The numbers by which points may differ that are the same but for rounding.
bool same(const Steps& a, const Steps& b) {
  for (std::size_t k = 0; k < 3; ++k) {
    const long d = std::abs(a[k] - b[k]);
    if (std::min(d, steps - d) > 2) return false;
  }
  return true;
}

std::vector<Steps> images_by_definition(const gemmi::GroupOps& group, const Vector3& f) {
  std::vector<Steps> images;
  for (const auto& op : group) {
    const auto point = in_cell(op.apply_to_xyz(f));
    const bool is_new =
        std::none_of(images.begin(), images.end(), [&](const Steps& each) { return same(each, point); });
    if (is_new) images.push_back(point);
  }
  return images;
}

TEST(AllGroups, fill_cells_as_their_operators_do_by_definition) {
  InProcessCore core;
  const std::vector<Vector3> sites{{0.1371, 0.2113, 0.3719}, {0, 0, 0}, {0.5, 0.25, 0.125}};
  for (const auto& row : desk::library_groups()) {
    const auto group = core.model.space_groups(row.number, row.option);
    ASSERT_EQ(group.size(), 1u) << row.name;
    for (const auto& f : sites) {
      const auto id = core.model.create_model(row.name);
      auto& object = *core.model.model(id);
      const auto c = cell_of(core.model.space_group(group.front())->lattice_type);
      constexpr double degree = std::numbers::pi / 180;
      std::int32_t status = 0;
      auto& cell = object.data.cell;
      kva_cry_3dparamtocell_(c[0], c[1], c[2], c[3] * degree, c[4] * degree, c[5] * degree, 4, cell[0], cell[1],
                             cell[2], status);
      core.model.set_space_group(object, group.front());
      const desk::Lattice lattice(desk::periodic_3d, cell);
      core.model.add_atoms(object, std::array{element_of_symbol("C")}, std::array<Vector3, 1>{lattice.cartesian(f)});
      ASSERT_EQ(status_of(kva_cry_buildcrystal_, id, build_option::no_new_bonds, 0), 0) << row.name;
      const auto expected = images_by_definition(known(row.name).operations(), f);
      ASSERT_EQ(object.data.atoms(), expected.size()) << row.name << ' ' << f[0];
      for (const auto& x : object.data.positions) {
        const auto point = in_cell(lattice.fractional(x));
        EXPECT_TRUE(std::any_of(expected.begin(), expected.end(), [&](const Steps& each) { return same(each, point); }))
            << row.name << ' ' << f[0];
      }
      core.model.remove_model(id);
    }
  }
}

TEST(AllGroups, multiply_and_invert_every_operator_as_the_library_does) {
  InProcessCore core;
  constexpr CellShift none{};
  for (const auto& row : desk::library_groups()) {
    const auto ids = core.model.space_groups(row.number, row.option);
    std::int32_t status = 0;
    const auto table = group_table(ids.front(), status);
    ASSERT_EQ(status, 0) << row.name;
    std::vector<gemmi::Op> operators;
    for (const auto& op : known(row.name).operations()) operators.push_back(op);
    ASSERT_EQ(table.size(), operators.size()) << row.name;
    const auto number = [](std::size_t op) { return static_cast<std::int32_t>(op + 1); };
    for (std::size_t one = 0; one < operators.size(); ++one) {
      std::int32_t result = 0;
      CellShift shift{};
      for (std::size_t two = 0; two < operators.size(); ++two) {
        sym_multiplyfromtable_(number(one), none, number(two), none, result, shift, table.rotations, table.translations,
                               table.codes, table.index, status);
        ASSERT_EQ(status, 0) << row.name;
        // The first of the two acts first.
        const auto product = operators[two].combine(operators[one]);
        auto found = operators[static_cast<std::size_t>(result - 1)];
        for (std::size_t k = 0; k < 3; ++k) found.tran[k] += gemmi::Op::DEN * shift[k];
        ASSERT_EQ(found, product) << row.name << ' ' << one << ' ' << two;
      }
      sym_invertfromtable_(number(one), none, result, shift, table.rotations, table.translations, table.codes,
                           table.index, status);
      ASSERT_EQ(status, 0) << row.name;
      auto found = operators[static_cast<std::size_t>(result - 1)];
      for (std::size_t k = 0; k < 3; ++k) found.tran[k] += gemmi::Op::DEN * shift[k];
      ASSERT_EQ(found, operators[one].inverse()) << row.name << ' ' << one;
    }
  }
}

}  // namespace
}  // namespace pathstat
