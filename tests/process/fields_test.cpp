#include "process/refusal.h"
#include "testing.h"
#include "volumes/plain_volume.h"

namespace pathstat::desk {
namespace {

std::vector<std::string> texts_of(const DeskWithProcess& desk) {
  std::vector<std::string> texts;
  for (const auto& message : desk.messages) texts.push_back(message.text);
  return texts;
}

double number(const MessageArgument& argument) {
  return std::holds_alternative<double>(argument) ? std::get<double>(argument) : std::get<std::int32_t>(argument);
}

/// A volume of bytes with the value 0 everywhere and 127 at points of a block.
std::string volume_bytes(int points, int first, int last) {
  PlainVolume volume;
  volume.n = {points, points, points}, volume.max = 127;
  for (int at = 0; at < points * points * points; ++at) {
    const int i = at % points, j = at / points % points, k = at / points / points;
    volume.values.push_back(std::min({i, j, k}) >= first && std::max({i, j, k}) <= last ? 127 : 0);
  }
  return volume.bytes();
}

TEST(Fields, density_of_all_atoms_holds_them_all_and_is_then_open) {
  DeskWithProcess desk("water");
  EXPECT_EQ(desk.run("DENSITY_SPACING", "0.75"), 0);
  for (const auto* type : {"4", "2", "1"}) {
    desk.run("DENSITY_TYPE", type);
    desk.messages.clear();
    ASSERT_EQ(desk.run("DENSITY"), 0);
    ASSERT_EQ(desk.messages.size(), 2U);
    EXPECT_EQ(desk.messages[0].key, "STRUCTURE_DENSITY");
    const double atoms = number(desk.messages[0].arguments[0]), mean = number(desk.messages[0].arguments[2]);
    EXPECT_EQ(atoms, desk.model.model(desk.model.current_model())->data.positions.size());
    EXPECT_NEAR(mean * std::pow(18.642, 3), atoms, 1e-3 * atoms);
    EXPECT_EQ(desk.values("VOLUME")[4], "  " + std::string(type));
    desk.messages.clear();
    ASSERT_EQ(desk.run("VOLUME_REGION", "-100 -100 -100 100 100 100"), 0);
    EXPECT_EQ(number(desk.messages[0].arguments[0]), 25 * 25 * 25);
    const double most = number(desk.messages[0].arguments[8]);
    EXPECT_NEAR(number(desk.messages[0].arguments[9]), mean, std::string(type) == "1" ? most / 127 : most / 10000);
  }
}

TEST(Fields, density_around_an_atom_has_it_in_the_middle_of_every_frame) {
  DeskWithProcess desk("water");
  desk.select("id 1");
  desk.run("DENSITY_ATOMS", "SELECTED");
  desk.run("DENSITY_CENTRE", "1");
  desk.run("DENSITY_SPACING", "0.75");
  ASSERT_EQ(desk.run("DENSITY"), 0);
  desk.messages.clear();
  // All counts are at one of the 25 x 25 x 25 points, with twelve in front of it on each axis.
  const double step = 18.642 / 25, middle = 12 * step;
  ASSERT_EQ(desk.run("VOLUME_VALUES", "0.001 1000"), 0);
  EXPECT_EQ(number(desk.messages[0].arguments[0]), 1);
  const auto corner = [&](double at) {
    return (std::to_string(at) + " " + std::to_string(at) + " " + std::to_string(at));
  };
  ASSERT_EQ(desk.run("VOLUME_REGION", corner(middle - 0.1) + " " + corner(middle + 0.1)), 0);
  EXPECT_EQ(number(desk.messages[1].arguments[0]), 1);
  EXPECT_NEAR(number(desk.messages[1].arguments[8]), 1 / (step * step * step), 1e-4);
}

TEST(Fields, density_on_the_axes_of_water_molecules_has_neighbours_in_front_of_the_hydrogens) {
  DeskWithProcess desk("water");
  EXPECT_EQ(desk.run("DENSITY_AXIS", "2"), 0);
  EXPECT_NE(desk.run("DENSITY"), 0);  // without a middle and a plane
  desk.run("DENSITY_CENTRE", "1");
  desk.run("DENSITY_PLANE", "4");  // of another molecule
  EXPECT_NE(desk.run("DENSITY"), 0);
  desk.run("DENSITY_PLANE", "3");
  desk.select("element O");
  desk.run("DENSITY_ATOMS", "SELECTED");
  desk.run("DENSITY_SPACING", "0.5");
  desk.run("LAST_FRAME_NO", "20");
  ASSERT_EQ(desk.run("DENSITY"), 0);
  // An oxygen atom accepts the first hydrogen bond 2.8 Å along the axis; none is nearer to the middle than 2.2 Å.
  const double edge = 18.642 / std::sqrt(3.0), middle = edge / 2;
  const auto most = [&](double from, double to, double half) {
    desk.messages.clear();
    const auto text = [](double x) { return std::to_string(x) + " "; };
    EXPECT_EQ(desk.run("VOLUME_REGION", text(middle + from) + text(middle - half) + text(middle - half) +
                                            text(middle + to) + text(middle + half) + text(middle + half)),
              0);
    return number(desk.messages[0].arguments[8]);
  };
  const double bulk = 216 / std::pow(18.642, 3);
  EXPECT_GT(most(2.4, 3.2, 0.5), 5 * bulk);
  EXPECT_EQ(most(-1.0, 1.0, 1.0), 0);
}

TEST(Fields, surface_of_a_block_is_closed_and_kept_by_the_core) {
  DeskWithProcess desk;
  std::ofstream(desk.work() / "block.mbk", std::ios::binary) << volume_bytes(12, 4, 7);
  ASSERT_EQ(desk.run("VOLUME", "block.mbk"), 0);
  desk.messages.clear();
  ASSERT_EQ(desk.run("VOLUME_VALUES", "100 200"), 0);
  EXPECT_THAT(texts_of(desk), ElementsAre("64 points of values from 100 to 127: 3.704 % of the volume."));
  ASSERT_EQ(desk.run("ISOSURFACE", "63.5"), 0);
  ASSERT_EQ(desk.model.surfaces().size(), 1U);
  const auto measures = measures_of(desk.model.surfaces()[0]);
  EXPECT_TRUE(measures.closed);
  EXPECT_EQ(measures.euler_characteristic, 2);
  // A cube of 4 Å with its faces, and its edges and corners cut half a step deep: along an edge of 3 Å each cut takes
  // 1/8 Å², and each of the eight corners 1/8 - 1/48 Å³.
  EXPECT_NEAR(measures.volume, 64 - 12 * 3 / 8.0 - 8 * (1 / 8.0 - 1 / 48.0), 1e-9);
  EXPECT_EQ(desk.model.surfaces()[0].normals.size(), desk.model.surfaces()[0].vertices.size());
  desk.run("NORMALS", "NONE");
  ASSERT_EQ(desk.run("ISOSURFACE", "63.5"), 0);
  EXPECT_THAT(desk.model.surfaces()[1].normals, IsEmpty());
}

TEST(Fields, refuse_what_does_not_fit_and_keep_what_there_was) {
  DeskWithProcess desk;
  EXPECT_EQ(desk.run("DENSITY"), 1);
  EXPECT_EQ(desk.run("ISOSURFACE", "1"), 1);
  EXPECT_THAT(desk.told("TABLE_COLUMN", "x"),
              Pair(1, ElementsAre("PATHSTAT_ERROR_57", "STRUCTURE_NO_VOLUME", "STRUCTURE_NO_TABLE")));
  std::ofstream(desk.work() / "block.mbk", std::ios::binary) << volume_bytes(12, 4, 7);
  std::ofstream(desk.work() / "text.mbk") << "no volume at all";
  std::ofstream(desk.work() / "good.tbl") << "#\nTITLE: Energies\nFUNCTION: energy\n#\n#\n1\n4\n9\n";
  ASSERT_EQ(desk.run_lines({"VOLUME block.mbk", "TABLE good.tbl"}), 0);
  ASSERT_EQ(desk.load_example("water"), 0);
  const auto before = desk.values("VOLUME");
  for (const auto& refusal : {
           Refusal{"VOLUME", "missing.mbk", 5, "STRUCTURE_VOLUME_UNUSABLE"},
           Refusal{"VOLUME", "text.mbk", 4, "STRUCTURE_VOLUME_UNUSABLE"},
           Refusal{"VOLUME_REGION", "20 20 20 30 30 30", 2, "STRUCTURE_VOLUME_NOTHING"},
           Refusal{"VOLUME_VALUES", "200 300", 2, "STRUCTURE_VOLUME_NOTHING"},
           Refusal{"TABLE", "missing.tbl", 50503, "STRUCTURE_TABLE_MISSING"},
           Refusal{"TABLE", "text.mbk", 50516, "STRUCTURE_TABLE_UNUSABLE"},
           Refusal{"TABLE_COLUMN", "Energy", 1, "STRUCTURE_TABLE_NO_COLUMN"},
           Refusal{"DENSITY_TYPE", "3", 1, "STRUCTURE_DENSITY_TYPE"},
       }) {
    expect_refused(desk, refusal);
  }
  desk.messages.clear();
  desk.run("DENSITY_SPACING", "0.05");
  EXPECT_THAT(desk.told("DENSITY"), Pair(1, Contains("STRUCTURE_GRID_TOO_LARGE")));
  desk.run("DENSITY_SPACING", "1");
  desk.run("DENSITY_FILE", "no/such/folder.mbk");
  EXPECT_NE(desk.run("DENSITY"), 0);
  EXPECT_THAT(desk.take_keys(), Contains("STRUCTURE_DENSITY_FILE"));
  desk.run("DENSITY_ATOMS", "SELECTED");
  EXPECT_THAT(desk.told("DENSITY"), Pair(1, Contains("STRUCTURE_DENSITY_ATOMS")));
  EXPECT_EQ(desk.run("ISOSURFACE", "500"), -50101);
  EXPECT_THAT(desk.model.surfaces(), IsEmpty());
  EXPECT_EQ(desk.values("VOLUME"), before);
  ASSERT_EQ(desk.run("VOLUME_VALUES", "100 200"), 0);

  // A volume whose bricks are cut off opens, as its header is there, but gives no surface.
  std::ofstream(desk.work() / "cut.mbk", std::ios::binary) << volume_bytes(12, 4, 7).substr(0, 216 * 5);
  ASSERT_EQ(desk.run("VOLUME", "cut.mbk"), 0);
  desk.take_keys();
  EXPECT_THAT(desk.told("ISOSURFACE", "63.5"), Pair(1, ElementsAre("STRUCTURE_VOLUME_CUT")));
  EXPECT_THAT(desk.model.surfaces(), IsEmpty());
}

TEST(Fields, column_of_a_table_is_drawn_against_its_rows) {
  DeskWithProcess desk;
  std::ofstream(desk.work() / "good.tbl") << "#\nTITLE: Energies\nFUNCTION: energy\n#\n#\n1\n4\n9\n";
  ASSERT_EQ(desk.run("TABLE", "good.tbl"), 0);
  EXPECT_THAT(texts_of(desk), ElementsAre("good.tbl: lines of data: 3, functions: 1: \"energy\"."));
  ASSERT_EQ(desk.run("TABLE_COLUMN", "energy"), 0);
  EXPECT_THAT(desk.graph_titles(), ElementsAre("Energies"));
  const auto& points = desk.data_set(0).points;
  ASSERT_EQ(points.size(), 3U);
  EXPECT_EQ(points[2].x, 3);
  EXPECT_EQ(points[2].y, 9);
}

}  // namespace
}  // namespace pathstat::desk
