#include "process/desk_with_process.h"

#include "testing.h"

namespace pathstat::desk {
namespace {

constexpr double gpa_of_atmosphere = 0.000101325;

struct EngineSeries {
  const char* example;
  const char* property;
  const char* extension;
  const char* heading;  ///< of the engine's log
  double factor = 1.0;
};

class ExtractedSeries : public testing::TestWithParam<EngineSeries> {};

TEST_P(ExtractedSeries, holds_the_figures_of_the_engine_frame_by_frame) {
  const auto& wanted = GetParam();
  DeskWithProcess desk;
  ASSERT_EQ(desk.load_example(wanted.example), 0);
  ASSERT_EQ(desk.run("SELECT_PROPERTIES", std::string("\"") + wanted.property + "\""), 0);
  ASSERT_EQ(desk.run("PROFILE"), 0);
  const auto series = read_scratch(desk.work() / ("PathStat_prf" + std::string(wanted.extension)));
  const auto log = log_column(wanted.example, wanted.heading);
  const auto times = log_column(wanted.example, "time_ps");
  ASSERT_EQ(series.points, std::ssize(log));
  EXPECT_EQ(series.values_per_point, 1);
  EXPECT_EQ(series.mark, 333);
  EXPECT_EQ(series.kind, 10004);
  const DataSet& curve = desk.data_set(0);
  ASSERT_EQ(curve.points.size(), log.size());
  for (std::size_t k = 0; k < log.size(); ++k) {
    const double engine = log[k] * wanted.factor;
    EXPECT_EQ(series.numbers[k], static_cast<std::int32_t>(k + 1));
    EXPECT_NEAR(series.x[k], times[k], 1e-9);
    EXPECT_NEAR(series.values[k][0], engine, 1e-8 * std::abs(engine) + 1e-12) << "frame " << k + 1;
    EXPECT_EQ(curve.points[k].y, static_cast<float>(series.values[k][0]));
  }
}

INSTANTIATE_TEST_SUITE_P(examples, ExtractedSeries,
                         testing::Values(EngineSeries{"argon", "Total Energy", ".te", "TotEng"},
                                         EngineSeries{"argon", "Kinetic Energy", ".ke", "KinEng"},
                                         EngineSeries{"argon", "Temperature", ".temp", "Temp"},
                                         EngineSeries{"argon", "Pressure", ".pres", "Press", gpa_of_atmosphere},
                                         EngineSeries{"water-npt", "Volume", ".vol", "Volume"},
                                         EngineSeries{"butane", "Torsion Energy", ".tor_e", "E_dihed"},
                                         EngineSeries{"butane", "Radius of Gyration", ".rgyr", "c_g"}));

TEST(StressAndCell, take_the_columns_of_three_directions) {
  DeskWithProcess desk("water-npt");
  ASSERT_EQ(desk.run_lines({"SELECT_PROPERTIES Stress \"Cell Parameters\" Density", "PROFILE"}), 0);
  const auto stress = read_scratch(desk.work() / "PathStat_prf.strs");
  const auto cell = read_scratch(desk.work() / "PathStat_prf.cell");
  ASSERT_EQ(stress.values_per_point, 6);
  ASSERT_EQ(cell.values_per_point, 6);
  constexpr std::array order{"Pxx", "Pyy", "Pzz", "Pyz", "Pxz", "Pxy"};
  const auto length = log_column("water-npt", "Lx");
  for (std::size_t c = 0; c < order.size(); ++c) {
    const auto log = log_column("water-npt", order[c]);
    for (std::size_t k = 0; k < log.size(); k += 7) {
      EXPECT_NEAR(stress.values[k][c], log[k] * gpa_of_atmosphere, 1e-8 * std::abs(log[k])) << order[c];
      EXPECT_NEAR(cell.values[k][c], c < 3 ? length[k] : 90.0, 1e-6);
    }
  }
  // 216 molecules of water in the engine's volume.
  const auto density = read_scratch(desk.work() / "PathStat_prf.dens");
  const auto volume = log_column("water-npt", "Volume");
  EXPECT_NEAR(density.values[3][0], 216 * (15.9994 + 2 * 1.008) * 1.66056 / volume[3], 1e-3);
  EXPECT_THAT(desk.graph_titles(),
              ElementsAre("Stress components", "Shear components", "Density", "Cell lengths", "Cell angles"))
      << "one graph for a scalar, two for six values";
}

double mean(const std::vector<double>& values, std::size_t from, std::size_t count) {
  double sum = 0;
  for (std::size_t k = from; k < from + count; ++k) sum += values[k];
  return sum / static_cast<double>(count);
}

TEST(Averages, agree_with_the_log) {
  DeskWithProcess desk("argon");
  ASSERT_EQ(desk.run("SELECT_PROPERTIES", "\"Potential Energy\""), 0);
  const auto log = log_column("argon", "PotEng");
  ASSERT_EQ(desk.run("RUNNING_AVERAGE"), 0);
  const auto& running = desk.data_set(0).points;
  ASSERT_EQ(running.size(), log.size());
  for (const std::size_t k : {0UL, 1UL, 57UL, log.size() - 1}) {
    EXPECT_NEAR(running[k].y, mean(log, 0, k + 1), 1e-3);
  }
  ASSERT_EQ(desk.run_lines({"BLOCK_WIDTH_NO 20", "BLOCK_INTERVAL_NO 50", "BLOCK_AVERAGE"}), 0);
  const auto& blocks = desk.data_set(1).points;
  ASSERT_EQ(blocks.size(), 4U);
  EXPECT_NEAR(blocks[0].y, mean(log, 0, 10), 1e-3) << "the first window holds half its width";
  EXPECT_NEAR(blocks[2].y, mean(log, 90, 20), 1e-3);
  EXPECT_NEAR(blocks[2].x, 100 * 0.02, 1e-6);
}

TEST(Distribution, puts_every_frame_into_a_bin_and_prints_the_moments) {
  DeskWithProcess desk("argon");
  ASSERT_EQ(desk.run_lines({"SELECT_PROPERTIES Temperature", "NUMBER_OF_BINS 16"}), 0);
  desk.messages.clear();
  ASSERT_EQ(desk.run("DISTRIBUTION"), 0);
  const auto log = log_column("argon", "Temp");
  const auto [low, high] = std::ranges::minmax(log);
  const double width = (high - low) / 16;
  const auto& set = desk.data_set(0);
  ASSERT_EQ(set.points.size(), 18U) << "a point on each side brings the steps down";
  double sum = 0;
  for (std::size_t bin = 1; bin <= 16; ++bin) {
    sum += set.points[bin].y;
    const auto in_bin = std::ranges::count_if(log, [&](double t) {
      return std::clamp(std::lround((t - low) / width) + 1, 1L, 16L) == static_cast<long>(bin);
    });
    EXPECT_NEAR(set.points[bin].y, static_cast<double>(in_bin) / static_cast<double>(log.size()), 1.01 / 200);
  }
  EXPECT_NEAR(sum, 1.0, 1e-6);
  const auto moments = std::ranges::find(desk.messages, std::string("PATHSTAT_MSG_61"), &Message::key);
  ASSERT_NE(moments, desk.messages.end());
  ASSERT_EQ(moments->arguments.size(), 6U);
  const double m = mean(log, 0, log.size());
  double square = 0;
  for (const double t : log) square += (t - m) * (t - m);
  EXPECT_NEAR(std::get<double>(moments->arguments[0]), m, 1e-4);
  EXPECT_NEAR(std::get<double>(moments->arguments[1]), std::sqrt(square / static_cast<double>(log.size())), 1e-4);
  EXPECT_NEAR(std::get<double>(moments->arguments[4]), low, 1e-4);
  EXPECT_NEAR(std::get<double>(moments->arguments[5]), high, 1e-4);
}

TEST(Termination, removes_the_result_files) {
  DeskWithProcess desk("argon");
  ASSERT_EQ(desk.run("PROFILE"), 0);
  ASSERT_TRUE(std::filesystem::exists(desk.work() / "PathStat_prf.te"));
  ASSERT_TRUE(std::filesystem::exists(desk.work() / "TmpTrjModel.qfx"));
  ASSERT_TRUE(desk.session.notify(Notice::terminate));
  for (const auto& left : std::filesystem::directory_iterator(desk.work())) {
    EXPECT_EQ(left.path().filename(), "pathstat.out") << "only what pathdesk itself keeps may be left";
  }
}

}  // namespace
}  // namespace pathstat::desk
