#include "desk/summary/run_summary.h"

#include <nlohmann/json.hpp>

#include "desk/report/html_report.h"
#include "desk/summary/neighbour_density.h"
#include "support/record_file.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

struct ErrorCase {
  std::optional<double> value, error;
  const char* text;
};

TEST(Summary, writes_a_value_as_far_as_its_error_goes) {
  constexpr double nan = NAN;
  for (const auto& [value, error, text] :
       {ErrorCase{-515.85949, 0.0196, "-515.859 ± 0.020"}, ErrorCase{92.678, 1.2345, "92.7 ± 1.2"},
        ErrorCase{1234.5, 34.0, "1234 ± 34"}, ErrorCase{12345.6, 345.0, "12350 ± 350"},
        ErrorCase{3.669e-5, 1.14e-6, "(3.67 ± 0.11) × 10⁻⁵"}, ErrorCase{-2.5e12, 3e9, "(-2.5000 ± 0.0030) × 10¹²"},
        ErrorCase{1e-9, 0.25, "0.00 ± 0.25"}, ErrorCase{0.02110724, 0.0015, "0.0211 ± 0.0015"},
        ErrorCase{2.5, 0.0, "2.5"}, ErrorCase{2.5, {}, "2.5"}, ErrorCase{{}, {}, "–"}, ErrorCase{nan, 1.0, "–"},
        ErrorCase{2.5, nan, "2.5"}}) {
    EXPECT_EQ(with_error({"mean", value, error, ""}), text);
  }
}

/// Graphs of each kind as the process names them.
class RunSummary : public testing::Test {
 protected:
  using NamedPoints = std::pair<const char*, const std::vector<PlotPoint>*>;
  void add(const std::string& heading, const std::string& x, const std::string& y,
           const std::vector<NamedPoints>& curves, GraphFacts facts = {}) {
    Figure figure;
    figure.title = figure.heading = heading;
    figure.x_text = x;
    figure.y_text = y;
    for (const auto& [label, points] : curves) {
      figure.curves.emplace_back();
      figure.curves.back().label = label;
      figure.curves.back().points = points;
    }
    figure.facts = std::move(facts);
    figures_.push_back(std::move(figure));
  }
  static const SummaryValue& value(const SummaryItem& item, std::string_view quantity) {
    return *std::ranges::find(item.values, quantity, &SummaryValue::quantity);
  }

  std::vector<Figure> figures_;
};

TEST_F(RunSummary, tells_means_fits_pairs_and_spectra_and_nothing_of_other_graphs) {
  const std::vector<PlotPoint> series{{0, 1}, {0.5F, 3}}, turning{{0, 179}, {1, -179}, {2, 178}},
      msd{{0, 0}, {1, 7}, {2, 13}, {3, 19}}, line{{0, 1}, {1, 7}, {2, 13}, {3, 19}},
      g{{0.5F, 0}, {1.5F, 4}, {2.5F, 0}, {3.5F, 1}}, spectrum{{0, 0}, {10, 1}, {20, 4}, {30, 1}, {40, 0}};
  add("Profile of Total Energy", "Time (ps)", "Energy (kcal/mol)", {{"", &series}});
  add("Profile of Torsion", "Time (ps)", "Torsion (°)", {{"Torsion 1", &turning}});
  add("Running Average of Total Energy", "Time (ps)", "Energy (kcal/mol)", {{"", &series}});
  add("MSD/LineFit", "Time (ps)", "Å² per atom", {{"MSD", &msd}, {"FIT", &line}},
      {.of = "all atoms", .fitted = FittedWindow{1, 3, {0.6}, 10}, .density = 0});
  add("MSD/LineFit XX", "Time (ps)", "", {{"MSD", &msd}, {"FIT", &line}});
  add("Total RDF for all atoms", "r (Å)", "g(r)", {{"", &g}}, {.of = "O and H", .fitted = {}, .density = 0.01});
  add("Power Spectrum", "Wavenumber (cm⁻¹)", "", {{"", &spectrum}});

  const auto tables = summarise(figures_);
  ASSERT_EQ(tables.size(), 4u);
  const auto& means = tables[0].items;
  ASSERT_EQ(means.size(), 2u);
  EXPECT_EQ(means[0].name, "Total Energy");
  EXPECT_EQ(value(means[0], "mean").value, 2);
  EXPECT_EQ(value(means[0], "mean").error, 1);
  EXPECT_EQ(value(means[0], "mean").unit, "kcal/mol");
  EXPECT_THAT(means[0].hint, HasSubstr("too short"));
  EXPECT_EQ(means[1].name, "Torsion 1");
  EXPECT_THAT(means[1].hint, HasSubstr("goes round"));

  const auto& fits = tables[1].items;
  EXPECT_EQ(fits[0].name, "D of all atoms");
  EXPECT_DOUBLE_EQ(value(fits[0], "diffusion coefficient").value.value(), 1);
  EXPECT_DOUBLE_EQ(value(fits[0], "diffusion coefficient").error.value(), 0.1);
  EXPECT_DOUBLE_EQ(value(fits[0], "in cm²/s").value.value(), 1e-4);
  EXPECT_DOUBLE_EQ(value(fits[0], "in cm²/s").error.value(), 1e-5);
  EXPECT_DOUBLE_EQ(value(fits[0], "slope").value.value(), 6);
  EXPECT_DOUBLE_EQ(value(fits[0], "intercept").value.value(), 1);
  EXPECT_DOUBLE_EQ(value(fits[0], "R²").value.value(), 1);
  EXPECT_EQ(fits[0].hint, "the error is rough: the run is 3.3 times as long as the window reaches");
  EXPECT_DOUBLE_EQ(value(fits[1], "diffusion coefficient").value.value(), 3);
  EXPECT_THAT(fits[1].name, StartsWith("Dxx"));

  const auto& pairs = tables[2].items[0];
  EXPECT_EQ(pairs.name, "g(r) of O and H");
  EXPECT_DOUBLE_EQ(value(pairs, "first peak").value.value(), 1.5);
  EXPECT_NEAR(value(pairs, "coordination number").value.value(), 0.01 * 4 * M_PI * 2.25 * 4, 1e-6);
  EXPECT_DOUBLE_EQ(value(tables[3].items[0], "highest peak").value.value(), 20);

  const auto lines = summary_lines(tables);
  EXPECT_EQ(lines.size(), 6u);
  EXPECT_THAT(lines[0], HasSubstr("Total Energy: mean 2.0 ± 1.0 kcal/mol   (the run is too short"));
  EXPECT_THAT(lines[4], HasSubstr("first peak 1.5 Å, coordination number 1.13"));
}

TEST_F(RunSummary, says_of_a_fit_that_motion_is_not_diffusive) {
  std::vector<PlotPoint> msd, line;
  for (int k = 0; k <= 20; ++k) {
    const auto time = static_cast<float>(k);
    msd.push_back({time, std::pow(time, 0.6F)});
    line.push_back({time, 1 + 0.3F * time});
  }
  struct Case {
    double slope_error;
    const char* hint;
  };
  for (const auto& [slope_error, hint] :
       {Case{0.01, "not diffusive in the window but subdiffusive: the displacement grows as time to the power 0.60"},
        Case{0.1, ""}}) {
    figures_.clear();
    add("MSD/LineFit", "Time (ps)", "", {{"MSD", &msd}, {"FIT", &line}},
        {.of = "", .fitted = FittedWindow{2, 10, {slope_error}, 100}, .density = 0});
    EXPECT_EQ(summarise(figures_)[0].items[0].hint, hint);
  }
}

TEST_F(RunSummary, is_the_same_as_table_and_as_objects) {
  const std::vector<PlotPoint> series{{0, 1}};
  add("Profile of A\t\"B\"", "Time (ps)", "x (K)", {{"", &series}});
  const auto tables = summarise(figures_);
  EXPECT_THAT(summary_tsv(tables),
              HasSubstr("series\tA \"B\"\tmean\t1\t\tK\tthe run is too short: it has one value\n"));
  const auto json = nlohmann::json::parse(summary_json(tables));
  EXPECT_EQ(json["series"][0]["name"], "A\t\"B\"");
  EXPECT_EQ(json["series"][0]["mean"]["value"], 1);
  EXPECT_TRUE(json["series"][0]["mean"]["error"].is_null());
  const auto page = html_report({RunRecord{}, {}, {}, {}, false, tables});
  EXPECT_THAT(page, AllOf(HasSubstr("What the run says"), HasSubstr("<td>1 K</td>")));
}

TEST_F(RunSummary, of_a_run_without_numbers_is_empty) {
  EXPECT_TRUE(summarise(figures_).empty());
  EXPECT_EQ(summary_json({}), "{}\n");
}

TEST(NeighbourDensity, is_read_from_the_last_bytes_if_they_are_such) {
  RecordBytes tail;
  tail.i32(24).f64(0.02).f64(0.5).i32(1).i32(3).i32(24);
  const std::string_view file(reinterpret_cast<const char*>(tail.bytes().data()), tail.bytes().size());
  EXPECT_EQ(neighbour_density("", 6, 2), 0);
  EXPECT_DOUBLE_EQ(neighbour_density(file, 6, 2), 0.06);
  EXPECT_EQ(neighbour_density(file, 6, 0), 0);
  EXPECT_EQ(neighbour_density(file.substr(0, 20), 6, 2), 0);
}

}  // namespace
}  // namespace pathstat::desk
