#include "desk/graphs/figure.h"

#include "desk/graphs/axis_text.h"
#include "desk/graphs/graph_kind.h"
#include "desk/graphs/pictures.h"
#include "desk/link/work_directory.h"
#include "surroundings.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

struct NameCase {
  const char* title;
  const char* name;
};

TEST(FileName, keeps_letters_and_digits_and_is_safe_everywhere) {
  for (const auto& [title, name] :
       {NameCase{"Profile of Temperature", "Profile-of-Temperature"},
        NameCase{"Total VAC ( A^2/ps^2 )", "Total-VAC-A-2-ps-2"}, NameCase{"../../etc/passwd", "etc-passwd"},
        NameCase{"  ", "graph"}, NameCase{"", "graph"}, NameCase{"a\nb\tc", "a-b-c"}, NameCase{"S(k)", "S-k"},
        NameCase{"Å", "graph"}}) {
    EXPECT_EQ(file_name_of(title), name) << title;
  }
  EXPECT_LE(file_name_of(std::string(500, 'x')).size(), 80u);
}

std::string without_comments(std::string table) {
  while (table.starts_with('#')) table.erase(0, table.find('\n') + 1);
  return table;
}

/// A store with one shown graph of a name for each list of curves.
class Figures : public testing::Test {
 protected:
  std::int32_t add_set(const std::string& label, std::vector<float> xy, std::int32_t style = curve_style) {
    const auto set = store_.write(label, 102);
    store_.set_data_method(set, 3, style, label);
    store_.write_points(set, false, xy);
    return set;
  }
  void add_graph(const std::string& name, std::vector<std::int32_t> sets, Graph layout = {}) {
    layout.sets = std::move(sets);
    shown_.push_back(store_.write(name, 101));
    EXPECT_EQ(store_.set_graph_method(shown_.back(), layout), 0);
    EXPECT_EQ(store_.set_graph_list(store_.write("v", 100), shown_), 0);
  }

  GraphStore store_;
  std::vector<std::int32_t> shown_;
};

TEST_F(Figures, have_names_unlike_each_other_also_where_case_does_not_count) {
  add_graph("S(k)", {});
  add_graph("S(k)", {});
  add_graph("s k", {});
  add_graph("S k 2", {});
  const auto figures = figures_of(store_);
  ASSERT_EQ(figures.size(), 4u);
  EXPECT_EQ(figures[0].name, "S-k");
  EXPECT_EQ(figures[1].name, "S-k-2");
  EXPECT_EQ(figures[2].name, "s-k-3");
  EXPECT_EQ(figures[3].name, "S-k-2-2");
  EXPECT_EQ(figures[1].heading, "S(k) (2)");
}

TEST_F(Figures, tell_a_remark_behind_the_title_and_are_drawn_again_for_it) {
  add_graph("Profile", {add_set("a", {1, 2})});
  const auto before = store_.revision(shown_[0]);
  EXPECT_EQ(store_.set_remark(shown_[0], "interrupted after 57 of 200 frames"), 0);
  EXPECT_EQ(figures_of(store_)[0].heading, "Profile (interrupted after 57 of 200 frames)");
  EXPECT_EQ(figures_of(store_)[0].name, "Profile");
  EXPECT_GT(store_.revision(shown_[0]), before);
  EXPECT_NE(store_.set_remark(1000, ""), 0);
}

TEST_F(Figures, leave_out_graphs_that_no_viewer_showed) {
  store_.write("never shown", 101);
  EXPECT_TRUE(figures_of(store_).empty());
}

TEST_F(Figures, take_the_y_text_from_the_title_where_the_labels_code_says_so) {
  Graph layout;
  layout.labels = title_on_y_axis;
  layout.title = "g(r)";
  layout.y_label = "RDF";
  add_graph("Total RDF for all atoms", {}, layout);
  EXPECT_EQ(figures_of(store_)[0].y_text, "g(r)");
}

TEST_F(Figures, write_one_column_of_x_where_the_curves_share_it) {
  Graph layout;
  layout.x_label = "Time (ps)";
  layout.y_label = "Energy/kcal";
  add_graph("one", {add_set("total", {0, 1.5f, 0.1f, -2})}, layout);
  add_graph("two", {add_set("a", {0, 1, 1, 2}), add_set("b\tc", {0, 3, 1, 4})}, layout);
  const auto figures = figures_of(store_);
  EXPECT_EQ(points_table(figures[0]),
            "# one\n# graph: one\n# column 1: Time (ps), ps\n# column 2: Energy (kcal/mol), kcal/mol\n"
            "Time (ps)\tEnergy (kcal/mol)\n0\t1.5\n0.1\t-2\n");
  EXPECT_EQ(without_comments(points_table(figures[1])), "Time (ps)\ta\tb c\n0\t1\t3\n1\t2\t4\n");
}

TEST_F(Figures, write_pairs_of_columns_where_the_curves_differ_in_x_and_blank_the_missing_cells) {
  Graph layout;
  layout.x_label = "x";
  add_graph("g", {add_set("a", {0, 1}), add_set("b", {5, 6, 7, 8})}, layout);
  EXPECT_EQ(without_comments(points_table(figures_of(store_)[0])), "x\ta\tx\tb\n0\t1\t5\t6\n\t\t7\t8\n");
}

TEST_F(Figures, write_numbers_that_read_back_as_they_were) {
  const float third = 1.0f / 3.0f;
  add_graph("g", {add_set("a", {16777216.0f, third, 1e-30f, std::nextafter(1.0f, 2.0f)})});
  const auto table = without_comments(points_table(figures_of(store_)[0]));
  float x = 0, y = 0, x2 = 0, y2 = 0;
  ASSERT_EQ(std::sscanf(table.c_str() + table.find('\n'), "%g %g %g %g", &x, &y, &x2, &y2), 4);
  EXPECT_EQ(x, 16777216.0f);
  EXPECT_EQ(y, third);
  EXPECT_EQ(x2, 1e-30f);
  EXPECT_EQ(y2, std::nextafter(1.0f, 2.0f));
}

TEST_F(Figures, draw_histograms_as_steps_and_leave_out_what_has_no_finite_point) {
  add_graph("h", {add_set("hs", {0, 0, 1, 0.5f, 2, 0}, histogram_style)});
  add_graph("empty", {add_set("nothing", {0, NAN, 1, INFINITY})});
  const auto script = picture_script(figures_of(store_), {.svg = true, .png = false});
  EXPECT_THAT(script, AllOf(HasSubstr("with histeps"), HasSubstr("set output 'h.svg'"), Not(HasSubstr("empty.svg")),
                            Not(HasSubstr("pngcairo"))));
}

TEST_F(Figures, keep_texts_of_the_process_inside_their_quotes) {
  add_graph("it's\n\"; system 'rm'", {add_set("a", {0, 1, 2, 3})});
  EXPECT_THAT(picture_script(figures_of(store_), {.svg = true, .png = false}),
              HasSubstr(R"(set label 1 'it'."'".'s "; system '."'".'rm'."'".'' at graph 0)"));
}

TEST_F(Figures, thin_out_long_curves_without_losing_their_extremes) {
  std::vector<float> xy;
  for (int k = 0; k < 100000; ++k) {
    xy.push_back(static_cast<float>(k));
    xy.push_back(k == 50123 ? 1000.0f : 0.0f);
  }
  add_graph("long", {add_set("a", xy)});
  const auto script = picture_script(figures_of(store_), {.svg = true, .png = false});
  EXPECT_THAT(script, HasSubstr("50123 1000\n"));
  EXPECT_LT(std::count(script.begin(), script.end(), '\n'), 6100);
}

TEST_F(Figures, put_the_legend_where_there_is_room_and_shade_what_is_pointed_out) {
  const auto legend_of = [&](const std::string& name, std::vector<float> xy) {
    add_graph(name, {add_set("a", xy), add_set("b", xy)});
    auto figures = figures_of(store_);
    figures.back().guides = {{0.5, 1.5, "window"}, {1, 1, "mean"}};
    return picture_script({&figures.back(), 1}, {.svg = true});
  };
  const auto rising = legend_of("rises", {0, 0, 1, 1, 2, 2, 3, 3});
  EXPECT_THAT(rising, AllOf(HasSubstr("set key inside left top"),
                            HasSubstr("rectangle from first 0.5, graph 0 to first 1.5, graph 1 behind"),
                            HasSubstr("arrow from first 1, graph 0 to first 1, graph 1 nohead"),
                            HasSubstr("title 'window'"), HasSubstr("title 'mean'")));
  EXPECT_THAT(legend_of("falls", {0, 3, 1, 2, 2, 1, 3, 0}), HasSubstr("set key inside right top"));
  const auto full = legend_of("zigzag", {0, 0, 1, 3, 2, 0, 3, 3, 4, 0, 5, 3, 6, 0, 7, 3});
  EXPECT_THAT(full, HasSubstr("set key inside right top"));
  EXPECT_THAT(full, HasSubstr("set offsets graph 0, graph 0, graph 0.3, graph 0\n")) << "room above the curves";
}

TEST_F(Figures, of_chosen_atoms_are_named_for_them) {
  GraphFacts facts;
  facts.of = "O and H, frames 1 to 300";
  facts.command = "RDF";
  facts.settings = "RDF_CUTOFF 9; RDF_TYPE O H";
  facts.trajectory = "water.trj";
  Graph layout;
  layout.x_label = "r (Angstrom)";
  layout.y_label = "g(r)";
  add_graph("Total RDF for selected elements", {add_set("", {0, 1})}, layout);
  add_graph("Total RDF for selected elements", {add_set("", {0, 1})}, layout);
  for (const auto graph : shown_) EXPECT_EQ(store_.set_facts(graph, facts), 0);
  const auto figures = figures_of(store_);
  EXPECT_EQ(figures[0].name, "rdf-O-H");
  EXPECT_EQ(figures[1].name, "rdf-O-H-2");
  EXPECT_EQ(figures[0].heading, "Radial distribution of O and H");
  EXPECT_EQ(figures[1].heading, "Radial distribution of O and H (2)");
  EXPECT_EQ(points_table(figures[0]),
            "# Radial distribution of O and H\n# graph: Total RDF for selected elements\n# command: RDF\n"
            "# settings: RDF_CUTOFF 9; RDF_TYPE O H\n# atoms: O and H, frames 1 to 300\n# trajectory: water.trj\n"
            "# column 1: r (Å), Å\n# column 2: g(r), without a unit\nr (Å)\tg(r)\n0\t1\n");
}

TEST(GraphText, tells_what_a_graph_holds) {
  struct Case {
    const char *title, *atoms, *file, *heading;
  };
  for (const auto& [title, atoms, file, heading] :
       {Case{"Total MSD", "all atoms", "msd", "Mean square displacement of all atoms"},
        Case{"MSD component XZ", "all atoms", "msd-XZ", "Mean square displacement of all atoms, XZ"},
        Case{"MSD/LineFit", "the 8 selected atoms", "diffusion-selected", "Diffusion of the 8 selected atoms"},
        Case{"MSD/LineFit XX", "the 8 selected atoms (element O)", "diffusion-element-O-XX",
             "Diffusion of the 8 selected atoms (element O), XX"},
        Case{"VAC component YY( A^2/ps^2 )", "all atoms", "vac-YY", "Velocity autocorrelation of all atoms, YY"},
        Case{"Components of S(k) for all atoms", "all atoms", "structure-factor-parts",
             "Structure factor within and between molecules of all atoms"},
        Case{"Total RDF for force field types", "../c and o*", "rdf-c-o", "Radial distribution of ../c and o*"},
        Case{"Running coordination number for selected elements", "O and H", "coordination-O-H",
             "Running coordination number of H around O"},
        Case{"Total MSD", "", "", ""}, Case{"Profile of Energy", "all atoms", "", ""}}) {
    const auto text = graph_text(title, atoms);
    EXPECT_EQ(text.file, file);
    EXPECT_EQ(text.heading, heading);
  }
}

TEST_F(Figures, leave_curves_of_angles_open_across_half_a_turn) {
  const auto set = add_set("a", {0, 179, 1, -179, 2, -90, 3, 90, 4, 91});
  for (const auto* axis : {"Torsion/Degrees", "Distance/A"}) {
    Graph layout;
    layout.y_label = axis;
    add_graph("t", {set}, layout);
  }
  const auto script = picture_script(figures_of(store_), {.svg = true, .png = false});
  EXPECT_THAT(script, AllOf(HasSubstr("0 179\n\n1 -179\n2 -90\n3 90\n4 91\n"), HasSubstr("0 179\n1 -179\n")));
}

TEST_F(Figures, draw_the_point_that_is_highlighted) {
  const auto set = add_set("a", {0, 1, 7, 8});
  const std::int32_t first[] = {1}, second[] = {2};
  store_.mark("PathStatMarkers", set, 200, first);
  add_graph("g", {set});
  EXPECT_FALSE(figures_of(store_)[0].curves[0].highlighted);
  store_.mark("PathStatMarkers", set, highlight_mark, second);
  EXPECT_EQ(figures_of(store_)[0].curves[0].highlighted, (PlotPoint{7, 8}));
}

TEST_F(Figures, come_out_of_gnuplot_as_pictures_of_both_kinds) {
  std::string error;
  const PrivateDirectory directory(error);
  const auto& folder = directory.path();
  add_graph("Curves of 'A' & \"B\"", {add_set("'H5''", {0, 2, 2, 1}), add_set("a {x}]]>", {0, 1, 1, NAN, 2, 3}),
                                      add_set("b_1", {0, 2, 1, 2, 2, 2})});
  add_graph("Steps", {add_set("hs", {0, 0, 1, 1, 2, 0}, histogram_style)});
  add_graph("One value", {add_set("hs", {5, 0, 5, 1, 5, 0}, histogram_style)});
  add_graph("One point", {add_set("p", {5, 1})});
  add_graph("Nothing", {add_set("n", {})});
  const auto figures = figures_of(store_);
  EXPECT_THAT(draw_pictures(figures, {.svg = true, .png = true, .pdf = true}, folder), IsEmpty());
  for (const auto* name : {"Curves-of-A-B", "Steps", "One-value", "One-point"}) {
    for (const auto* kind : {".svg", ".png", ".pdf"}) {
      EXPECT_GT(std::filesystem::file_size(folder / (std::string(name) + kind)), 2000u) << name << kind;
    }
  }
  EXPECT_FALSE(std::filesystem::exists(folder / "Nothing.svg"));
  std::ifstream file(folder / "Curves-of-A-B.svg");
  const std::string svg{std::istreambuf_iterator<char>(file), {}};
  EXPECT_THAT(svg, HasSubstr("Curves of 'A' &amp; \"B\""));
  EXPECT_THAT(svg, HasSubstr(">'H5''<"));
  EXPECT_THAT(svg, HasSubstr("a {x}]] >")) << "texts are shown as they are, but for what ends a section of XML";
}

TEST_F(Figures, tell_which_pictures_are_missing_and_keep_no_cut_one) {
  std::string error;
  const PrivateDirectory directory(error);
  add_graph("One", {add_set("a", {0, 1, 1, 2})});
  add_graph("Two", {add_set("b", {0, 1, 1, 2})});
  const auto figures = figures_of(store_);
  // Files may be large enough for the input of gnuplot alone.
  const auto told = [&] {
    const FileSizeLimit limit(4096);
    return draw_pictures(figures, {.svg = true, .png = false}, directory.path());
  }();
  EXPECT_THAT(told, HasSubstr("not drawn: One.svg, Two.svg: "));
  EXPECT_FALSE(std::filesystem::exists(directory.path() / "One.svg"));
}

struct AxisCase {
  const char* label;
  const char* title;
  const char* text;
};

TEST(AxisText, names_the_quantity_and_sets_its_unit) {
  for (const auto& [label, title, text] : {AxisCase{"Energy/kcal", "Total Energy", "Energy (kcal/mol)"},
                                           AxisCase{"Time/ps", "", "Time (ps)"},
                                           AxisCase{"Time (ps)", "", "Time (ps)"},
                                           AxisCase{"Density/(g/cm^3)", "Density", "Density (g/cm³)"},
                                           AxisCase{"Volume/A^3", "Volume", "Volume (Å³)"},
                                           AxisCase{"Length/A", "Cell lengths", "Length (Å)"},
                                           AxisCase{"Angle/degrees", "Cell angles", "Angle (°)"},
                                           AxisCase{"1/GPa", "Kt", "Kt (1/GPa)"},
                                           AxisCase{"Cal/(Mol K)", "Cp", "Cp (cal/(mol K))"},
                                           AxisCase{"Debyes", "Dipole", "Dipole (D)"},
                                           AxisCase{"A*A per atom", "Total MSD", "Total MSD (Å² per atom)"},
                                           AxisCase{"A*A per atom", "", "Å² per atom"},
                                           AxisCase{"", "S(k)", "S(k)"},
                                           AxisCase{"", "Total DAC", "Total DAC (D²)"},
                                           AxisCase{"", "DAC Power Spectrum XX", "DAC Power Spectrum XX (D⁴ ps²)"},
                                           AxisCase{"NONE", "Fraction", "Fraction"},
                                           AxisCase{"k (1/A)", "", "k (1/Å)"},
                                           AxisCase{"1/cm", "Power", "Wavenumber (cm⁻¹)"},
                                           AxisCase{"x Distance/A", "", "x Distance (Å)"},
                                           AxisCase{"Frequency", "Energy", "Frequency"},
                                           AxisCase{"m/s", "omega", "omega (m/s)"},
                                           AxisCase{"", "Power Spectrum A^4/ps^2", "Power Spectrum Å⁴/ps²"}}) {
    EXPECT_EQ(axis_text(label, title), text);
  }
}

}  // namespace
}  // namespace pathstat::desk
