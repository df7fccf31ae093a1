#include "correlation/origin_groups.h"

#include "services/file_units.h"
#include "surroundings.h"
#include "testing.h"
#include "trajectory/frame_spacing.h"

namespace pathstat {
namespace {

constexpr std::array<std::string_view, 6> labels{"Test/x1", "Test/y1", "Test/z1", "Test/x2", "Test/y2", "Test/z2"};
constexpr unsigned seed = 99;

struct Case {
  std::int64_t frames, step, intervals;
  friend void PrintTo(const Case& c, std::ostream* out) {
    *out << "N " << c.frames << ", s " << c.step << ", M " << c.intervals;
  }
};

/// Random frames in a cache file and in memory.
class OriginGroupsOf : public testing::TestWithParam<Case> {
 protected:
  static constexpr std::int64_t atoms = 150;

  OriginGroupsOf() {
    std::int32_t error = 0;
    unit_ = FileUnit("", {.record_words = 6 * atoms, .status = UnitStatus::scratch}, error);
    std::mt19937 generator(seed);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    const FrameFile file(unit_.number(), atoms);
    for (std::int64_t record = 1; record <= GetParam().frames; ++record) {
      auto& frame = frames_.emplace_back(3 * atoms);
      for (double& value : frame) value = uniform(generator);
      EXPECT_TRUE(file.write(record, axes(record)));
    }
  }

  Axes axes(std::int64_t record) const {
    const std::span<const double> frame(frames_[static_cast<std::size_t>(record - 1)]);
    return {frame.subspan(0, atoms), frame.subspan(atoms, atoms), frame.subspan(2 * atoms)};
  }

  FileUnit unit_;
  std::vector<std::vector<double>> frames_;
};

TEST_P(OriginGroupsOf, sum_each_pair_once_in_any_amount_of_memory) {
  const auto [frames, step, intervals] = GetParam();
  const OriginSeries series{frames, step, intervals};
  for (const PairSums& kind : {PairSums{add_displacement_products, correlation_columns},
                               PairSums{add_squared_displacement, 1, add_squared_displacements},
                               PairSums{add_velocity_product, 1, add_velocity_products_of_pairs}}) {
    for (const std::int64_t frames_in_memory : {0, 1, 2, 3, 4, 7, 12, 20, 30, 1000}) {
      std::int32_t status = 0;
      OriginGroups groups(series, kind, FrameFile(unit_.number(), atoms), atoms, frames_in_memory * 24 * atoms, labels,
                          status);
      ASSERT_EQ(status, 0);
      std::int64_t origin = 0;
      for (std::int64_t record = 1; record <= frames - 1; record += step, ++origin) {
        const std::int64_t place = origin % groups.origins_together();
        if (place == 0) {
          ASSERT_TRUE(groups.sum(origin, std::min(groups.origins_together(), series.count() - origin)));
        }
        for (std::int64_t lag = 0; lag < std::min(intervals, frames - record); ++lag) {
          std::array<double, correlation_columns> wanted{};
          kind.kernel(axes(record), axes(record + lag), wanted);
          for (std::size_t column = 0; column < static_cast<std::size_t>(kind.columns); ++column) {
            ASSERT_NEAR(groups.sums(place, lag)[column], wanted[column], 1e-11)
                << "record " << record << " lag " << lag << " column " << column << " memory " << frames_in_memory;
          }
        }
      }
      EXPECT_EQ(origin, series.count());
    }
  }
}

INSTANTIATE_TEST_SUITE_P(shapes, OriginGroupsOf,
                         testing::Values(Case{2, 1, 1}, Case{3, 1, 2}, Case{40, 1, 20}, Case{40, 1, 39}, Case{40, 3, 8},
                                         Case{41, 7, 7}, Case{41, 9, 4}, Case{40, 39, 20}, Case{40, 100, 5}));

TEST(OriginGroups, tell_when_the_cache_is_shorter_than_it_should_be) {
  std::int32_t status = 0;
  const FileUnit unit("", {.record_words = 6, .status = UnitStatus::scratch}, status);
  const std::array<double, 1> one{1.0};
  const FrameFile file(unit.number(), 1);
  ASSERT_TRUE(file.write(1, {one, one, one}));
  OriginGroups groups({4, 1, 2}, {add_velocity_product, 1}, file, 1, 1 << 20, labels, status);
  EXPECT_FALSE(groups.sum(0, 3));
}

struct PlanCase {
  Case series;
  std::int64_t frames_in_memory;
  std::int64_t together, window, beside;
};

TEST(WindowPlan, moves_over_the_file_once_whenever_a_group_fits) {
  for (const auto& [series, memory, together, window, beside] : {
           PlanCase{{200, 1, 100}, 1000, 10, 109, 0},  // ten origins and their lags
           PlanCase{{200, 1, 100}, 104, 5, 104, 0},    // fewer origins keep the window whole
           PlanCase{{200, 1, 100}, 100, 1, 100, 0},
           PlanCase{{200, 1, 100}, 99, 10, 89, 10},  // runs over the lags for each group
           PlanCase{{200, 1, 100}, 8, 4, 4, 4},
           PlanCase{{200, 1, 100}, 0, 1, 1, 1},
           PlanCase{{200, 20, 20}, 1000, 1, 20, 0},  // windows that do not overlap
           PlanCase{{30, 2, 29}, 1000, 10, 30, 0},   // no more frames than there are
           PlanCase{{2, 1, 1}, 1000, 1, 1, 0},
       }) {
    const auto plan = WindowPlan::make({series.frames, series.step, series.intervals}, memory, 10);
    EXPECT_EQ(plan.origins_together, together) << testing::PrintToString(series) << " memory " << memory;
    EXPECT_EQ(plan.window_frames, window) << testing::PrintToString(series) << " memory " << memory;
    EXPECT_EQ(plan.origins_beside, beside) << testing::PrintToString(series) << " memory " << memory;
  }
}

TEST(FrameMemory, is_set_by_the_environment_in_whole_mebibytes) {
  struct Setting {
    const char* text;
    std::int64_t mebibytes;
  };
  for (const auto& [text, mebibytes] :
       {Setting{"1", 1}, Setting{"1000", 1000}, Setting{"0", 256}, Setting{"-4", 256}, Setting{"12 MB", 256},
        Setting{"", 256}, Setting{"99999999999999999999", 256}}) {
    const ScopedVariable memory("PATHSTAT_CACHE_MIB", text);
    EXPECT_EQ(frame_memory(), mebibytes << 20) << text;
  }
  EXPECT_EQ(frame_memory(), default_frame_memory);
}

struct Tick {
  double time, time_step;
};

TEST(FrameSpacing, is_tested_from_the_third_frame_on) {
  struct SpacingCase {
    const char* rule;
    std::vector<Tick> ticks;
    std::size_t accepted;
  };
  const std::vector<SpacingCase> cases{
      {"two frames are never tested", {{0, 0.25}, {90, 1}}, 2},
      {"even frames pass, backwards too", {{3, 0.25}, {2, 0.25}, {1, 0.25}, {0, 0.25}}, 4},
      {"a jump of the time step passes", {{0, 0.25}, {1, 0.25}, {2.25, 0.25}}, 3},
      {"a longer one does not", {{0, 0.25}, {1, 0.25}, {2.3125, 0.25}}, 2},
      {"nor a shorter frame", {{0, 0.25}, {1, 0.25}, {1.5, 0.25}}, 2},
      {"a jump is taken between neighbours", {{0, 0.25}, {1, 0.25}, {2.25, 0.25}, {3.75, 0.25}}, 4},
      {"the time step may drift a little", {{0, 0.25}, {1, 0.25}, {2, 0.25002}, {3, 0.25004}}, 4},
      {"but not jump", {{0, 0.25}, {1, 0.25}, {2, 0.2501}}, 2},
  };
  for (const auto& [rule, ticks, accepted] : cases) {
    FrameSpacing spacing;
    std::size_t count = 0;
    for (const Tick& tick : ticks) {
      if (!spacing.add(tick.time, tick.time_step)) break;
      ++count;
    }
    EXPECT_EQ(count, accepted) << rule;
  }
  FrameSpacing spacing;
  spacing.add(4.0, 0.1);
  EXPECT_EQ(spacing.spacing(), 0.0);
  spacing.add(3.5, 0.1);
  EXPECT_EQ(spacing.spacing(), 0.5);
}

}  // namespace
}  // namespace pathstat
