#include "process/desk_with_process.h"
#include "testing.h"
#include "trajectory/history_of_run.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;
using namespace testing_bytes;

void write(const fs::path& path, const Bytes& content) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(content.all().data()), static_cast<std::streamsize>(content.size()));
}

std::string example_file(const std::string& name, const std::string& ending) {
  return std::string(EXAMPLES_DIR) + "/" + name + "/" + name + ending;
}

/// A run of the examples in both forms, each loaded into a pair of programs of its own.
class BothForms {
 public:
  BothForms(const std::string& name, std::int32_t frames) {
    HistoryOfRun run(example_file(name, ".trj"), frames);
    const auto path = history.work() / "copy.his";
    write(path, run.bytes());
    EXPECT_TRUE(run.whole());
    fs::copy_file(example_file(name, ".qfx"), history.work() / "copy.qfx");
    EXPECT_EQ(history.run("TRAJECTORY", path.string()), 0);
    EXPECT_EQ(binary.load_example(name), 0);
    EXPECT_EQ(binary.run("LAST_FRAME_NO", std::to_string(frames)), 0);
  }

  void run(std::string_view word, const std::string& arguments = "") {
    EXPECT_EQ(history.run(word, arguments), 0) << word << " " << arguments;
    EXPECT_EQ(binary.run(word, arguments), 0) << word << " " << arguments;
  }
  /// Holds a scratch file of one form to that of the other.
  void expect_same(const std::string& file, double tolerance) {
    const auto one = read_scratch(history.work() / file), other = read_scratch(binary.work() / file);
    ASSERT_GT(one.points, 1) << file;
    ASSERT_EQ(one.points, other.points) << file;
    ASSERT_EQ(one.values_per_point, other.values_per_point) << file;
    double largest = 0;
    for (const auto& row : other.values) {
      for (const double value : row) largest = std::max(largest, std::abs(value));
    }
    for (std::size_t k = 0; k < one.x.size(); ++k) {
      EXPECT_NEAR(one.x[k], other.x[k], 1e-9) << file;
      for (std::size_t c = 0; c < one.values[k].size(); ++c) {
        EXPECT_NEAR(one.values[k][c], other.values[k][c], tolerance * largest) << file << " frame " << k + 1;
      }
    }
  }

  DeskWithProcess history, binary;
};

constexpr double file_rounding = 1e-12;       // values of 64 bits
constexpr double coordinate_rounding = 1e-5;  // of 32 bits

TEST(HistoryRun, has_the_energies_of_its_binary_form) {
  BothForms run("butane", 60);
  run.run("SELECT_PROPERTIES",
          "\"Total Energy\" \"Potential Energy\" \"Kinetic Energy\" \"Bond Energy\" \"Angle Energy\" "
          "\"Torsion Energy\" \"van der Waals Energy\" \"Coulomb Energy\"");
  run.run("PROFILE");
  for (const char* ending : {"te", "pe", "ke", "bnd_e", "ang_e", "tor_e", "vdw_e", "coul_e"}) {
    run.expect_same(std::string("PathStat_prf.") + ending, file_rounding);
  }
}

TEST(HistoryRun, has_the_cell_and_motion_of_its_binary_form) {
  BothForms run("water", 24);
  run.run("SELECT_PROPERTIES", "Pressure Stress Volume Density \"Cell Parameters\"");
  run.run("PROFILE");
  for (const char* ending : {"pres", "strs", "cell"}) {
    run.expect_same(std::string("PathStat_prf.") + ending, file_rounding);
  }
  // The volume in the binary form is the engine's own figure.
  for (const char* ending : {"vol", "dens"}) run.expect_same(std::string("PathStat_prf.") + ending, 1e-10);
  run.run("MSD");
  run.expect_same("PathStat.msd", coordinate_rounding);
  run.run("VAC");
  run.expect_same("PathStat.vac", coordinate_rounding);
  run.run("RDF_CUTOFF", "9");
  run.run("RDF");
  const auto& one = run.history.data_set(run.history.graph_titles().size() - 1).points;
  const auto& other = run.binary.data_set(run.binary.graph_titles().size() - 1).points;
  ASSERT_EQ(one.size(), other.size());
  for (std::size_t k = 0; k < one.size(); ++k) {
    if (one[k].x < 2) continue;  // the rigid distances lie on the edges of bins
    EXPECT_NEAR(one[k].y, other[k].y, 1e-2) << "a pair at the edge of a bin may change sides, at " << one[k].x;
  }
}

std::vector<Vector3> shown(DeskWithProcess& desk) {
  return desk.model.model(desk.model.current_model())->data.positions;
}

TEST(HistoryRun, shows_the_frames_of_its_binary_form_in_any_order) {
  BothForms run("butane", 40);
  std::mt19937 random(7);
  for (int k = 0; k < 12; ++k) {
    run.run("CURRENT_FRAME_NUMBER", std::to_string(random() % 40 + 1));
    const auto one = shown(run.history), other = shown(run.binary);
    ASSERT_EQ(one.size(), other.size());
    for (std::size_t atom = 0; atom < one.size(); ++atom) {
      for (std::size_t axis = 0; axis < 3; ++axis) EXPECT_NEAR(one[atom][axis], other[atom][axis], 1e-5);
    }
  }
  run.run("FRAME_STEP_BACKWARDS", "START");
  EXPECT_EQ(run.history.value("CURRENT_FRAME_NUMBER"), run.binary.value("CURRENT_FRAME_NUMBER"));
}

/// Three atoms in two molecules, two of which move.
class SmallHistory : public testing::Test {
 protected:
  std::int32_t load(const Bytes& content, const char* name = "small.his", int periodic_type = 0) {
    const auto path = desk.work() / name;
    write(path, content);
    std::ofstream(desk.work() / "small.qfx")
        << "(1 Model small\n (A I PeriodicType " << periodic_type
        << ")\n (A V Cell ((9 0 0) (0 9 0) (0 0 9)))\n (A I AtomId (4 5 6))\n (A C Element (C C C))\n"
        << " (A V XYZ ((0 0 0) (5 0 0) (0 5 0)))\n (A I Movable (1 0 1))\n)\n";
    return desk.run("TRAJECTORY", path.string());
  }
  const HistoryPlan plan{.version = 2.6, .atoms = 3, .movable = {3, 1}, .molecules = 2, .bonds = {{1, 2}}};
  DeskWithProcess desk;
};

TEST_F(SmallHistory, gives_times_and_the_components_of_its_version) {
  ASSERT_EQ(load(history_file(plan, 5)), 0);
  ASSERT_EQ(
      desk.run_lines({"SELECT_PROPERTIES \"Torsion-Stretch Energy\" \"van der Waals Repulsive Energy\"", "PROFILE"}),
      0);
  const EnergyPlaces at(plan);
  const auto cross = read_scratch(desk.work() / "PathStat_prf.bt_e");
  const auto repulsive = read_scratch(desk.work() / "PathStat_prf.vdwr_e");
  ASSERT_EQ(cross.points, 5);
  for (int frame = 1; frame <= 5; ++frame) {
    const auto k = static_cast<std::size_t>(frame - 1);
    EXPECT_EQ(cross.values[k][0], energy_number(frame, at.components + 7));
    EXPECT_EQ(repulsive.values[k][0], energy_number(frame, at.components + 13));
    EXPECT_NEAR(cross.x[k], 0.002 * (10 + 5 * (frame - 1)), 1e-12);
  }
  EXPECT_THAT(desk.output, Contains(HasSubstr("another line")));
  EXPECT_THAT(desk.told("SELECT_PROPERTIES", "\"Bond Energy / Molecule\""), Pair(0, Contains("PATHSTAT_MSG_2")))
      << "rows of molecules are not offered";
}

TEST_F(SmallHistory, takes_a_coordinate_file_where_there_is_no_model_file) {
  write(desk.work() / "other.his", history_file(plan, 3));
  std::ofstream(desk.work() / "other.car") << "a title\nPBC OFF\nmodel\ndate\n"
                                              "C1 0 0 0 MOL 1 c3 C 0\nC2 5 6 7 MOL 1 c3 C 0\nC3 0 5 0 MOL 1 c3 C 0\n"
                                              "end\nend\n";
  ASSERT_EQ(desk.run("TRAJECTORY", (desk.work() / "other.his").string()), 0);
  ASSERT_EQ(desk.run("CURRENT_FRAME_NUMBER", "2"), 0);
  const auto& model = desk.model.model(desk.model.current_model())->data;
  EXPECT_EQ(model.positions[0],
            (Vector3{vector_number(2, 1, 1, 0), vector_number(2, 1, 1, 1), vector_number(2, 1, 1, 2)}));
  EXPECT_EQ(model.positions[1], (Vector3{5, 6, 7})) << "it does not move";
  EXPECT_EQ(model.positions[2][0], vector_number(2, 1, 3, 0));
  EXPECT_THAT(model.movable, ElementsAre(1, 0, 1));
}

TEST_F(SmallHistory, that_is_cut_keeps_its_whole_frames) {
  const auto whole = history_file(plan, 5);
  ASSERT_EQ(load(whole.part(0, whole.size() - 3)), 0);
  EXPECT_THAT(desk.take_keys(), Contains("PATHSTAT_WARN_7"));
  EXPECT_EQ(std::stoi(desk.value("LAST_FRAME_NO")), 4);
}

TEST_F(SmallHistory, of_a_layer_or_of_another_name_is_refused) {
  EXPECT_EQ(load(history_file(plan, 2), "small.fhis"), 1);
  EXPECT_THAT(desk.take_keys(), Contains("PATHSTAT_ERROR_115"));
  EXPECT_EQ(load(history_file(plan, 2), "small.his", 101), 1);
  EXPECT_THAT(desk.output, Contains(HasSubstr("only non periodic and 3D periodic his trajectories")));
  EXPECT_EQ(load(history_file(plan, 1).part(0, 700)), 1);
  EXPECT_THAT(desk.take_keys(), Contains("Traj_OpenProblem"));
}

TEST(HistoryOfACrystal, moves_the_symmetry_images_with_their_atoms_and_the_cell) {
  DeskWithProcess desk;
  const HistoryPlan plan;
  Bytes file = history_head(plan);
  for (int number = 1; number <= 3; ++number) {
    auto frame = numbered_frame(plan, number);
    frame.cell[0] = frame.vectors[0] = 8 + number;
    frame.cell[1] = frame.vectors[4] = 16;
    frame.cell[2] = frame.vectors[8] = 32;
    frame.positions = {1.0 + number, 2, 3, 2, 5, 7};
    file.add(number == 1 ? history_first_frame(plan, frame) : history_later_frame(frame));
  }
  write(desk.work() / "crystal.his", file);
  std::ofstream(desk.work() / "crystal.qfx")
      << "(1 Model crystal\n (A I PeriodicType 100)\n (A V Cell ((8 0 0) (0 16 0) (0 0 32)))\n (A I AtomId (7 8))\n"
         " (A C Element (C C))\n (A V XYZ ((1 2 3) (2 5 7)))\n"
         " (A D Rotation (1 0 0 0 1 0 0 0 1  -1 0 0 0 -1 0 0 0 1  -1 0 0 0 1 0 0 0 -1  1 0 0 0 -1 0 0 0 -1))\n"
         " (A D Translation (0 0 0  0.5 0 0.5  0 0.5 0.5  0.5 0.5 0))\n)\n";
  ASSERT_EQ(desk.run("TRAJECTORY", (desk.work() / "crystal.his").string()), 0);
  ASSERT_EQ(desk.run("CURRENT_FRAME_NUMBER", "2"), 0);
  // The cell is 10 x 16 x 32 in this frame; the model lists the images operator by operator.
  const std::vector<Vector3> expected{{3, 2, 3},    {2, 5, 7},   {-3 + 5, -2, 3 + 16}, {-2 + 5, -5, 7 + 16},
                                      {-3, 10, 13}, {-2, 13, 9}, {3 + 5, -2 + 8, -3},  {2 + 5, -5 + 8, -7}};
  const auto found = shown(desk);
  ASSERT_EQ(found.size(), expected.size());
  for (std::size_t atom = 0; atom < found.size(); ++atom) {
    for (std::size_t axis = 0; axis < 3; ++axis) EXPECT_NEAR(found[atom][axis], expected[atom][axis], 1e-9) << atom;
  }
}

TEST(HistoryExample, is_the_binary_run_in_the_other_form) {
  HistoryOfRun run(example_file("butane", ".trj"), 500);
  const Bytes made = run.example();
  std::ifstream file(example_file("butane-history", ".his"), std::ios::binary);
  const std::string there{std::istreambuf_iterator<char>(file), {}};
  EXPECT_TRUE(there == std::string(reinterpret_cast<const char*>(made.all().data()), made.size()))
      << "build/release/bin/history_example makes it anew";
}

}  // namespace
}  // namespace pathstat::desk
