#include "desk/summary/figure_notes.h"

#include "desk/summary/coordination_graph.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

TEST(MomentsOf, a_histogram_are_those_of_what_was_counted) {
  std::vector<PlotPoint> bins;
  for (int k = -40; k <= 40; ++k) {
    // The share of a normal distribution of mean 3 and deviation 2 that is nearest to the lower end of a bin.
    const double low = (0.5 * k - 0.25) / (2 * std::sqrt(2.0)), high = (0.5 * k + 0.25) / (2 * std::sqrt(2.0));
    bins.push_back({static_cast<float>(3.25 + 0.5 * k), static_cast<float>(0.5 * (std::erf(high) - std::erf(low)))});
  }
  const auto moments = moments_of(bins);
  EXPECT_NEAR(moments.value().mean, 3, 1e-5);
  EXPECT_NEAR(moments.value().deviation, 2, 1e-4);
  EXPECT_EQ(moments_of(std::vector<PlotPoint>{{5, 0}, {5, 1}, {5, 0}}).value().deviation, 0);
  EXPECT_FALSE(moments_of(std::vector<PlotPoint>{{5, 0}, {6, 0}}));
  EXPECT_FALSE(moments_of({}));
}

/// A figure with one curve.
Figure figure_of(const std::string& title, const std::vector<PlotPoint>& points, bool histogram) {
  Figure figure;
  figure.title = title;
  figure.x_text = "Temperature (K)";
  figure.curves.resize(1);
  figure.curves[0].points = &points;
  figure.curves[0].histogram = histogram;
  return figure;
}

TEST(FigureNotes, point_out_means_windows_and_minima) {
  const std::vector<PlotPoint> steps{{299, 0}, {300, 0.5F}, {301, 0.5F}, {302, 0}}, line{{0, 0}, {1, 6}, {2, 12}},
      g{{0.5F, 0}, {1.5F, 4}, {2.5F, 0}, {3.5F, 1}};
  std::vector<Figure> figures{figure_of("Histogram of T", steps, true), figure_of("MSD/LineFit", line, false),
                              figure_of("Total RDF for all atoms", g, false)};
  figures[1].facts.fitted = FittedWindow{0.5, 5, {}, 0};
  figures[2].facts.of = "all atoms, frames 1 to 10";
  annotate(figures);
  ASSERT_EQ(figures[0].guides.size(), 2u);
  EXPECT_EQ(figures[0].guides[0].from, 300);
  EXPECT_EQ(figures[0].guides[0].to, 300);
  EXPECT_EQ(figures[0].guides[0].label, "mean 300 K");
  EXPECT_NEAR(figures[0].guides[1].to - figures[0].guides[1].from, 2 * std::sqrt(0.25 - 1.0 / 12), 1e-9);
  ASSERT_EQ(figures[1].guides.size(), 1u);
  EXPECT_EQ(figures[1].guides[0].label, "fitted, 0.5 to 2 ps");
  ASSERT_EQ(figures[2].guides.size(), 1u);
  EXPECT_THAT(figures[2].guides[0].label, HasSubstr("first minimum, 2.8 Å"));
  EXPECT_EQ(figures[2].note, "frames 1 to 10 · first peak 1.5 Å");
}

TEST(CoordinationGraph, is_drawn_where_the_density_is_known) {
  GraphStore store;
  const auto set = store.write("g", 102);
  store.write_points(set, false, std::vector<float>{0.5F, 0, 1.5F, 2});
  const auto graph = store.write("Total RDF for selected elements", 101);
  Graph layout;
  layout.sets = {set};
  layout.x_label = "r (Angstrom)";
  store.set_graph_method(graph, layout);
  EXPECT_EQ(add_coordination_graph(store, graph), 0);
  GraphFacts facts;
  facts.of = "O and H, frames 1 to 2";
  facts.density = 0.1;
  store.set_facts(graph, facts);
  EXPECT_EQ(add_coordination_graph(store, set), 0);
  EXPECT_NE(add_coordination_graph(store, graph), 0);
  const auto figures = figures_of(store);
  ASSERT_EQ(figures.size(), 1u);
  EXPECT_EQ(figures[0].name, "coordination-O-H");
  EXPECT_EQ(figures[0].x_text, "r (Å)");
  const auto& numbers = *figures[0].curves[0].points;
  ASSERT_EQ(numbers.size(), 2u);
  EXPECT_EQ(numbers[1].x, 2);
  EXPECT_NEAR(numbers[1].y, 0.1 * 4 * M_PI * 1.5 * 1.5 * 2, 1e-5);
}

}  // namespace
}  // namespace pathstat::desk
