#include <chrono>
#include <thread>

#include "process/desk_with_process.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

/// Mean of v² over atoms and the first `frames` frames of the argon run, Å²/ps², from the engine's kinetic energy.
double mean_square_velocity(std::size_t frames) {
  constexpr double atoms = 500.0;
  constexpr double argon_mass = 39.948;
  constexpr double per_kcal = 418.4;  // amu Å²/ps²
  const auto kinetic = log_column("argon", "KinEng");
  const double sum = std::accumulate(kinetic.begin(), kinetic.begin() + static_cast<std::ptrdiff_t>(frames), 0.0);
  return 2.0 * per_kcal * sum / static_cast<double>(frames) / (atoms * argon_mass);
}

TEST(VelocityAutocorrelation, begins_at_the_kinetic_energy_of_the_engine) {
  DeskWithProcess desk("argon");
  ASSERT_EQ(desk.run_lines({"VAC_ANISOTROPIC yes", "VAC"}), 0);
  const auto series = read_scratch(desk.work() / "PathStat.vac");
  const std::size_t frames = log_column("argon", "KinEng").size();
  ASSERT_EQ(series.points, static_cast<std::int32_t>(frames / 2));
  ASSERT_EQ(series.values_per_point, 7);
  // The last frame takes part in no pair.
  EXPECT_NEAR(series.values[0][6], mean_square_velocity(frames - 1), 2e-4 * series.values[0][6]);
  for (const auto& row : series.values) EXPECT_NEAR(row[0] + row[1] + row[2], row[6], 1e-9);
  EXPECT_NEAR(series.x[3], 0.06, 1e-9);
  EXPECT_THAT(desk.graph_titles(), SizeIs(7));
}

TEST(Displacement, begins_with_free_flight_and_gives_the_diffusion_of_the_liquid) {
  DeskWithProcess desk("argon");
  EXPECT_THAT(desk.told("LINEAR_FIT"), Pair(1, ElementsAre("PATHSTAT_ERROR_28")));
  ASSERT_EQ(desk.run("MSD"), 0);
  const auto series = read_scratch(desk.work() / "PathStat.msd");
  EXPECT_EQ(series.values[0][0], 0.0);
  const double flight = mean_square_velocity(log_column("argon", "KinEng").size() - 1) * 0.02 * 0.02;
  EXPECT_NEAR(series.values[1][0], flight, 0.03 * flight);
  ASSERT_EQ(desk.run_lines({"MIN_FIT_TIME 1", "LINEAR_FIT"}), 0);
  EXPECT_THAT(desk.graph_titles(), Contains("A*A per atom"));
  // Liquid argon near 90 K diffuses at some 2.5e-5 cm²/s.
  ASSERT_THAT(desk.output, Contains(HasSubstr("cm*cm/(second) per atom")));
  for (const auto& line : desk.output) {
    if (line.find("cm*cm") == std::string::npos) continue;
    EXPECT_THAT(line, StartsWith(" D  ="));
    EXPECT_NEAR(std::stod(line.substr(5)), 2.5e-5, 1e-5);
  }
}

TEST(PowerSpectrum, of_water_peaks_where_its_molecules_librate) {
  DeskWithProcess desk("water");
  ASSERT_EQ(desk.run_lines({"VAC", "VAC_MAX_TIME_TRANSFORM 3"}), 0);
  EXPECT_THAT(desk.told("POWER_SPECTRUM"), Pair(0, IsEmpty()));
  const DataSet& spectrum = desk.data_set(desk.graph_titles().size() - 1);
  EXPECT_NEAR(spectrum.points[1].x, 0.5 / (3.0 * 0.03), 0.05);
  const auto peak = std::ranges::max_element(spectrum.points, {}, [](const auto& point) { return point.y; });
  EXPECT_GT(peak->x, 400.0);
  EXPECT_LT(peak->x, 650.0);
}

TEST(Correlation, without_velocities_says_so_and_leaves_no_cache) {
  DeskWithProcess desk("water-npt");
  EXPECT_THAT(desk.told("VAC"), Pair(1, ElementsAre("PATHSTAT_ERROR_13")));
  EXPECT_THAT(desk.told("POWER_SPECTRUM"), Pair(1, ElementsAre("PATHSTAT_ERROR_73")));
  EXPECT_EQ(desk.run("MSD_ATOMS", "SELECTED"), 0);
  EXPECT_THAT(desk.told("MSD"), Pair(3, ElementsAre("PATHSTAT_ERROR_26")));
  EXPECT_FALSE(std::filesystem::exists(desk.work() / "CorrelCache"));
}

TEST(Correlation, that_is_interrupted_keeps_a_whole_file) {
  DeskWithProcess desk("argon");
  // The process asks again some time after it asked while it read the file.
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  desk.interrupt = true;
  ASSERT_EQ(desk.run("VAC"), 0);
  const auto series = read_scratch(desk.work() / "PathStat.vac");
  // Ten origins, all of frame 1 ... 10.
  EXPECT_NEAR(series.values[0][0], mean_square_velocity(10), 2e-4 * series.values[0][0]);
}

}  // namespace
}  // namespace pathstat::desk
