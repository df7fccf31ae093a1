#include <sys/time.h>

#include "correlation/correlation_cache.h"
#include "correlation/displacement.h"
#include "correlation/moving_atoms.h"
#include "correlation/spectral_sums.h"
#include "correlation/velocity_autocorrelation.h"
#include "extraction/scratch_format.h"
#include "scratch_folder.h"
#include "services/file_units.h"
#include "support/named_memory.h"
#include "support/parallel.h"
#include "support/record_file.h"
#include "surroundings.h"
#include "testing.h"

namespace pathstat {
namespace {

/// The velocities of atoms 0 ... 3, and the same again for those behind them.
Vector velocity_of(std::size_t atom) {
  constexpr std::array<Vector, 4> velocities{{{1, 2, -1}, {-2, 0, 3}, {0.5, -1, 0}, {4, 1, 1}}};
  return velocities[atom % velocities.size()];
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

/// More of them than 1 MiB holds, and so many that one frame is kept while the next one is read.
Motion crowd() {
  std::vector<std::int32_t> ids(3000);
  std::iota(ids.begin(), ids.end(), 1);
  return steady(30, ids, 3000);
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
    EXPECT_THAT(table.numbers, Each(0));
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
  EXPECT_THAT(total.values, Each(DoubleNear(products[6], 1e-12)));
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
  using Selection = std::tuple<std::vector<std::int32_t>, std::vector<std::string>, std::vector<std::string>>;
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
  make(crowd());
  const ScopedVariable memory("PATHSTAT_CACHE_MIB", "1");
  const FileSizeLimit limit(1000000);  // 13 of 30 records
  EXPECT_EQ(run(run_msd_, {.intervals = 5, .frames = 30}), cache_status::not_written);
  EXPECT_THAT(core_.messages(), ElementsAre("PATHSTAT_ERROR_17"));
  EXPECT_FALSE(std::filesystem::exists("PathStat.msd"));
}

TEST_F(CorrelationRun, the_cache_has_no_name_while_it_is_in_use) {
  make(crowd());
  core_.answers["kvU_INT_ReportProgress"] = [&](const Inputs&) {
    EXPECT_FALSE(std::filesystem::exists("CorrelCache"));
    return Answer{};
  };
  for (const char* memory : {"1", "256"}) {  // in the file, and without one
    const ScopedVariable cache("PATHSTAT_CACHE_MIB", memory);
    write("CorrelCache", "left by a process that was killed");
    EXPECT_EQ(run(run_msd_, {.intervals = 2, .frames = 30}), 0);
  }
  EXPECT_FALSE(progress().empty());
}

// Long runs, whose sums are made by transforms.

constexpr std::int32_t long_frames = 5000;
constexpr std::size_t long_atoms = 21;  // the last batch is not full

/// Atoms far from the origin that diffuse by 0.01 A and drift, and velocities that decay in ten frames.
Motion wandering(double drift = 0.0) {
  Motion motion{long_frames, {}, static_cast<std::int32_t>(long_atoms), {}};
  for (std::int32_t id = 1; id <= motion.all_atoms; ++id) motion.moved_ids.push_back(id);
  std::mt19937 generator(11);
  std::normal_distribution<double> normal;
  std::vector<std::array<Vector, long_atoms>> places(long_frames), velocities(long_frames);
  for (std::size_t frame = 0; frame < places.size(); ++frame) {
    for (std::size_t atom = 0; atom < long_atoms; ++atom) {
      for (std::size_t axis = 0; axis < 3; ++axis) {
        const double before = frame == 0 ? 3000.0 : places[frame - 1][atom][axis];
        const double speed = frame == 0 ? 0.0 : velocities[frame - 1][atom][axis];
        places[frame][atom][axis] = before + 0.01 * normal(generator) + drift;
        velocities[frame][atom][axis] = 0.9 * speed + normal(generator);
      }
    }
  }
  motion.position = [places](std::size_t atom, std::int32_t frame) {
    return places[static_cast<std::size_t>(frame)][atom];
  };
  motion.velocity = [velocities](std::size_t atom, std::int32_t frame) {
    return velocities[static_cast<std::size_t>(frame)][atom];
  };
  return motion;
}

/// The seven columns at a lag by their definition, in 80-bit floats.
std::array<long double, 7> by_definition(const Motion& motion, bool of_velocities, std::int32_t step,
                                         std::int32_t lag) {
  constexpr std::array<std::array<std::size_t, 2>, 6> axes{{{0, 0}, {1, 1}, {2, 2}, {0, 1}, {0, 2}, {1, 2}}};
  std::array<long double, 7> sums{};
  long double count = 0;
  for (std::int32_t origin = 0; origin + lag < motion.frames - 1; origin += step) {
    for (std::size_t atom = 0; atom < motion.moved_ids.size(); ++atom, ++count) {
      const auto& vector = of_velocities ? motion.velocity : motion.position;
      const Vector u = vector(atom, origin);
      const Vector w = vector(atom, origin + lag);
      for (std::size_t k = 0; k < axes.size(); ++k) {
        const auto [a, b] = axes[k];
        const auto cross = 0.5L * (static_cast<long double>(u[a]) * w[b] + static_cast<long double>(u[b]) * w[a]);
        const auto moved = (static_cast<long double>(w[a]) - u[a]) * (static_cast<long double>(w[b]) - u[b]);
        sums[k] += of_velocities ? cross : moved;
      }
    }
  }
  for (auto& sum : sums) sum /= count;
  sums[6] = sums[0] + sums[1] + sums[2];
  return sums;
}

void expect_definition(const Table& table, const Motion& motion, bool of_velocities, std::int32_t step) {
  for (const std::int32_t lag : {0, 1, 3, 101, 2500, 4998}) {
    const auto wanted = by_definition(motion, of_velocities, step, lag);
    const auto columns = static_cast<std::size_t>(table.head.values);
    for (std::size_t k = 0; k < columns; ++k) {
      const auto value = table.values[static_cast<std::size_t>(lag) * columns + k];
      const auto exact = static_cast<double>(wanted[columns == 1 ? 6 : k]);
      const double scale =
          std::max(std::abs(exact), columns == 1 ? 0.0 : 0.1 * std::abs(static_cast<double>(wanted[6])));
      EXPECT_NEAR(value, exact, 1e-10 * scale) << "lag " << lag << " column " << k << " step " << step;
    }
  }
}

TEST_F(CorrelationRun, long_runs_are_as_the_definition_has_them) {
  for (const double drift : {0.0, 5.0}) {  // with drift, short lags drown in the rounding of a transform
    const Motion motion = wandering(drift);
    make(motion);
    for (const std::int32_t step : {1, 3}) {
      const Choice choice{
          .intervals = long_frames - 1, .frames = long_frames, .origin_step = step, .anisotropic = step == 3};
      EXPECT_EQ(run(run_msd_, choice), 0);
      expect_definition(read_table("PathStat.msd"), motion, false, step);
      if (drift > 0.0) continue;
      EXPECT_EQ(run(run_vac_, choice), 0);
      expect_definition(read_table("PathStat.vac"), motion, true, step);
    }
  }
}

TEST_F(CorrelationRun, blocks_of_origins_are_as_the_definition_has_them) {
  const Motion motion = wandering();
  make(motion);
  ::setenv("PATHSTAT_ORIGIN_BLOCKS", "blocks", 1);
  for (const Choice& choice : {Choice{.intervals = 4999, .frames = 5000},  // by transforms
                               Choice{.intervals = 30, .frames = 700, .origin_step = 3, .anisotropic = true}}) {
    ASSERT_EQ(run(run_msd_, choice), 0);
    std::ifstream file("blocks");
    double spacing = 0;
    std::int32_t frames = 0, intervals = 0, step = 0, origins = 0, blocks = 0, columns = 0, lags = 0;
    file >> spacing >> frames >> intervals >> step >> origins >> blocks >> columns >> lags;
    EXPECT_EQ(spacing, 0.5);
    EXPECT_EQ(frames, choice.frames - 1);
    EXPECT_EQ(intervals, choice.intervals);
    EXPECT_EQ(step, choice.origin_step);
    EXPECT_EQ(blocks, 24);
    EXPECT_EQ(columns, choice.anisotropic ? 7 : 1);
    std::int32_t lag = 0;
    for (std::int32_t k = 0; k < lags; ++k) {
      file >> lag;
      EXPECT_EQ(lag, k + 1 < lags ? 1 << (2 * k) : std::min((choice.frames - 1) / 8, choice.intervals - 1));
      for (std::int32_t block = 0; block < blocks; ++block) {
        std::array<double, 7> sums{};
        const std::int32_t apart = std::max(1, lag / (8 * step)), taken = (origins + apart - 1) / apart;
        for (std::int32_t o = block * origins; o < (block + 1) * origins; o += apart) {
          for (std::size_t atom = 0; atom < long_atoms; ++atom) {
            const Vector from = motion.position(atom, o * step), to = motion.position(atom, o * step + lag);
            const Vector d{to[0] - from[0], to[1] - from[1], to[2] - from[2]};
            const std::array<double, 7> terms{d[0] * d[0],
                                              d[1] * d[1],
                                              d[2] * d[2],
                                              d[0] * d[1],
                                              d[0] * d[2],
                                              d[1] * d[2],
                                              d[0] * d[0] + d[1] * d[1] + d[2] * d[2]};
            for (std::size_t c = 0; c < terms.size(); ++c)
              sums[c] += terms[c] / static_cast<double>(long_atoms) / taken;
          }
        }
        for (std::int32_t c = 7 - columns; c < 7; ++c) {
          double value = 0;
          file >> value;
          EXPECT_NEAR(value, sums[static_cast<std::size_t>(c)], 1e-9 * sums[6]) << lag << ' ' << block << ' ' << c;
        }
      }
    }
    EXPECT_LE((lag + 24 * origins * step), frames + step);
    EXPECT_TRUE(file);
  }
  std::filesystem::remove("blocks");
  EXPECT_EQ(run(run_vac_, {.intervals = 5, .frames = 100}), 0);
  EXPECT_FALSE(std::filesystem::exists("blocks"));
  ::unsetenv("PATHSTAT_ORIGIN_BLOCKS");
  EXPECT_EQ(run(run_msd_, {.intervals = 5, .frames = 100}), 0);
  EXPECT_FALSE(std::filesystem::exists("blocks"));
}

TEST_F(CorrelationRun, long_runs_take_the_cheaper_way) {
  make(wandering());
  const ScopedVariable trace("PATHSTAT_TRACE", "1");
  struct Way {
    Choice choice;
    const char* words;
  };
  for (const auto& [choice, words] : {
           Way{{.intervals = 4999, .frames = 5000}, "correlation: transforms, 21 atoms, 5000 frames"},
           Way{{.intervals = 20, .frames = 5000}, "correlation: pairs of frames"},
           Way{{.intervals = 4999, .frames = 5000, .origin_step = 500}, "correlation: pairs of frames"},
           Way{{.intervals = 1000, .frames = 1001}, "correlation: pairs of frames"},
       }) {
    EXPECT_THAT(stderr_of([&] { EXPECT_EQ(run(run_msd_, choice), 0); }), StartsWith(words));
  }
}

TEST(SpectralSums, of_many_threads_stay_within_the_memory) {
  constexpr std::size_t threads = 64;
  for (const bool anisotropic : {false, true}) {
    const SpectralShape shape{{200000, 1, 199999}, false, anisotropic};
    EXPECT_GT(SpectralSums::bytes(shape, threads), default_frame_memory);
    for (const std::int64_t memory : {std::int64_t{1} << 20, default_frame_memory, std::int64_t{1} << 40}) {
      const auto workers = SpectralSums::workers_in(memory, shape, threads);
      ASSERT_GE(workers, 1U);
      ASSERT_LE(workers, threads);
      EXPECT_TRUE(workers == 1 || SpectralSums::bytes(shape, workers) <= memory) << workers;
      EXPECT_TRUE(workers == threads || SpectralSums::bytes(shape, workers + 1) > memory) << workers;
    }
  }
}

TEST_F(CorrelationRun, threads_and_memory_change_no_bit) {
  const struct {
    Motion motion;
    std::int32_t intervals;
  } cases[] = {{wandering(), 20}, {wandering(), long_frames - 1}, {crowd(), 12}};
  for (const auto& [motion, intervals] : cases) {
    make(motion);
    for (const bool anisotropic : {false, true}) {
      std::string first;
      for (const int threads : {1, 2, 3, 8}) {
        for (const char* memory : {"1", "256"}) {
          const ScopedVariable cache("PATHSTAT_CACHE_MIB", memory);
          set_thread_count(threads);
          EXPECT_EQ(run(run_msd_, {.intervals = intervals, .frames = motion.frames, .anisotropic = anisotropic}), 0);
          const std::string bytes = content_of("PathStat.msd");
          if (first.empty()) first = bytes;
          EXPECT_TRUE(bytes == first) << threads << " threads, " << memory << " MiB, " << intervals << " lags";
        }
      }
    }
  }
  const auto products = mean_products({0, 1, 2, 3});
  const Table table = read_table("PathStat.msd");
  for (std::size_t k = 0; k < table.values.size(); ++k) {
    EXPECT_NEAR(table.values[k], products[k % 7] * table.lags[k / 7] * table.lags[k / 7], 1e-9) << k;
  }
}

TEST_F(CorrelationRun, an_interrupted_long_run_keeps_the_atoms_that_are_done) {
  constexpr std::size_t done = 64;  // the first piece of work for two threads
  Motion motion{2000, std::vector<std::int32_t>(200), 200, {}};
  std::iota(motion.moved_ids.begin(), motion.moved_ids.end(), 1);
  motion.position = [](std::size_t atom, std::int32_t frame) { return Vector{atom < done ? 0.5 * frame : 0.0, 0, 0}; };
  make(motion);
  set_thread_count(2);
  core_.answers["kvU_INT_RequestCoreInterrupt"] = [](const Inputs&) { return Answer{{1}, {}, {}}; };
  EXPECT_EQ(run(run_msd_, {.intervals = 1999, .frames = 2000, .monitor = true}), 0);
  EXPECT_TRUE(available_);
  EXPECT_EQ(progress().size(), 2);
  const Table table = read_table("PathStat.msd");
  for (std::size_t lag = 100; lag < table.values.size(); lag += 100) {
    EXPECT_NEAR(table.values[lag], 0.25 * static_cast<double>(lag * lag), 1e-6) << lag;
  }
}

}  // namespace
}  // namespace pathstat
