#include "correlation/power_spectrum.h"

#include "extraction/scratch_format.h"
#include "recording_core.h"
#include "services/work_directory.h"
#include "testing.h"

namespace pathstat {
namespace {

class PowerSpectrum : public WorkDirectory {
 protected:
  static void keep(const std::vector<double>& values, std::int32_t columns, double spacing) {
    const auto points = values.size() / static_cast<std::size_t>(columns);
    const std::vector<std::int32_t> numbers(points);
    std::vector<double> lags(points);
    for (std::size_t i = 0; i < points; ++i) lags[i] = static_cast<double>(i) * spacing;
    const ScratchHead head{static_cast<std::int32_t>(points), columns, kind_frames, 0};
    EXPECT_EQ(write_scratch("PathStat.vac", {head, numbers, lags, values, 0, columns, {}, {}, {}}), RecordStatus::ok);
  }
  std::int32_t transform(double max_time) { return status_of(run_pwr_, max_time); }
  /// Points of the last drawing: x, y, x, y, ...
  std::vector<double> drawn() const {
    std::istringstream call(core_.calls("kvP_DAT_WriteXY").back());
    std::vector<double> numbers;
    for (std::string word; std::getline(call, word, '|');) numbers.push_back(word[0] == 'k' ? 0.0 : std::stod(word));
    EXPECT_EQ(numbers.size(), 4 + 2 * static_cast<std::size_t>(numbers[3]));
    return {numbers.begin() + 4, numbers.end()};
  }

  RecordingCore core_;
};

/// The square of the cosine sum over m points, filled up with zeros, times the spacing.
double plain_spectrum(const std::vector<double>& values, std::size_t m, std::size_t k, double spacing) {
  double sum = 0.0;
  for (std::size_t i = 0; i < std::min(m, values.size()); ++i) {
    const double weight = i == 0 || i == m - 1 ? 1.0 : 2.0;
    sum += weight * values[i] * std::cos(std::numbers::pi * static_cast<double>(i * k) / static_cast<double>(m - 1));
  }
  return std::pow(sum * spacing, 2);
}

TEST_F(PowerSpectrum, is_the_square_of_the_cosine_sum_cut_or_filled_up_with_zeros) {
  const std::vector<double> values{5, 3, 1, -1, -0.5, 0.25, 0.5};
  for (const double max_time : {0.11, 0.07, 0.045}) {
    keep(values, 1, 0.01);
    EXPECT_EQ(transform(max_time + 1e-9), 0);
    const auto m = static_cast<std::size_t>(max_time * 100 + 1e-6);
    const double step = 0.5 / (static_cast<double>(m) * 0.01 * 0.03);
    const auto points = drawn();
    ASSERT_EQ(points.size(), 2 * std::min(m, static_cast<std::size_t>(7000 / step) + 1));
    for (std::size_t k = 0; k < points.size() / 2; ++k) {
      EXPECT_NEAR(points[2 * k], static_cast<double>(k) * step, 1e-6 * points[2 * k]);
      const double wanted = plain_spectrum(values, m, k, 0.01);
      EXPECT_NEAR(points[2 * k + 1], wanted, 1e-6 * wanted + 1e-12) << k << " of " << m;
    }
  }
}

TEST_F(PowerSpectrum, ends_at_seven_thousand_wavenumbers_and_shows_five_thousand) {
  keep(std::vector<double>(20, 1.0), 1, 0.0005);  // 20 points, 1666.67 apart
  EXPECT_EQ(transform(0.0100001), 0);
  EXPECT_EQ(drawn().size(), 2 * 5U);
  EXPECT_THAT(core_.calls("kvP_GRF_SetMethodXY"),
              ElementsAre("kvP_GRF_SetMethodXY|1|1|2056|1666.66663|5000|0|0|1|Power Spectrum A^4/ps^2|1/cm|7|2|"));
}

TEST_F(PowerSpectrum, refuses_lengths_and_points_that_make_no_sense) {
  EXPECT_EQ(transform(1.0), 1);
  write("PathStat.vac", "");
  EXPECT_EQ(transform(1.0), 1);
  keep({1}, 1, 1.0);
  EXPECT_EQ(transform(1.0), 1);
  keep({1, 2, 3}, 1, 0.0);
  EXPECT_EQ(transform(1.0), 1);
  keep({1, 2, 3}, 1, 1.0);
  EXPECT_EQ(transform(1.9), 1);
  EXPECT_EQ(transform(131074.0), 1);
  EXPECT_THAT(core_.messages(),
              ElementsAre("./PathStat.vac PATHSTAT_ERROR_70", "./PathStat.vac PATHSTAT_ERROR_69", "PATHSTAT_ERROR_49",
                          "PATHSTAT_ERROR_51", "PATHSTAT_ERROR_49", "PATHSTAT_ERROR_52"));
  EXPECT_THAT(core_.calls("kvP"), IsEmpty());
}

}  // namespace
}  // namespace pathstat
