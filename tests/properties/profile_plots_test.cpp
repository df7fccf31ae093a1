#include "properties/profile_plots.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "plots/labels.h"
#include "plots/saved_handles.h"
#include "properties/recording_core.h"
#include "properties/scratch_format.h"
#include "state/saved_handles.h"

namespace pathstat {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class ProfilePlots : public testing::Test {
 protected:
  void TearDown() override { trj_gui_i_ = before_; }

  /// Two rows of 1, 2, 3 ... over x 0.5 and 1.
  PlottedSeries series(std::int32_t id, const char* name, std::int32_t values, std::int32_t colour) {
    table_.resize(2 * static_cast<std::size_t>(values));
    std::iota(table_.begin(), table_.end(), 1.0);
    return {id, name, name, "Unit/x", colour, values, 2, table_};
  }
  void profile(const PlottedSeries& series, bool save = false, std::int32_t mode = profile_mode) {
    std::vector<float> xy{0.5F, 0, 1, 0};
    std::int32_t status = 7;
    plotprofile_(series, xy, true, mode, count_, list_, kind_frames, save, status);
    EXPECT_EQ(status, 0);
  }
  void histogram(const PlottedSeries& series) {
    std::vector<float> xy(4);
    std::vector<double> bin_data(3 * static_cast<std::size_t>(series.values), 1.0);
    std::int32_t status = 7;
    plothistogram_(series, xy, bin_data, count_, list_, status);
    EXPECT_EQ(status, 0);
  }

  RecordingCore core_;
  std::vector<double> table_;
  std::int32_t count_ = 0;
  PlotGraphList list_{};
  TrjGuiI before_ = trj_gui_i_;
};

TEST_F(ProfilePlots, a_scalar_is_one_curve_named_by_its_short_title) {
  PlottedSeries temperature = series(201, "Temperature", 1, 3);
  temperature.units = "Temperature/K";
  profile(temperature, false, running_average_mode);
  EXPECT_THAT(core_.calls(),
              ElementsAre("kvP_HAN_Write|Running Average of Temperature|101", "kvP_HAN_Write|ra Temperature|102",
                          "kvP_DAT_SetMethodXY|2|3|901|0|Temperature", "kvP_DAT_WriteXY|2|801|2|0.5|1|1|2",
                          "kvP_GRF_SetAspectRatio|1|1|2",
                          "kvP_GRF_SetMethodXY|1|1|2060|0|0|0|0|1|Temperature|Time (ps)|11|2|"
                          "Temperature/K"));
  EXPECT_EQ(count_, 1);
  EXPECT_EQ(list_[0], 1);
}

TEST_F(ProfilePlots, three_stress_values_are_yy_zz_and_yz) {
  profile(series(205, "Stress", 3, -1));
  EXPECT_THAT(core_.calls(),
              ElementsAre("kvP_HAN_Write|Profile of Stress diagonal|101", "kvP_HAN_Write|pr Profile of Stress YY|102",
                          "kvP_DAT_SetMethodXY|2|4|901|0|STRESS YY", "kvP_DAT_WriteXY|2|801|2|0.5|1|1|4",
                          "kvP_HAN_Write|pr Profile of Stress ZZ|102", "kvP_DAT_SetMethodXY|3|5|901|0|STRESS ZZ",
                          "kvP_DAT_WriteXY|3|801|2|0.5|2|1|5",
                          "kvP_GRF_SetMethodXY|1|2|2060|0|0|0|0|1|Stress components|Time (ps)|11|2|3|Stress/GPa",
                          "kvP_GRF_SetAspectRatio|1|1|2", "kvP_HAN_Write|Profile of Stress off diagonal|101",
                          "kvP_HAN_Write|pr Profile of Stress YZ|102", "kvP_DAT_SetMethodXY|5|3|901|0|STRESS YZ",
                          "kvP_DAT_WriteXY|5|801|2|0.5|3|1|6",
                          "kvP_GRF_SetMethodXY|4|1|2060|0|0|0|0|1|Shear components|Time (ps)|11|5|Shears/GPa",
                          "kvP_GRF_SetAspectRatio|1|4|2"));
  EXPECT_EQ(count_, 2);
  EXPECT_THAT(std::vector(list_.begin(), list_.begin() + 2), ElementsAre(1, 4));
}

TEST_F(ProfilePlots, six_cell_values_take_their_columns_in_order) {
  profile(series(206, "Cell Parameters", 6, -1));
  EXPECT_THAT(core_.calls("kvP_DAT_SetMethodXY"),
              ElementsAre("kvP_DAT_SetMethodXY|2|3|901|0|A", "kvP_DAT_SetMethodXY|3|4|901|0|B",
                          "kvP_DAT_SetMethodXY|4|5|901|0|C", "kvP_DAT_SetMethodXY|6|3|901|0|alpha",
                          "kvP_DAT_SetMethodXY|7|4|901|0|beta", "kvP_DAT_SetMethodXY|8|5|901|0|gamma"));
  EXPECT_THAT(core_.calls("kvP_DAT_WriteXY"),
              ElementsAre("kvP_DAT_WriteXY|2|801|2|0.5|1|1|7", "kvP_DAT_WriteXY|3|801|2|0.5|2|1|8",
                          "kvP_DAT_WriteXY|4|801|2|0.5|3|1|9", "kvP_DAT_WriteXY|6|801|2|0.5|4|1|10",
                          "kvP_DAT_WriteXY|7|801|2|0.5|5|1|11", "kvP_DAT_WriteXY|8|801|2|0.5|6|1|12"));
}

TEST_F(ProfilePlots, one_cell_value_is_a_repeat_length) {
  profile(series(206, "Cell Parameters", 1, -1));
  EXPECT_EQ(count_, 1);
  EXPECT_THAT(core_.calls("kvP_HAN_Write"),
              ElementsAre("kvP_HAN_Write|Profile of Cell Parameters lengths|101",
                          "kvP_HAN_Write|pr Profile of Cell Parameters Repeat length|102"));
  EXPECT_THAT(core_.calls("kvP_DAT_SetMethodXY"), ElementsAre("kvP_DAT_SetMethodXY|2|5|901|0|Repeat length"));
}

TEST_F(ProfilePlots, a_vector_is_a_graph_for_each_axis_with_a_walk_along_the_wheel) {
  profile(series(506, "Distance Vector", 6, -1));
  EXPECT_EQ(count_, 3);
  EXPECT_THAT(core_.calls("kvP_DAT_SetMethodXY"),
              ElementsAre("kvP_DAT_SetMethodXY|2|4|901|0|Unknown", "kvP_DAT_SetMethodXY|2|15|901|0|Unknown",
                          "kvP_DAT_SetMethodXY|2|4|901|0|Unknown", "kvP_DAT_SetMethodXY|2|15|901|0|Unknown",
                          "kvP_DAT_SetMethodXY|2|4|901|0|Unknown", "kvP_DAT_SetMethodXY|2|15|901|0|Unknown"));
  EXPECT_THAT(core_.calls("kvP_DAT_WriteXY"),
              ElementsAre("kvP_DAT_WriteXY|2|801|2|0.5|1|1|7", "kvP_DAT_WriteXY|2|801|2|0.5|4|1|10",
                          "kvP_DAT_WriteXY|2|801|2|0.5|2|1|8", "kvP_DAT_WriteXY|2|801|2|0.5|5|1|11",
                          "kvP_DAT_WriteXY|2|801|2|0.5|3|1|9", "kvP_DAT_WriteXY|2|801|2|0.5|6|1|12"));
  EXPECT_THAT(core_.calls("kvP_GRF_SetMethodXY"),
              testing::Contains("kvP_GRF_SetMethodXY|3|2|2060|0|0|0|0|1|Distance Vector y|Time (ps)|11|2|2| y Unit/x"));
}

TEST_F(ProfilePlots, a_long_name_gives_way_to_the_short_one_in_titles) {
  PlottedSeries stress = series(205, "Stress of twenty characters", 1, -1);
  stress.short_name = "Stress short";
  profile(stress);
  EXPECT_THAT(core_.calls("kvP_HAN_Write")[0], "kvP_HAN_Write|Profile of Stress short diagonal|101");
  EXPECT_THAT(core_.calls("kvP_HAN_Write")[1], "kvP_HAN_Write|pr Profile of Stress short ZZ|102");
}

TEST_F(ProfilePlots, twelve_distances_are_ten_curves_but_one_histogram) {
  profile(series(501, "Distance", 12, -1));
  EXPECT_EQ(core_.calls("kvP_DAT_SetMethodXY").size(), 10u);
  EXPECT_THAT(core_.messages(), ElementsAre("10 PATHSTAT_WARN_5"));
  core_.forget();
  histogram(series(501, "Distance", 12, -1));
  EXPECT_THAT(core_.calls("kvP_DAT_SetMethodXY"), ElementsAre("kvP_DAT_SetMethodXY|4|4|903|0|Distance Measures"));
  EXPECT_THAT(core_.messages(), IsEmpty());
}

TEST_F(ProfilePlots, a_histogram_is_written_with_an_end_on_each_side) {
  histogram(series(201, "Temperature", 1, 3));
  EXPECT_THAT(
      core_.calls(),
      ElementsAre("kvP_HAN_Write|Histogram of Temperature|101", "kvP_HAN_Write|hs Temperature|102",
                  "kvP_DAT_SetMethodXY|2|3|903|0|Temperature", "kvP_DAT_WriteXY|2|801|1|0|0",
                  "kvP_DAT_WriteXY|2|802|2|1|1|2|2", "kvP_DAT_WriteXY|2|802|1|3|0", "kvP_GRF_SetAspectRatio|1|1|2",
                  "kvP_GRF_SetMethodXY|1|1|2060|0|0|0|0|1|Temperature|Unit/x|11|2|Frequency"));
}

TEST_F(ProfilePlots, a_vector_histogram_is_named_by_its_axis) {
  histogram(series(506, "Distance Vector", 3, -1));
  EXPECT_THAT(core_.calls("kvP_DAT_SetMethodXY"), ElementsAre("kvP_DAT_SetMethodXY|2|4|903|0|Distance Vector X",
                                                              "kvP_DAT_SetMethodXY|4|15|903|0|Distance Vector Y",
                                                              "kvP_DAT_SetMethodXY|6|7|903|0|Distance Vector Z"));
  EXPECT_THAT(core_.calls("kvP_GRF_SetMethodXY")[2],
              "kvP_GRF_SetMethodXY|5|1|2060|0|0|0|0|1|Distance Vector z| z Unit/x|11|6|Frequency");
}

struct Room {
  std::int32_t id, values, made, made_after;
};
class RoomForGraphs : public ProfilePlots, public testing::WithParamInterface<Room> {};
TEST_P(RoomForGraphs, ends_with_the_list_of_sixteen) {
  const auto& [id, values, made, made_after] = GetParam();
  count_ = made;
  profile(series(id, "Name", values, 3));
  EXPECT_EQ(count_, made_after);
  count_ = made;
  histogram(series(id, "Name", values, 3));
  EXPECT_EQ(count_, made_after);
}
INSTANTIATE_TEST_SUITE_P(bounds, RoomForGraphs,
                         testing::Values(Room{205, 6, 14, 16}, Room{205, 6, 15, 15}, Room{206, 1, 14, 15},
                                         Room{206, 1, 15, 15}, Room{506, 3, 13, 16}, Room{506, 3, 14, 14},
                                         Room{1, 1, 15, 16}, Room{1, 1, 16, 16}, Room{1, 1, 17, 17}));

TEST_F(ProfilePlots, a_graph_that_cannot_be_had_ends_the_property_with_a_message) {
  core_.answers["kvP_HAN_Write"] = [](const RecordingCore::Inputs& inputs) {
    return RecordingCore::Answer{{9, inputs[0].ends_with("off diagonal") ? 1 : 0}, {}, {}};
  };
  profile(series(205, "Stress", 6, -1));
  EXPECT_EQ(count_, 0);
  EXPECT_THAT(core_.messages(), ElementsAre("Profile of Stress off diagonal PATHSTAT_ERROR_118"));
}

TEST_F(ProfilePlots, saved_curves_are_kept_once_and_marked_where_interaction_is_allowed) {
  std::int32_t status = 7;
  initsavedgraphhandles_(5, status);
  allowgraphinteraction_(true, status);
  profile(series(201, "Temperature", 1, 3), true);
  profile(series(201, "Temperature", 1, 3), true);
  EXPECT_THAT(core_.calls("kvP_DAT_Mark"), ElementsAre("kvP_DAT_Mark|PathStatMarkers|2|200|1|5"));
  EXPECT_EQ(graphint_i_.saved_graph_count, 1);
  EXPECT_EQ(graphint_i_.saved_data_count, 1);
  bool found = false;
  findhandle_("Profile of Temperature", 1, 101, found, status);
  EXPECT_TRUE(found);
  findhandle_("Profile of Temperature", 2, 101, found, status);
  EXPECT_FALSE(found) << "another version";
  findhandle_("Profile of Temperature", 1, 102, found, status);
  EXPECT_FALSE(found) << "a graph is no data set";
  core_.forget();
  killsavedgraphhandles_(status);
  EXPECT_THAT(core_.calls(), ElementsAre("kvP_SYS_Begin", "kvP_DAT_DemarkGlobal|PathStatMarkers", "kvP_SYS_End"));
  core_.forget();
  killsavedgraphhandles_(status);
  EXPECT_THAT(core_.calls(), IsEmpty());
}

}  // namespace
}  // namespace pathstat
