#include "reports/table_output.h"

#include "plots/labels.h"
#include "recording_core.h"
#include "services/work_directory.h"
#include "state/analysis_settings.h"
#include "state/table_state.h"
#include "support/named_memory.h"
#include "testing.h"

namespace pathstat {
namespace {

/// A property's result with the arrays that it looks into.
struct Result {
  std::int32_t id;
  std::string name;
  std::int32_t values;
  std::vector<double> table;
  std::vector<double> x = {};
  std::vector<double> bin_data = {};
  std::int32_t mode = profile_mode;
  bool has_time_axis = true;

  ResultSeries series() const {
    ResultSeries result;
    result.id = id;
    result.name = name;
    result.mode = mode;
    result.has_time_axis = has_time_axis;
    result.values = values;
    result.points = static_cast<std::int32_t>(table.size()) / values;
    result.table = table;
    result.x = x;
    result.bin_data = bin_data;
    return result;
  }
};

class TableOutput : public WorkDirectory {
 protected:
  ~TableOutput() override { trj_gui_i_ = {}; }

  std::int32_t begin() { return status_of(inittableoutput_, file); }
  std::int32_t add(const Result& result, std::string_view source = from_trajectory) {
    return status_of(tableprofile_, result.series(), source, file);
  }
  std::int32_t finish(std::span<const ModelName> names = {}) { return status_of(finishtableoutput_, file, names); }
  std::string table_of(const std::vector<Result>& results, std::string_view source = from_trajectory,
                       std::span<const ModelName> names = {}) {
    std::filesystem::remove("t.dat");
    EXPECT_EQ(begin(), 0);
    for (const auto& result : results) EXPECT_EQ(add(result, source), 0) << result.name;
    EXPECT_EQ(finish(names), 0);
    return std::filesystem::exists("t.dat") ? content("t.dat") : "no file";
  }
  /// The first line of the table, a column each.
  std::vector<std::string> columns_of(const Result& result) {
    const std::string text = table_of({result});
    std::vector<std::string> names(1);
    for (const char character : text.substr(0, text.find('\n'))) {
      if (character == '\t') names.emplace_back();
      if (character != '\t') names.back() += character;
    }
    return names;
  }
  static std::vector<std::string> files() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(".")) names.push_back(entry.path().filename());
    return names;
  }
  static bool has_blocks() {
    std::int64_t address = 0;
    std::int32_t unknown = 0;
    kvs_msd_loc_("pathstat/TO/TableRow", address, unknown);
    return unknown == 0;
  }

  static constexpr std::string_view file = "./t.dat  ";
  RecordingCore core_;
};

TEST_F(TableOutput, has_one_x_for_all_series_and_a_tab_between_two_cells) {
  EXPECT_EQ(table_of({{1, "Total Energy", 1, {-5, -6.25}, {0.5, 1}}, {201, "Temperature", 1, {300, 0}, {0.5, 1}}}),
            "Time\tTotal Energy\tTemperature\n"
            "  0.5000000000000000\t  -5.000000000000000\t   300.0000000000000\n"
            "   1.000000000000000\t  -6.250000000000000\t   0.000000000000000\n");
  EXPECT_THAT(files(), ElementsAre("t.dat"));
  EXPECT_FALSE(has_blocks());
  EXPECT_EQ(tablesave_i_.table_columns, 0);
}

TEST_F(TableOutput, numbers_conformers_and_writes_components_with_nine_digits) {
  Result stress{205, "Stress", 1, {1.5, -0.25}, {2.5, 100}};
  stress.has_time_axis = false;
  EXPECT_EQ(table_of({stress}),
            "Conformer\tStresszz\n"
            "         3\t 0.150000000E+01\n"
            "       100\t-0.250000000E+00\n");
}

TEST_F(TableOutput, names_the_model_of_a_row) {
  const std::vector<ModelName> names{"ice", "liquid\twater", "steam"};
  EXPECT_EQ(table_of({{204, "Volume", 1, {1, 2, 3}}}, from_selected_models, std::span(names).first(2)),
            "Model Name\tVolume\n"
            "ice\t   1.000000000000000\n"
            "liquid water\t   2.000000000000000\n"
            "\t   3.000000000000000\n")
      << "a tab in a name does not end its cell, and a row without a name has none";
}

TEST_F(TableOutput, keeps_every_row_of_properties_of_different_lengths) {
  const Result one{1, "E", 1, {1}, {9}}, three{2, "E", 1, {2, 3, 4}, {7, 8, 9}}, two{201, "T", 1, {5, 6}, {7, 8}};
  const std::string head = "Time\tTotal Energy\tPotential Energy\tTemperature\n";
  EXPECT_EQ(table_of({one, three, two}), head +
                                             "   9.000000000000000\t   1.000000000000000\t   2.000000000000000\t"
                                             "   5.000000000000000\n"
                                             "\t\t   3.000000000000000\t   6.000000000000000\n"
                                             "\t\t   4.000000000000000\t\n");
}

TEST_F(TableOutput, pairs_every_quantity_of_a_distribution_with_its_frequencies) {
  Result energy{1, "Total Energy", 1, {0.25, 0.75}, {}, {-1, 9, 2}, distribution_mode};
  Result constant{201, "Temperature", 1, {1, 1}, {}, {300, 300, 0}, distribution_mode};
  EXPECT_EQ(table_of({energy, constant}),
            "Total Energy\tFrequency\tTemperature\tFrequency\n"
            "  -1.000000000000000\t  0.2500000000000000\t   300.0000000000000\t   1.000000000000000\n"
            "   1.000000000000000\t  0.7500000000000000\t   300.0000000000000\t   1.000000000000000\n");
}

TEST_F(TableOutput, calls_the_columns_of_stress_and_cell_by_their_number) {
  const auto series = [](std::int32_t id, const char* name, std::int32_t values) {
    return Result{id, name, values, std::vector<double>(static_cast<std::size_t>(values)), {1}};
  };
  EXPECT_THAT(columns_of(series(205, "Stress", 6)),
              ElementsAre("Time", "Stressxx", "Stressyy", "Stresszz", "Stressyz", "Stressxz", "Stressxy"));
  EXPECT_THAT(columns_of(series(205, "Stress", 3)), ElementsAre("Time", "Stressyy", "Stresszz", "Stressyz"));
  EXPECT_THAT(columns_of(series(206, "Cell", 6)),
              ElementsAre("Time", "Cell a", "Cell b", "Cell c", "Cell alpha", "Cell beta", "Cell gamma"));
  EXPECT_THAT(columns_of(series(206, "Cell", 3)), ElementsAre("Time", "Cell u", "Cell v", "Cell theta"));
  EXPECT_THAT(columns_of(series(206, "Cell", 1)), ElementsAre("Time", "Cell z"));
  EXPECT_THAT(columns_of(series(302, "Dipole Vector", 3)),
              ElementsAre("Time", "Dipole Vector X", "Dipole Vector Y", "Dipole Vector Z"));
}

TEST_F(TableOutput, takes_of_a_distribution_as_many_columns_as_the_property_has_histograms) {
  const auto columns = [&](std::int32_t id, std::int32_t values) {
    const auto size = static_cast<std::size_t>(values);
    Result result{id, "P", values, std::vector<double>(2 * size), {}, std::vector<double>(3 * size), distribution_mode};
    EXPECT_EQ(begin(), 0);
    EXPECT_EQ(add(result), 0);
    const std::int32_t count = tablesave_i_.table_columns;
    EXPECT_EQ(finish(), 0);
    std::filesystem::remove("t.dat");
    return count;
  };
  EXPECT_EQ(columns(205, 6), 12);
  EXPECT_EQ(columns(206, 3), 6);
  EXPECT_EQ(columns(205, 1), 2);
  EXPECT_EQ(columns(206, 2), 0);
  EXPECT_EQ(columns(506, 9), 6);
  EXPECT_EQ(columns(501, 9), 2);
  EXPECT_EQ(columns(1, 1), 2);
}

TEST_F(TableOutput, asks_before_it_replaces_a_file) {
  struct Case {
    std::int32_t choice;
    std::int32_t status;
    bool is_left;
    std::vector<std::string> messages;
  };
  for (const Case& each : {Case{0, 0, false, {"./t.dat ./t.dat PATHSTAT_MSG_31"}}, Case{1, 0, false, {}},
                           Case{2, table_file_kept, true, {"./t.dat ./t.dat PATHSTAT_WARN_8"}}}) {
    write("t.dat", "old");
    core_.forget();
    core_.answers["kvU_MOD_GetOption"] = [&](const auto&) { return RecordingCore::Answer{{each.choice}, {}, {}}; };
    EXPECT_EQ(begin(), each.status) << each.choice;
    EXPECT_EQ(std::filesystem::exists("t.dat"), each.is_left) << each.choice;
    EXPECT_THAT(core_.calls("kvU_MOD_GetOption"), ElementsAre("kvU_MOD_GetOption|StatFilePrompt|StatFileOptions"));
    EXPECT_EQ(core_.messages(), each.messages);
  }
}

TEST_F(TableOutput, is_off_where_the_old_file_cannot_be_deleted) {
  std::filesystem::create_directories("t.dat/inside");
  core_.answers["kvU_MOD_GetOption"] = [](const auto&) { return RecordingCore::Answer{{1}, {}, {}}; };
  EXPECT_NE(begin(), 0);
  EXPECT_THAT(core_.messages(), ElementsAre("./t.dat ./t.dat PATHSTAT_ERROR_56"));
}

TEST_F(TableOutput, of_nothing_makes_no_file) {
  EXPECT_EQ(table_of({{1, "E", 1, {}}}), "no file");
  EXPECT_THAT(files(), IsEmpty());
}

TEST_F(TableOutput, stays_as_it_was_when_a_property_cannot_be_added) {
  const Result energy{1, "E", 1, {1, 2}, {1, 2}};
  EXPECT_EQ(begin(), 0);
  EXPECT_EQ(add(energy), 0);
  EXPECT_THAT(files(), ElementsAre("t.bn1"));
  const std::string whole = content("t.bn1");
  std::filesystem::resize_file("t.bn1", whole.size() - 1);
  EXPECT_EQ(add(energy), table_failed);
  EXPECT_THAT(files(), ElementsAre("t.bn1"));
  write("t.bn1", whole);
  EXPECT_EQ(add(energy), 0);
  EXPECT_THAT(files(), ElementsAre("t.bn2"));
  EXPECT_EQ(tablesave_i_.table_columns, 3);
}

TEST_F(TableOutput, leaves_no_partial_file_and_no_work_file) {
  const Result energy{1, "E", 1, {1, 2}, {1, 2}};
  EXPECT_EQ(begin(), 0);
  EXPECT_EQ(add(energy), 0);
  std::filesystem::resize_file("t.bn1", 40);
  EXPECT_EQ(finish(), table_failed);
  EXPECT_THAT(files(), IsEmpty());
  EXPECT_FALSE(has_blocks());

  EXPECT_EQ(begin(), 0);
  EXPECT_EQ(add(energy), 0);
  std::filesystem::create_directory("t.dat");
  EXPECT_NE(finish(), 0);
  EXPECT_THAT(files(), ElementsAre("t.dat")) << "what is in the way stays";
}

TEST_F(TableOutput, is_gone_with_its_scope) {
  {
    EXPECT_EQ(begin(), 0);
    const TableScope scope(file);
    EXPECT_EQ(add({1, "E", 1, {1}, {1}}), 0);
    EXPECT_TRUE(has_blocks());
  }
  EXPECT_THAT(files(), IsEmpty());
  EXPECT_FALSE(has_blocks());
  EXPECT_EQ(finish(), 0);
}

TEST_F(TableOutput, without_its_work_file_fails) {
  EXPECT_EQ(begin(), 0);
  EXPECT_EQ(add({1, "E", 1, {1}, {1}}), 0);
  std::filesystem::remove("t.bn1");
  EXPECT_EQ(finish(), table_failed);
  EXPECT_THAT(files(), IsEmpty());
}

}  // namespace
}  // namespace pathstat
