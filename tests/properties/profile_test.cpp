#include "properties/profile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <deque>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "plots/labels.h"
#include "properties/catalogue.h"
#include "properties/catalogue_rows.h"
#include "properties/recording_core.h"
#include "properties/scratch_file.h"
#include "properties/statistics.h"
#include "state/analysis_settings.h"
#include "state/statistics_settings.h"

namespace pathstat {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A working directory with the series of some properties.
class Profile : public testing::Test {
 protected:
  Profile() {
    folder_ = std::filesystem::temp_directory_path() / ("profile_test." + std::to_string(::getpid()));
    std::filesystem::create_directories(folder_);
    std::filesystem::current_path(folder_);
    trj_gui_c_.input_source = from_trajectory;
    trj_gui_l_.has_time_axis = true;
    std::int32_t status = 7;
    trj_propinit_(status);
    EXPECT_EQ(status, 0);
  }
  ~Profile() override {
    std::filesystem::current_path("/");
    std::filesystem::remove_all(folder_);
    trj_gui_l_ = {};
    trj_gui_i_ = {};
    trj_gui_c_ = {};
    trj_stats_ = {};
    trj_stats_c_ = {};
  }

  /// Puts a series on disk, one number per frame at 0.5, 1, 1.5, ... ps, and selects its row.
  void put(std::int32_t id, const std::vector<double>& values) {
    std::vector<std::int32_t> numbers;
    std::vector<double> x;
    for (std::size_t k = 0; k < values.size(); ++k) {
      numbers.push_back(static_cast<std::int32_t>(k + 1));
      x.push_back(0.5 * static_cast<double>(k + 1));
    }
    const std::size_t row = property_row_of(id);
    std::int32_t status = 7;
    writescratchfile_(kind_frames, property_file(property_rows[row].extension), numbers, x, values, 1, 1, 1, {}, {}, {},
                      status);
    ASSERT_EQ(status, 0);
    property_table().selected[row] = true;
    property_table().on_disk[row] = true;
  }
  /// Puts a number per model on disk and selects its row.
  void put_models(std::int32_t id, const std::vector<double>& values, const std::vector<std::int32_t>& models) {
    const std::size_t row = property_row_of(id);
    const std::vector<double> x(values.size());
    const std::vector<std::int32_t> sizes(values.size(), 1);
    std::int32_t status = 7;
    writescratchfile_(kind_models, property_file(property_rows[row].extension), models, x, values, 1, 1, 1, models,
                      sizes, {}, status);
    ASSERT_EQ(status, 0);
    property_table().selected[row] = true;
    property_table().on_disk[row] = true;
  }
  std::int32_t report(std::int32_t mode) {
    core_.forget();
    std::int32_t status = 7;
    pprofile_(mode, status);
    return status;
  }
  std::vector<std::string> points(std::int32_t mode) {
    EXPECT_EQ(report(mode), 0);
    return core_.calls("kvP_DAT_WriteXY");
  }
  /// Models 1, 2, ... are called one, two, ...
  void name_models() {
    core_.answers["kvD_ValidateOID"] = [](const auto& inputs) {
      return RecordingCore::Answer{std::deque<std::int32_t>(inputs.size(), 1), {}, {}};
    };
    core_.answers["kvD_MOD_Name"] = [](const auto& inputs) {
      return RecordingCore::Answer{{}, {}, {inputs.back() == "1" ? "one" : "two"}};
    };
    core_.answers["kvD_Id"] = [](const auto& inputs) {
      return RecordingCore::Answer{{std::stoi(inputs.back())}, {}, {}};
    };
  }
  static std::string table() {
    std::ifstream in("TrajectoryStats.dat");
    return {std::istreambuf_iterator<char>(in), {}};
  }

  std::filesystem::path folder_;
  RecordingCore core_;
};

TEST_F(Profile, draws_the_rows_on_disk_in_one_transaction) {
  put(201, {300, 310});
  put(1, {-5, -6});
  EXPECT_THAT(points(profile_mode),
              ElementsAre("kvP_DAT_WriteXY|3|801|2|0.5|-5|1|-6", "kvP_DAT_WriteXY|5|801|2|0.5|300|1|310"));
  const auto calls = core_.calls("kvP_");
  EXPECT_EQ(calls[0], "kvP_SYS_Begin");
  EXPECT_EQ(calls[1], "kvP_HAN_Write|Varlane Graphs|100");
  EXPECT_EQ(calls[calls.size() - 3], "kvP_VWR_SetGraphList|1|2|2|4");
  EXPECT_EQ(calls[calls.size() - 2], "kvP_VWR_ReDraw|1");
  EXPECT_EQ(calls.back(), "kvP_SYS_End");
}

TEST_F(Profile, averages_read_the_series_afresh) {
  put(1, {1, 3, 8, 4});
  EXPECT_THAT(points(running_average_mode), ElementsAre("kvP_DAT_WriteXY|3|801|4|0.5|1|1|2|1.5|4|2|4"));
  trj_stats_.block_width = 2;
  trj_stats_.block_interval = 2;
  EXPECT_THAT(points(block_average_mode), ElementsAre("kvP_DAT_WriteXY|5|801|2|0.5|1|1.5|5.5"))
      << "frame 1 alone, then frames 2 and 3";
}

TEST_F(Profile, distribution_shows_statistics_and_then_the_histogram) {
  put(1, {1, 1, 1, 3});
  trj_stats_.number_of_bins = 4;
  EXPECT_THAT(points(distribution_mode),
              ElementsAre("kvP_DAT_WriteXY|3|801|1|0.75|0", "kvP_DAT_WriteXY|3|802|4|1.25|0.75|1.75|0|2.25|0|2.75|0.25",
                          "kvP_DAT_WriteXY|3|802|1|3.25|0"));
  EXPECT_THAT(core_.messages(), ElementsAre("Total Energy PATHSTAT_MSG_60",
                                            "1.5 0.866025388 1.15470052 -0.666666687 1 3 PATHSTAT_MSG_61"));
  trj_gui_l_.calculate_histogram = false;
  EXPECT_THAT(points(distribution_mode), IsEmpty());
  EXPECT_EQ(core_.messages().size(), 2u);
}

TEST_F(Profile, a_single_frame_has_no_spread_and_no_statistics) {
  put(1, {2.5});
  trj_stats_.number_of_bins = 2;
  EXPECT_THAT(points(distribution_mode),
              ElementsAre("kvP_DAT_WriteXY|3|801|1|2.5|0", "kvP_DAT_WriteXY|3|802|2|2.5|1|2.5|1",
                          "kvP_DAT_WriteXY|3|802|1|2.5|0"));
  EXPECT_THAT(core_.messages(), ElementsAre("Total Energy PATHSTAT_MSG_60", "PATHSTAT_MSG_63", "PATHSTAT_WARN_1"));
  EXPECT_THAT(points(block_average_mode), ElementsAre("kvP_DAT_WriteXY|5|801|1|0.5|2.5"));
}

TEST_F(Profile, stops_at_sixteen_graphs_and_says_so_once) {
  std::int32_t made = 0;
  for (const auto& row : property_rows) {
    if (row.id >= 100 && row.id < 200 && made++ < 18) put(row.id, {1, 2});
  }
  property_table().selected[property_row_of(1)] = false;
  EXPECT_EQ(points(profile_mode).size(), 16u);
  EXPECT_THAT(core_.messages(), ElementsAre("16 PATHSTAT_MSG_3"));
  EXPECT_THAT(core_.calls("kvP_VWR_SetGraphList")[0], testing::StartsWith("kvP_VWR_SetGraphList|1|16|2|4|6|"));
}

TEST_F(Profile, passes_over_a_damaged_file) {
  put(1, {1, 2});
  put(201, {3, 4});
  std::filesystem::resize_file("PathStat_prf.te", 60);
  EXPECT_THAT(points(profile_mode), ElementsAre("kvP_DAT_WriteXY|3|801|2|0.5|3|1|4"));
  EXPECT_THAT(core_.messages(), ElementsAre("PATHSTAT_MSG_4"));
}

TEST_F(Profile, refuses_the_measures_of_models) {
  put(501, {1, 2});
  property_table().selected[property_row_of(1)] = false;
  trj_gui_c_.input_source = from_selected_models;
  EXPECT_THAT(points(profile_mode), IsEmpty());
  EXPECT_THAT(core_.messages(), ElementsAre("Distance PATHSTAT_ERROR_80"));
}

TEST_F(Profile, reads_models_by_name_and_number) {
  const std::vector<std::int32_t> numbers{1, 2};
  const std::vector<double> x{1, 2};
  const std::vector<double> values{5, 6};
  const std::vector<std::int32_t> models{41, 42};
  const std::vector<std::int32_t> sizes{1, 1};
  std::int32_t status = 7;
  writescratchfile_(kind_models, "./series", numbers, x, values, 1, 1, 1, models, sizes, {}, status);
  ASSERT_EQ(status, 0);
  core_.answers["kvD_ValidateOID"] = [](const auto&) { return RecordingCore::Answer{{1, 0}, {}, {}}; };
  core_.answers["kvD_MOD_Name"] = [](const auto&) { return RecordingCore::Answer{{}, {}, {"ice"}}; };
  core_.answers["kvD_Id"] = [](const auto&) { return RecordingCore::Answer{{9}, {}, {}}; };
  std::vector<std::int32_t> read_numbers(2), ids(2), read_sizes(2);
  std::vector<double> read_x(2), read_values(2);
  std::vector<ModelName> names(2);
  std::int32_t kind = 0, points = 0, width = 0, extras = 7;
  readscratchfile_(kind, "./series", read_numbers, read_x, read_values, points, width, ids, names, read_sizes, {},
                   extras, status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(kind, kind_models);
  EXPECT_EQ(extras, 0);
  EXPECT_THAT(ids, ElementsAre(9, -1));
  EXPECT_EQ(names[0].view(), "ice");
  EXPECT_EQ(names[1].view(), "Deleted Model");
}

TEST_F(Profile, statistics_go_by_component_and_end_where_numbers_run_out) {
  std::int32_t status = 7;
  const std::vector<double> vectors{1, 2, 3, 3, 2, 1};
  const std::vector<std::int32_t> full{3, 3};
  calcstatistics_(302, "Dipole Vector", vectors, 2, 3, full, status);
  EXPECT_THAT(core_.messages(),
              ElementsAre("X Dipole Vector PATHSTAT_MSG_62", "2 1 0 -2 1 3 PATHSTAT_MSG_61",
                          "Y Dipole Vector PATHSTAT_MSG_62", "2 0 0 0 2 2 PATHSTAT_MSG_61", "PATHSTAT_WARN_17",
                          "PATHSTAT_WARN_18", "Z Dipole Vector PATHSTAT_MSG_62", "2 1 0 -2 1 3 PATHSTAT_MSG_61"));
  core_.forget();
  const std::vector<std::int32_t> one_row{3};
  calcstatistics_(206, "Cell Parameters", vectors, 1, 3, one_row, status);
  EXPECT_THAT(core_.messages(), ElementsAre("|u| Cell Parameters PATHSTAT_MSG_62", "PATHSTAT_MSG_63"));
}

TEST_F(Profile, goes_to_plot_text_and_table_as_the_user_wishes) {
  put(201, {300, 310});
  put(1, {-5, -6});
  trj_stats_.stats_text = true;
  trj_stats_.stats_file = true;
  EXPECT_EQ(points(profile_mode).size(), 2u);
  EXPECT_THAT(core_.messages(),
              ElementsAre("TIME Total Energy PATHSTAT_MSG_7", "0.5 -5 PATHSTAT_MSG_9", "1 -6 PATHSTAT_MSG_9",
                          "TIME Temperature PATHSTAT_MSG_7", "0.5 300 PATHSTAT_MSG_9", "1 310 PATHSTAT_MSG_9"));
  EXPECT_EQ(table(),
            "Time\tTotal Energy\tTemperature\n"
            "  0.5000000000000000\t  -5.000000000000000\t   300.0000000000000\n"
            "   1.000000000000000\t  -6.000000000000000\t   310.0000000000000\n");
  trj_stats_ = {};
  trj_stats_.stats_plot = false;
  EXPECT_THAT(points(profile_mode), IsEmpty());
  EXPECT_THAT(core_.messages(), IsEmpty());
}

TEST_F(Profile, writes_block_averages_at_the_starts_of_their_blocks) {
  put(1, {1, 3, 8, 4});
  trj_stats_.block_width = 2;
  trj_stats_.block_interval = 2;
  trj_stats_.stats_file = true;
  points(block_average_mode);
  EXPECT_EQ(table(),
            "Time\tTotal Energy\n"
            "  0.5000000000000000\t   1.000000000000000\n"
            "   1.500000000000000\t   5.500000000000000\n");
}

TEST_F(Profile, without_histogram_makes_no_table) {
  put(1, {1, 2});
  trj_gui_l_.calculate_histogram = false;
  trj_stats_.stats_file = true;
  EXPECT_EQ(report(distribution_mode), 0);
  EXPECT_FALSE(std::filesystem::exists("TrajectoryStats.dat"));
}

TEST_F(Profile, goes_on_without_a_table_unless_nothing_else_is_wanted) {
  put(1, {1, 2});
  std::ofstream("TrajectoryStats.dat") << "old";
  core_.answers["kvU_MOD_GetOption"] = [](const auto&) { return RecordingCore::Answer{{2}, {}, {}}; };
  trj_stats_.stats_file = true;
  const std::string kept = "./TrajectoryStats.dat ./TrajectoryStats.dat PATHSTAT_WARN_8";
  EXPECT_EQ(report(profile_mode), 2);
  EXPECT_THAT(core_.messages(), ElementsAre(kept, "PATHSTAT_ERROR_65"));
  EXPECT_EQ(core_.calls("kvP_DAT_WriteXY").size(), 1u);
  trj_stats_.stats_plot = false;
  EXPECT_EQ(report(profile_mode), 2);
  EXPECT_THAT(core_.messages(), ElementsAre(kept, "PATHSTAT_ERROR_64"));
  EXPECT_EQ(core_.calls("kvP_SYS").size(), 2u) << "the transaction is closed";
  EXPECT_EQ(table(), "old");
}

TEST_F(Profile, gives_up_a_table_that_cannot_be_written_and_leaves_nothing_of_it) {
  put(1, {1, 2});
  put(201, {3, 4});
  trj_stats_.stats_file = true;
  trj_stats_c_.stats_filename = "./missing/out.dat";
  EXPECT_NE(report(profile_mode), 0);
  EXPECT_THAT(core_.messages(), ElementsAre("PATHSTAT_ERROR_65"));
  EXPECT_EQ(core_.calls("kvP_DAT_WriteXY").size(), 2u);
  trj_stats_c_.stats_filename = "./TrajectoryStats.dat";
  std::filesystem::create_directory("TrajectoryStats.bn2");
  EXPECT_NE(report(profile_mode), 0) << "the second work file is in the way";
  EXPECT_FALSE(std::filesystem::exists("TrajectoryStats.bn1"));
  EXPECT_FALSE(std::filesystem::exists("TrajectoryStats.dat"));
}

TEST_F(Profile, has_no_table_of_the_measures_of_models) {
  property_table().selected[property_row_of(1)] = false;
  for (const std::int32_t id : {501, 503}) property_table().selected[property_row_of(id)] = true;
  trj_gui_c_.input_source = from_selected_models;
  trj_stats_.stats_file = true;
  EXPECT_EQ(report(profile_mode), 0);
  EXPECT_THAT(core_.messages(), ElementsAre("Torsion PATHSTAT_WARN_16", "PATHSTAT_ERROR_65"));
}

TEST_F(Profile, names_the_models_of_the_first_property_and_tells_when_others_have_other_models) {
  property_table().selected[property_row_of(1)] = false;
  trj_gui_c_.input_source = from_selected_models;
  name_models();
  put_models(204, {1, 2}, {1, 2});
  put_models(202, {3}, {2});
  trj_stats_.stats_file = true;
  testing::internal::CaptureStdout();
  EXPECT_EQ(report(profile_mode), 0);
  EXPECT_THAT(testing::internal::GetCapturedStdout(), testing::HasSubstr("Radius of Gyration"));
  EXPECT_EQ(table(),
            "Model Name\tVolume\tRadius of Gyration\n"
            "one\t   1.000000000000000\t   3.000000000000000\n"
            "two\t   2.000000000000000\t\n");
}

}  // namespace
}  // namespace pathstat
