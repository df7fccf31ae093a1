#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/time.h>

#include <csignal>
#include <filesystem>

#include "correlation/correlation_cache.h"
#include "correlation/displacement.h"
#include "correlation/moving_atoms.h"
#include "correlation/velocity_autocorrelation.h"
#include "extraction/scratch_format.h"
#include "services/file_units.h"
#include "support/named_memory.h"
#include "support/record_file.h"

namespace pathstat {
namespace {

using testing::ElementsAre;

/// The velocities of atoms 0 ... 3.
Vector velocity_of(std::size_t atom) {
  constexpr std::array<Vector, 4> velocities{{{1, 2, -1}, {-2, 0, 3}, {0.5, -1, 0}, {4, 1, 1}}};
  return velocities[atom];
}

/// Atoms at constant velocity; frames half a picosecond apart.
Motion steady(std::int32_t frames, std::vector<std::int32_t> ids = {1, 2, 3, 4}, std::int32_t all = 4) {
  Motion motion{frames, std::move(ids), all, {}};
  motion.position = [](std::size_t atom, std::int32_t frame) {
    Vector at = velocity_of(atom);
    for (double& value : at) value = 10.0 * static_cast<double>(atom) + value * 0.5 * frame;
    return at;
  };
  motion.velocity = [](std::size_t atom, std::int32_t) { return velocity_of(atom); };
  return motion;
}

/// The mean products of the velocity components over these atoms, in the order of the columns.
std::array<double, 7> mean_products(std::initializer_list<std::size_t> atoms) {
  std::array<double, 7> sums{};
  for (const std::size_t atom : atoms) {
    const auto [x, y, z] = velocity_of(atom);
    const std::array<double, 7> terms{x * x, y * y, z * z, x * y, x * z, y * z, x * x + y * y + z * z};
    for (std::size_t k = 0; k < sums.size(); ++k) sums[k] += terms[k] / static_cast<double>(atoms.size());
  }
  return sums;
}

struct Table {
  ScratchHead head;
  std::vector<std::int32_t> numbers;
  std::vector<double> lags, values;
};

Table read_table(const std::string& path) {
  Table table;
  RecordReader reader;
  EXPECT_EQ(reader.open(path), RecordStatus::ok);
  EXPECT_EQ(read_scratch_head(reader, table.head), RecordStatus::ok);
  const auto points = static_cast<std::size_t>(table.head.points);
  table.numbers.assign(points, -1);
  table.lags.resize(points);
  table.values.resize(points * static_cast<std::size_t>(table.head.values));
  EXPECT_EQ(read_scratch_points(reader, table.head, {table.numbers, table.lags, table.values, {}, {}, {}}),
            RecordStatus::ok);
  return table;
}

class CorrelationRun : public WithMovingAtoms {
 protected:
  CorrelationRun() {
    const itimerval never{};
    ::setitimer(ITIMER_REAL, &never, nullptr);  // so that the next question whether to stop reaches the Core
  }
  ~CorrelationRun() override {
    EXPECT_FALSE(std::filesystem::exists("CorrelCache"));
    for (std::int32_t unit = 1; unit <= unit_count; ++unit) EXPECT_FALSE(kvs_fil_isunitopen_(unit)) << unit;
    EXPECT_EQ(dynmem2_.area_count, 0) << dynmem1_.area_name[0].view();
  }

  struct Choice {
    std::int32_t intervals, frames;
    std::int32_t origin_step = 1;
    bool anisotropic = false, monitor = false;
    const char* atoms = "ALL";
  };
  std::int32_t run(decltype(run_msd_)& analysis, const Choice& choice) {
    std::int32_t status = -1;
    available_ = false;
    analysis(choice.intervals, choice.frames, "run.trj   ", model, 1, choice.frames, 1, choice.monitor, choice.atoms,
             choice.origin_step, choice.anisotropic, available_, status);
    return status;
  }
  std::vector<std::string> progress() const {
    std::vector<std::string> values;
    for (const auto& call : core_.calls("kvU_INT_ReportProgress")) values.push_back(call.substr(call.find('|') + 1));
    return values;
  }

  bool available_ = false;
};

TEST_F(CorrelationRun, steady_motion_gives_the_closed_form_of_the_displacement) {
  make(steady(12));
  const auto products = mean_products({0, 1, 2, 3});
  for (const std::int32_t origin_step : {1, 3, 11, 50}) {
    EXPECT_EQ(run(run_msd_, {.intervals = 6, .frames = 12, .origin_step = origin_step, .anisotropic = true}), 0);
    EXPECT_TRUE(available_);
    const Table table = read_table("PathStat.msd");
    EXPECT_EQ(table.head.points, 6);
    EXPECT_EQ(table.head.values, 7);
    EXPECT_THAT(table.lags, ElementsAre(0, 0.5, 1, 1.5, 2, 2.5));
    EXPECT_THAT(table.numbers, testing::Each(0));
    for (std::size_t k = 0; k < table.values.size(); ++k) {
      const double lag = table.lags[k / 7];
      EXPECT_NEAR(table.values[k], products[k % 7] * lag * lag, 1e-11) << k;
    }
  }
}

TEST_F(CorrelationRun, velocities_that_stay_give_the_mean_of_their_products) {
  make(steady(12));
  const auto products = mean_products({0, 1, 2, 3});
  EXPECT_EQ(run(run_vac_, {.intervals = 5, .frames = 12, .anisotropic = true}), 0);
  const Table table = read_table("PathStat.vac");
  for (std::size_t k = 0; k < table.values.size(); ++k) EXPECT_NEAR(table.values[k], products[k % 7], 1e-12) << k;
  EXPECT_EQ(run(run_vac_, {.intervals = 5, .frames = 12}), 0);
  const Table total = read_table("PathStat.vac");
  EXPECT_EQ(total.head.values, 1);
  EXPECT_THAT(total.values, testing::Each(testing::DoubleNear(products[6], 1e-12)));
}

TEST_F(CorrelationRun, the_last_frame_takes_part_in_no_pair) {
  Motion motion = steady(6);
  motion.position = [](std::size_t, std::int32_t frame) { return Vector{frame == 5 ? 1e6 : 2.0 * frame, 0, 0}; };
  make(motion);
  EXPECT_EQ(run(run_msd_, {.intervals = 5, .frames = 6}), 0);
  EXPECT_THAT(read_table("PathStat.msd").values, ElementsAre(0, 4, 16, 36, 64));
  EXPECT_EQ(run(run_msd_, {.intervals = 1, .frames = 2}), 0);
  EXPECT_THAT(read_table("PathStat.msd").values, ElementsAre(0));
}

TEST_F(CorrelationRun, an_interrupt_keeps_the_origins_that_are_done) {
  Motion motion = steady(40);
  motion.position = [](std::size_t, std::int32_t frame) { return Vector{frame < 12 ? 1.0 * frame : 500.0, 0, 0}; };
  make(motion);
  core_.answers["kvU_INT_RequestCoreInterrupt"] = [](const Inputs&) { return Answer{{1}, {}, {}}; };
  EXPECT_EQ(run(run_msd_, {.intervals = 3, .frames = 40, .monitor = true}), 0);
  EXPECT_TRUE(available_);
  // Ten origins reach records 1 ... 12, which lie before the jump.
  EXPECT_THAT(read_table("PathStat.msd").values, ElementsAre(0, 1, 4));
  EXPECT_EQ(progress().size(), 1U + 10U);
}

TEST_F(CorrelationRun, a_graph_that_cannot_be_made_is_left_out_of_the_plots_alone) {
  make(steady(6));
  const auto handle = core_.answers["kvP_HAN_Write"];
  core_.answers["kvP_HAN_Write"] = [handle](const Inputs& inputs) {
    return inputs[0] == "MSD component YY" ? Answer{{0, 9}, {}, {}} : handle(inputs);
  };
  EXPECT_EQ(run(run_msd_, {.intervals = 3, .frames = 6, .anisotropic = true}), 0);
  EXPECT_THAT(core_.messages(), ElementsAre("MSD component YY PATHSTAT_ERROR_118"));
  EXPECT_EQ(core_.calls("kvP_DAT_WriteXY").size(), 6U);
  EXPECT_EQ(read_table("PathStat.msd").head.values, 7);
}

TEST_F(CorrelationRun, selected_atoms_are_parents_that_move_each_once) {
  make(steady(6, {2, 4, 5, 6}, 6));  // atoms 1 and 3 are fixed
  select({106, 203, 102, 206, 101});
  core_.answers["kvD_PER_PeriodicParent"] =
      for_each_object([](std::int32_t object) { return object > 200 ? object - 100 : object; });
  EXPECT_EQ(run(run_msd_, {.intervals = 2, .frames = 6, .atoms = "SELECTED"}), 0);
  EXPECT_THAT(core_.messages(), ElementsAre("2 PATHSTAT_MSG_40"));
  // 106, 103, 102, 106, 101: of these 6 and 2 move, the fourth and the first of the trajectory.
  EXPECT_NEAR(read_table("PathStat.msd").values[1], 0.25 * mean_products({0, 3})[6], 1e-12);
}

TEST_F(CorrelationRun, a_selection_without_moving_atoms_is_refused) {
  make(steady(6, {2, 4, 5, 6}, 6));
  core_.answers["kvD_PER_PeriodicParent"] = for_each_object([](std::int32_t object) { return object; });
  struct Selection {
    std::vector<std::int32_t> objects;
    std::vector<std::string> displacement, velocities;
  };
  for (const auto& [objects, displacement, velocities] :
       {Selection{{}, {"PATHSTAT_ERROR_26"}, {"PATHSTAT_ERROR_15"}},
        Selection{{101, 103}, {"PATHSTAT_ERROR_43", "PATHSTAT_ERROR_26"}, {"PATHSTAT_ERROR_43", "PATHSTAT_ERROR_15"}},
        Selection{
            {102, 100}, {"PATHSTAT_ERROR_42", "PATHSTAT_ERROR_26"}, {"PATHSTAT_ERROR_42", "PATHSTAT_ERROR_15"}}}) {
    select(objects);
    core_.forget();
    EXPECT_EQ(run(run_msd_, {.intervals = 2, .frames = 6, .atoms = "SELECTED"}), cache_status::selection_unusable);
    EXPECT_EQ(core_.messages(), displacement);
    core_.forget();
    EXPECT_EQ(run(run_vac_, {.intervals = 2, .frames = 6, .atoms = "SELECTED"}), cache_status::selection_unusable);
    EXPECT_EQ(core_.messages(), velocities);
  }
  EXPECT_FALSE(available_);
}

TEST_F(CorrelationRun, frames_that_cannot_be_used_stop_it) {
  Motion still = steady(6);
  still.velocity = {};
  make(still);
  EXPECT_EQ(run(run_vac_, {.intervals = 2, .frames = 6}), cache_status::no_velocities);
  EXPECT_THAT(core_.messages(), ElementsAre("PATHSTAT_ERROR_13"));
  core_.forget();
  EXPECT_EQ(run(run_msd_, {.intervals = 2, .frames = 9}), cache_status::frame_unreadable);
  EXPECT_THAT(core_.messages(), ElementsAre("PATHSTAT_ERROR_93", "PATHSTAT_ERROR_16"));
  core_.forget();
  EXPECT_GT(run(run_msd_, {.intervals = 2, .frames = 7}), cache_status::uneven_spacing);
  EXPECT_THAT(core_.messages(), ElementsAre("PATHSTAT_ERROR_93"));
  core_.forget();
  Motion uneven = steady(6);
  uneven.time = [](std::int32_t frame) { return frame == 4 ? 7.0 : 1.0 * frame; };
  make(uneven);
  EXPECT_EQ(run(run_msd_, {.intervals = 2, .frames = 6}), cache_status::uneven_spacing);
  EXPECT_THAT(core_.messages(), ElementsAre("4 5 PATHSTAT_ERROR_61"));
  EXPECT_FALSE(available_);
}

TEST_F(CorrelationRun, frames_of_one_time_are_shown_over_their_numbers) {
  Motion motion = steady(5);
  motion.time = [](std::int32_t) { return 2.0; };
  make(motion);
  EXPECT_EQ(run(run_vac_, {.intervals = 3, .frames = 5}), 0);
  EXPECT_THAT(read_table("PathStat.vac").lags, ElementsAre(0, 0, 0));
  const std::string value = "|" + std::to_string(mean_products({0, 1, 2, 3})[6]).substr(0, 6);
  EXPECT_THAT(core_.calls("kvP_DAT_WriteXY"),
              ElementsAre("kvP_DAT_WriteXY|2|801|3|0" + value + "|1" + value + "|2" + value));
}

TEST_F(CorrelationRun, a_full_disk_leaves_nothing_behind) {
  make(steady(30));
  const auto before = std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  ::getrlimit(RLIMIT_FSIZE, &limit);
  const rlimit small{1000, limit.rlim_max};  // ten of thirty records
  ::setrlimit(RLIMIT_FSIZE, &small);
  EXPECT_EQ(run(run_msd_, {.intervals = 5, .frames = 30}), cache_status::not_written);
  ::setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, before);
  EXPECT_THAT(core_.messages(), ElementsAre("PATHSTAT_ERROR_17"));
  EXPECT_FALSE(std::filesystem::exists("PathStat.msd"));
}

TEST_F(CorrelationRun, the_cache_has_no_name_while_it_is_in_use) {
  make(steady(5));
  write("CorrelCache", "left by a process that was killed");
  core_.answers["kvU_INT_ReportProgress"] = [&](const Inputs&) {
    EXPECT_FALSE(std::filesystem::exists("CorrelCache"));
    return Answer{};
  };
  EXPECT_EQ(run(run_msd_, {.intervals = 2, .frames = 5}), 0);
  EXPECT_FALSE(progress().empty());
}

}  // namespace
}  // namespace pathstat
