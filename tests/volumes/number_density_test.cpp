#include "volumes/number_density.h"

#include "testing.h"

namespace pathstat {
namespace {

std::vector<std::int32_t> all_places(std::size_t atoms) {
  std::vector<std::int32_t> places(atoms);
  std::iota(places.begin(), places.end(), 0);
  return places;
}

TEST(NumberDensity, counts_an_atom_for_the_point_nearest_to_it_in_any_image) {
  NumberDensity density({4, 2, 1});
  // A box of 4 x 2 x 3 Å: points stand 1, 1 and 3 Å apart.
  const Matrix3 box{4, 0, 0, 0, 2, 0, 0, 0, 3};
  const std::vector<double> xyz{0, 0, 0, 3.6, 1.6, 2.9, -3.9, 2.1, -30, 1.4, 0.4, 1, 1.6, 0.6, 1, 401, 0, 0};
  ASSERT_TRUE(density.add(xyz, all_places(6), box));
  const float one = 1.0F / 3;  // an atom in the 3 Å³ of a point
  EXPECT_THAT(density.mean(), ElementsAre(3 * one, 2 * one, 0, 0, 0, 0, one, 0));
}

TEST(NumberDensity, is_that_of_the_plain_definition_for_random_frames_of_a_varying_skew_cell) {
  const auto seed = std::random_device{}();
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> anywhere(-40, 40), stretch(0.9, 1.1);
  const std::array<std::int32_t, 3> n{7, 5, 6};
  NumberDensity density(n);
  std::vector<double> counts(7 * 5 * 6, 0);
  double volume = 0;
  const std::vector<std::int32_t> places{3, 4, 99, 7, 12, 55};
  for (int frame = 0; frame < 50; ++frame) {
    const double a = 9 * stretch(random), b = 8 * stretch(random), c = 7 * stretch(random);
    const Matrix3 cell{a, 1, 2, 0, b, 3, 0, 0, c};  // columns; its inverse by substitution
    std::vector<double> xyz(300);
    for (auto& x : xyz) x = anywhere(random);
    ASSERT_TRUE(density.add(xyz, places, cell));
    volume += a * b * c;
    for (const auto place : places) {
      const auto at = static_cast<std::size_t>(3 * place);
      const double u = xyz[at] / a, v = (xyz[at + 1] - u) / b, w = (xyz[at + 2] - 2 * u - 3 * v) / c;
      const auto point = [](double f, int points) {
        return ((static_cast<long>(std::floor(f * points + 0.5)) % points) + points) % points;
      };
      ++counts[static_cast<std::size_t>((point(w, 6) * 5 + point(v, 5)) * 7 + point(u, 7))];
    }
  }
  EXPECT_EQ(density.frames(), 50);
  const auto mean = density.mean();
  ASSERT_EQ(mean.size(), counts.size());
  for (std::size_t k = 0; k < counts.size(); ++k) EXPECT_NEAR(mean[k], counts[k] * 210 / volume, 1e-6);
}

TEST(NumberDensity, may_keep_a_place_in_the_middle_of_the_cell) {
  NumberDensity density({4, 4, 4});
  const Matrix3 box{8, 0, 0, 0, 8, 0, 0, 0, 8};
  ASSERT_TRUE(density.add(std::vector<double>{7, 1, 3, 1, 1, 3}, all_places(2), box, Vector3{7, 1, 3}));
  const auto mean = density.mean();
  EXPECT_EQ(mean[(2 * 4 + 2) * 4 + 2], 1.0F / 8);
  EXPECT_EQ(mean[(2 * 4 + 2) * 4 + 3], 1.0F / 8);
}

TEST(NumberDensity, leaves_out_what_is_no_place_and_refuses_a_flat_cell) {
  NumberDensity density({3, 3, 3});
  const double nan = std::numeric_limits<double>::quiet_NaN(), infinite = std::numeric_limits<double>::infinity();
  const std::vector<double> xyz{nan, 0, 0, 0, infinite, 0, 0, 0, 1e300, 0, 0, 0};
  EXPECT_FALSE(density.add(xyz, all_places(4), Matrix3{1, 0, 0, 1, 0, 0, 0, 0, 1}));
  EXPECT_EQ(density.frames(), 0);
  EXPECT_THAT(density.mean(), Each(0.0F));
  ASSERT_TRUE(density.add(xyz, all_places(4), Matrix3{3, 0, 0, 0, 3, 0, 0, 0, 3}));
  const auto mean = density.mean();
  EXPECT_EQ(mean[0], 1.0F);
  EXPECT_EQ(std::accumulate(mean.begin(), mean.end(), 0.0F), 1.0F);
}

}  // namespace
}  // namespace pathstat
