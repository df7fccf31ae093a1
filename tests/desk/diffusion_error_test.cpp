#include "desk/summary/diffusion_error.h"

#include "testing.h"

namespace pathstat::desk {
namespace {

/// A window of a fit to random walks, and the origins taken.
struct Walk {
  std::int64_t frames, first, last, step;
};

void PrintTo(const Walk& walk, std::ostream* out) {
  *out << walk.frames << " frames, lags " << walk.first << " to " << walk.last << ", origin step " << walk.step;
}

/// Free walkers in space, which take a step of variance 1 along each axis from frame to frame: D is 1/2.
class Walkers {
 public:
  Walkers(std::int64_t frames, unsigned seed) : frames_(frames) {
    std::mt19937_64 random(seed);
    std::normal_distribution<double> normal;
    for (std::int64_t frame = 0; frame < frames; ++frame) {
      for (std::size_t k = 0; k < axes; ++k) {
        const double before = frame == 0 ? 0 : places_[places_.size() - axes];
        places_.push_back(before + normal(random));
      }
    }
  }

  /// Mean over the walkers and over the origins `apart` from each other, of `count` from number `first` on.
  double msd(std::int64_t lag, std::int64_t first, std::int64_t count, std::int64_t step,
             std::int64_t apart = 1) const {
    double sum = 0, origins = 0;
    for (auto origin = first; origin < first + count; origin += apart, ++origins) {
      const auto* from = &places_[static_cast<std::size_t>(origin * step) * axes];
      const auto* to = from + static_cast<std::size_t>(lag) * axes;
      for (std::size_t k = 0; k < axes; ++k) sum += (to[k] - from[k]) * (to[k] - from[k]);
    }
    return sum / (walkers * origins);
  }

  std::int64_t origins(std::int64_t lag, std::int64_t step) const { return (frames_ - 1 - lag) / step + 1; }

  double fitted_diffusion(const Walk& walk) const {
    const double centre = 0.5 * static_cast<double>(walk.first + walk.last);
    double products = 0, squares = 0;
    for (auto lag = walk.first; lag <= walk.last; ++lag) {
      const double x = static_cast<double>(lag) - centre;
      products += x * msd(lag, 0, origins(lag, walk.step), walk.step);
      squares += x * x;
    }
    return products / squares / 6;
  }

  OriginBlocks blocks(const Walk& walk) const {
    OriginBlocks blocks{0.5, frames_, walk.last + 1, walk.step, 0, 24, 1, {1, 4, 16, frames_ / 8}, {}};
    blocks.origins = origins(frames_ / 8, walk.step) / 24;
    for (const auto lag : blocks.lags) {
      for (std::int64_t k = 0; k < 24; ++k) {
        blocks.means.push_back(
            msd(lag, k * blocks.origins, blocks.origins, walk.step, std::max<std::int64_t>(1, lag / (8 * walk.step))));
      }
    }
    return blocks;
  }

 private:
  static constexpr double walkers = 8;
  static constexpr std::size_t axes = 24;
  std::int64_t frames_;
  std::vector<double> places_;
};

class DiffusionError : public testing::TestWithParam<Walk> {};

TEST_P(DiffusionError, of_random_walks_is_the_scatter_of_many_of_them) {
  constexpr int runs = 250;
  const auto walk = GetParam();
  double off = 0, off_squares = 0, error_squares = 0;
  int within = 0;
  for (int seed = 1; seed <= runs; ++seed) {
    const Walkers walkers(walk.frames, static_cast<unsigned>(seed));
    const double from = 0.5 * static_cast<double>(walk.first), to = 0.5 * static_cast<double>(walk.last);
    const double error = error_of_slope(walkers.blocks(walk), 0, from, to).value() * 0.5 / 6;
    const double difference = walkers.fitted_diffusion(walk) - 0.5;
    off += difference;
    off_squares += difference * difference;
    error_squares += error * error;
    within += std::abs(difference) < error ? 1 : 0;
  }
  EXPECT_LT(std::abs(off), 4 * std::sqrt(off_squares));
  EXPECT_NEAR(std::sqrt(error_squares / off_squares), 1, 0.15);
  EXPECT_NEAR(static_cast<double>(within) / runs, 0.683, 0.1);
}

INSTANTIATE_TEST_SUITE_P(windows, DiffusionError,
                         testing::Values(Walk{200, 0, 5, 1}, Walk{200, 5, 20, 1}, Walk{200, 10, 60, 1},
                                         Walk{200, 0, 99, 1}, Walk{200, 60, 99, 1}, Walk{500, 5, 40, 5},
                                         Walk{800, 0, 10, 20}));

TEST(DiffusionErrorOf, blocks_that_share_nothing_is_that_of_their_mean) {
  OriginBlocks blocks{2, 80'001, 2, 1, 10'000, 8, 1, {1}, {1, 2, 3, 4, 5, 6, 7, 8}};
  EXPECT_NEAR(error_of_slope(blocks, 0, 0, 2).value(), 0.5 * std::sqrt(6.0 / 8), 1e-3);
  EXPECT_FALSE(error_of_slope(blocks, 1, 0, 2));
  EXPECT_FALSE(error_of_slope(blocks, 0, 0, 0));
  blocks.blocks = 4;
  EXPECT_FALSE(error_of_slope(blocks, 0, 0, 2));
}

TEST(DiffusionErrorOf, a_text_needs_all_of_it) {
  const std::string head = "0.5 101 11 1 10 2 1 2\n";
  using Case = std::tuple<std::string, bool>;
  for (const auto& [text, whole] :
       {Case{head + "1 0.5 0.75\n2 1 1.5\n", true}, Case{head + "1 0.5 0.75\n2 1\n", false}, Case{"", false},
        Case{"0.5 101 11 1 10 2 1 2000000000\n", false}, Case{"0 101 11 1 10 2 1 0\n", false},
        Case{"0.5 0 11 1 10 2 1 0\n", false}, Case{"0.5 101 0 1 10 2 1 0\n", false},
        Case{"0.5 101 11 1 60 2 1 0\n", false}, Case{"0.5 101 11 6 10 2 1 0\n", false},
        Case{"0.5 9000000000000000000 11 1 10 2 1 0\n", false}, Case{head + "2 1 1.5\n1 0.5 0.75\n", false},
        Case{head + "1 0.5 0.75\n102 1 1.5\n", false}}) {
    const auto blocks = read_origin_blocks(text);
    EXPECT_EQ(blocks.has_value(), whole) << text;
    if (blocks) {
      EXPECT_EQ(blocks->means, (std::vector<double>{0.5, 0.75, 1, 1.5}));
    }
  }
}

}  // namespace
}  // namespace pathstat::desk
