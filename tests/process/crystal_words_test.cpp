#include "process/refusal.h"

#include "testing.h"

namespace pathstat::desk {
namespace {

using Lines = std::vector<std::string_view>;

/// A Core with the process, and what a person tells it to build.
struct Builder : DeskWithProcess {
  /// Builds the crystal of one site. @return the status of the build
  std::int32_t build(const std::string& cell, const std::string& group, const std::string& site) {
    return run_lines(
        {"SYMMETRY_TOLERANCE 0.01", "CELL " + cell, "SPACE_GROUP " + group, "SITE " + site, "BUILD_CRYSTAL"});
  }
  const ModelObject& current() { return *model.model(model.current_model()); }

  /// Element and position of each atom, modulo the cell that the model repeats by.
  std::multiset<std::string> contents() {
    const auto& data = current().data;
    const Lattice lattice(data.periodic_type, data.cell);
    std::multiset<std::string> found;
    for (std::size_t k = 0; k < data.atoms(); ++k) {
      const auto f = lattice.fractional(data.positions[k]);
      std::string text = std::to_string(data.elements[k]);
      for (std::size_t axis = 0; axis < 3; ++axis) {
        constexpr long steps = 10000;
        const long step = std::lround(f[axis] * steps);
        text += " " + std::to_string(lattice.repeats(axis) ? (step % steps + steps) % steps : step);
      }
      found.insert(text);
    }
    return found;
  }
  double volume() {
    return std::abs(dvectrip_(current().data.cell[0], current().data.cell[1], current().data.cell[2]));
  }

  /// The numbers of the last message of a key.
  const Message& last(const char* key) {
    const auto found = std::find_if(messages.rbegin(), messages.rend(), [&](const auto& m) { return m.key == key; });
    EXPECT_NE(found, messages.rend()) << key;
    return *found;
  }
};

const Lines rock_salt{"CELL 5.64 5.64 5.64 90 90 90", "SPACE_GROUP \"F m -3 m\"", "SITE Na 0 0 0",
                      "SITE Cl 0.5 0.5 0.5", "BUILD_CRYSTAL"};

TEST(CrystalWords, build_a_crystal_take_it_apart_and_build_the_same_again) {
  Builder desk;
  ASSERT_EQ(desk.run_lines(rock_salt), 0);
  EXPECT_EQ(desk.current().data.atoms(), 8u);
  EXPECT_EQ(desk.current().data.bonds.size(), 24u);
  EXPECT_EQ(desk.current().data.periodic_type, periodic_3d);
  EXPECT_THAT(desk.values("SITE"), IsEmpty());
  // Four formula units of 58.4428 u in 5.64³ Å³.
  const double expected = 4 * 58.4428 * 1.66053906660 / std::pow(5.64, 3);
  EXPECT_NEAR(std::get<double>(desk.last("STRUCTURE_MASS_DENSITY").arguments[1]), expected, 1e-4);
  EXPECT_EQ(shown(desk.last("STRUCTURE_CRYSTAL").arguments[4]), "\"4 Na, 4 Cl\"");
  const auto built = desk.contents();
  ASSERT_EQ(desk.run("UNBUILD_CRYSTAL"), 0);
  EXPECT_EQ(desk.current().data.atoms(), 2u);
  EXPECT_EQ(desk.current().data.periodic_type, not_periodic);
  ASSERT_EQ(desk.run("BUILD_CRYSTAL"), 0);
  EXPECT_EQ(desk.contents(), built);
  EXPECT_EQ(desk.current().data.bonds.size(), 24u);
  EXPECT_EQ(desk.model.models().size(), 1u);
}

TEST(CrystalWords, add_sites_to_a_crystal_with_all_their_images) {
  Builder desk, whole;
  ASSERT_EQ(whole.run_lines(rock_salt), 0);
  desk.run_lines({"CELL 5.64 5.64 5.64 90 90 90", "SPACE_GROUP 225", "SITE Na 0 0 0", "BUILD_CRYSTAL"});
  EXPECT_EQ(desk.current().data.atoms(), 4u);
  ASSERT_EQ(desk.run_lines({"SITE Cl 0.5 0.5 0.5", "ADD_TO_CRYSTAL"}), 0);
  EXPECT_EQ(desk.contents(), whole.contents());
  EXPECT_EQ(desk.current().data.bonds.size(), 24u);
}

struct PrimitiveCase {
  const char* cell;
  const char* group;
  const char* site;
  double cells;  ///< primitive cells in the conventional one
};
constexpr PrimitiveCase primitive_cases[]{{"5.64 5.64 5.64 90 90 90", "225", "Na 0.1 0.2 0.3", 4},
                                          {"2.87 2.87 2.87 90 90 90", "229", "Fe 0 0 0", 2},
                                          {"4.99 4.99 17.06 90 90 120", "\"R -3 c\"", "O 0.257 0 0.25", 3},
                                          {"9.5 7.4 5.6 90 103 90", "12", "C 0.1 0.2 0.3", 2},
                                          {"3 4 5 90 90 90", "\"C m c m\"", "C 0.1 0.2 0.3", 2},
                                          {"3 4 5 90 90 90", "\"F d d d\"", "C 0.1 0.2 0.3", 4},
                                          {"4 4 7 90 90 90", "141", "C 0.1 0.2 0.3", 2},
                                          {"3 4 5 90 90 90", "\"I m m a\"", "C 0.1 0.2 0.3", 2}};

TEST(CrystalWords, change_to_the_primitive_setting_and_back) {
  for (const auto& [cell, group, site, cells] : primitive_cases) {
    Builder desk;
    ASSERT_EQ(desk.build(cell, group, site), 0) << group;
    const auto before = desk.contents();
    const double volume = desk.volume(), atoms = static_cast<double>(before.size());
    ASSERT_EQ(desk.run("PRIMITIVE_CELL"), 0) << group;
    EXPECT_NEAR(desk.volume(), volume / cells, 1e-6) << group;
    EXPECT_EQ(static_cast<double>(desk.current().data.atoms()), atoms / cells) << group;
    ASSERT_EQ(desk.run("CONVENTIONAL_CELL"), 0) << group;
    EXPECT_EQ(desk.contents(), before) << group;
    EXPECT_EQ(desk.run("CONVENTIONAL_CELL"), 1) << group;
    // The unit that isn't built changes in the same way.
    ASSERT_EQ(desk.run_lines({"UNBUILD_CRYSTAL", "PRIMITIVE_CELL", "BUILD_CRYSTAL", "CONVENTIONAL_CELL"}), 0) << group;
    EXPECT_EQ(desk.contents(), before) << group;
  }
}

TEST(CrystalWords, primitive_settings_come_back_from_files) {
  for (const auto& [cell, group, site, cells] : primitive_cases) {
    Builder desk;
    ASSERT_EQ(desk.build(cell, group, site), 0) << group;
    const auto before = desk.contents();
    const auto space_group = desk.current().space_group;
    ASSERT_EQ(desk.run_lines({"PRIMITIVE_CELL", "EXPORT_STRUCTURE primitive.qfx", "EXPORT_STRUCTURE primitive.cif"}),
              0);
    const auto primitive = desk.contents();
    for (const auto& lines : {Lines{"IMPORT_STRUCTURE primitive.qfx", "UNBUILD_CRYSTAL", "BUILD_CRYSTAL"},
                              Lines{"IMPORT_STRUCTURE primitive.cif", "BUILD_CRYSTAL"}}) {
      ASSERT_EQ(desk.run_lines(lines), 0) << group;
      EXPECT_EQ(desk.contents(), primitive) << group;
      ASSERT_EQ(desk.run("CONVENTIONAL_CELL"), 0) << group;
      EXPECT_EQ(desk.contents(), before) << group;
      EXPECT_EQ(desk.current().space_group, space_group) << group;
    }
  }
}

TEST(CrystalWords, change_the_setting_of_a_lattice_centred_the_reverse_way) {
  // P 3 with the centring 1/3 2/3 1/3, as a file may state it.
  std::string cif =
      "data_reverse\n_cell_length_a 5\n_cell_length_b 5\n_cell_length_c 13\n_cell_angle_alpha 90\n"
      "_cell_angle_beta 90\n_cell_angle_gamma 120\nloop_\n_symmetry_equiv_pos_as_xyz\n";
  constexpr std::array<std::array<const char*, 3>, 3> centring{
      {{"", "", ""}, {"+1/3", "+2/3", "+1/3"}, {"+2/3", "+1/3", "+2/3"}}};
  constexpr std::array<std::array<const char*, 2>, 3> turns{{{"x", "y"}, {"-y", "x-y"}, {"-x+y", "-x"}}};
  for (const auto& [x, y, z] : centring) {
    for (const auto& [u, v] : turns) {
      cif += std::string(u) + x + "," + v + y + ",z" + z + "\n";
    }
  }
  cif += "loop_\n_atom_site_label\n_atom_site_fract_x\n_atom_site_fract_y\n_atom_site_fract_z\nFe1 0.1 0.3 0.05\n";
  Builder desk;
  std::ofstream(desk.work() / "reverse.cif") << cif;
  ASSERT_EQ(desk.run_lines({"IMPORT_STRUCTURE reverse.cif", "BUILD_CRYSTAL"}), 0);
  const auto before = desk.contents();
  EXPECT_EQ(before.size(), 9U);
  ASSERT_EQ(desk.run("PRIMITIVE_CELL"), 0);
  EXPECT_EQ(desk.current().data.atoms(), 3U);
  ASSERT_EQ(desk.run("CONVENTIONAL_CELL"), 0);
  EXPECT_EQ(desk.contents(), before);
}

TEST(CrystalWords, build_slabs_of_crystals_and_of_sites) {
  Builder desk;
  ASSERT_EQ(desk.run_lines(rock_salt), 0);
  const auto crystal = desk.model.current_model();
  ASSERT_EQ(desk.run("BUILD_SLAB", "3"), 0);
  EXPECT_NE(desk.model.current_model(), crystal);
  EXPECT_EQ(desk.current().data.periodic_type, periodic_2d);
  EXPECT_EQ(desk.current().data.atoms(), 24u);
  // Six planes of two pairs, each atom with four neighbours beside it, one above and one below.
  EXPECT_EQ(desk.current().data.bonds.size(), 6u * 8u + 5u * 4u);
  EXPECT_NEAR(std::get<double>(desk.last("STRUCTURE_SLAB").arguments[3]), 5.64 * 5.64, 1e-9);
  const auto built = desk.contents();
  ASSERT_EQ(desk.run("UNBUILD_SLAB"), 0);
  EXPECT_EQ(desk.current().data.periodic_type, not_periodic);
  ASSERT_EQ(desk.run("BUILD_SLAB"), 0);
  EXPECT_EQ(desk.contents(), built);
  ASSERT_EQ(desk.run_lines(
                {"CELL 2.46 2.46 10 90 90 120", "SITE C 0 0 0.1", "SITE C 0.33333333 0.66666667 0.1", "BUILD_SLAB"}),
            0);
  EXPECT_EQ(desk.current().data.bonds.size(), 3u);
  EXPECT_NEAR(desk.current().data.positions[0][2], 1, 1e-9);
}

TEST(CrystalWords, build_as_the_settings_say) {
  struct Case {
    Lines settings;
    std::size_t atoms, bonds;
  };
  // Diamond: the bonds of its eight atoms that do not leave the cell are those of the atom in the middle of each
  // tetrahedron; without special positions all 192 images stay.
  const Case cases[]{
      {{"BONDING ALL"}, 8, 16}, {{"BONDING NONE"}, 8, 0}, {{"SPECIAL_POSITIONS no", "BONDING NONE"}, 192, 0}};
  for (const auto& each : cases) {
    Builder desk;
    desk.run_lines(each.settings);
    ASSERT_EQ(desk.run_lines({"CELL 3.567 3.567 3.567 90 90 90", "SPACE_GROUP 227", "SITE C 0 0 0", "BUILD_CRYSTAL"}),
              0);
    EXPECT_EQ(desk.current().data.atoms(), each.atoms);
    EXPECT_EQ(desk.current().data.bonds.size(), each.bonds);
  }
  Builder faces;
  faces.run_lines(
      {"BONDING FACES", "CELL 3.567 3.567 3.567 90 90 90", "SPACE_GROUP 227", "SITE C 0 0 0", "BUILD_CRYSTAL"});
  const auto& cells = faces.current().data.bond_cells;
  ASSERT_FALSE(cells.empty());
  EXPECT_THAT(cells, Not(Contains(Translation{})));
  Builder tolerant;
  ASSERT_EQ(tolerant.run_lines({"SYMMETRY_TOLERANCE 0.5", "CELL 5.64 5.64 5.64 90 90 90", "SPACE_GROUP 225",
                                "SITE Na 0.03 0 0", "BUILD_CRYSTAL"}),
            0);
  EXPECT_EQ(tolerant.current().data.atoms(), 4u);
}

TEST(CrystalWords, ask_the_core_as_often_for_many_atoms_as_for_few) {
  std::vector<std::uint64_t> calls;
  for (const int sites : {2, 60}) {
    Builder desk;
    desk.run_lines({"CELL 60 60 60 90 90 90", "SPACE_GROUP 225", "BONDING NONE"});
    for (int k = 0; k < sites; ++k) {
      desk.run("SITE", "C " + std::to_string(0.01 + 0.004 * k) + " 0.25 0.13");
    }
    const auto before = desk.server.served();
    ASSERT_EQ(desk.run_lines({"BUILD_CRYSTAL", "UNBUILD_CRYSTAL", "PRIMITIVE_CELL", "BUILD_CRYSTAL", "BUILD_SLAB 2"}),
              0);
    calls.push_back(desk.server.served() - before);
  }
  EXPECT_EQ(calls[0], calls[1]);
}

struct Refused {
  Lines before;
  Refusal refusal;
};
const Refused refused[]{
    {{}, {"BUILD_CRYSTAL", "", 1, "STRUCTURE_NO_MODEL"}},
    {{}, {"BUILD_SLAB", "", 1, "STRUCTURE_NO_MODEL"}},
    {{}, {"BUILD_SLAB", "0", 1001, nullptr}},
    {{}, {"UNBUILD_CRYSTAL", "", 1, "STRUCTURE_NO_CRYSTAL"}},
    {{}, {"UNBUILD_SLAB", "", 1, "STRUCTURE_NO_SLAB"}},
    {{}, {"PRIMITIVE_CELL", "", 1, "STRUCTURE_NO_MODEL"}},
    {{}, {"SYMMETRY_TOLERANCE", "0", 1001, nullptr}},
    {{}, {"BONDING", "SOME", 1003, nullptr}},
    {{}, {"SPACE_GROUP", "\"Q 7\"", 1, "STRUCTURE_GROUP_UNKNOWN"}},
    {{}, {"SPACE_GROUP", "5 99", 1, "STRUCTURE_GROUP_UNKNOWN"}},
    {{}, {"SPACE_GROUP", "166 X", 1, "STRUCTURE_GROUP_UNKNOWN"}},
    {{"SITE C 0 0 0", "CELL 9 9 9 90 90 120", "SPACE_GROUP 166 R"},
     {"BUILD_CRYSTAL", "", 50310, "CrystalInconsistentLattice"}},
    {{}, {"IMPORT_STRUCTURE", "nothing.cif", 1, "STRUCTURE_IMPORT_FAILED"}},
    {{}, {"IMPORT_STRUCTURE", "nothing.doc", 1, "STRUCTURE_FILE_FORMAT"}},
    {{}, {"EXPORT_STRUCTURE", "nothing.cif", 1, "STRUCTURE_NO_MODEL"}},
    {{"SITE C 0 0 0"}, {"BUILD_CRYSTAL", "", 1, "STRUCTURE_NO_CELL"}},
    {{"SITE C 0 0 0"}, {"BUILD_SLAB", "", 1, "STRUCTURE_NO_CELL"}},
    {{"SITE C 0 0 0"}, {"ADD_TO_CRYSTAL", "", 1, "STRUCTURE_NO_CRYSTAL"}},
    {{"SITE C 0 0 0", "CELL 5 6 7 90 90 90", "SPACE_GROUP 225"},
     {"BUILD_CRYSTAL", "", 50310, "CrystalInconsistentLattice"}},
    {rock_salt, {"BUILD_CRYSTAL", "", 1, "STRUCTURE_PERIODIC_ALREADY"}},
    {rock_salt, {"ADD_TO_CRYSTAL", "", 1, "STRUCTURE_NO_SITES"}},
    {rock_salt, {"CONVENTIONAL_CELL", "", 1, "STRUCTURE_NO_CONVENTIONAL"}},
    {rock_salt, {"BUILD_SLAB", "1001", 1002, nullptr}},
    {rock_salt, {"EXPORT_STRUCTURE", "no/such/folder.cif", 1, "STRUCTURE_EXPORT_FAILED"}},
    {{"CELL 4 4 4 90 90 90", "SITE Po 0 0 0", "SPACE_GROUP 221", "BUILD_CRYSTAL"},
     {"PRIMITIVE_CELL", "", 1, "STRUCTURE_NO_PRIMITIVE"}},
    {{"CELL 4 4 4 90 90 90", "SITE Po 0 0 0", "BUILD_CRYSTAL", "UNBUILD_CRYSTAL"},
     {"BUILD_SLAB", "", 1, "STRUCTURE_SLAB_OF_UNIT"}},
};

TEST(CrystalWords, refuse_what_can_not_be_and_leave_all_as_it_was) {
  for (const auto& each : refused) {
    SCOPED_TRACE(each.refusal.word);
    Builder desk;
    desk.run_lines(each.before);
    const auto models = desk.model.models().size();
    const auto current = desk.model.current_model();
    const auto atoms = current == 0 ? 0 : desk.current().data.atoms();
    const std::vector<std::string> words{"CELL", "SPACE_GROUP", "SITE", "BONDING", "SYMMETRY_TOLERANCE"};
    const auto before = desk.session.request(words);
    expect_refused(desk, each.refusal);
    const auto after = desk.session.request(words);
    ASSERT_TRUE(before && after);
    for (std::size_t k = 0; k < words.size(); ++k) EXPECT_EQ((*after)[k].values, (*before)[k].values);
    EXPECT_EQ(desk.model.models().size(), models);
    EXPECT_EQ(desk.model.current_model(), current);
    if (current != 0) {
      EXPECT_EQ(desk.current().data.atoms(), atoms);
    }
  }
}

}  // namespace
}  // namespace pathstat::desk
