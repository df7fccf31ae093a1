#include "crystals/crystal_builder.h"

#include "crystals/crystal_settings.h"
#include "in_process_core.h"
#include "structure/crystal_orientation.h"
#include "structure/elements.h"
#include "testing.h"

namespace pathstat {
namespace {

struct SiteOf {
  const char* element;
  Vector3 f;
  std::size_t multiplicity;  ///< International Tables, volume A
};

struct Structure {
  const char* name;
  const char* group;
  std::array<double, 6> cell;  ///< Å, degrees
  std::vector<SiteOf> sites;
};

/// Cells and sites: Wyckoff, Crystal Structures, volumes 1 and 2; urea: Swaminathan et al., Acta Cryst. B40 (1984) 300;
/// polyethylene: Bunn, Trans. Faraday Soc. 35 (1939) 482.
const std::vector<Structure> structures{
    {"rock salt", "F m -3 m", {5.64, 5.64, 5.64, 90, 90, 90}, {{"Na", {0, 0, 0}, 4}, {"Cl", {0.5, 0.5, 0.5}, 4}}},
    {"CsCl", "P m -3 m", {4.123, 4.123, 4.123, 90, 90, 90}, {{"Cs", {0, 0, 0}, 1}, {"Cl", {0.5, 0.5, 0.5}, 1}}},
    {"diamond", "F d -3 m:1", {3.567, 3.567, 3.567, 90, 90, 90}, {{"C", {0, 0, 0}, 8}}},
    {"diamond at the centre", "F d -3 m:2", {3.567, 3.567, 3.567, 90, 90, 90}, {{"C", {0.125, 0.125, 0.125}, 8}}},
    {"sphalerite", "F -4 3 m", {5.41, 5.41, 5.41, 90, 90, 90}, {{"Zn", {0, 0, 0}, 4}, {"S", {0.25, 0.25, 0.25}, 4}}},
    {"fluorite", "F m -3 m", {5.463, 5.463, 5.463, 90, 90, 90}, {{"Ca", {0, 0, 0}, 4}, {"F", {0.25, 0.25, 0.25}, 8}}},
    {"perovskite",
     "P m -3 m",
     {3.84, 3.84, 3.84, 90, 90, 90},
     {{"Ca", {0.5, 0.5, 0.5}, 1}, {"Ti", {0, 0, 0}, 1}, {"O", {0.5, 0, 0}, 3}}},
    {"spinel",
     "F d -3 m:2",
     {8.08, 8.08, 8.08, 90, 90, 90},
     {{"Mg", {0.125, 0.125, 0.125}, 8}, {"Al", {0.5, 0.5, 0.5}, 16}, {"O", {0.262, 0.262, 0.262}, 32}}},
    {"pyrite", "P a -3", {5.41, 5.41, 5.41, 90, 90, 90}, {{"Fe", {0, 0, 0}, 4}, {"S", {0.386, 0.386, 0.386}, 8}}},
    {"iron", "I m -3 m", {2.866, 2.866, 2.866, 90, 90, 90}, {{"Fe", {0, 0, 0}, 2}}},
    {"cuprite", "P n -3 m:1", {4.27, 4.27, 4.27, 90, 90, 90}, {{"O", {0, 0, 0}, 2}, {"Cu", {0.25, 0.25, 0.25}, 4}}},
    {"garnet",
     "I a -3 d",
     {11.46, 11.46, 11.46, 90, 90, 90},
     {{"Mg", {0.125, 0, 0.25}, 24},
      {"Al", {0, 0, 0}, 16},
      {"Si", {0.375, 0, 0.25}, 24},
      {"O", {0.033, 0.05, 0.653}, 96}}},
    {"magnesium", "P 63/m m c", {3.209, 3.209, 5.21, 90, 90, 120}, {{"Mg", {1. / 3, 2. / 3, 0.25}, 2}}},
    {"graphite",
     "P 63/m m c",
     {2.456, 2.456, 6.696, 90, 90, 120},
     {{"C", {0, 0, 0.25}, 2}, {"C", {1. / 3, 2. / 3, 0.25}, 2}}},
    {"wurtzite",
     "P 63 m c",
     {3.811, 3.811, 6.234, 90, 90, 120},
     {{"Zn", {1. / 3, 2. / 3, 0}, 2}, {"S", {1. / 3, 2. / 3, 0.375}, 2}}},
    {"quartz",
     "P 32 2 1",
     {4.913, 4.913, 5.405, 90, 90, 120},
     {{"Si", {0.465, 0, 2. / 3}, 3}, {"O", {0.415, 0.272, 0.786}, 6}}},
    {"cadmium iodide",
     "P -3 m 1",
     {4.24, 4.24, 6.84, 90, 90, 120},
     {{"Cd", {0, 0, 0}, 1}, {"I", {1. / 3, 2. / 3, 0.25}, 2}}},
    {"calcite",
     "R -3 c:H",
     {4.99, 4.99, 17.06, 90, 90, 120},
     {{"Ca", {0, 0, 0}, 6}, {"C", {0, 0, 0.25}, 6}, {"O", {0.257, 0, 0.25}, 18}}},
    {"corundum",
     "R -3 c:H",
     {4.763, 4.763, 13.003, 90, 90, 120},
     {{"Al", {0, 0, 0.352}, 12}, {"O", {0.306, 0, 0.25}, 18}}},
    {"bismuth", "R -3 m:R", {4.746, 4.746, 4.746, 57.23, 57.23, 57.23}, {{"Bi", {0.237, 0.237, 0.237}, 2}}},
    {"rutile", "P 42/m n m", {4.594, 4.594, 2.959, 90, 90, 90}, {{"Ti", {0, 0, 0}, 2}, {"O", {0.305, 0.305, 0}, 4}}},
    {"anatase", "I 41/a m d:1", {3.785, 3.785, 9.514, 90, 90, 90}, {{"Ti", {0, 0, 0}, 4}, {"O", {0, 0, 0.208}, 8}}},
    {"cristobalite",
     "P 41 21 2",
     {4.972, 4.972, 6.922, 90, 90, 90},
     {{"Si", {0.3, 0.3, 0}, 4}, {"O", {0.239, 0.104, 0.179}, 8}}},
    {"urea",
     "P -4 21 m",
     {5.565, 5.565, 4.684, 90, 90, 90},
     {{"C", {0, 0.5, 0.328}, 2},
      {"O", {0, 0.5, 0.5962}, 2},
      {"N", {0.1447, 0.6447, 0.1785}, 4},
      {"H", {0.2552, 0.7552, 0.2845}, 4},
      {"H", {0.1428, 0.6428, 0.9661}, 4}}},
    {"marcasite", "P n n m", {4.436, 5.414, 3.381, 90, 90, 90}, {{"Fe", {0, 0, 0}, 2}, {"S", {0.2, 0.378, 0}, 4}}},
    {"aragonite",
     "P m c n",
     {4.94, 7.94, 5.72, 90, 90, 90},
     {{"Ca", {0.25, 0.417, 0.75}, 4},
      {"C", {0.25, 0.75, 0.083}, 4},
      {"O", {0.25, 0.917, 0.083}, 4},
      {"O", {0.47, 0.667, 0.083}, 8}}},
    {"polyethylene",
     "P n a m",
     {7.4, 4.93, 2.534, 90, 90, 90},
     {{"C", {0.038, 0.065, 0.25}, 4}, {"H", {0.186, 0.06, 0.25}, 4}, {"H", {0.011, 0.277, 0.25}, 4}}},
    {"baddeleyite",
     "P 1 21/c 1",
     {5.169, 5.232, 5.341, 90, 99.25, 90},
     {{"Zr", {0.276, 0.041, 0.208}, 4}, {"O", {0.07, 0.342, 0.345}, 4}, {"O", {0.442, 0.755, 0.479}, 4}}},
    {"a lattice on its side",
     "C 1 2/m 1",
     {9.5, 7.4, 5.6, 90, 103, 90},
     {{"C", {0, 0, 0}, 2}, {"O", {0.3, 0, 0.2}, 4}, {"N", {0.1, 0.2, 0.3}, 8}}},
    {"kyanite's cell",
     "P -1",
     {7.126, 7.852, 5.572, 89.99, 101.1, 106.03},
     {{"Si", {0.296, 0.065, 0.706}, 2}, {"Al", {0, 0, 0.5}, 1}}},
};

class CrystalBuilder : public testing::Test {
 protected:
  InProcessCore core;

  desk::ModelObject& object(std::int32_t model) { return *core.model.model(model); }

  std::int32_t unit(const Structure& structure) {
    const auto model = core.model.create_model(structure.name);
    auto& data = object(model).data;
    constexpr double degree = std::numbers::pi / 180;
    const auto& c = structure.cell;
    std::int32_t status = 0;
    kva_cry_3dparamtocell_(c[0], c[1], c[2], c[3] * degree, c[4] * degree, c[5] * degree, 1, data.cell[0], data.cell[1],
                           data.cell[2], status);
    EXPECT_EQ(status, 0);
    const auto groups = core.model.space_groups(structure.group);
    EXPECT_EQ(groups.size(), 1u) << structure.group;
    if (!groups.empty()) core.model.set_space_group(object(model), groups.front());
    for (const auto& site : structure.sites) add(model, site.element, site.f);
    return model;
  }

  std::int32_t add(std::int32_t model, const char* element, const Vector3& f) {
    const auto& cell = object(model).data.cell;
    Vector3 x{};
    for (std::size_t k = 0; k < 3; ++k) x[k] = cell[0][k] * f[0] + cell[1][k] * f[1] + cell[2][k] * f[2];
    return core.model.add_atoms(object(model), std::array{element_of_symbol(element)}, std::array<Vector3, 1>{x});
  }

  std::int32_t build(std::int32_t model, std::int32_t options = 0) {
    return status_of(kva_cry_buildcrystal_, model, options, 1);
  }

  /// Element and rounded position in the cell of each atom.
  std::multiset<std::string> contents(std::int32_t model) {
    const auto& data = object(model).data;
    const desk::Lattice lattice(desk::periodic_3d, data.cell);
    std::multiset<std::string> found;
    for (std::size_t k = 0; k < data.atoms(); ++k)
      found.insert(key(data.elements[k], lattice.fractional(data.positions[k])));
    return found;
  }

  static std::string key(std::int32_t element, const Vector3& f) {
    constexpr long steps = 1000;
    std::string text = std::to_string(element);
    for (const double x : f) text += " " + std::to_string(((std::lround(x * steps) % steps) + steps) % steps);
    return text;
  }
};

TEST_F(CrystalBuilder, fills_the_cell_as_the_tables_say) {
  for (const auto& structure : structures) {
    const auto model = unit(structure);
    ASSERT_EQ(build(model), 0) << structure.name;
    const auto& data = object(model).data;
    ASSERT_EQ(data.file_atoms, structure.sites.size()) << structure.name;
    for (std::size_t site = 0; site < structure.sites.size(); ++site) {
      EXPECT_EQ(data.atom_images[site].size() + 1, structure.sites[site].multiplicity) << structure.name << site;
    }
  }
}

TEST_F(CrystalBuilder, builds_the_same_crystal_again) {
  for (const auto& structure : structures) {
    const auto model = unit(structure);
    ASSERT_EQ(build(model), 0);
    const auto before = contents(model);
    const auto bonds = object(model).data.bonds.size();
    ASSERT_EQ(status_of(kva_cry_unbuildcrystal_, model), 0) << structure.name;
    EXPECT_EQ(object(model).data.periodic_type, desk::not_periodic);
    ASSERT_EQ(object(model).data.atoms(), structure.sites.size()) << structure.name;
    ASSERT_EQ(build(model), 0);
    EXPECT_EQ(contents(model), before) << structure.name;
    EXPECT_EQ(object(model).data.bonds.size(), bonds) << structure.name;
  }
}

TEST_F(CrystalBuilder, keeps_a_copy_across_a_face_as_an_image_and_brings_it_back) {
  const Structure box{"box",
                      "P 1",
                      {8, 9, 10, 90, 95, 90},
                      {{"C", {0, 0.5, 0.5}, 1}, {"N", {0.5, 0.2, 0.1}, 1}, {"C", {1, 0.5, 0.5}, 1}}};
  const auto model = unit(box);
  const auto copy = object(model).atom_id(2);
  ASSERT_EQ(build(model), 0);
  EXPECT_EQ(object(model).data.atoms(), 2u);
  EXPECT_EQ(core.model.atom(copy).image, (desk::Translation{1, 0, 0}));
  EXPECT_THAT(core.messages, ElementsAre("CrystalOverSpecCell", "CrystalTransCopy 3 1", "CrystalRemoveDup"));
  ASSERT_EQ(status_of(kva_cry_unbuildcrystal_, model), 0);
  ASSERT_EQ(object(model).data.atoms(), 3u);
  EXPECT_EQ(object(model).atom_id(2), copy);
  const auto& data = object(model).data;
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_NEAR(data.positions[2][k], data.positions[0][k] + data.cell[0][k], 1e-9);
  }
}

TEST_F(CrystalBuilder, takes_an_image_that_the_unit_has_already_for_that_image) {
  const Structure pair{
      "pair", "P -1", {8, 9, 10, 90, 95, 100}, {{"C", {0.1, 0.2, 0.3}, 2}, {"C", {-0.1, -0.2, -0.3}, 2}}};
  const auto model = unit(pair);
  const auto second = object(model).atom_id(1);
  ASSERT_EQ(build(model), 0);
  EXPECT_EQ(object(model).data.atoms(), 2u);
  EXPECT_EQ(object(model).data.file_atoms, 1u);
  EXPECT_EQ(core.model.atom(second).place, 1u);
  EXPECT_THAT(core.messages, ElementsAre("CrystalOverSpecSymm", "CrystalSymmCopy 2 1", "CrystalRemoveDup"));
}

TEST_F(CrystalBuilder, moves_an_atom_near_a_special_position_onto_it) {
  auto shifted = structures[0];
  shifted.sites[0].f = {0.002, 0, 0};
  const auto model = unit(shifted);
  ASSERT_EQ(build(model), 0);
  EXPECT_EQ(object(model).data.atoms(), 8u);
  EXPECT_NEAR(object(model).data.positions[0][0], 0, 1e-9);
}

TEST_F(CrystalBuilder, refuses_what_is_no_asymmetric_unit) {
  auto wrong = structures[0];
  wrong.cell[0] = 6;
  EXPECT_EQ(build(unit(wrong)), cell_contradicts_lattice);
  EXPECT_EQ(core.messages, std::vector<std::string>{"CrystalInconsistentLattice"});
  const auto crystal = unit(structures[1]);
  ASSERT_EQ(build(crystal), 0);
  EXPECT_EQ(build(crystal), 1);
  const auto bare = unit(structures[1]);
  core.model.set_space_group(object(bare), 0);
  EXPECT_EQ(build(bare), model_without_symmetry);
  EXPECT_EQ(status_of(kva_cry_addtocrystal_, bare, std::array{object(bare).atom_id(0)}, 0, 0), 1);
}

TEST_F(CrystalBuilder, builds_and_unbuilds_a_slab) {
  const auto model = core.model.create_model("slab");
  object(model).data.cell = {{{1, 0, 0}, {0, 4, 0}, {0, 0, 4}}};
  for (const auto& x : {Vector3{0, 0.5, 1}, Vector3{0, 4.5, 1}, Vector3{2, 9, 2}}) {
    core.model.add_atoms(object(model), std::array{element_of_symbol("C")}, std::array<Vector3, 1>{x});
  }
  ASSERT_EQ(status_of(kva_sfc_buildsurfacefrommodel_, model, 0), 0);
  EXPECT_EQ(object(model).data.periodic_type, desk::periodic_2d);
  EXPECT_EQ(object(model).data.atoms(), 2u);
  EXPECT_NEAR(object(model).data.positions[1][1], 1, 1e-9);
  ASSERT_EQ(status_of(kva_sfc_unbuildsurface_, model), 0);
  EXPECT_EQ(object(model).data.periodic_type, desk::not_periodic);
}

}  // namespace
}  // namespace pathstat
