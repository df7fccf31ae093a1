#include "catalogue/catalogue_mask.h"

#include <ostream>

#include "catalogue/catalogue.h"
#include "desk/import/trajectory_output.h"
#include "recording_core.h"
#include "scratch_folder.h"
#include "settings_of_a_test.h"
#include "testing.h"
#include "trajectory/front_end.h"

namespace pathstat {
namespace {

using Ids = std::set<std::int32_t>;

class CatalogueMask : public testing::Test {
 protected:
  CatalogueMask() {
    trj_gui_c_.input_source = from_trajectory;
    EXPECT_EQ(status_of(trj_propinit_), 0);
    trj_gui_l_.trajectory_loaded = true;
    trj_gui_l_.has_time_axis = true;
    trj_gui_i_.trajectory_model = 77;
  }

  void trajectory(std::int32_t reader_code, std::int32_t version, std::int32_t periodicity) {
    trj_gui_i_.reader_code = reader_code;
    trj_gui_i_.format_version = version;
    trj_gui_i_.periodicity = periodicity;
  }
  /// The models that are selected, by periodic type; object k + 1 is model k.
  void select_models(std::vector<std::int32_t> types) {
    trj_gui_c_.input_source = from_selected_models;
    core_.answers["kvD_SEL_NumSelected"] = [n = types.size()](const auto&) {
      return RecordingCore::Answer{{static_cast<std::int32_t>(n)}, {}, {}};
    };
    core_.answers["kvD_SEL_FindSelected"] = [n = types.size()](const auto&) {
      RecordingCore::Answer answer;
      for (std::size_t k = 0; k < n; ++k) answer.integers.push_back(static_cast<std::int32_t>(k + 1));
      answer.integers.push_back(static_cast<std::int32_t>(n));
      return answer;
    };
    core_.answers["kvD_MOD_PeriodicType"] = [types](const auto& inputs) {
      return RecordingCore::Answer{{types.at(std::stoul(inputs[0]) - 1)}, {}, {}};
    };
  }
  void mask() { EXPECT_EQ(status_of(maskprops_, "", true), 0); }
  static Ids offered(const CatalogueTable& table) {
    Ids ids;
    for (std::size_t row = 0; row < table.size(); ++row) {
      if (table.selectable[row] && table.can_be_used[row]) ids.insert(table.ids[row]);
    }
    return ids;
  }
  static Ids selectable() {
    Ids ids;
    const auto table = property_table();
    for (std::size_t row = 0; row < table.size(); ++row) {
      if (table.selectable[row]) ids.insert(table.ids[row]);
    }
    return ids;
  }

  const SettingsOfATest settings_;
  RecordingCore core_;
};

TEST_F(CatalogueMask, cross_terms_of_a_binary_file_begin_with_version_2010) {
  trajectory(reader::binary, 2002, 0);
  mask();
  for (const std::int32_t id : {111, 116, 122, 123, 124}) EXPECT_FALSE(selectable().contains(id)) << id;
  EXPECT_TRUE(selectable().contains(202)) << "no cell: a radius of gyration";
  trajectory(reader::binary, 2010, 3);
  mask();
  for (const std::int32_t id : {111, 116, 122, 123, 124}) EXPECT_TRUE(selectable().contains(id)) << id;
  EXPECT_FALSE(selectable().contains(117)) << "history only";
  EXPECT_FALSE(selectable().contains(202));
}

TEST_F(CatalogueMask, fluctuations_follow_ensemble_and_thermostat) {
  trajectory(reader::binary, 2010, 3);
  trj_gui_i_.thermostat = 2;
  trj_gui_i_.ensemble = 2;
  mask();
  EXPECT_EQ(offered(fluctuation_table()), (Ids{803, 806, 901}));
  EXPECT_EQ(fluctuation_table().colours[3], -5) << "two curves: a walk along the wheel";
  EXPECT_EQ(fluctuation_table().colours[6], -13);
  EXPECT_EQ(fluctuation_table().colours[1], 3);
  trj_gui_i_.ensemble = 3;
  mask();
  EXPECT_EQ(offered(fluctuation_table()), (Ids{801, 802, 803, 804, 805, 806, 807, 808, 809, 810, 901}));
  EXPECT_EQ(fluctuation_table().colours[3], 5);
  trj_gui_i_.thermostat = 1;
  mask();
  EXPECT_EQ(offered(fluctuation_table()), Ids{901});
  trj_gui_l_.has_time_axis = false;
  mask();
  EXPECT_THAT(offered(fluctuation_table()), IsEmpty());
}

TEST_F(CatalogueMask, selected_models_offer_what_one_of_them_has) {
  select_models({101, 101});
  mask();
  EXPECT_EQ(offered(property_table()), (Ids{206, 208, 301, 302}));
  select_models({100, 0});
  mask();
  EXPECT_EQ(offered(property_table()), (Ids{202, 204, 207, 301, 302})) << "no cell: the last two differ";
  select_models({0, 100, 100});
  mask();
  EXPECT_EQ(offered(property_table()), (Ids{202, 204, 206, 207, 301, 302}));
  EXPECT_FALSE(trj_gui_l_.any_property_selected) << "the total energy cannot be had";
}

TEST_F(CatalogueMask, a_selection_that_no_model_serves_is_taken_back) {
  select_models({101});
  const auto table = property_table();
  const auto row_of = [&](std::int32_t id) {
    return static_cast<std::size_t>(std::ranges::find(table.ids, id) - table.ids.begin());
  };
  for (const std::int32_t id : {202, 204, 206, 208}) table.selected[row_of(id)] = true;
  EXPECT_EQ(status_of(checkprops_), 0);
  EXPECT_THAT(core_.messages(), ElementsAre("Volume any of the selected models PATHSTAT_WARN_13",
                                            "Radius of Gyration any of the selected models PATHSTAT_WARN_13"));
  EXPECT_FALSE(table.selected[row_of(202)]);
  EXPECT_FALSE(table.selected[row_of(204)]);
  EXPECT_TRUE(table.selected[row_of(206)]) << "a layer has a cell";
  EXPECT_TRUE(table.selected[row_of(208)]);
}

constexpr double none = std::numeric_limits<double>::quiet_NaN();

/// What three frames have of one value, and whether it can be selected.
struct Absence {
  std::string_view series;
  std::int32_t id;
  std::array<double, 3> values;
  bool selectable;
};

void PrintTo(const Absence& absence, std::ostream* out) {
  *out << absence.series << testing::PrintToString(absence.values);
}

class AbsentValues : public CatalogueMask, public testing::WithParamInterface<Absence> {};

TEST_P(AbsentValues, are_those_of_neither_the_first_frame_nor_the_last) {
  const auto& [series, id, values, expected] = GetParam();
  const ScratchFolder folder;
  const auto path = folder.file("absent.trj");
  const std::array<std::int32_t, 2> ids{1, 2};
  desk::TrajectoryOutput output;
  ASSERT_EQ(output.create(path, {.title = "absent", .ids = ids, .periodic = true}), "");
  for (std::size_t k = 0; k < values.size(); ++k) {
    output.set(series, values[k]);
    output.set("volume", 1000);
    const std::array<double, 6> xyz{0, 0, 0, 1, 1, 1};
    ASSERT_EQ(output.write({static_cast<double>(k), {{{10, 0, 0}, {0, 10, 0}, {0, 0, 10}}}, xyz, {}}), "");
  }
  ASSERT_EQ(output.close(), "");
  trajectory(reader::binary, 2010, 3);
  trj_frames_.frames_in_file = static_cast<std::int32_t>(values.size());
  EXPECT_EQ(status_of(maskprops_, path, false), trajectory_status::attach_refused)
      << "there is no model, and rows are masked all the same";
  EXPECT_EQ(selectable().contains(id), expected);
  EXPECT_TRUE(selectable().contains(204)) << "the volume is there in all frames";
}

INSTANTIATE_TEST_SUITE_P(frames, AbsentValues,
                         testing::Values(Absence{"temperature", 201, {300, 301, 302}, true},
                                         Absence{"temperature", 201, {none, none, 302}, true},
                                         Absence{"temperature", 201, {300, none, none}, true},
                                         Absence{"temperature", 201, {none, 301, none}, false},
                                         Absence{"temperature", 201, {0, 0, 0}, true},
                                         Absence{"total", 1, {none, none, none}, false},
                                         Absence{"total", 1, {-5, none, -5}, true},
                                         Absence{"pressure_xx", 205, {none, none, none}, false},
                                         Absence{"pressure_xx", 205, {0.1, 0.1, 0.1}, true}));

struct Freedom {
  std::int32_t movable, fixed, periodicity;
  double degrees;
};
class DegreesOfFreedom : public testing::TestWithParam<Freedom> {};
TEST_P(DegreesOfFreedom, leave_out_what_the_whole_system_keeps) {
  const auto& [movable, fixed, periodicity, degrees] = GetParam();
  EXPECT_EQ(degrees_of_freedom(movable, fixed, periodicity), degrees);
}
INSTANTIATE_TEST_SUITE_P(cases, DegreesOfFreedom,
                         testing::Values(Freedom{10, 0, 3, 27}, Freedom{10, 2, 3, 30}, Freedom{1, 0, 0, 0},
                                         Freedom{2, 0, 0, 1}, Freedom{3, 0, 0, 3}, Freedom{1, 1, 0, 3},
                                         Freedom{900000000, 0, 1, 2699999997.0}));

}  // namespace
}  // namespace pathstat
