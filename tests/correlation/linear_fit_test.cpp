#include "correlation/linear_fit.h"

#include "extraction/scratch_format.h"
#include "recording_core.h"
#include "services/work_directory.h"
#include "testing.h"

namespace pathstat {
namespace {

class LinearFit : public WorkDirectory {
 protected:
  /// Keeps a displacement of one column or seven over these lags.
  static void keep(const std::vector<double>& lags, std::int32_t columns,
                   const std::function<double(double lag, std::int32_t column)>& value) {
    const std::vector<std::int32_t> numbers(lags.size());
    std::vector<double> values;
    for (const double lag : lags) {
      for (std::int32_t column = 0; column < columns; ++column) values.push_back(value(lag, column));
    }
    const ScratchHead head{static_cast<std::int32_t>(lags.size()), columns, kind_frames, 0};
    EXPECT_EQ(write_scratch("PathStat.msd", {head, numbers, lags, values, 0, columns, {}, {}, {}}), RecordStatus::ok);
  }
  static std::vector<double> even_lags(std::size_t count, double spacing) {
    std::vector<double> lags(count);
    for (std::size_t i = 0; i < count; ++i) lags[i] = static_cast<double>(i) * spacing;
    return lags;
  }
  /// @return what was printed
  std::string fit(double min_time, double max_time, std::int32_t wanted_status = 0) {
    std::int32_t status = -1;
    testing::internal::CaptureStdout();
    run_linefit_(min_time, max_time, status);
    std::fflush(stdout);
    EXPECT_EQ(status, wanted_status);
    return testing::internal::GetCapturedStdout();
  }

  RecordingCore core_;
};

TEST_F(LinearFit, finds_the_line_of_any_offset) {
  for (const std::int32_t offset : {0, 7}) {
    std::vector<double> values(9);
    for (std::size_t j = 0; j < values.size(); ++j) values[j] = 4.0 - 2.5 * (offset + static_cast<double>(j + 1));
    double slope = 0.0, intercept = 0.0;
    linefit_(values, slope, intercept, offset);
    EXPECT_NEAR(slope, -2.5, 1e-13);
    EXPECT_NEAR(intercept, 4.0, 1e-12);
  }
  // Through 1, 0, 2 at 1, 2, 3 the least squares are the line of slope 1/2 through the mean (2, 1).
  double slope = 0.0, intercept = 0.0;
  linefit_(std::array{1.0, 0.0, 2.0}, slope, intercept, 0);
  EXPECT_NEAR(slope, 0.5, 1e-15);
  EXPECT_NEAR(intercept, 0.0, 1e-15);
}

TEST_F(LinearFit, prints_and_draws_the_diffusion_of_the_total) {
  keep(even_lags(5, 0.5), 1, [](double lag, std::int32_t) { return 6.0 * 0.25 * lag + 1.0; });
  EXPECT_EQ(fit(0.0, 2.0),
            "\n D  =  0.2500E-04 cm*cm/(second) per atom\n D  =  0.2500E+00 A*A/(pico second) per atom\n");
  EXPECT_THAT(core_.calls("kvP_DAT_WriteXY"), ElementsAre("kvP_DAT_WriteXY|2|801|5|0|1|0.5|1.75|1|2.5|1.5|3.25|2|4",
                                                          "kvP_DAT_WriteXY|3|801|5|0|1|0.5|1.75|1|2.5|1.5|3.25|2|4"));
}

TEST_F(LinearFit, halves_the_slopes_of_components_and_prints_them_without_a_graph) {
  core_.answers["kvP_HAN_Write"] = [](const RecordingCore::Inputs&) { return RecordingCore::Answer{{0, 1}, {}, {}}; };
  keep(even_lags(4, 2.0), 7, [](double lag, std::int32_t column) { return (column - 2) * lag; });
  std::string wanted;
  const std::array names{"Dxx", "Dyy", "Dzz", "Dxy", "Dxz", "Dyz", "D  "};
  const std::array cm{" -0.1000E-03", " -0.5000E-04", "  0.0000E+00", "  0.5000E-04",
                      "  0.1000E-03", "  0.1500E-03", "  0.6667E-04"};
  const std::array ps{" -0.1000E+01", " -0.5000E+00", "  0.0000E+00", "  0.5000E+00",
                      "  0.1000E+01", "  0.1500E+01", "  0.6667E+00"};
  for (std::size_t k = 0; k < names.size(); ++k) {
    wanted += std::string("\n ") + names[k] + "=" + cm[k] + " cm*cm/(second) per atom\n";
    wanted += std::string(" ") + names[k] + "=" + ps[k] + " A*A/(pico second) per atom\n";
  }
  EXPECT_EQ(fit(-1.0, 100.0), wanted);
  EXPECT_EQ(core_.messages().size(), 7U);
  EXPECT_THAT(core_.calls("kvP_DAT"), IsEmpty());
}

TEST_F(LinearFit, fits_the_points_between_the_limits) {
  // A line of slope 1 up to lag 4, and of slope 3 from there on.
  keep(even_lags(9, 1.0), 1, [](double lag, std::int32_t) { return lag < 4 ? lag : 3 * lag - 8; });
  struct Range {
    double min_time, max_time;
    const char* diffusion;
  };
  for (const auto& [min_time, max_time, diffusion] :
       {Range{0, 4, "0.1667E+00"}, Range{0.9, 3.5, "0.1667E+00"}, Range{4, 8, "0.5000E+00"},
        Range{4.9, 6.1, "0.5000E+00"}, Range{6, 8, "0.5000E+00"}}) {
    EXPECT_THAT(fit(min_time, max_time), HasSubstr(diffusion)) << min_time << ' ' << max_time;
  }
  fit(2.0, 3.0, 1);
  EXPECT_THAT(core_.messages(), ElementsAre("PATHSTAT_ERROR_32"));
}

TEST_F(LinearFit, says_what_is_wrong_with_the_points) {
  fit(0, 1, 1);
  write("PathStat.msd", "not a series");
  fit(0, 1, 1);
  const auto flat = [](double, std::int32_t) { return 1.0; };
  for (const auto& lags : {std::vector<double>{0}, {0, 1, 2.001}, {0, 0, 0}, {2, 1, 0}, {0, 1}}) {
    keep(lags, 1, flat);
    fit(0, 10, 1);
  }
  keep({0, 1, 2}, 3, flat);
  fit(0, 10, 1);
  EXPECT_THAT(core_.messages(),
              ElementsAre("./PathStat.msd PATHSTAT_ERROR_70", "./PathStat.msd PATHSTAT_ERROR_69", "PATHSTAT_ERROR_29",
                          "PATHSTAT_ERROR_30", "PATHSTAT_ERROR_31", "PATHSTAT_ERROR_31", "PATHSTAT_ERROR_32",
                          "./PathStat.msd PATHSTAT_ERROR_69"));
}

}  // namespace
}  // namespace pathstat
