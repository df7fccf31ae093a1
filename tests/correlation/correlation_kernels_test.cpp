#include "correlation/correlation_kernels.h"

#include "testing.h"

namespace pathstat {
namespace {

constexpr unsigned seed = 4711;

struct Frame {
  std::vector<double> x, y, z;
  operator Axes() const { return {x, y, z}; }
};

Frame random_frame(std::size_t atoms, std::mt19937& generator) {
  std::uniform_real_distribution<double> uniform(-5.0, 5.0);
  Frame frame;
  for (auto* axis : {&frame.x, &frame.y, &frame.z}) {
    for (std::size_t k = 0; k < atoms; ++k) axis->push_back(uniform(generator));
  }
  return frame;
}

using Sums = std::array<double, correlation_columns>;

Sums plain(const Frame& u, const Frame& w, bool displacement) {
  Sums sums{};
  for (std::size_t k = 0; k < u.x.size(); ++k) {
    const double x = w.x[k] - u.x[k], y = w.y[k] - u.y[k], z = w.z[k] - u.z[k];
    const Sums terms = displacement ? Sums{x * x, y * y, z * z, x * y, x * z, y * z}
                                    : Sums{u.x[k] * w.x[k],
                                           u.y[k] * w.y[k],
                                           u.z[k] * w.z[k],
                                           u.x[k] * w.y[k] + w.x[k] * u.y[k],
                                           u.x[k] * w.z[k] + w.x[k] * u.z[k],
                                           u.y[k] * w.z[k] + w.y[k] * u.z[k]};
    for (std::size_t column = 0; column < 6; ++column) sums[column] += terms[column];
    sums[total_column] += terms[0] + terms[1] + terms[2];
  }
  return sums;
}

void expect_added(PairKernel total, PairKernel products, const Frame& u, const Frame& w, const Sums& wanted) {
  const double tolerance = 1e-12 * (1.0 + 50.0 * static_cast<double>(u.x.size()));
  Sums sums;
  sums.fill(2.0);
  products(u, w, sums);
  for (std::size_t column = 0; column < sums.size(); ++column) {
    EXPECT_NEAR(sums[column], 2.0 + wanted[column], tolerance) << "column " << column << ", " << u.x.size() << " atoms";
  }
  double sum = 3.0;
  total(u, w, {&sum, 1});
  EXPECT_NEAR(sum, 3.0 + wanted[total_column], tolerance) << u.x.size() << " atoms, seed " << seed;
}

TEST(CorrelationKernels, add_the_sums_of_the_plain_loop_with_registers_of_any_width) {
  std::mt19937 generator(seed);
  ASSERT_FALSE(kernel_sets().empty());
  for (std::size_t atoms : {0, 1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 1001}) {
    const Frame u = random_frame(atoms, generator);
    const Frame w = random_frame(atoms, generator);
    for (const KernelSet& set : kernel_sets()) {
      expect_added(set.squared_displacement, set.displacement_products, u, w, plain(u, w, true));
      expect_added(set.velocity_product, set.velocity_products, u, w, plain(u, w, false));
    }
    expect_added(add_squared_displacement, add_displacement_products, u, w, plain(u, w, true));
    expect_added(add_velocity_product, add_velocity_products, u, w, plain(u, w, false));
  }
}

TEST(CorrelationKernels, add_the_same_sum_for_a_pair_at_any_place_of_a_tile) {
  std::mt19937 generator(seed);
  for (std::size_t atoms : {0, 1, 3, 4, 7, 8, 17, 256}) {
    std::vector<Frame> frames;
    PairTile tile;
    for (Axes& origin : tile.origins) origin = frames.emplace_back(random_frame(atoms, generator));
    for (Axes& later : tile.later) later = frames.emplace_back(random_frame(atoms, generator));
    for (const KernelSet& set : kernel_sets()) {
      for (const auto& [kernel, displacement] :
           {std::pair{set.squared_displacements, true}, std::pair{set.velocity_products_of_pairs, false}}) {
        TileSums sums{};
        for (auto& of_origin : sums) of_origin.fill(3.0);
        kernel(tile, sums);
        PairTile alike;
        alike.origins.fill(tile.origins[0]);
        alike.later.fill(tile.later[0]);
        TileSums same{};
        for (auto& of_origin : same) of_origin.fill(3.0);
        kernel(alike, same);
        for (std::size_t k = 0; k < tile.origins.size(); ++k) {
          for (std::size_t frame = 0; frame < tile.later.size(); ++frame) {
            const Sums wanted = plain(frames[k], frames[tile.origins.size() + frame], displacement);
            EXPECT_NEAR(sums[k][frame], 3.0 + wanted[total_column], 1e-12 * (1.0 + 50.0 * static_cast<double>(atoms)));
            EXPECT_EQ(same[k][frame], sums[0][0]) << k << ", " << frame;
          }
        }
      }
    }
  }
}

}  // namespace
}  // namespace pathstat
