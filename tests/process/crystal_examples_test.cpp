#include "desk/export/structure_files.h"
#include "desk/model/model_edit.h"
#include "process/desk_with_process.h"
#include "structure/elements.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

/// What tables say of a structure.
struct Published {
  const char* name;
  std::map<std::string, std::size_t> atoms;  ///< in a cell
  std::vector<std::size_t> multiplicities;   ///< of the sites: International Tables, volume A
  double density;                            ///< g/cm³
};

/// Densities: CRC Handbook of Chemistry and Physics, 95th edition, section 4; urea at 12 K: from the cell of its
/// source; polyethylene: Bunn, Trans. Faraday Soc. 35 (1939) 482, of the crystal.
const Published published[]{
    {"rock-salt", {{"Na", 4}, {"Cl", 4}}, {4, 4}, 2.165},
    {"quartz", {{"Si", 3}, {"O", 6}}, {3, 6}, 2.648},
    {"rutile", {{"Ti", 2}, {"O", 4}}, {2, 4}, 4.23},
    {"urea", {{"C", 2}, {"O", 2}, {"N", 4}, {"H", 8}}, {2, 2, 4, 4, 4}, 1.375},
    {"polyethylene", {{"C", 4}, {"H", 8}}, {4, 4, 4}, 1.00},
};

std::string path_of(const char* name) { return std::string(EXAMPLES_DIR "/crystals/") + name + ".cif"; }

const MolecularModel& current(DeskWithProcess& desk) { return desk.model.model(desk.model.current_model())->data; }

TEST(CrystalExamples, have_the_atoms_sites_and_densities_of_the_tables) {
  for (const auto& each : published) {
    DeskWithProcess desk;
    ASSERT_EQ(desk.run("IMPORT_STRUCTURE", path_of(each.name)), 0) << each.name;
    ASSERT_EQ(desk.run("BUILD_CRYSTAL"), 0) << each.name;
    const auto& crystal = current(desk);
    std::map<std::string, std::size_t> atoms;
    for (const auto element : crystal.elements) ++atoms[std::string(elements()[element].symbol)];
    EXPECT_EQ(atoms, each.atoms) << each.name;
    std::vector<std::size_t> multiplicities;
    for (const auto& images : crystal.atom_images) multiplicities.push_back(images.size() + 1);
    EXPECT_EQ(multiplicities, each.multiplicities) << each.name;
    const auto told = std::find_if(desk.messages.begin(), desk.messages.end(),
                                   [](const Message& message) { return message.key == "STRUCTURE_MASS_DENSITY"; });
    ASSERT_NE(told, desk.messages.end());
    EXPECT_NEAR(std::get<double>(told->arguments[1]), each.density, 0.01 * each.density) << each.name;
  }
}

TEST(CrystalExamples, come_back_from_files_as_they_were_built) {
  for (const auto& each : published) {
    DeskWithProcess desk;
    desk.run("IMPORT_STRUCTURE", path_of(each.name));
    ASSERT_EQ(desk.run("BUILD_CRYSTAL"), 0) << each.name;
    const auto built = desk.model.current_model();
    const auto& crystal = desk.model.model(built)->data;
    for (const auto* name : {"a.qfx", "a.cif", "a.xyz", "a.car"})
      ASSERT_EQ(desk.run("EXPORT_STRUCTURE", name), 0) << name;

    ASSERT_EQ(desk.run("IMPORT_STRUCTURE", "a.qfx"), 0) << each.name;
    const auto& model = current(desk);
    EXPECT_EQ(model.positions, crystal.positions) << each.name;
    EXPECT_EQ(model.bonds, crystal.bonds);
    EXPECT_EQ(bond_cells(model), bond_cells(crystal));
    EXPECT_EQ(model.file_atoms, crystal.file_atoms);
    EXPECT_EQ(model.atom_images, crystal.atom_images);
    EXPECT_EQ(desk.model.model(desk.model.current_model())->space_group, desk.model.model(built)->space_group);
    // The crystal of the file can be taken apart and built like the one that was written.
    ASSERT_EQ(desk.run_lines({"UNBUILD_CRYSTAL", "BUILD_CRYSTAL"}), 0);
    EXPECT_EQ(current(desk).bonds.size(), crystal.bonds.size()) << each.name;

    ASSERT_EQ(desk.run("IMPORT_STRUCTURE", "a.cif"), 0);
    EXPECT_EQ(current(desk).atoms(), crystal.file_atoms);
    ASSERT_EQ(desk.run("BUILD_CRYSTAL"), 0);
    EXPECT_EQ(current(desk).atoms(), crystal.atoms()) << each.name;
    EXPECT_EQ(current(desk).bonds.size(), crystal.bonds.size()) << each.name;
    for (const auto* name : {"a.xyz", "a.car"}) {
      ASSERT_EQ(desk.run("IMPORT_STRUCTURE", name), 0);
      EXPECT_EQ(current(desk).atoms(), crystal.atoms()) << each.name << ' ' << name;
      EXPECT_EQ(current(desk).periodic_type, periodic_3d);
    }
  }
}

}  // namespace
}  // namespace pathstat::desk
