#include "transforms/lane_transform.h"

#include "testing.h"

namespace pathstat {
namespace {

constexpr unsigned seed = 5;

/// The sum over lanes and j of conj(a(j)) b(j + lag).
std::complex<long double> correlation(std::span<const LaneComplex> a, std::span<const LaneComplex> b, std::size_t lag) {
  std::complex<long double> sum = 0;
  for (std::size_t j = 0; j + lag < b.size(); ++j) {
    for (std::size_t k = 0; k < lanes_together; ++k) {
      sum += std::complex<long double>(a[j].re[k], -a[j].im[k]) *
             std::complex<long double>(b[j + lag].re[k], b[j + lag].im[k]);
    }
  }
  return sum;
}

TEST(LanePlan, summed_products_of_spectra_give_the_correlation_of_the_sequences) {
  std::mt19937 generator(seed);
  std::normal_distribution<double> normal;
  const auto fill = [&](std::span<LaneComplex> values) {
    for (LaneComplex& value : values) {
      for (std::size_t k = 0; k < lanes_together; ++k) value.re[k] = normal(generator), value.im[k] = normal(generator);
    }
  };
  for (const std::size_t n : {1, 2, 3, 4, 5, 7, 9, 30, 121, 360, 1000, 2049, 6000}) {
    const LanePlan plan(LanePlan::cheapest(static_cast<std::int64_t>(2 * n)));
    ASSERT_GE(plan.length(), 2 * n);
    std::vector<LaneComplex> a(plan.length());
    std::vector<LaneComplex> b(plan.length());
    fill(std::span(a).first(n));
    fill(std::span(b).first(n));
    const auto plain_a = a;
    const auto plain_b = b;
    plan.transform(a, n);
    plan.transform(b, n);
    std::vector<std::complex<double>> sums(plan.length());
    add_lane_products(a, b, sums);
    std::vector<std::complex<long double>> values(sums.begin(), sums.end());
    plan.back(values);
    for (const std::size_t lag : {std::size_t{0}, n / 3, n / 2, n - 1}) {
      const auto wanted = correlation(std::span(plain_a).first(n), std::span(plain_b).first(n), lag);
      const auto found = values[lag] / static_cast<long double>(plan.length());
      EXPECT_LT(std::abs(found - wanted), 1e-15L * static_cast<long double>(8 * n)) << n << ' ' << lag;
    }
  }
}

TEST(LanePlan, takes_a_length_that_is_not_much_longer_than_asked_for) {
  for (std::int64_t least = 2; least < 3000; least += 1 + least / 20) {
    const auto length = static_cast<std::int64_t>(LanePlan::cheapest(least).length);
    EXPECT_GE(length, least);
    EXPECT_LE(length, std::max(least + least / 4, std::int64_t{4})) << least;
  }
}

}  // namespace
}  // namespace pathstat
