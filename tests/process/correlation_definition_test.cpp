#include "process/desk_with_process.h"
#include "testing.h"
#include "trajectory/binary_trajectory.h"

namespace pathstat::desk {
namespace {

constexpr std::int32_t positions_key = 1071;
constexpr std::int32_t velocities_key = 1072;
constexpr std::size_t atoms = 14;

using Frames = std::vector<std::vector<double>>;

/// The first frames of butane, one list of 3n numbers each.
Frames butane_vectors(std::int32_t key, std::int32_t frames) {
  std::int32_t handle = 0;
  std::int32_t status = 0;
  std::int32_t count = 0;
  kvA_TRJ_Open(EXAMPLES_DIR "/butane/butane.trj", 100, handle, status);
  Frames all;
  for (std::int32_t frame = 1; frame <= frames; ++frame) {
    kvA_TRJ_ReadFrame(handle, frame, status);
    EXPECT_EQ(status_of(kvA_TRJ_ValueDouble, handle, key, all.emplace_back(3 * atoms), count), 0);
  }
  std::int32_t closed = 0;
  kvA_TRJ_Close(handle, closed);
  return all;
}

/// XX, YY, ZZ, XY, XZ, YZ and the total of a pair of frames, summed over atoms.
using Products = std::array<double, 7>;
constexpr std::array<std::array<std::size_t, 2>, 6> axes{{{0, 0}, {1, 1}, {2, 2}, {0, 1}, {0, 2}, {1, 2}}};

template <class Term>
Products summed(Term term) {
  Products sums{};
  for (std::size_t atom = 0; atom < atoms; ++atom) {
    for (std::size_t c = 0; c < 6; ++c) sums[c] += term(3 * atom + axes[c][0], 3 * atom + axes[c][1]);
  }
  sums[6] = sums[0] + sums[1] + sums[2];
  return sums;
}

Products displacement(const std::vector<double>& from, const std::vector<double>& to) {
  return summed([&](std::size_t p, std::size_t q) { return (to[p] - from[p]) * (to[q] - from[q]); });
}

Products velocity_product(const std::vector<double>& from, const std::vector<double>& to) {
  return summed([&](std::size_t p, std::size_t q) { return 0.5 * (from[p] * to[q] + to[p] * from[q]); });
}

constexpr std::size_t lags = 40;

/// The definition with every third frame an origin; the last frame takes part in no pair.
std::vector<Products> by_definition(const Frames& frames,
                                    Products (*pair)(const std::vector<double>&, const std::vector<double>&)) {
  constexpr std::size_t origin_step = 3;
  std::vector<Products> table(lags);
  for (std::size_t lag = 0; lag < lags; ++lag) {
    double pairs = 0;
    for (std::size_t origin = 0; origin + lag < frames.size() - 1; origin += origin_step, ++pairs) {
      const auto sums = pair(frames[origin], frames[origin + lag]);
      for (std::size_t c = 0; c < 7; ++c) table[lag][c] += sums[c];
    }
    for (auto& value : table[lag]) value /= atoms * pairs;
  }
  return table;
}

void expect_table(const ScratchSeries& series, const std::vector<Products>& wanted) {
  ASSERT_EQ(series.points, std::ssize(wanted));
  ASSERT_EQ(series.values_per_point, 7);
  for (std::size_t lag = 0; lag < wanted.size(); ++lag) {
    EXPECT_NEAR(series.x[lag], 0.01 * static_cast<double>(lag), 1e-9);
    for (std::size_t c = 0; c < 7; ++c) {
      EXPECT_NEAR(series.values[lag][c], wanted[lag][c], 1e-10 * std::abs(wanted[lag][6]) + 1e-14) << lag << ' ' << c;
    }
  }
}

class SixtyFrames : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(desk.load_example("butane"), 0);
    ASSERT_EQ(desk.run("LAST_FRAME_NO", "60"), 0);
    ASSERT_EQ(desk.run("MAX_INTERVAL_NO", std::to_string(lags)), 0);
    ASSERT_EQ(desk.run_lines({"ANISOTROPIC yes", "ORIGIN_STEP_NO 3"}), 0);
  }
  DeskWithProcess desk;
};

TEST_F(SixtyFrames, give_the_displacement_and_the_fit_of_the_definition) {
  ASSERT_EQ(desk.run("MSD"), 0);
  const auto table = by_definition(butane_vectors(positions_key, 60), displacement);
  expect_table(read_scratch(desk.work() / "PathStat.msd"), table);
  ASSERT_EQ(desk.run_lines({"MIN_FIT_TIME 0.105", "MAX_FIT_TIME 0.295", "LINEAR_FIT"}), 0);
  double x = 0, y = 0, xx = 0, xy = 0, n = 0;
  for (std::size_t lag = 10; lag <= 30; ++lag, ++n) {
    const double t = 0.01 * static_cast<double>(lag);
    x += t, y += table[lag][6], xx += t * t, xy += t * table[lag][6];
  }
  const double slope = (n * xy - x * y) / (n * xx - x * x);
  const auto line = std::ranges::find_if(desk.output, [](const std::string& text) {
    return text.starts_with(" D  =") && text.ends_with(" A*A/(pico second) per atom");
  });
  ASSERT_NE(line, desk.output.end());
  EXPECT_NEAR(std::stod(line->substr(5, 12)), slope / 6, 1e-4 * std::abs(slope));
}

TEST_F(SixtyFrames, give_the_velocity_products_and_the_spectrum_of_the_definition) {
  ASSERT_EQ(desk.run("VAC"), 0);
  const auto table = by_definition(butane_vectors(velocities_key, 60), velocity_product);
  expect_table(read_scratch(desk.work() / "PathStat.vac"), table);
  const auto graphs_before = desk.graphs.shown_graphs().size();
  ASSERT_EQ(desk.run_lines({"VAC_MAX_TIME_TRANSFORM 0.505", "POWER_SPECTRUM"}), 0);
  constexpr std::size_t m = 50;  // the lags, then zeros
  const auto& spectrum = desk.data_set(graphs_before + 6).points;
  ASSERT_EQ(spectrum.size(), m);
  for (std::size_t i = 0; i < m; i += 7) {
    double sum = table[0][6];
    for (std::size_t k = 1; k < lags; ++k) {
      sum += 2 * table[k][6] * std::cos(std::numbers::pi * static_cast<double>(k * i) / (m - 1));
    }
    EXPECT_NEAR(spectrum[i].y, std::pow(sum * 0.01, 2), 1e-5 * std::pow(sum * 0.01, 2) + 1e-8);
    EXPECT_NEAR(spectrum[i].x, static_cast<double>(i) * 0.5 / (m * 0.01 * 0.03), 1e-2);
  }
}

}  // namespace
}  // namespace pathstat::desk
