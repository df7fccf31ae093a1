#include "desk/model/coordinate_file.h"

#include "desk/export/structure_files.h"
#include "small_models.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

const std::string water_lines =
    "OW1     1.0  2.0  3.0  WAT 7 o_w  O -0.8\n"
    "H1      1.5 -2.0 +3.0  WAT 7 h_w  h  0.4\n"
    "end\n"
    "Cl3    1e0 0 0 ION 8x cl ?? -1\n"
    "END\n"
    "end\n"
    "anything\n";

ImportedModels coordinates(const std::string& text) {
  const ScratchFolder folder;
  return read_coordinate_file(folder.write("run.car", text));
}

TEST(CoordinateFile, has_one_frame_of_atoms_numbered_from_1) {
  for (const auto* periodicity : {"", "pbc=off\n"}) {
    const auto result = coordinates(std::string("title\n") + periodicity + "frame\ndate\n" + water_lines);
    ASSERT_THAT(result.problem, IsEmpty());
    const auto& model = result.models.front();
    EXPECT_EQ(model.name, "run");
    EXPECT_EQ(model.periodic_type, not_periodic);
    EXPECT_THAT(model.ids, ElementsAre(1, 2, 3));
    EXPECT_THAT(model.elements, ElementsAre(8, 1, 17));
    EXPECT_THAT(model.charges, ElementsAre(-0.8, 0.4, -1));
    EXPECT_THAT(model.masses, ElementsAre(15.9994, 1.00794, 35.453));
    EXPECT_THAT(model.residue_ids, ElementsAre(7, 7, 8));
    EXPECT_EQ(model.ff_types[1], "h_w");
    EXPECT_EQ(model.residues[2], "ION");
    EXPECT_EQ(model.positions[1], (Vector3{1.5, -2, 3}));
  }
}

TEST(CoordinateFile, may_have_records_of_80_bytes_instead_of_lines) {
  std::string records;
  const std::string text = "title\nPBC OFF\nframe\ndate\n" + water_lines;
  for (std::size_t at = 0; at < text.size();) {
    const auto end = text.find('\n', at);
    auto record = text.substr(at, end - at);
    record.resize(80, ' ');
    records += record;
    at = end + 1;
  }
  const auto result = coordinates(records);
  ASSERT_THAT(result.problem, IsEmpty());
  EXPECT_THAT(result.models.front().ids, ElementsAre(1, 2, 3));
}

/// Lengths and angles are kept, and so is where an atom lies in the cell.
TEST(CoordinateFile, is_turned_from_a_on_x_to_c_on_z) {
  const double angle = 100 * std::numbers::pi / 180;
  for (const auto* word : {"PBC=ON", "pbc 3"}) {
    // The atom lies at b, in the orientation of the file.
    const auto b = std::to_string(12 * std::cos(angle)) + " " + std::to_string(12 * std::sin(angle)) + " 0";
    const auto result =
        coordinates(std::string("t\n") + word + "\nf\nd\nPBC 10 12 14 90 90 100\nC1 " + b + " R 1 c C 0\nEND\nEND\n");
    ASSERT_THAT(result.problem, IsEmpty());
    const auto& model = result.models.front();
    EXPECT_EQ(model.periodic_type, periodic_3d);
    EXPECT_THAT(model.cell[2], ElementsAre(DoubleNear(0, 1e-9), DoubleNear(0, 1e-9), DoubleNear(14, 1e-9)));
    EXPECT_THAT(model.cell[1], ElementsAre(DoubleNear(0, 1e-9), DoubleNear(12, 1e-9), DoubleNear(0, 1e-9)));
    EXPECT_NEAR(dveclen_(model.cell[0]), 10, 1e-9);
    EXPECT_NEAR(dvecdot_(model.cell[0], model.cell[1]), 120 * std::cos(angle), 1e-9);
    for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(model.positions[0][k], model.cell[1][k], 1e-5);
  }
}

TEST(CoordinateFile, of_a_slab_has_its_first_vector_on_z) {
  // One atom at the end of each cell vector: 8 Å on x, and 5 Å at 60 degrees from it.
  const auto result = coordinates(
      "t\nPBC 2\nf\nd\nPBC 8 5 60\nC1 8 0 0 R 1 c C 0\nC2 2.5 4.330127019 0 R 1 c C 0\nC3 0 0 3 R 1 c C 0\nEND\nEND\n");
  ASSERT_THAT(result.problem, IsEmpty());
  const auto& model = result.models.front();
  EXPECT_EQ(model.periodic_type, periodic_2d);
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_NEAR(model.positions[0][k], (Vector3{0, 0, 8})[k], 1e-6);
    EXPECT_NEAR(model.positions[1][k], (Vector3{0, 4.330127019, 2.5})[k], 1e-6);
    EXPECT_NEAR(model.cell[2][k], model.positions[0][k], 1e-6);
    EXPECT_NEAR(model.cell[1][k], model.positions[1][k], 1e-6);
  }
  EXPECT_NEAR(std::abs(model.positions[2][0]), 3, 1e-9);
}

struct CoordinateFault {
  const char* text;
  int line;
  const char* problem;
};
const CoordinateFault cases[] = {{"", 0, "ends"},
                                 {"t\n", 1, "ends"},
                                 {"t\nHELIX\n", 2, "helical"},
                                 {"t\nPBC maybe\n", 2, "maybe"},
                                 {"t\nPBC\n", 2, "unknown"},
                                 {"t\nPBC ON\nf\nd\nPBC 1 2 3 90 90\n", 5, "6"},
                                 {"t\nPBC ON\nf\nd\nPBC 1 2 x 90 90 90\n", 5, "x"},
                                 {"t\nPBC ON\nf\nd\nPBC 1 2 3 90 90 200\nC 0 0 0 R 1 c C 0\nEND\nEND\n", 8, "space"},
                                 {"t\nf\nd\nC 0 0 0 R 1 c C\nEND\nEND\n", 4, "9 fields"},
                                 {"t\nf\nd\n\v 0 0 0 R 1 c \r 0\nEND\nEND\n", 4, "9 fields"},
                                 {"t\nf\nd\nC 0 0z 0 R 1 c C 0\nEND\nEND\n", 4, "0z"},
                                 {"t\nf\nd\nC 0 0 nan R 1 c C 0\nEND\nEND\n", 4, "nan"},
                                 {"t\nf\nd\nC 0 0 0 R 1 c C -\nEND\nEND\n", 4, "charge"},
                                 {"t\nf\nd\nQ1 0 0 0 R 1 c q 0\nEND\nEND\n", 4, "Q1"},
                                 {"t\nf\nd\nC 0 0 0 R 1 c C 0\nEND\n", 5, "ends"},
                                 {"t\nf\nd\nEND\nEND\n", 5, "no atoms"}};

TEST(CoordinateFileFault, names_the_line) {
  for (const auto& row : cases) {
    SCOPED_TRACE(row.problem);
    const auto result = coordinates(row.text);
    EXPECT_THAT(result.models, IsEmpty());
    EXPECT_THAT(result.problem,
                AllOf(HasSubstr("run.car, line " + std::to_string(row.line) + ": "), HasSubstr(row.problem)));
  }
}

TEST(CoordinateFile, of_atoms_far_away_is_read_as_it_was_written) {
  const ScratchFolder folder;
  const std::vector<Vector3> places{{1.5, -1000.25, 9}, {-999999.5, 10000.5, -20000.25}, {-998.123456789, 0, 9998.5}};
  ASSERT_EQ(write_structure_file(carbon_model(places), folder.file("far.car"), coordinate_model_file), "");
  const auto result = read_coordinate_file(folder.file("far.car"));
  ASSERT_EQ(result.problem, "");
  for (std::size_t k = 0; k < places.size(); ++k) {
    for (std::size_t axis = 0; axis < 3; ++axis)
      EXPECT_NEAR(result.models[0].positions[k][axis], places[k][axis], 1e-9) << k;
  }
}

TEST(CoordinateFile, that_is_not_there_is_told) {
  EXPECT_THAT(read_coordinate_file("/nowhere/run.car").problem,
              HasSubstr("/nowhere/run.car cannot be opened: No such file"));
}

}  // namespace
}  // namespace pathstat::desk
