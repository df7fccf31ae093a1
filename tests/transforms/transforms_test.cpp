#include "transforms/transforms.h"

#include "recording_core.h"
#include "testing.h"
#include "transforms/real_transform.h"

namespace pathstat {
namespace {

using std::numbers::pi;

constexpr unsigned seed = 20240611;

std::vector<double> random_values(std::size_t n) {
  std::mt19937 generator(seed + static_cast<unsigned>(n));
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  std::vector<double> values(n);
  for (double& value : values) value = uniform(generator);
  return values;
}

/// cos or sin of k * i * pi / n by its definition, with the angle reduced exactly.
double cos_pi(std::size_t k, std::size_t i, std::size_t n) {
  return std::cos(static_cast<double>(k * i % (2 * n)) * pi / static_cast<double>(n));
}
double sin_pi(std::size_t k, std::size_t i, std::size_t n) {
  return std::sin(static_cast<double>(k * i % (2 * n)) * pi / static_cast<double>(n));
}

std::vector<double> cosine_definition(const std::vector<double>& x) {
  const std::size_t last = x.size() - 1;
  std::vector<double> result(x.size());
  for (std::size_t i = 0; i <= last; ++i) {
    result[i] = x[0] + (i % 2 == 0 ? x[last] : -x[last]);
    for (std::size_t k = 1; k < last; ++k) result[i] += 2.0 * x[k] * cos_pi(k, i, last);
  }
  return result;
}

std::vector<double> sine_definition(const std::vector<double>& x) {
  std::vector<double> result(x.size());
  for (std::size_t i = 1; i <= x.size(); ++i) {
    for (std::size_t k = 1; k <= x.size(); ++k) result[i - 1] += 2.0 * x[k - 1] * sin_pi(k, i, x.size() + 1);
  }
  return result;
}

std::vector<double> real_definition(const std::vector<double>& x) {
  const std::size_t n = x.size();
  std::vector<double> result(n);
  for (std::size_t f = 0; 2 * f <= n; ++f) {
    double re = 0.0;
    double im = 0.0;
    for (std::size_t j = 0; j < n; ++j) {
      re += x[j] * cos_pi(2 * f, j, n);
      im -= x[j] * sin_pi(2 * f, j, n);
    }
    if (f == 0) {
      result[0] = re;
    } else {
      result[2 * f - 1] = re;
      if (2 * f < n) result[2 * f] = im;
    }
  }
  return result;
}

std::vector<double> real_transform(std::vector<double> x) {
  const std::size_t n = x.size();
  std::vector<double> work(4 * n + 40);
  const std::span<double> all(work);
  fftftri_(static_cast<std::int64_t>(n), all);
  fft3trf_(x, all.first(n), all.subspan(n, n), all.subspan(2 * n));
  return x;
}

std::vector<double> cosine(const std::vector<double>& x) {
  std::vector<double> result(x.size());
  fftcos_(x, result);
  return result;
}

std::vector<double> sine(const std::vector<double>& x) {
  std::vector<double> result(x.size() + 1);
  fftsin_(x, result);
  result.pop_back();
  return result;
}

void expect_near(const std::vector<double>& found, const std::vector<double>& wanted) {
  ASSERT_EQ(found.size(), wanted.size());
  const auto n = static_cast<double>(wanted.size());
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    ASSERT_NEAR(found[i], wanted[i], 2e-14 * n) << "element " << i + 1 << " of " << n << ", seed " << seed;
  }
}

/// All short lengths, primes, powers and products that mix the stages in every order.
std::vector<std::size_t> lengths() {
  std::vector<std::size_t> all{128,  512, 1024, 243,    625,        343,  121,     720,      1155,
                               2310, 997, 1009, 8 * 81, 2 * 7 * 11, 2048, 4 * 137, 13 * 137, 15 * 139};
  for (std::size_t n = 1; n <= 70; ++n) all.push_back(n);
  return all;
}

class Transforms : public testing::Test {
 protected:
  RecordingCore core_;
};

TEST_F(Transforms, real_forward_follows_its_definition_at_any_length) {
  for (const std::size_t n : lengths())
    expect_near(real_transform(random_values(n)), real_definition(random_values(n)));
}

TEST_F(Transforms, cosine_follows_its_definition_at_any_length) {
  for (std::size_t n : lengths()) {
    n = std::max<std::size_t>(n + 1, 3);
    expect_near(cosine(random_values(n)), cosine_definition(random_values(n)));
  }
}

TEST_F(Transforms, sine_follows_its_definition_at_any_length) {
  for (std::size_t n : lengths()) {
    n = std::max<std::size_t>(n, 3);
    expect_near(sine(random_values(n)), sine_definition(random_values(n)));
  }
}

TEST_F(Transforms, twice_in_place_gives_the_input_times_the_period) {
  for (const std::size_t n : {3U, 4U, 9U, 36U, 1000U, 4097U, 30031U}) {
    const auto period = 2.0 * (static_cast<double>(n) - 1.0);
    auto x = random_values(n);
    fftcos_(x, x);
    fftcos_(x, x);
    for (double& value : x) value /= period;
    expect_near(x, random_values(n));

    x = random_values(n);
    x.push_back(0.0);
    fftsin_(std::span(x).first(n), x);
    fftsin_(std::span(x).first(n), x);
    x.pop_back();
    for (double& value : x) value /= period + 4.0;
    expect_near(x, random_values(n));
  }
}

TEST_F(Transforms, unit_impulses_at_the_ends_become_flat_and_alternating) {
  EXPECT_THAT(cosine({1, 0, 0, 0, 0}), ElementsAre(1, 1, 1, 1, 1));
  EXPECT_THAT(cosine({0, 0, 0, 0, 0, 1}), ElementsAre(1, -1, 1, -1, 1, -1));
}

TEST_F(Transforms, short_sequences_are_refused_and_three_points_need_no_table) {
  const std::vector<double> untouched{8, 9};
  for (const std::vector<double>& x : {std::vector<double>{}, {5.0}, {5.0, 6.0}}) {
    std::vector<double> output = untouched;
    fftcos_(x, output);
    fftsin_(x, output);
    EXPECT_EQ(output, untouched);
  }
  EXPECT_THAT(core_.messages(), ElementsAre("PATHSTAT_ERROR_35", "PATHSTAT_ERROR_36", "PATHSTAT_ERROR_35",
                                            "PATHSTAT_ERROR_36", "PATHSTAT_ERROR_35", "PATHSTAT_ERROR_36"));
  core_.forget();
  EXPECT_EQ(stdout_of([&] {
              EXPECT_THAT(cosine({1, 2, 4}), ElementsAre(9, -3, 1));
            }),
            " The length of sequence has to be greater than 3\n");
  EXPECT_THAT(core_.messages(), IsEmpty());
}

TEST_F(Transforms, factors_stand_with_two_in_front_of_the_fours) {
  using Case = std::tuple<std::int64_t, std::vector<double>>;
  for (const auto& [length, factors] :
       {Case{1, {}}, Case{8, {2, 4}}, Case{2 * 4 * 4 * 3 * 5 * 7 * 7, {2, 4, 4, 3, 5, 7, 7}},
        Case{2 * 169, {2, 13, 13}}, Case{1009, {1009}}}) {
    std::vector<double> twiddles(static_cast<std::size_t>(length));
    std::vector<double> table(24);
    fft3tri_(length, twiddles, table);
    EXPECT_EQ(table[0], static_cast<double>(length));
    ASSERT_EQ(table[1], static_cast<double>(factors.size()));
    EXPECT_TRUE(std::equal(factors.begin(), factors.end(), table.begin() + 2)) << length;
  }
}

TEST_F(Transforms, radial_transform_is_the_rectangle_rule) {
  constexpr double h = 0.05;
  const auto f = random_values(60);
  auto values = f;
  fft3d_(values, h);
  double moment = 0.0;
  for (std::size_t i = 1; i <= f.size(); ++i) moment += static_cast<double>(i * i) * f[i - 1];
  EXPECT_NEAR(values[0], 2.0 * h * h * h * moment, 1e-12);
  for (std::size_t i = 2; i <= f.size(); ++i) {
    const double k = static_cast<double>(i - 1) * pi / (60 * h);
    double integral = 0.0;
    for (std::size_t j = 1; j < f.size(); ++j) {
      const double r = static_cast<double>(j) * h;
      integral += r * f[j - 1] * std::sin(k * r) * h;
    }
    EXPECT_NEAR(values[i - 1], 4.0 * pi / k * integral, 1e-11) << i;
  }
}

}  // namespace
}  // namespace pathstat
