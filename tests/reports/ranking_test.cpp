#include "reports/ranking.h"

#include "catalogue/catalogue.h"
#include "catalogue/catalogue_rows.h"
#include "extraction/scratch_file.h"
#include "plots/labels.h"
#include "recording_core.h"
#include "services/work_directory.h"
#include "settings_of_a_test.h"
#include "support/named_memory.h"
#include "testing.h"

namespace pathstat {
namespace {

constexpr std::int32_t highest = 1;
constexpr std::int32_t lowest = -1;

class Ranking : public WorkDirectory {
 protected:
  Ranking() {
    EXPECT_EQ(status_of(trj_propinit_), 0);
    trj_gui_l_.has_time_axis = true;
    trj_gui_i_.periodicity = 3;
    trj_frames_.first_frame = 10;
    trj_frames_.frame_step = 5;
    core_.answers["kvD_ValidateOID"] = [](const auto& inputs) {
      std::deque<std::int32_t> all(inputs.size() - 1, 1);
      return RecordingCore::Answer{all, {}, {}};
    };
    core_.answers["kvD_MOD_Name"] = [](const auto& inputs) {
      return RecordingCore::Answer{{}, {}, {"model" + inputs.back()}};
    };
  }

  /// Puts a series on disk: frames 10, 15, 20, ... at 0.5, 1, 1.5, ... ps, or models 1, 2, 3, ...
  void put(std::int32_t kind, std::int32_t id, std::int32_t values, const std::vector<double>& table,
           const std::vector<std::int32_t>& sizes = {}) {
    const auto rows = table.size() / static_cast<std::size_t>(values);
    std::vector<std::int32_t> numbers(rows), models(rows);
    std::vector<double> x(rows);
    for (std::size_t k = 0; k < rows; ++k) {
      numbers[k] = static_cast<std::int32_t>(10 + 5 * k);
      models[k] = static_cast<std::int32_t>(k + 1);
      x[k] = 0.5 * static_cast<double>(k + 1);
    }
    const std::vector<std::int32_t> full(rows, values);
    std::int32_t status = 7;
    writescratchfile_(kind, file_of(id), numbers, x, table, values, values, 1, models, sizes.empty() ? full : sizes, {},
                      status);
    ASSERT_EQ(status, 0);
  }
  static std::string file_of(std::int32_t id) { return property_file(property_rows[property_row_of(id)].extension); }
  std::vector<std::string> ranked(std::int32_t id, std::int32_t direction) {
    core_.forget();
    EXPECT_EQ(status_of(calcrank_, static_cast<std::int32_t>(property_row_of(id)) + 1, direction), 0);
    return core_.messages();
  }

  const SettingsOfATest settings_;
  RecordingCore core_;
};

TEST_F(Ranking, tells_rank_place_frame_time_and_value) {
  put(kind_frames, 1, 1, {-5, 2, -7, 4});
  trj_gui_i_.extrema_number = 3;
  EXPECT_THAT(ranked(1, highest),
              ElementsAre("3 HIGHEST PATHSTAT_MSG_29", "Total Energy PATHSTAT_MSG_24", "1 4 25 2 4 PATHSTAT_MSG_26",
                          "2 2 15 1 2 PATHSTAT_MSG_26", "3 1 10 0.5 -5 PATHSTAT_MSG_26"));
  trj_gui_l_.has_time_axis = false;
  trj_gui_i_.extrema_number = 1;
  EXPECT_THAT(ranked(1, lowest),
              ElementsAre("1 LOWEST PATHSTAT_MSG_29", "Total Energy PATHSTAT_MSG_25", "1 3 20 2 -7 PATHSTAT_MSG_27"))
      << "x of 1.5 rounds away from zero";
}

TEST_F(Ranking, orders_ties_as_the_heap_sort_leaves_them) {
  // Sorting 2 1 2 1 by the sift gives positions 2 4 3 1, followed by hand.
  put(kind_frames, 1, 1, {2, 1, 2, 1});
  EXPECT_THAT(ranked(1, highest),
              ElementsAre("4 HIGHEST PATHSTAT_MSG_29", "Total Energy PATHSTAT_MSG_24", "1 1 10 0.5 2 PATHSTAT_MSG_26",
                          "2 3 20 1.5 2 PATHSTAT_MSG_26", "3 4 25 2 1 PATHSTAT_MSG_26", "4 2 15 1 1 PATHSTAT_MSG_26"));
  EXPECT_THAT(ranked(1, lowest), ElementsAre("4 LOWEST PATHSTAT_MSG_29", "Total Energy PATHSTAT_MSG_24",
                                             "1 2 15 1 1 PATHSTAT_MSG_26", "2 4 25 2 1 PATHSTAT_MSG_26",
                                             "3 3 20 1.5 2 PATHSTAT_MSG_26", "4 1 10 0.5 2 PATHSTAT_MSG_26"));
}

TEST_F(Ranking, ranks_each_column_of_models_under_its_title) {
  put(kind_models, 206, 3, {1, 20, 90, 2, 10, 60});
  trj_gui_i_.extrema_number = 1;
  EXPECT_THAT(
      ranked(206, highest),
      ElementsAre("1 HIGHEST PATHSTAT_MSG_28", "Cell Length U PATHSTAT_MSG_64", "1 model2 2 PATHSTAT_MSG_65",
                  "1 HIGHEST PATHSTAT_MSG_28", "Cell Length V PATHSTAT_MSG_64", "1 model1 20 PATHSTAT_MSG_65",
                  "1 HIGHEST PATHSTAT_MSG_28", "Cell angle Theta PATHSTAT_MSG_64", "1 model1 90 PATHSTAT_MSG_65"));
}

TEST_F(Ranking, pools_the_measures_of_all_models) {
  put(kind_models, 501, 3, {3, 1, 99, 5, 99, 99, 2, 4, 6}, {2, 1, 3});
  trj_gui_i_.extrema_number = 4;
  EXPECT_THAT(ranked(501, lowest),
              ElementsAre("4 LOWEST PATHSTAT_MSG_28", "Distance PATHSTAT_MSG_64", "1 model1 1 PATHSTAT_MSG_65",
                          "2 model3 2 PATHSTAT_MSG_65", "3 model1 3 PATHSTAT_MSG_65", "4 model3 4 PATHSTAT_MSG_65"));
  trj_gui_i_.extrema_number = 100;
  EXPECT_EQ(ranked(501, highest).size(), 2u + 6u) << "six values in all";
}

TEST_F(Ranking, calls_the_columns_of_a_property) {
  const auto titles = [&](std::int32_t id, std::int32_t values) {
    put(kind_frames, id, values, std::vector<double>(static_cast<std::size_t>(values), 1.0));
    std::vector<std::string> found;
    for (const auto& line : ranked(id, highest)) {
      if (line.ends_with(" PATHSTAT_MSG_24")) found.push_back(line.substr(0, line.find(" PATHSTAT")));
    }
    return found;
  };
  EXPECT_THAT(titles(205, 6),
              ElementsAre("Stress XX", "Stress YY", "Stress ZZ", "Stress YZ", "Stress XZ", "Stress XY"));
  EXPECT_THAT(titles(205, 3), ElementsAre("Stress YY", "Stress ZZ", "Stress YZ"));
  EXPECT_THAT(titles(206, 6), ElementsAre("Cell Length A", "Cell Length B", "Cell Length C", "Cell angle Alpha",
                                          "Cell angle Beta", "Cell angle Gamma"));
  EXPECT_THAT(titles(206, 1), ElementsAre("Cell Length Z"));
  EXPECT_THAT(titles(302, 3), ElementsAre("Dipole Vector X", "Dipole Vector Y", "Dipole Vector Z"));
  register_measure_labels([](std::int32_t, std::int32_t number, TextField label) {
    label.set(number == 1 ? "1-2" : "3-4");
    return true;
  });
  EXPECT_THAT(titles(501, 2), ElementsAre("Distance 1-2", "Distance 3-4"));
  register_measure_labels(nullptr);
}

TEST_F(Ranking, of_a_damaged_file_prints_nothing_and_keeps_no_block) {
  put(kind_frames, 1, 1, {1, 2});
  std::filesystem::resize_file(file_of(1), 60);
  EXPECT_EQ(status_of(calcrank_, static_cast<std::int32_t>(property_row_of(1)) + 1, highest), scratch_file_damaged);
  EXPECT_THAT(core_.messages(), ElementsAre("PATHSTAT_MSG_4"));
  std::int64_t address = 0;
  std::int32_t unknown = 0;
  kvs_msd_loc_("pathstat/CRank/DataVals", address, unknown);
  EXPECT_EQ(unknown, 1);
  EXPECT_EQ(status_of(calcrank_, static_cast<std::int32_t>(property_rows.size()) + 1, highest), 1);
}

}  // namespace
}  // namespace pathstat
