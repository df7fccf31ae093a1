#include "desk/model/symmetry.h"

#include "small_models.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

constexpr Matrix3 inversion{-1, 0, 0, 0, -1, 0, 0, 0, -1};
constexpr Matrix3 turn_x{1, 0, 0, 0, -1, 0, 0, 0, -1};
constexpr Matrix3 turn_y{-1, 0, 0, 0, 1, 0, 0, 0, -1};
constexpr Matrix3 turn_z{-1, 0, 0, 0, -1, 0, 0, 0, 1};
constexpr Matrix3 mirror_y{1, 0, 0, 0, -1, 0, 0, 0, 1};
constexpr Matrix3 quarter_z{0, 1, 0, -1, 0, 0, 0, 0, 1};
constexpr Matrix3 third_c{0, 1, 0, -1, -1, 0, 0, 0, 1};
constexpr Matrix3 third_111{0, 1, 0, 0, 0, 1, 1, 0, 0};
constexpr Matrix3 third_other{0, -1, 0, 0, 0, 1, -1, 0, 0};
constexpr Matrix3 sixth_c{1, 1, 0, -1, 0, 0, 0, 0, 1};

SymmetryOperators group(std::vector<Matrix3> rotations, std::vector<Vector3> translations) {
  rotations.insert(rotations.begin(), identity_rotation);
  translations.insert(translations.begin(), Vector3{});
  return {std::move(rotations), std::move(translations)};
}

MolecularModel crystal(std::vector<Vector3> positions, SymmetryOperators operators) {
  auto model = carbon_model(std::move(positions));
  model.periodic_type = periodic_3d;
  model.cell = {{{8, 0, 0}, {0, 16, 0}, {0, 0, 32}}};
  model.symmetry = std::move(operators);
  model.file_atoms = model.atoms();
  model.file_bonds = model.bonds.size();
  return model;
}

TEST(SymmetryImages, stand_behind_the_atoms_operator_by_operator_with_their_bonds) {
  auto model = crystal({{1, 2, 3}, {2, 2, 3}}, group({inversion, turn_z}, {{0, 0, 0}, {0.5, 0, 0.25}}));
  model.bonds = {{0, 1}};
  model.file_bonds = 1;
  model.ids = {7, 40};
  model.vectors["Velocity"] = {{1, 2, 3}, {0, 0, 0}};
  ASSERT_TRUE(expand_symmetry(model));
  EXPECT_THAT(model.ids, ElementsAre(7, 40, 41, 42, 43, 44));
  std::vector<std::int32_t> operators;
  for (const auto& origin : model.image_origins) operators.push_back(origin.op);
  EXPECT_THAT(operators, ElementsAre(2, 2, 3, 3));
  EXPECT_THAT(model.atom_images[1], ElementsAre(3, 5));
  EXPECT_EQ(model.positions[3], (Vector3{-2, -2, -3}));
  EXPECT_EQ(model.positions[4], (Vector3{3, -2, 11}));
  EXPECT_EQ(model.vectors["Velocity"][4], (Vector3{-1, -2, 3}));
  EXPECT_THAT(model.bonds, ElementsAre(Pair(0, 1), Pair(2, 3), Pair(4, 5)));
  EXPECT_EQ(model.names[5], "C");
  EXPECT_EQ(model.movable.size(), 6u);
}

TEST(SymmetryImages, that_coincide_in_any_cell_are_left_out) {
  // The first atom is on a centre of inversion of another cell, the second on the axis, the third anywhere.
  auto model = crystal({{4, 8, 16}, {0, 0, 3}, {1, 2, 3}},
                       group({inversion, turn_z, {1, 0, 0, 0, 1, 0, 0, 0, -1}}, {{}, {}, {}}));
  ASSERT_TRUE(expand_symmetry(model));
  EXPECT_THAT(model.atom_images[0], IsEmpty());
  EXPECT_EQ(model.atom_images[1].size(), 1u);
  EXPECT_EQ(model.atom_images[2].size(), 3u);
  EXPECT_EQ(model.atoms(), 7u);
}

TEST(SymmetryImages, are_refused_when_identifiers_run_out) {
  auto model = crystal({{1, 2, 3}}, group({inversion}, {{}}));
  model.ids = {2147483647};
  EXPECT_FALSE(expand_symmetry(model));
}

TEST(SymmetryImages, are_refused_for_more_atoms_than_a_model_has) {
  auto model = crystal(std::vector<Vector3>(520834), group(std::vector(191, inversion), std::vector<Vector3>(191)));
  EXPECT_FALSE(expand_symmetry(model));
}

struct GroupCase {
  const char* name;
  SymmetryOperators operators;
  std::int32_t lattice, centring;
};
const Vector3 zero{}, half{0.5, 0.5, 0.5};

const GroupCase cases[] = {
    {"triclinic", group({inversion}, {zero}), 0, 0},
    {"unique a", group({turn_x}, {half}), 1, 0},
    {"unique b with a mirror, C", group({mirror_y, identity_rotation}, {zero, {0.5, 0.5, 0}}), 2, 5},
    {"unique c, A", group({turn_z, identity_rotation}, {zero, {0, 0.5, 0.5}}), 3, 3},
    {"orthorhombic F",
     group({turn_x, turn_y, turn_z, identity_rotation, identity_rotation, identity_rotation},
           {zero, zero, zero, {0, 0.5, 0.5}, {0.5, 0, 0.5}, {0.5, 0.5, 1}}),
     4, 2},
    {"tetragonal I", group({quarter_z, turn_z, identity_rotation}, {zero, zero, half}), 7, 1},
    {"hexagonal axes, R", group({third_c, identity_rotation}, {zero, {2. / 3, 1. / 3, 1. / 3}}), 5, 6},
    {"rhombohedral axes", group({third_111}, {zero}), 6, 0},
    {"hexagonal", group({sixth_c, third_c}, {zero, zero}), 8, 0},
    {"cubic", group({third_111, third_other, {0, 0, 1, 1, 0, 0, 0, 1, 0}}, {zero, zero, zero}), 9, 0}};

TEST(GroupOfOperators, tells_lattice_and_centring) {
  for (const auto& row : cases) {
    SCOPED_TRACE(row.name);
    const auto found = group_of_operators("g", row.operators);
    EXPECT_EQ(found.lattice_type, row.lattice);
    EXPECT_EQ(found.centring_type, row.centring);
  }
}

}  // namespace
}  // namespace pathstat::desk
