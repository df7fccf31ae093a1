#include "reports/text_report.h"

#include "plots/labels.h"
#include "recording_core.h"
#include "state/analysis_settings.h"
#include "testing.h"

namespace pathstat {
namespace {

enum class X { models, conformers, times };

class TextReport : public testing::Test {
 protected:
  TextReport() {
    trj_gui_i_.periodicity = 3;
    register_measure_labels([](std::int32_t, std::int32_t number, TextField label) {
      label.set("m" + std::to_string(number));
      return true;
    });
  }
  ~TextReport() override {
    trj_gui_i_ = {};
    register_measure_labels(nullptr);
  }

  /// The lines of one row of the numbers 1, 2, 3, ... at x = 1.5.
  std::vector<std::string> lines(std::int32_t id, std::int32_t values, X x) {
    std::vector<double> table(static_cast<std::size_t>(values));
    for (std::size_t k = 0; k < table.size(); ++k) table[k] = static_cast<double>(k + 1);
    const std::vector<double> at{1.5};
    const std::vector<ModelName> names{"ice"};
    ResultSeries series{id, "Name", profile_mode, x == X::models ? kind_models : kind_frames, x == X::times};
    series.values = values;
    series.points = 1;
    series.table = table;
    series.x = at;
    series.model_names = names;
    return shown(series);
  }
  std::vector<std::string> distribution(std::int32_t id, std::int32_t values, const std::vector<double>& table,
                                        const std::vector<double>& bin_data) {
    ResultSeries series{id, "Name  ", distribution_mode, kind_frames, true};
    series.values = values;
    series.points = static_cast<std::int32_t>(table.size()) / values;
    series.table = table;
    series.bin_data = bin_data;
    return shown(series);
  }
  std::vector<std::string> shown(const ResultSeries& series) {
    core_.forget();
    EXPECT_EQ(status_of(writeprofile_, series), 0);
    return core_.messages();
  }

  RecordingCore core_;
};

TEST_F(TextReport, has_a_header_and_a_line_key_for_every_layout_and_kind_of_x) {
  struct Case {
    std::int32_t id;
    std::int32_t values;
    X x;
    std::vector<std::string> lines;
  };
  const std::vector<Case> cases{
      {206, 6, X::models, {"MODEL NAME PATHSTAT_MSG_55", "ice 1 2 3 4 5 6 PATHSTAT_MSG_49"}},
      {206, 6, X::times, {"TIME PATHSTAT_MSG_5", "1.5 1 2 3 4 5 6 PATHSTAT_MSG_13"}},
      {206, 3, X::models, {"MODEL NAME PATHSTAT_MSG_56", "ice 1 2 3 PATHSTAT_MSG_50"}},
      {206, 1, X::models, {"MODEL NAME |z| PATHSTAT_MSG_57", "ice 1 PATHSTAT_MSG_51"}},
      {205, 6, X::times, {"TIME PATHSTAT_MSG_14", "1.5 1 2 3 4 5 6 PATHSTAT_MSG_13"}},
      {205, 3, X::conformers, {"CONFORMER PATHSTAT_MSG_15", "2 1 2 3 PATHSTAT_MSG_10"}},
      {205, 1, X::times, {"TIME |z| PATHSTAT_MSG_16", "1.5 1 PATHSTAT_MSG_9"}},
      {302,
       3,
       X::models,
       {"MODEL NAME Dipole Vector X Dipole Vector Y Dipole Vector Z PATHSTAT_MSG_59", "ice 1 2 3 PATHSTAT_MSG_50"}},
      {201, 1, X::models, {"MODEL NAME Temperature PATHSTAT_MSG_57", "ice 1 PATHSTAT_MSG_51"}},
      {902,
       2,
       X::times,
       {"TIME Unknown PATHSTAT_MSG_7", "1.5 1 PATHSTAT_MSG_9", "TIME Unknown PATHSTAT_MSG_7", "1.5 2 PATHSTAT_MSG_9"}},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(lines(each.id, each.values, each.x), each.lines)
        << each.id << ' ' << each.values << ' ' << static_cast<int>(each.x);
  }
}

TEST_F(TextReport, sets_vectors_of_many_distances_one_under_the_other) {
  EXPECT_THAT(lines(506, 6, X::times), ElementsAre("TIME m1 X m1 Y m1 Z PATHSTAT_MSG_43", "1.5 1 2 3 PATHSTAT_MSG_11",
                                                   "TIME m2 X m2 Y m2 Z PATHSTAT_MSG_43", "1.5 4 5 6 PATHSTAT_MSG_11"));
}

TEST_F(TextReport, formats_lines_of_measures_in_groups_of_six) {
  // Labels that a group lacks are blank texts.
  EXPECT_THAT(
      lines(501, 7, X::times),
      ElementsAre("TIME m1 m2 m3 m4 m5 m6 PATHSTAT_MSG_42",
                  "  1.5000  1.0000      2.0000      3.0000      4.0000      5.0000      6.0000 PATHSTAT_MSG_22",
                  "TIME m7      PATHSTAT_MSG_42", "  1.5000  7.0000 PATHSTAT_MSG_22"));
  EXPECT_THAT(lines(502, 1, X::conformers), Contains("       2   1.000 PATHSTAT_MSG_22"));
  EXPECT_THAT(lines(505, 1, X::models),
              ElementsAre("MODEL NAME m1      PATHSTAT_MSG_58", "ice                    1.000 PATHSTAT_MSG_22"));
}

TEST_F(TextReport, prints_a_distribution_as_centres_and_frequencies) {
  EXPECT_THAT(distribution(1, 1, {0.25, 0.5, 0.25}, {10, 99, 0.5}),
              ElementsAre("Name PATHSTAT_MSG_17", "10 0.25 PATHSTAT_MSG_9", "10.5 0.5 PATHSTAT_MSG_9",
                          "11 0.25 PATHSTAT_MSG_9"));
  EXPECT_THAT(distribution(902, 2, {0.5, 1, 0.5, 1}, {1, 9, 2, 7, 7, 0}),
              ElementsAre("Name 1 PATHSTAT_MSG_17", "1 0.5 PATHSTAT_MSG_9", "3 0.5 PATHSTAT_MSG_9",
                          "Name 2 PATHSTAT_MSG_17", "7 1 PATHSTAT_MSG_9"))
      << "a column without spread has one line";
}

}  // namespace
}  // namespace pathstat
