#include "desk/export/export_command.h"
#include "desk/export/frame_source.h"
#include "desk/export/text_formats.h"
#include "desk/script/script_run.h"
#include "small_models.h"
#include "testing.h"
#include "trajectory/written_trajectory.h"

namespace pathstat::desk {
namespace {

MolecularModel pair() { return std::move(imported(water_pair).models.front()); }

std::string text_of(std::string (*add)(const ExportedFrame&, std::string&), const ExportedFrame& frame) {
  std::string text;
  EXPECT_THAT(add(frame, text), IsEmpty());
  return text;
}

TEST(TextFormats, have_their_columns) {
  auto model = pair();
  model.elements[0] = 17;  // Cl
  model.names = {};
  for (const auto* name : {"CL1", "HW1", "HW234", "OXT", "H", "C\ta"}) model.names.push_back(name);
  const ExportedFrame frame{.model = model, .time = 0.25};
  EXPECT_EQ(text_of(add_pdb, frame),
            "TITLE     pair t= 0.25000\n"
            "CRYST1   10.000   10.000   10.000  90.00  90.00  90.00 P 1           1\n"
            "ATOM      1 CL1  WAT     1       1.000   1.000   1.000  1.00  0.00          CL  \n"
            "ATOM      2  HW1 WAT     1       1.000   2.000   1.000  1.00  0.00           H  \n"
            "ATOM      3 HW23 WAT     1       2.000   1.000   1.000  1.00  0.00           H  \n"
            "ATOM      4  OXT WAT     2       1.000   2.000   9.500  1.00  0.00           O  \n"
            "ATOM      5  H   WAT     2       1.000   2.000   0.500  1.00  0.00           H  \n"
            "ATOM      6  C_a WAT     2       1.000   3.000   9.500  0.50  0.00           H  \n");
  std::string end;
  end_pdb(frame, end);
  EXPECT_EQ(end,
            "CONECT    1    2    3\nCONECT    2    1\nCONECT    3    1\n"
            "CONECT    4    5    6\nCONECT    5    4\nCONECT    6    4\nEND\n");
  model.vectors[velocity_name] = std::vector<Vector3>(6, {1, -2.5, 0});
  EXPECT_THAT(text_of(add_gro, frame), AllOf(HasSubstr("pair t= 0.25000\n    6\n"
                                                       "    1WAT    CL1    1   0.100   0.100   0.100"
                                                       "  0.1000 -0.2500  0.0000\n"
                                                       "    1WAT    HW1    2   0.100   0.200   0.100"),
                                             EndsWith("\n   1.00000   1.00000   1.00000\n")));
  EXPECT_THAT(text_of(add_xyz, frame),
              HasSubstr("6\nLattice=\"10 0 0 0 10 0 0 0 10\" Properties=species:S:1:pos:R:3 Time=0.25\n"
                        "Cl       1.00000000      1.00000000      1.00000000\n"));
  EXPECT_THAT(text_of(add_cif, frame),
              AllOf(StartsWith("data_pair\n_cell_length_a 10.000000\n"),
                    HasSubstr("_atom_site_fract_z\n_atom_site_occupancy\nCl1 Cl 0.10000000 0.10000000 0.10000000 1\n"),
                    EndsWith("H6 H 0.10000000 0.30000000 0.95000000 0.5\n")));
}

TEST(TextFormats, go_on_from_nought_where_numbers_are_too_long) {
  auto model = carbon_model(std::vector<Vector3>(100001));
  for (std::size_t k = 0; k < model.atoms(); ++k) model.residue_ids[k] = static_cast<std::int32_t>(k);
  model.bonds = {{0, 1}};
  const ExportedFrame frame{.model = model, .time = {}};
  const auto pdb = text_of(add_pdb, frame), gro = text_of(add_gro, frame);
  EXPECT_THAT(pdb, AllOf(HasSubstr("\nATOM  99999  C   C    9998 "), HasSubstr("\nATOM      0  C   C    9999 "),
                         HasSubstr("\nATOM      1  C   C       0 ")));
  EXPECT_THAT(
      gro, AllOf(StartsWith("\n100001\n"), HasSubstr("\n99999C        C    0 "), HasSubstr("\n    0C        C    1 ")));
  std::string end;
  end_pdb(frame, end);
  EXPECT_EQ(end, "END\n") << "two atoms have the number 1";
}

TEST(TextFormats, refuse_places_beyond_their_columns) {
  auto model = carbon_model({{0, 0, 0}, {9999.9994, 0, -999.9994}});
  const ExportedFrame frame{.model = model, .time = {}};
  EXPECT_THAT(text_of(add_pdb, frame), HasSubstr("    9999.999   0.000-999.999  1.00"));
  std::string text;
  for (const double x : {9999.9996, -999.9996, std::nan("")}) {
    model.positions[1][0] = x;
    EXPECT_THAT(add_pdb(frame, text), HasSubstr("atom 2 stands at")) << x;
  }
  EXPECT_THAT(add_gro(frame, text), HasSubstr("atom 2")) << "not a number";
}

TEST(Orientation, is_that_of_the_formats_and_changes_no_structure) {
  std::mt19937 random(std::random_device{}());
  std::uniform_real_distribution<double> within(-5, 5);
  for (int k = 0; k < 50; ++k) {
    auto model = carbon_model({{within(random), within(random), within(random)}, {1, 2, 3}});
    model.periodic_type = periodic_3d;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      model.cell[axis] = {within(random), within(random), within(random)};
      model.cell[axis][axis] += k % 2 ? 12 : -12;  // right-handed and left-handed
    }
    const StandardOrientation orientation(model);
    const auto& [a, b, c] = orientation.cell;
    EXPECT_NEAR(std::abs(a[1]) + std::abs(a[2]) + std::abs(b[2]), 0, 1e-12);
    EXPECT_GT(std::min({a[0], b[1], c[2]}), 0);
    const auto& m = orientation.turn;
    EXPECT_NEAR(dvectrip_(Vector3{m[0], m[1], m[2]}, Vector3{m[3], m[4], m[5]}, Vector3{m[6], m[7], m[8]}), 1, 1e-9)
        << "a rotation, no mirror";
    const auto before = Lattice(periodic_3d, model.cell).fractional(model.positions[0]);
    const auto after = Lattice(periodic_3d, orientation.cell).fractional(orientation.turned(model.positions[0]));
    const double sign = k % 2 ? 1 : -1;
    for (std::size_t axis = 0; axis < 3; ++axis) EXPECT_NEAR(after[axis], sign * before[axis], 1e-9);
  }
}

/// A run of two frames of the pair of water molecules, of which the atom 23 does not move, with its model beside it.
class Exported : public testing::Test {
 protected:
  Exported() {
    run_.set(1001, {300}).set(1058, {10, 11, 12, 0, 0, 0}).set(1000, {0.5}).set(1071, positions(0)).frame();
    run_.set(1001, {310}).set(1058, {10, 11, 13, 1, 0, 0}).set(1000, {0.6}).set(1071, positions(1)).frame();
    std::filesystem::copy(run_.path(), folder_.file("run.trj"));
    folder_.write("run.qfx", water_pair);
    options_.file = folder_.file("run.trj");
  }
  static std::vector<double> positions(double shift) {
    std::vector<double> numbers(15);
    for (std::size_t k = 0; k < 15; ++k) numbers[k] = static_cast<double>(k) + shift;
    return numbers;
  }
  /// Exports to a file. @return its text
  std::string exported(const std::string& name, int code = exit_code::success) {
    options_.output = folder_.file(name);
    testing::internal::CaptureStderr();
    EXPECT_EQ(run_export(options_), code);
    trouble_ = testing::internal::GetCapturedStderr();
    return folder_.read(name);
  }

  ScratchFolder folder_;
  WrittenTrajectory run_{6, {11, 12, 13, 21, 22}, 3};
  ExportOptions options_;
  std::string trouble_;
};

TEST_F(Exported, holds_the_frames_and_atoms_that_were_chosen) {
  options_.selection = "molecule 1 or name H4";
  const auto pdb = exported("a.pdb");
  // The cell of the second frame is turned about x until b = (0, 11, 1) lies on y: y' = (11 y + z) / sqrt(122).
  EXPECT_THAT(pdb, AllOf(HasSubstr("MODEL        1\n"), HasSubstr("ENDMDL\nTITLE     pair t= 0.60000\nCRYST1   10.000"),
                         HasSubstr("MODEL        2\nATOM      1  O1  WAT     1       1.000   2.263   2.807"),
                         HasSubstr("ATOM      4  H4  WAT     2 "), Not(HasSubstr("O2")),
                         HasSubstr("ENDMDL\nCONECT    1    2    3\n")));
  options_.frame = 2;
  EXPECT_THAT(exported("b.pdb"), AllOf(Not(HasSubstr("MODEL")), HasSubstr("1.000   2.263   2.807")));
  EXPECT_THAT(exported("b.cif"), HasSubstr("_cell_length_c 13.000000\n"));
  options_.frame.reset();
  EXPECT_THAT(exported("c.cif", exit_code::not_run), IsEmpty());
  EXPECT_THAT(trouble_, HasSubstr("--frame"));
  options_.file = folder_.file("run.qfx");
  EXPECT_THAT(exported("d.xyz"), HasSubstr("4\nLattice"));
}

TEST_F(Exported, trajectory_keeps_values_and_atoms_that_move) {
  options_.selection = "resid 2";
  exported("part.trj");
  EXPECT_THAT(trouble_, IsEmpty());
  auto model = std::move(read_model_file(folder_.file("part.qfx")).models.front());
  EXPECT_THAT(model.ids, ElementsAre(21, 22, 23));
  EXPECT_EQ(model.bonds.size(), 2U);
  auto [source, problem] = open_frames(folder_.file("part.trj"), model);
  ASSERT_THAT(problem, IsEmpty());
  std::optional<double> time;
  ASSERT_EQ(source->read(2, model, time), FrameEnd::read);
  EXPECT_EQ(time, 0.6);
  EXPECT_THAT(source->moving(), ElementsAre(0, 1));
  EXPECT_EQ(model.positions[1], (Vector3{13, 14, 15}));
  EXPECT_EQ(model.positions[2], (Vector3{1, 3, 9.5}));
  EXPECT_EQ(model.cell[1], (Vector3{0, 11, 1}));
  double temperature = 0;
  std::int32_t count = 0, status = 0;
  kvA_TRJ_ValueDouble(source->binary_handle(), 1001, std::span(&temperature, 1), count, status);
  EXPECT_EQ(temperature, 310);
  EXPECT_EQ(source->read(3, model, time), FrameEnd::no_more);
}

TEST_F(Exported, files_are_never_written_through_a_link) {
  folder_.write("other", "of somebody");
  const std::vector<std::string> names{"a.pdb", "a.trj", "a.qfx"};
  for (const auto& name : names) std::filesystem::create_symlink(folder_.file("other"), folder_.file(name + ".part"));
  exported("a.pdb");
  exported("a.trj");  // and its model
  for (const auto& name : names) {
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(folder_.file(name)))) << name;
  }
  EXPECT_EQ(folder_.read("other"), "of somebody");
}

TEST_F(Exported, says_why_nothing_was_written) {
  const auto refused = [&](const std::string& name) {
    EXPECT_THAT(exported(name, exit_code::not_run), IsEmpty()) << name;
    EXPECT_FALSE(std::filesystem::exists(folder_.file(name + ".part")));
    return trouble_;
  };
  EXPECT_THAT(refused("a.doc"), HasSubstr(".pdb, .xyz, .gro, .cif, .trj"));
  options_.selection = "elment O";
  EXPECT_THAT(refused("a.pdb"), HasSubstr("did you mean element?\n    elment O\n    ^~~~~~"));
  options_.selection = "name Q";
  EXPECT_THAT(refused("a.pdb"), AllOf(HasSubstr("no atom has the name Q"), HasSubstr("chooses no atom")));
  options_.selection = "all";
  options_.frame = 3;
  EXPECT_THAT(refused("a.pdb"), HasSubstr("has no frame 3; the last is 2"));
  options_.frame.reset();
  options_.first = 2;
  options_.last = 1;
  EXPECT_THAT(refused("a.pdb"), HasSubstr("comes before the first"));
  options_.last = 5;
  EXPECT_THAT(refused("a.pdb"), HasSubstr("has no frame 3; the last is 2"));
  options_.last.reset();
  options_.first = 1;
  const auto whole = folder_.read("run.trj");
  folder_.write("run.trj", whole.substr(0, whole.size() - 20));
  EXPECT_THAT(refused("a.pdb"), HasSubstr("breaks off behind frame 1; --last 1 exports what is whole"));
  folder_.write("run.trj", whole);
  EXPECT_EQ((options_.output = folder_.file("run.trj"), run_export(options_)), exit_code::not_run);
  EXPECT_EQ(folder_.read("run.trj"), whole);
  std::filesystem::remove(folder_.file("run.qfx"));
  EXPECT_THAT(refused("a.pdb"), HasSubstr("no model lies beside"));
}

}  // namespace
}  // namespace pathstat::desk
