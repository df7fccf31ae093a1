#include "archive_writer.h"
#include "process/desk_with_process.h"
#include "scratch_folder.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

const std::string run_file = EXAMPLES_DIR "/water-npt/water-npt.trj";
const std::string model_file = EXAMPLES_DIR "/water-npt/water-npt.qfx";
constexpr std::int32_t frames = 12;

/// The values of a scratch file, one behind the other.
std::vector<double> series(DeskWithProcess& desk, const std::string& name) {
  std::vector<double> all;
  for (const auto& point : read_scratch(desk.work() / name).values) all.insert(all.end(), point.begin(), point.end());
  return all;
}

/// The numbers of the graph that was shown last.
std::vector<double> last_graph(DeskWithProcess& desk) {
  std::vector<double> numbers;
  for (const auto& point : desk.data_set(desk.graphs.shown_graphs().size() - 1).points) numbers.push_back(point.y);
  return numbers;
}

/// What the analyses make of the first frames of a run.
struct Results {
  std::vector<double> energy, volume, density, cell, distribution, structure_factor, shown;

  Results(DeskWithProcess& desk, const fs::path& trajectory) {
    EXPECT_EQ(desk.run("TRAJECTORY", trajectory.string()), 0);
    EXPECT_EQ(desk.run("LAST_FRAME_NO", std::to_string(frames)), 0);
    EXPECT_EQ(desk.run_lines({"SELECT_PROPERTIES \"Total Energy\" Volume Density \"Cell Parameters\"", "PROFILE"}), 0);
    energy = series(desk, "PathStat_prf.te");
    volume = series(desk, "PathStat_prf.vol");
    density = series(desk, "PathStat_prf.dens");
    cell = series(desk, "PathStat_prf.cell");
    EXPECT_EQ(desk.run("INCREMENT_NO", "4"), 0);
    // The bonds of the water, all of 1 Å, are to lie inside a bin.
    EXPECT_EQ(desk.run_lines({"RDF_INTERVAL 0.03", "RDF_CUTOFF 8", "RDF"}), 0);
    distribution = last_graph(desk);
    EXPECT_EQ(desk.run_lines({"R_SPACE_CUTOFF 12", "STRUCTURE_FACTOR"}), 0);
    structure_factor = last_graph(desk);
    for (const char* entry : {"3", "1", "2"}) {
      EXPECT_EQ(desk.run("CURRENT_FRAME_NUMBER", entry), 0);
      const auto xyz = desk.shown_positions();
      shown.insert(shown.end(), xyz.begin(), xyz.end());
    }
  }
};

struct ArchiveCase {
  ArchiveForm form;
  const char* model;  ///< extension of the model beside the archive
};
void PrintTo(const ArchiveCase& c, std::ostream* out) { *out << c.model; }

class ArchiveOfRun : public testing::TestWithParam<ArchiveCase> {};

/// Energies have six decimals in the archive, cells six and coordinates nine.
TEST_P(ArchiveOfRun, gives_what_the_run_gives) {
  const auto [form, model] = GetParam();
  DeskWithProcess of_run, of_archive;
  const fs::path path = of_archive.work() / "run.arc";
  const fs::path beside = of_archive.work() / ("run." + std::string(model));
  write_archive_of_run(run_file, model_file, path.string(), form, 1, frames);
  if (beside.extension() == ".qfx") {
    fs::copy_file(model_file, beside);
  } else {
    write_archive_of_run(run_file, model_file, beside.string(), form, 1, 1);
  }
  const Results archive(of_archive, path), run(of_run, run_file);
  ASSERT_EQ(archive.energy.size(), frames);
  EXPECT_THAT(archive.energy, Pointwise(DoubleNear(6e-7), run.energy));
  EXPECT_THAT(archive.volume, Pointwise(DoubleNear(1e-3), run.volume));
  EXPECT_THAT(archive.density, Pointwise(DoubleNear(1e-5), run.density));
  EXPECT_THAT(archive.cell, Pointwise(DoubleNear(6e-7), run.cell));
  ASSERT_FALSE(run.distribution.empty());
  EXPECT_THAT(archive.distribution, Pointwise(DoubleNear(2e-3), run.distribution));
  EXPECT_THAT(archive.structure_factor, Pointwise(DoubleNear(2e-3), run.structure_factor));
  EXPECT_THAT(archive.shown, Pointwise(DoubleNear(1e-9), run.shown));
  EXPECT_THAT(of_archive.told("MSD"), Pair(1, Contains("PATHSTAT_ERROR_113"))) << "the frames have no times";
}

INSTANTIATE_TEST_SUITE_P(forms, ArchiveOfRun,
                         testing::Values(ArchiveCase{ArchiveForm::text, "qfx"}, ArchiveCase{ArchiveForm::text, "cor"},
                                         ArchiveCase{ArchiveForm::records, "car"}));

const std::string one_atom = "t\nf\nd\nC 1 2 3 R 1 c C 0\nend\nend\n";
const std::string two_atoms = "t\nf\nd\nC 1 2 3 R 1 c C 0\nN 1 2 4 R 1 n N 0\nend\nend\n";

TEST(ArchiveLoad, takes_the_first_model_that_lies_beside_it) {
  const std::string qfx =
      "(1 Model first\n (A I PeriodicType 0)\n (A I AtomId (7))\n (A C Element (C))\n (A V XYZ ((0 0 0)))\n)\n";
  struct Beside {
    std::vector<const char*> extensions;
    std::int32_t status;
  };
  // Only the first of these has the atoms of the archive.
  for (const auto& [extensions, status] :
       {Beside{{"qfx", "car", "cor"}, 0}, Beside{{"car", "cor"}, 0}, Beside{{"cor"}, 0}, Beside{{}, 1}}) {
    DeskWithProcess desk;
    std::ofstream(desk.work() / "run.arc") << one_atom;
    for (const std::string extension : extensions) {
      const bool first = extension == extensions.front();
      std::ofstream(desk.work() / ("run." + extension)) << (!first ? two_atoms : extension == "qfx" ? qfx : one_atom);
    }
    EXPECT_EQ(desk.run("TRAJECTORY", (desk.work() / "run").string()), status) << extensions.size();
    const auto keys = desk.take_keys();
    EXPECT_EQ(std::ranges::count(keys, "Traj_NoSuchFile"), extensions.empty() ? 1 : 0);
  }
}

TEST(ArchiveLoad, refuses_a_model_of_other_atoms) {
  DeskWithProcess desk;
  std::ofstream(desk.work() / "run.arc") << one_atom;
  std::ofstream(desk.work() / "run.car") << two_atoms;
  EXPECT_THAT(desk.told("TRAJECTORY", (desk.work() / "run.arc").string()), Pair(50015, Contains("PATHSTAT_ERROR_112")));
}

struct Damage {
  std::string text;
  const char* key;
};

TEST(ArchiveLoad, tells_what_is_wrong_with_the_file) {
  const std::string cut = one_atom.substr(0, one_atom.size() - 5);
  for (const auto& [text, key] :
       {Damage{"t\nHELIX\n", "PATHSTAT_ERROR_110"}, Damage{"t\nPBC=1\n", "PATHSTAT_ERROR_119"},
        Damage{cut, "PATHSTAT_ERROR_47"}, Damage{"", "PATHSTAT_ERROR_117"},
        Damage{"t\nf\nd\nC 1 2 x R 1 c C 0\nend\nend\n", "PATHSTAT_ERROR_47"},
        Damage{one_atom + one_atom.substr(2) + "f\nd\nC 1 2 3 R 1 c C 0\nN 1 2 3 R 1 n N 0\nend\nend\n",
               "PATHSTAT_WARN_7"}}) {
    DeskWithProcess desk;
    std::ofstream(desk.work() / "run.arc") << text;
    std::ofstream(desk.work() / "run.car") << one_atom;
    const bool has_frames = std::string_view(key) == "PATHSTAT_WARN_7";
    EXPECT_EQ(desk.run("TRAJECTORY", (desk.work() / "run.arc").string()), has_frames ? 0 : 1) << text;
    EXPECT_THAT(desk.take_keys(), Contains(key)) << text;
    if (has_frames) {
      EXPECT_EQ(desk.value("LAST_FRAME_NO"), "     2");
    }
  }
}

/// The archives of the examples are what the writer makes of the run.
TEST(ArchiveExamples, are_those_of_the_run) {
  const fs::path examples = EXAMPLES_DIR "/water-archive";
  const ScratchFolder folder;
  const auto made = folder.file("archive");
  struct Example {
    const char* name;
    ArchiveForm form;
    std::int32_t step, count;
  };
  for (const auto& [name, form, step, count] :
       {Example{"lines.arc", ArchiveForm::text, 12, 9}, Example{"records.arc", ArchiveForm::records, 48, 3},
        Example{"lines.car", ArchiveForm::text, 1, 1}, Example{"records.cor", ArchiveForm::records, 1, 1}}) {
    write_archive_of_run(run_file, model_file, made, form, step, count);
    EXPECT_EQ(content_of(examples / name), content_of(made)) << name;
  }
}

}  // namespace
}  // namespace pathstat::desk
