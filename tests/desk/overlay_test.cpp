#include "desk/graphs/overlay.h"

#include "desk/graphs/figure.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

using Names = std::vector<std::string>;

/// Adds a graph with one curve for each label, of the points (0, k) and (1, k).
std::int32_t add_graph(GraphStore& store, const std::string& name, const std::string& x, const std::string& y,
                       const Names& labels = {""}) {
  Graph layout;
  layout.title = name;
  layout.x_label = x;
  layout.y_label = y;
  for (const auto& label : labels) {
    const auto set = store.write(name + label, 102);
    store.set_data_method(set, 4, curve_style, label);
    const auto y_value = static_cast<float>(layout.sets.size());
    store.write_points(set, false, std::vector<float>{0, y_value, 1, y_value});
    layout.sets.push_back(set);
  }
  const auto graph = store.write(name, 101);
  store.set_graph_method(graph, layout);
  store.set_graph_list(store.write("viewer", 100), std::vector<std::int32_t>{graph});
  return graph;
}

class Overlay : public testing::Test {
 protected:
  Overlay() {
    add_graph(store_, "Profile of Kinetic Energy", "Time/ps", "Energy/kcal");
    add_graph(store_, "Profile of Potential Energy", "Time/ps", "Potential/kcal", {"bond", "angle"});
    add_graph(store_, "Profile of Pressure", "Time/ps", "Pressure/GPa");
    add_graph(store_, "RDF", "r/(Angstrom)", "g(r)");
  }
  std::string overlay(const std::string& name, const Names& graphs) { return make_overlay(store_, name, graphs); }
  std::vector<Figure> figures() { return figures_of(store_); }

  GraphStore store_;
};

TEST_F(Overlay, is_a_graph_of_the_curves_of_others) {
  ASSERT_THAT(overlay("Energies", {"profile of kinetic energy", "Profile-of-Potential-Energy"}), IsEmpty());
  const auto all = figures();
  ASSERT_THAT(all, SizeIs(5));
  const auto& figure = all.back();
  EXPECT_EQ(figure.heading, "Energies");
  EXPECT_EQ(figure.name, "Energies");
  EXPECT_EQ(figure.x_text, "Time (ps)");
  EXPECT_EQ(figure.y_text, "Energy, Potential (kcal/mol)");
  ASSERT_THAT(figure.curves, SizeIs(3));
  EXPECT_EQ(figure.curves[0].label, "Profile of Kinetic Energy");
  EXPECT_EQ(figure.curves[2].label, "Profile of Potential Energy: angle");
  EXPECT_THAT(*figure.curves[2].points, ElementsAre(PlotPoint{0, 1}, PlotPoint{1, 1}));
  EXPECT_NE(figure.curves[0].colour, figure.curves[1].colour);
  EXPECT_THAT(points_table(figure),
              AllOf(HasSubstr("Time (ps)\tProfile of Kinetic Energy\t"), HasSubstr("\n1\t0\t0\t1\n")));
}

TEST_F(Overlay, keeps_the_points_of_its_time_and_takes_the_latest_of_equal_titles) {
  ASSERT_THAT(overlay("Both", {"RDF", "RDF"}), IsEmpty());
  const auto again = add_graph(store_, "RDF", "r/(Angstrom)", "g(r)", {"O", "H"});
  store_.write_points(store_.graph(again)->sets[0], true, std::vector<float>{2, 5});
  ASSERT_THAT(overlay("Both", {"RDF"}), IsEmpty());
  ASSERT_THAT(overlay("Both", {"RDF (2)"}), IsEmpty());
  const auto all = figures();
  ASSERT_THAT(all, SizeIs(8));
  EXPECT_THAT(*all[4].curves[0].points, SizeIs(2));
  EXPECT_EQ(all[6].heading, "Both (2)");
  EXPECT_THAT(*all[6].curves[0].points, SizeIs(3));
  EXPECT_THAT(all[7].curves, SizeIs(2));
}

TEST_F(Overlay, says_what_does_not_go_together_and_makes_nothing) {
  EXPECT_THAT(overlay("A", {"RDF", "Profile of Presure"}), HasSubstr("did you mean \"Profile of Pressure\"?"));
  EXPECT_THAT(overlay("A", {"nothing like it"}), AllOf(HasSubstr("there are:"), HasSubstr("\n    RDF")));
  EXPECT_THAT(overlay("A", {"Profile of Pressure", "Profile of Kinetic Energy"}),
              AllOf(HasSubstr("Pressure (GPa)"), HasSubstr("Energy (kcal/mol)")));
  EXPECT_THAT(overlay("A", {"RDF", "Profile of Pressure"}), HasSubstr("Time (ps)"));
  EXPECT_THAT(overlay("rdf", {"RDF"}), HasSubstr("there is a graph RDF already"));
  EXPECT_THAT(figures(), SizeIs(4));
  GraphStore none;
  EXPECT_THAT(make_overlay(none, "A", Names{"RDF"}), HasSubstr("none has been drawn yet"));
}

}  // namespace
}  // namespace pathstat::desk
