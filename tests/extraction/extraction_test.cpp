#include "extraction/extraction.h"

#include "catalogue/catalogue.h"
#include "catalogue/catalogue_mask.h"
#include "catalogue/catalogue_rows.h"
#include "extraction/scratch_file.h"
#include "recording_core.h"
#include "services/work_directory.h"
#include "settings_of_a_test.h"
#include "testing.h"
#include "trajectory/history_writer.h"

namespace pathstat {
namespace {

struct Series {
  std::int32_t kind = 0, points = 0, values = 0;
  std::vector<std::int32_t> numbers;
  std::vector<double> x, table;
};

Series series_in(const std::string& file) {
  Series found;
  std::int32_t extras = 0;
  std::int32_t status = 7;
  scratchfileinfo_(found.kind, file, found.points, found.values, extras, status);
  EXPECT_EQ(status, 0) << file;
  if (status != 0) return found;
  const auto points = static_cast<std::size_t>(found.points);
  found.numbers.resize(points);
  found.x.resize(points);
  found.table.resize(points * static_cast<std::size_t>(found.values));
  std::vector<std::int32_t> ids(points), sizes(points);
  std::vector<ModelName> names(points);
  readscratchfile_(found.kind, file, found.numbers, found.x, found.table, found.points, found.values, ids, names, sizes,
                   {}, extras, status);
  EXPECT_EQ(status, 0) << file;
  return found;
}

/// A working directory, and an example run that fits its model.
class Extraction : public WorkDirectory {
 protected:
  Extraction() {
    core_.answers["kvD_ValidateOID"] = [](const auto&) { return RecordingCore::Answer{{1}, {}, {}}; };
  }

  void load(const std::string& run, std::int32_t atoms, std::int32_t periodic_type, std::int32_t frames) {
    load_file(EXAMPLES_DIR "/" + run + "/" + run + ".trj", reader::binary, atoms, periodic_type, frames);
  }
  void load_file(const std::string& file, std::int32_t reader_code, std::int32_t atoms, std::int32_t periodic_type,
                 std::int32_t frames) {
    file_ = file;
    core_.answers["kvD_MOD_NumAtoms"] = [atoms](const auto&) { return RecordingCore::Answer{{atoms}, {}, {}}; };
    core_.answers["kvD_MOD_PeriodicType"] = [periodic_type](const auto&) {
      return RecordingCore::Answer{{periodic_type}, {}, {}};
    };
    trj_gui_c_.input_source = from_trajectory;
    trj_gui_i_.reader_code = reader_code;
    trj_gui_i_.trajectory_model = 1;
    trj_gui_l_.has_time_axis = true;
    trj_gui_l_.trajectory_loaded = true;
    trj_frames_.first_frame = 1;
    trj_frames_.frame_step = 1;
    trj_frames_.last_frame = frames;
    ASSERT_EQ(status_of(maskprops_, file_, false), 0);
  }
  void select(const std::vector<std::int32_t>& ids) {
    const auto table = property_table();
    for (std::size_t row = 0; row < table.size(); ++row) {
      table.selected[row] = std::ranges::find(ids, table.ids[row]) != ids.end();
    }
  }
  std::int32_t extract(const char* word = "PROPERTIES") {
    return status_of(datatodisk_, file_, trj_gui_c_.input_source, word);
  }
  static bool is_on_disk(std::int32_t id) { return property_table().on_disk[property_row_of(id)]; }
  std::vector<std::string> files() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory_)) names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
  }

  const SettingsOfATest settings_;
  std::string file_;
  RecordingCore core_;
};

TEST_F(Extraction, walks_the_chosen_frames_and_leaves_what_is_there) {
  load("argon", 500, periodic_type::three_dimensional, 200);
  trj_frames_.first_frame = 10;
  trj_frames_.frame_step = 70;
  trj_frames_.last_frame = 199;
  select({1});
  ASSERT_EQ(extract(), 0);
  EXPECT_THAT(series_in("./PathStat_prf.te").numbers, ElementsAre(10, 80, 150));
  std::filesystem::resize_file("PathStat_prf.te", 1);
  ASSERT_EQ(extract(), 0);
  EXPECT_EQ(std::filesystem::file_size("PathStat_prf.te"), 1u) << "current, so not made again";
  std::filesystem::remove("PathStat_prf.te");
  ASSERT_EQ(extract(), 0);
  EXPECT_EQ(series_in("./PathStat_prf.te").points, 3) << "missing, so made again";
}

TEST_F(Extraction, of_a_history_run_gives_each_molecule_a_value) {
  using namespace testing_bytes;
  const HistoryPlan plan{.version = 2.6, .atoms = 4, .movable = {1, 2, 3, 4}, .molecules = 2};
  const auto bytes = history_file(plan, 3);
  std::ofstream("run.his", std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.all().data()), static_cast<std::streamsize>(bytes.size()));
  load_file("./run.his", reader::history, 4, periodic_type::none, 3);
  EXPECT_EQ(trj_gui_i_.molecule_count, 2);
  select({902, 911});
  ASSERT_EQ(extract(), 0);
  const EnergyPlaces at(plan);
  const auto potential = series_in("./PathStat_prf.mpe"), hydrogen = series_in("./PathStat_prf.mhb_e");
  ASSERT_EQ(potential.values, 2);
  ASSERT_EQ(hydrogen.table.size(), 6U);
  for (std::size_t k = 0; k < 6; ++k) {
    const int frame = static_cast<int>(k / 2) + 1;
    EXPECT_EQ(potential.table[k], energy_number(frame, at.potential_of + k % 2));
    EXPECT_EQ(hydrogen.table[k], energy_number(frame, at.components_of + std::size_t{2} * 16 + k % 2));
  }
}

TEST_F(Extraction, of_a_frame_that_cannot_be_read_writes_nothing) {
  load("argon", 500, periodic_type::three_dimensional, 201);
  select({1, 201});
  EXPECT_NE(extract(), 0);
  EXPECT_THAT(core_.messages(), ElementsAre("PATHSTAT_ERROR_93"));
  EXPECT_THAT(files(), IsEmpty());
  EXPECT_FALSE(is_on_disk(1));
}

TEST_F(Extraction, keeps_pressure_in_pascal_for_the_fluctuations) {
  load("water", 648, periodic_type::three_dimensional, 200);
  EXPECT_EQ(trj_gui_i_.ensemble, 2);
  const auto table = fluctuation_table();
  for (std::size_t row = 0; row < table.size(); ++row) table.selected[row] = table.ids[row] == 806;
  ASSERT_EQ(extract("FLUCTUATIONS"), 0);
  EXPECT_THAT(files(), ElementsAre("PathStat_fluc.thrm"));
  const Series series = series_in("./PathStat_fluc.thrm");
  ASSERT_EQ(series.values, 5);
  // Frames 1 and 200 of the engine's log.
  const std::vector<double> first{342.1677085 * 101325, 6478.545465, 303.4051854, -2022.033563, -2411.827044};
  const std::vector<double> last{1290.060425 * 101325, 6478.545465, 286.6353289, -2035.673332, -2403.922089};
  for (std::size_t c = 0; c < 5; ++c) {
    EXPECT_NEAR(series.table[c], first[c], 1e-7 * std::abs(first[c]));
    EXPECT_NEAR(series.table[5 * 199 + c], last[c], 1e-7 * std::abs(last[c]));
  }
  for (std::size_t row = 1; row < 11; ++row) EXPECT_TRUE(table.on_disk[row]) << "one file for all";
  EXPECT_FALSE(table.on_disk[12]);
}

TEST_F(Extraction, takes_dipoles_of_the_same_frames_only) {
  load("water", 648, periodic_type::three_dimensional, 2);
  const auto table = fluctuation_table();
  for (std::size_t row = 0; row < table.size(); ++row) table.selected[row] = table.ids[row] == 901;
  EXPECT_NE(extract("FLUCTUATIONS"), 0) << "no dipole file";
  EXPECT_THAT(core_.messages(), ElementsAre("PATHSTAT_MSG_4"));
  const std::vector<std::int32_t> numbers{1, 2};
  const std::vector<double> x{0, 0.01};
  const std::vector<double> dipoles{1, 2, 3, 4, 5, 6};
  std::int32_t status = 7;
  writescratchfile_(kind_frames, "./PathStat_prf.dip_v", numbers, x, dipoles, 3, 3, 1, {}, {}, {}, status);
  ASSERT_EQ(extract("FLUCTUATIONS"), 0);
  const Series series = series_in("./PathStat_fluc.dip");
  ASSERT_EQ(series.values, 6);
  EXPECT_THAT(std::vector(series.table.begin() + 9, series.table.end()), ElementsAre(4, 5, 6));
  EXPECT_EQ(series.table[0], 0.0);
  trj_frames_.first_frame = 2;
  trj_frames_.last_frame = 3;
  table.on_disk[12] = false;
  EXPECT_EQ(extract("FLUCTUATIONS"), scratch_file_damaged) << "frames 2 and 3 are not 1 and 2";
}

/// Models of these types with the cell a = (2, 0, 0), b = (0, 3, 0), c = (0, 0, 4), or its last two vectors.
class ModelExtraction : public Extraction {
 protected:
  void models(std::vector<std::int32_t> types) {
    trj_gui_c_.input_source = from_selected_models;
    const auto count = static_cast<std::int32_t>(types.size());
    core_.answers["kvD_SEL_NumSelected"] = [count](const auto&) { return RecordingCore::Answer{{count}, {}, {}}; };
    core_.answers["kvD_SEL_FindSelected"] = [count](const auto&) {
      RecordingCore::Answer answer;
      for (std::int32_t k = 0; k < count; ++k) answer.integers.push_back(k);
      answer.integers.push_back(count);
      return answer;
    };
    core_.answers["kvD_MOD_PeriodicType"] = [types](const auto& inputs) {
      return RecordingCore::Answer{{types.at(std::stoul(inputs[0]))}, {}, {}};
    };
    core_.answers["kvD_MOD_3DCellVector"] = [](const auto&) {
      return RecordingCore::Answer{{}, {2, 0, 0, 0, 3, 0, 0, 0, 4}, {}};
    };
    core_.answers["kvD_MOD_2DCellVector"] = [](const auto&) {
      return RecordingCore::Answer{{}, {0, 3, 0, 0, 0, 4}, {}};
    };
    core_.answers["kvA_CMP_Mass"] = [](const auto&) { return RecordingCore::Answer{{}, {100.0}, {}}; };
    std::int32_t status = 7;
    trj_propinit_(status);
  }
};

TEST_F(ModelExtraction, gives_each_model_that_has_the_property_a_point) {
  models({0, 100, 100});
  select({204, 206, 207});
  ASSERT_EQ(extract(), 0);
  const Series volume = series_in("./PathStat_prf.vol");
  EXPECT_EQ(volume.kind, kind_models);
  EXPECT_THAT(volume.numbers, ElementsAre(2, 3));
  EXPECT_THAT(volume.x, ElementsAre(2, 3));
  EXPECT_THAT(volume.table, ElementsAre(24, 24));
  const Series cell = series_in("./PathStat_prf.cell");
  EXPECT_EQ(cell.values, 6);
  EXPECT_THAT(std::vector(cell.table.begin() + 6, cell.table.end()),
              Pointwise(DoubleNear(1e-9), {2.0, 3.0, 4.0, 90.0, 90.0, 90.0}));
  EXPECT_NEAR(series_in("./PathStat_prf.dens").table[1], 100 * 1.66056 / 24, 1e-12);
}

TEST_F(ModelExtraction, does_not_mix_cells_of_layers_and_crystals) {
  models({101, 100, 100});
  select({206});
  ASSERT_EQ(extract(), 0);
  EXPECT_THAT(core_.messages(), ElementsAre("PATHSTAT_ERROR_99"));
  EXPECT_THAT(files(), IsEmpty());
  EXPECT_FALSE(is_on_disk(206));
}

}  // namespace
}  // namespace pathstat
