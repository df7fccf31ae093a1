#include "reports/profile.h"

#include "catalogue/catalogue.h"
#include "catalogue/catalogue_rows.h"
#include "extraction/scratch_file.h"
#include "plots/labels.h"
#include "recording_core.h"
#include "reports/statistics.h"
#include "services/work_directory.h"
#include "settings_of_a_test.h"
#include "testing.h"

namespace pathstat {
namespace {

/// A working directory with the series of some properties.
class Profile : public WorkDirectory {
 protected:
  Profile() {
    trj_gui_c_.input_source = from_trajectory;
    trj_gui_l_.has_time_axis = true;
    EXPECT_EQ(status_of(trj_propinit_), 0);
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
  std::int32_t report(std::int32_t mode) {
    core_.forget();
    return status_of(pprofile_, mode);
  }
  std::vector<std::string> points(std::int32_t mode) {
    EXPECT_EQ(report(mode), 0);
    return core_.calls("kvP_DAT_WriteXY");
  }

  const SettingsOfATest settings_;
  RecordingCore core_;
};

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
  EXPECT_THAT(core_.calls("kvP_VWR_SetGraphList")[0], StartsWith("kvP_VWR_SetGraphList|1|16|2|4|6|"));
}

TEST_F(Profile, passes_over_a_damaged_file) {
  put(1, {1, 2});
  put(201, {3, 4});
  std::filesystem::resize_file("PathStat_prf.te", 60);
  EXPECT_THAT(points(profile_mode), ElementsAre("kvP_DAT_WriteXY|3|801|2|0.5|3|1|4"));
  EXPECT_THAT(core_.messages(), ElementsAre("PATHSTAT_MSG_4"));
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
  EXPECT_EQ(content("TrajectoryStats.dat"),
            "Time\tTotal Energy\tTemperature\n"
            "  0.5000000000000000\t  -5.000000000000000\t   300.0000000000000\n"
            "   1.000000000000000\t  -6.000000000000000\t   310.0000000000000\n");
  trj_stats_ = {};
  trj_stats_.stats_plot = false;
  EXPECT_THAT(points(profile_mode), IsEmpty());
  EXPECT_THAT(core_.messages(), IsEmpty());
}

TEST_F(Profile, goes_on_without_a_table_unless_nothing_else_is_wanted) {
  put(1, {1, 2});
  write("TrajectoryStats.dat", "old");
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
  EXPECT_EQ(content("TrajectoryStats.dat"), "old");
}

}  // namespace
}  // namespace pathstat
