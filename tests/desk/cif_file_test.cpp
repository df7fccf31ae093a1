#include "desk/model/cif_file.h"

#include "desk/export/structure_files.h"
#include "desk/model/data_model.h"
#include "desk/model/group_library.h"
#include "desk/model/stated_symmetry.h"
#include "scratch_folder.h"
#include "structure/elements.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

class StructureFile : public testing::Test {
 protected:
  const ScratchFolder scratch;
  const std::filesystem::path folder = scratch.path();

  std::string path(const char* name) const { return scratch.file(name); }
  std::string written(const char* name, std::string_view text) const { return scratch.write(name, text); }
  ImportedModels cif(std::string_view text) const { return read_cif_file(written("a.cif", text)); }
};

const std::string cell =
    "data_x\n_cell_length_a 4.00(2)\n_cell_length_b 5\n_cell_length_c 6\n"
    "_cell_angle_alpha 90\n_cell_angle_beta 90\n_cell_angle_gamma 90\n";
const std::string sites = "loop_\n_atom_site_label\n_atom_site_fract_x\n_atom_site_fract_y\n_atom_site_fract_z\n";

TEST_F(StructureFile, of_a_crystal_gives_its_unit_with_cell_symmetry_and_occupancies) {
  const auto read = cif("# a remark\n" + cell +
                        "_symmetry_space_group_name_H-M 'P n n "
                        "m'\nloop_\n_atom_site_occupancy\n_atom_site_type_symbol\n_atom_site_label\n"
                        "_atom_site_fract_z\n_atom_site_fract_y\n_atom_site_fract_x\n"
                        "0.5 Fe3+ 'Fe (1)' 0 0 0\n. S2- S1 0.25 1.5e-1(3) -.5\n");
  ASSERT_EQ(read.problem, "");
  ASSERT_EQ(read.models.size(), 1u);
  const auto& model = read.models[0];
  EXPECT_EQ(model.periodic_type, not_periodic);
  EXPECT_EQ(model.symmetry.size(), 8u);
  EXPECT_EQ(model.name, "x");
  ASSERT_EQ(model.atoms(), 2u);
  EXPECT_EQ(model.elements[0], element_of_symbol("Fe"));
  EXPECT_EQ(model.names[0], "Fe__1_");
  EXPECT_EQ(model.occupancies, (std::vector<double>{0.5, 1}));
  EXPECT_NEAR(model.cell[0][0], 4, 1e-12);
  EXPECT_NEAR(model.positions[1][0], -2, 1e-12);
  EXPECT_NEAR(model.positions[1][1], 0.75, 1e-12);
  EXPECT_NEAR(model.positions[1][2], 1.5, 1e-12);
}

struct Faulty {
  std::string text;
  const char* problem;
};

TEST_F(StructureFile, that_is_at_fault_is_refused_with_the_reason) {
  const auto one_site = [](const std::string& row) { return cell + sites + row; };
  const Faulty cases[]{
      {"", "holds no sites"},
      {"hello", "expected block header"},
      {"data_x\n", "no sites"},
      {one_site("C 0 0"), "Wrong number of values"},
      {one_site("C 0 0 'x"), "unterminated 'string'"},
      {one_site("C 0 0 \"x\n\""), "unterminated \"string\""},
      {one_site("C\n;0 0 0"), "unterminated text field"},
      {cell + sites, "there are no sites with _atom_site_fract_x"},
      {one_site("C 0 0 nan"), "\"nan\" is no coordinate"},
      {one_site("C 0 0 inf"), "\"inf\" is no coordinate"},
      {one_site("C 0 0 1e300"), "is no coordinate"},
      {one_site("C 0 0 ?"), "\"?\" is no coordinate"},
      {one_site("C 0 0 1.0.0"), "is no coordinate"},
      {one_site("?1 0 0 0"), "is no element"},
      {one_site("C 0 0 0\nC 0.5 0 0\n_atom_site_occupancy 1\n"), "not of one length"},
      {"data_x\n_cell_length_a 4\n" + sites + "C 0 0 0", "_cell_length_b is missing"},
      {"data_x\n_cell_length_a -4\n" + sites + "C 0 0 0", "_cell_length_a is no size of a cell: -4"},
      {"data_x\n_cell_length_a ?\n" + sites + "C 0 0 0", "_cell_length_a is missing"},
      {"data_x\n" + sites + "C 0 0 0", "there are no sites with _atom_site_cartn_x"},
      {cell + "_cell_length_a 5\n" + sites + "C 0 0 0", "uplicate"},
      {cell + "_symmetry_space_group_name_H-M 'Q 7'\n" + sites + "C 0 0 0", "there is no space group \"Q 7\""},
      {cell + "_symmetry_Int_Tables_number 231\n" + sites + "C 0 0 0", "there is no space group of number"},
      {cell + "_space_group_name_Hall '-Q 99z'\n" + sites + "C 0 0 0", "is no Hall symbol"},
      {cell + "_space_group_name_Hall '- P1 21_atom'\n" + sites + "C 0 0 0", "is no Hall symbol"},
      {cell + "_space_group_name_Hall 'P 3 21'\n" + sites + "C 0 0 0", "is no Hall symbol"},
      {cell + "_space_group_name_Hall 'P 2 21\"'\n" + sites + "C 0 0 0", "is no Hall symbol"},
      {cell + "loop_\n_symmetry_equiv_pos_as_xyz\n'x,y'\n" + sites + "C 0 0 0", "\"x,y\" is no symmetry operator"},
      {cell + "loop_\n_symmetry_equiv_pos_as_xyz\n'x,y,99999999999z'\n" + sites + "C 0 0 0", "is no symmetry operator"},
      {cell + "loop_\n_symmetry_equiv_pos_as_xyz\n'x,y,z+1/7'\n" + sites + "C 0 0 0", "is no symmetry operator"},
      {cell + "loop_\n_symmetry_equiv_pos_as_xyz\n'x,y,2z'\n" + sites + "C 0 0 0", "is no symmetry operator"},
      {cell + "loop_\n_symmetry_equiv_pos_as_xyz\n'x,y,z+z'\n" + sites + "C 0 0 0", "not a group"},
      {cell + "loop_\n_symmetry_equiv_pos_as_xyz\n'x,y,z' '-y,x,z'\n" + sites + "C 0 0 0", "not a group"},
      {"data_x\n_cell_length_a 4\n_cell_length_b 4\n_cell_length_c 4\n_cell_angle_alpha 100\n_cell_angle_beta 30\n"
       "_cell_angle_gamma 30\n" +
           sites + "C 0 0 0",
       "spans no space"},
  };
  for (const auto& [text, problem] : cases) {
    const auto read = cif(text);
    EXPECT_THAT(read.problem, HasSubstr(problem)) << text;
    EXPECT_TRUE(read.models.empty());
  }
  EXPECT_THAT(read_cif_file(path("none.cif")).problem, HasSubstr("can't be opened"));
  EXPECT_NE(read_cif_file(folder.string()).problem, "");
}

TEST_F(StructureFile, cut_anywhere_is_refused_or_whole) {
  const std::string whole = cell + sites + "C1 0.125 0.25 0.5\nO1 0.1 0.2 0.3\n";
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const auto read = cif(whole.substr(0, length));
    if (read.problem.empty()) {
      ASSERT_EQ(read.models.size(), 1u) << length;
      EXPECT_LE(read.models[0].atoms(), 2u);
    }
  }
}

TEST(StatedSymmetry, of_every_group_is_found_again_by_each_way_of_stating_it) {
  for (std::size_t k = 0; k < library_groups().size(); ++k) {
    const auto& operators = library_group(k).operators;
    auto stated = stated_symmetry(operators);
    ASSERT_GT(stated.number, 0) << library_groups()[k].name;
    const StatedSymmetry ways[]{
        {.triplets = {stated.triplets.rbegin(), stated.triplets.rend()}, .hall = {}, .name = {}},
        {.triplets = {}, .hall = stated.hall, .name = {}}};
    for (const auto& way : ways) {
      const auto found = find_symmetry(way);
      EXPECT_EQ(found.problem, "") << library_groups()[k].name;
      EXPECT_EQ(stated_symmetry(found.operators).triplets.size(), operators.size());
      EXPECT_EQ(stated_symmetry(found.operators).number, stated.number) << library_groups()[k].name;
    }
    const auto named = find_symmetry({.triplets = {}, .hall = {}, .name = library_groups()[k].name});
    EXPECT_EQ(named.operators, operators) << library_groups()[k].name;
  }
}

TEST(LibraryGroup, goes_by_its_names_and_by_its_number_with_a_setting) {
  const std::pair<const char*, const char*> names[]{{"166:R", "R -3 m:R"},   {"r-3m:r", "R -3 m:R"},
                                                    {"227:2", "F d -3 m:2"}, {"14:b1", "P 1 21/c 1"},
                                                    {"P21/c", "P 1 21/c 1"}, {"5:b2", "A 1 2 1"}};
  for (const auto& [text, name] : names) {
    std::size_t place = 0;
    while (place < library_groups().size() && !is_name_of(place, text)) ++place;
    ASSERT_LT(place, library_groups().size()) << text;
    EXPECT_EQ(library_groups()[place].name, name) << text;
  }
  for (std::size_t place = 0; place < library_groups().size(); ++place) EXPECT_FALSE(is_name_of(place, "166:X"));
}

TEST_F(StructureFile, of_a_unit_keeps_cell_group_and_sites_in_each_format_that_can) {
  auto read = cif(cell + "_symmetry_space_group_name_H-M 'P n n m'\n" + sites + "Fe 0 0 0\nS 0.2 0.378 0\n");
  ASSERT_EQ(read.problem, "");
  DataModel data;
  const auto first = data.add_model(std::move(read.models[0]));
  const auto& unit = data.model(first)->data;
  for (const auto& [name, type] : {std::pair{"b.qfx", structured_model_file}, {"b.cif", cif_model_file}}) {
    ASSERT_EQ(write_structure_file(unit, path(name), type), "");
    auto again = read_structure_file(path(name), type);
    ASSERT_EQ(again.problem, "") << name;
    EXPECT_EQ(again.models[0].symmetry, unit.symmetry) << name;
    EXPECT_EQ(again.models[0].periodic_type, not_periodic) << name;
    for (std::size_t k = 0; k < 2; ++k) {
      for (std::size_t axis = 0; axis < 3; ++axis) {
        EXPECT_NEAR(again.models[0].positions[k][axis], unit.positions[k][axis], 1e-6) << name;
        EXPECT_NEAR(again.models[0].cell[k][axis], unit.cell[k][axis], 1e-6) << name;
      }
    }
    const auto id = data.add_model(std::move(again.models[0]));
    EXPECT_EQ(data.model(id)->space_group, data.model(first)->space_group) << name;
  }
}

TEST_F(StructureFile, of_plain_coordinates_is_read_and_written) {
  struct Case {
    const char* text;
    const char* problem;
  };
  const Case cases[]{{"2\n\nH 0 0 0\n", "line 4: the file ends here"},
                     {"x\n\nH 0 0 0\n", "line 1: here stands the number of atoms"},
                     {"-1\n\n", "line 1"},
                     {"4000000000\n\n", "line 1"},
                     {"1\n\nH 0 0\n", "line 3: an atom is"},
                     {"1\n\nH 0 0 nan\n", "line 3"},
                     {"1\n\nQq 0 0 0\n", "\"Qq\" is no element"},
                     {"1\nLattice=\"1 0 0\"\nH 0 0 0\n", "line 2: a lattice has nine numbers"},
                     {"1\nLattice=\"1 0 0 1 0 0 1 0 0\"\nH 0 0 0\n", "spans no space"},
                     {"1\nLattice=\"1\nH 0 0 0\n", "line 2"},
                     {"1\nProperties=pos:R:3\nH 0 0 0\n", "columns"},
                     {"", "line 1"}};
  for (const auto& [text, problem] : cases) {
    EXPECT_THAT(read_structure_file(written("a.xyz", text), xyz_model_file).problem, HasSubstr(problem)) << text;
  }
  const auto read = read_structure_file(
      written("a.xyz", "2\nLattice=\"4 0 0 0 5 0 1 0 6\" Properties=species:S:1:pos:R:3\nO 0 0 0\nH 0.9 0 .5 more\n"),
      xyz_model_file);
  ASSERT_EQ(read.problem, "");
  const auto& model = read.models[0];
  EXPECT_EQ(model.periodic_type, periodic_3d);
  EXPECT_EQ(model.cell[2], (Vector3{1, 0, 6}));
  EXPECT_EQ(model.bonds.size(), 1u);
  DataModel data;
  auto& taken =
      *data.model(data.add_model(read_structure_file(path("a.xyz"), xyz_model_file).models.empty()
                                     ? MolecularModel{}
                                     : std::move(read_structure_file(path("a.xyz"), xyz_model_file).models[0])));
  for (const auto& [name, type] :
       {std::pair{"b.xyz", xyz_model_file}, {"b.car", coordinate_model_file}, {"b.qfx", structured_model_file}}) {
    ASSERT_EQ(write_structure_file(taken.data, path(name), type), "") << name;
    const auto again = read_structure_file(path(name), type);
    ASSERT_EQ(again.problem, "") << name;
    const Lattice here(periodic_3d, taken.data.cell), there(periodic_3d, again.models[0].cell);
    for (std::size_t axis = 0; axis < 3; ++axis) {
      EXPECT_NEAR(there.fractional(again.models[0].positions[1])[axis], here.fractional(taken.data.positions[1])[axis],
                  1e-6)
          << name;
    }
    EXPECT_EQ(again.models[0].bonds.size(), 1u) << name;
  }
}

TEST_F(StructureFile, of_more_bytes_than_a_crystal_has_is_refused_before_it_is_read) {
  const auto file = written("a.cif", cell);
  std::filesystem::resize_file(file, (std::uintmax_t{1} << 29) + 1);
  EXPECT_THAT(read_cif_file(file).problem, HasSubstr("is no file of a size that can be read"));
}

}  // namespace
}  // namespace pathstat::desk
