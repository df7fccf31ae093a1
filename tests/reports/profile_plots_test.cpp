#include "reports/profile_plots.h"

#include "extraction/scratch_format.h"
#include "plots/labels.h"
#include "recording_core.h"
#include "testing.h"

namespace pathstat {
namespace {

class ProfilePlots : public testing::Test {
 protected:
  void TearDown() override { trj_gui_i_ = before_; }

  /// Two rows of 1, 2, 3 ... over x 0.5 and 1.
  PlottedSeries series(std::int32_t id, const char* name, std::int32_t values, std::int32_t colour) {
    table_.resize(2 * static_cast<std::size_t>(values));
    std::iota(table_.begin(), table_.end(), 1.0);
    return {id, name, name, "Unit/x", colour, values, 2, table_};
  }
  void profile(const PlottedSeries& series) {
    std::vector<float> xy{0.5F, 0, 1, 0};
    EXPECT_EQ(status_of(plotprofile_, series, xy, true, profile_mode, count_, list_, kind_frames, false), 0);
  }
  void histogram(const PlottedSeries& series) {
    std::vector<float> xy(4);
    std::vector<double> bin_data(3 * static_cast<std::size_t>(series.values), 1.0);
    EXPECT_EQ(status_of(plothistogram_, series, xy, bin_data, count_, list_), 0);
  }

  RecordingCore core_;
  std::vector<double> table_;
  std::int32_t count_ = 0;
  PlotGraphList list_{};
  TrjGuiI before_ = trj_gui_i_;
};

TEST_F(ProfilePlots, a_vector_is_a_graph_for_each_axis_with_a_walk_along_the_wheel) {
  profile(series(506, "Distance Vector", 6, -1));
  EXPECT_EQ(count_, 3);
  EXPECT_THAT(core_.calls("kvP_DAT_WriteXY"),
              ElementsAre("kvP_DAT_WriteXY|2|801|2|0.5|1|1|7", "kvP_DAT_WriteXY|2|801|2|0.5|4|1|10",
                          "kvP_DAT_WriteXY|2|801|2|0.5|2|1|8", "kvP_DAT_WriteXY|2|801|2|0.5|5|1|11",
                          "kvP_DAT_WriteXY|2|801|2|0.5|3|1|9", "kvP_DAT_WriteXY|2|801|2|0.5|6|1|12"));
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
                         testing::Values(Room{205, 6, 14, 16}, Room{205, 6, 15, 15}, Room{506, 3, 14, 14},
                                         Room{1, 1, 16, 16}));

TEST_F(ProfilePlots, a_graph_that_cannot_be_had_ends_the_property_with_a_message) {
  core_.answers["kvP_HAN_Write"] = [](const RecordingCore::Inputs& inputs) {
    return RecordingCore::Answer{{9, inputs[0].ends_with("off diagonal") ? 1 : 0}, {}, {}};
  };
  profile(series(205, "Stress", 6, -1));
  EXPECT_EQ(count_, 0);
  EXPECT_THAT(core_.messages(), ElementsAre("Profile of Stress off diagonal PATHSTAT_ERROR_118"));
}

TEST(StepPlot, takes_its_column_and_comes_down_to_zero_on_both_sides) {
  const std::vector<double> bin_data{0, 0, 0, 10.25, 11.5, 0.5};
  const std::vector<double> table{9, 0.125, 9, 0.5, 9, 0.375};
  std::vector<float> xy(6);
  std::array<float, 2> left{};
  std::array<float, 2> right{};
  EXPECT_EQ(status_of(makehistxy_, bin_data, 2, table, 2, 3, xy, left, right), 0);
  EXPECT_THAT(xy, ElementsAre(10.25F, 0.125F, 10.75F, 0.5F, 11.25F, 0.375F));
  EXPECT_THAT(left, ElementsAre(9.75F, 0.0F));
  EXPECT_THAT(right, ElementsAre(11.75F, 0.0F));
}

}  // namespace
}  // namespace pathstat
