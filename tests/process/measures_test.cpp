#include "desk/model/marked_measure.h"
#include "process/desk_with_process.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

constexpr double degree = std::numbers::pi / 180;

/// A frame whose atoms have numbers from 1, and may be moved along the third cell vector.
struct Frame : ExampleFrame {
  using ExampleFrame::ExampleFrame;
  Vector3 operator()(std::size_t atom, double steps = 0) const {
    return {xyz[3 * atom - 3], xyz[3 * atom - 2], xyz[3 * atom - 1] + steps * edge};
  }
};

Vector3 minus(const Vector3& p, const Vector3& q) { return {p[0] - q[0], p[1] - q[1], p[2] - q[2]}; }
Vector3 cross(const Vector3& u, const Vector3& v) {
  return {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
}
double dot(const Vector3& u, const Vector3& v) { return u[0] * v[0] + u[1] * v[1] + u[2] * v[2]; }
double length(const Vector3& v) { return std::sqrt(dot(v, v)); }
double angle(const Vector3& u, const Vector3& v) { return std::atan2(length(cross(u, v)), dot(u, v)) / degree; }
double torsion(const Vector3& p1, const Vector3& p2, const Vector3& p3, const Vector3& p4) {
  const Vector3 b1 = minus(p2, p1), b2 = minus(p3, p2), b3 = minus(p4, p3);
  return std::atan2(length(b2) * dot(b1, cross(b2, b3)), dot(cross(b1, b2), cross(b2, b3))) / degree;
}

class MeasuresOfARun : public testing::Test {
 protected:
  /// Marks a measure as @measure does.
  std::string mark(const std::string& words) {
    auto& current = *desk.model.model(desk.model.current_model());
    auto [monitor, problem] = marked_measure(current.data, words_of(words));
    return problem.empty() && !desk.model.add_monitor(current, std::move(monitor)) ? "no room" : problem;
  }
  void unmark_all() {
    auto& current = *desk.model.model(desk.model.current_model());
    while (!current.monitor_ids.empty()) desk.model.remove_monitor(current, 0);
  }
  static std::vector<std::string> words_of(const std::string& text) {
    std::vector<std::string> words;
    std::istringstream stream(text);
    for (std::string word; stream >> word;) words.push_back(word);
    EXPECT_TRUE(is_measure(words)) << text;
    return words;
  }
  std::vector<std::string> labels(std::size_t graph) const {
    std::vector<std::string> names;
    for (const auto set : desk.graphs.graph(desk.graphs.shown_graphs().at(graph))->sets) {
      auto name = desk.graphs.data_set(set)->label;
      names.push_back(name.erase(name.find_last_not_of(' ') + 1));
    }
    return names;
  }
  ScratchSeries series(const char* extension) {
    return read_scratch(desk.work() / ("PathStat_prf." + std::string(extension)));
  }
  DeskWithProcess desk;
};

TEST_F(MeasuresOfARun, are_those_of_the_definitions_in_every_frame) {
  ASSERT_EQ(desk.load_example("butane"), 0);
  EXPECT_THAT(mark("angle C2:1 3 C4:1"), IsEmpty());
  EXPECT_THAT(mark("plane 5 1 6 12 4 13"), IsEmpty());
  EXPECT_THAT(mark("inversion jilk 1 2 5 6"), IsEmpty());
  EXPECT_THAT(mark("torsion 1 2 3 4"), IsEmpty());
  ASSERT_EQ(desk.run_lines({"LAST_FRAME_NO 120",
                            "SELECT_PROPERTIES Distance Angle Torsion Plane Inversion \"Distance Vector\"", "PROFILE"}),
            0);
  const auto distances = series("dst"), angles = series("ang"), torsions = series("tors"), planes = series("plan"),
             inversions = series("inv"), vectors = series("dst_v");
  EXPECT_EQ(angles.values_per_point, 2);
  EXPECT_EQ(vectors.values_per_point, 3);
  ASSERT_EQ(torsions.points, 120);
  for (std::int32_t k = 0; k < torsions.points; ++k) {
    const Frame at("butane", torsions.numbers[k]);
    const auto point = static_cast<std::size_t>(k);
    const Vector3 across = minus(at(4), at(1));
    EXPECT_NEAR(distances.values[point][0], length(across), 1e-12);
    EXPECT_THAT(vectors.values[point], Pointwise(DoubleNear(1e-12), across));
    EXPECT_NEAR(angles.values[point][0], angle(minus(at(1), at(2)), minus(at(3), at(2))), 1e-9);
    EXPECT_NEAR(angles.values[point][1], angle(minus(at(2), at(3)), minus(at(4), at(3))), 1e-9);
    const double about_bond = torsion(at(1), at(2), at(3), at(4));
    EXPECT_NEAR(torsions.values[point][0], about_bond, 1e-5) << "steep near 180 degrees";
    EXPECT_EQ(torsions.values[point][0], torsions.values[point][1]);
    const Vector3 one = cross(minus(at(6), at(1)), minus(at(5), at(1)));
    const Vector3 other = cross(minus(at(13), at(4)), minus(at(12), at(4)));
    EXPECT_NEAR(planes.values[point][0], angle(one, other), 1e-6);
    // About atom 1: from the plane of 6 and 2 to that of 6 and 5, as a torsion about the bond to 6.
    EXPECT_NEAR(inversions.values[point][0], torsion(at(2), at(1), at(6), at(5)), 1e-8);
  }
  EXPECT_THAT(desk.graph_titles(), ElementsAre("Distance", "Angle", "Torsion", "Plane", "Inversion",
                                               "Distance Vector x", "Distance Vector y", "Distance Vector z"));
  EXPECT_THAT(labels(1), ElementsAre("1-2-3", "2-3-4"));
  EXPECT_THAT(labels(2), ElementsAre("1-2-3-4 1", "1-2-3-4 2")) << "marked twice";
  EXPECT_THAT(labels(4), ElementsAre("JILK:1-2-5-6"));
}

TEST_F(MeasuresOfARun, cross_the_faces_of_the_cell) {
  ASSERT_EQ(desk.load_example("water-npt"), 0);
  unmark_all();
  EXPECT_THAT(mark("distance 1 4"), IsEmpty());
  EXPECT_THAT(mark("distance 1 4-c"), IsEmpty());
  EXPECT_THAT(mark("distance 1+2c 4+0"), IsEmpty());
  ASSERT_EQ(desk.run_lines({"SELECT_PROPERTIES Distance", "PROFILE"}), 0);
  const auto found = series("dst");
  ASSERT_EQ(found.values_per_point, 3);
  const Frame first("water-npt", 1);
  const Vector3 between = minus(first(4), first(1));
  double nearest = 0;
  for (const double d : between) nearest += std::pow(d - first.edge * std::round(d / first.edge), 2);
  EXPECT_NEAR(found.values[0][0], std::sqrt(nearest), 1e-10);
  for (std::int32_t k = 0; k < found.points; ++k) {
    const Frame at("water-npt", found.numbers[static_cast<std::size_t>(k)]);
    const auto& values = found.values[static_cast<std::size_t>(k)];
    EXPECT_NEAR(values[1], length(minus(at(4, -1), at(1))), 1e-10) << "the cell varies";
    EXPECT_NEAR(values[2], length(minus(at(4), at(1, 2))), 1e-10);
  }
}

TEST_F(MeasuresOfARun, are_read_again_only_when_they_have_changed) {
  ASSERT_EQ(desk.load_example("butane"), 0);
  ASSERT_EQ(desk.run_lines({"LAST_FRAME_NO 5", "SELECT_PROPERTIES Distance \"Distance Vector\"", "PROFILE"}), 0);
  const auto made = [&](const char* extension) {
    return std::filesystem::last_write_time(desk.work() / ("PathStat_prf." + std::string(extension)));
  };
  const auto old = made("dst") - std::chrono::hours(1);
  const auto age = [&] {
    for (const auto* extension : {"dst", "dst_v"})
      std::filesystem::last_write_time(desk.work() / ("PathStat_prf." + std::string(extension)), old);
  };
  age();
  ASSERT_EQ(desk.run("RUNNING_AVERAGE"), 0);
  EXPECT_EQ(made("dst"), old);
  EXPECT_EQ(made("dst_v"), old);
  EXPECT_THAT(mark("distance 2 3"), IsEmpty());
  // Only the distances are asked for: the vectors, of the same monitors, must not be taken for current later.
  ASSERT_EQ(desk.run_lines({"SELECT_PROPERTIES Distance", "PROFILE"}), 0);
  EXPECT_EQ(series("dst").values_per_point, 2);
  ASSERT_EQ(desk.run_lines({"SELECT_PROPERTIES \"Distance Vector\"", "PROFILE"}), 0);
  EXPECT_EQ(series("dst_v").values_per_point, 6);
  desk.model.remove_monitor(*desk.model.model(desk.model.current_model()), 0);
  ASSERT_EQ(desk.run("PROFILE"), 0);
  EXPECT_EQ(series("dst_v").values_per_point, 3);
  const Frame first("butane", 1);
  EXPECT_THAT(series("dst_v").values[0], Pointwise(DoubleNear(1e-12), minus(first(3), first(2))));
}

TEST_F(MeasuresOfARun, of_a_kind_share_a_histogram) {
  ASSERT_EQ(desk.load_example("butane"), 0);
  EXPECT_THAT(mark("angle 2 3 4"), IsEmpty());
  ASSERT_EQ(desk.run_lines({"SELECT_PROPERTIES Angle", "DISTRIBUTION"}), 0);
  double sum = 0;
  for (const auto& point : desk.data_set(0).points) sum += point.y;
  EXPECT_NEAR(sum, 1.0, 1e-5) << "both angles in one histogram";
  EXPECT_EQ(desk.graphs.graph(desk.graphs.shown_graphs().front())->sets.size(), 1u);
}

TEST_F(MeasuresOfARun, of_selected_models_are_their_present_values) {
  ASSERT_EQ(desk.load_example("butane"), 0);
  ASSERT_EQ(desk.load_example("water-npt"), 0);
  unmark_all();
  EXPECT_THAT(mark("distance 1 2"), IsEmpty());
  EXPECT_THAT(mark("distance 1 3"), IsEmpty());
  ASSERT_EQ(desk.model.select_models(std::vector<std::string>{"all"}), "");
  ASSERT_EQ(desk.run_lines({"ANALYSIS_INPUT_SOURCE \"SELECTED MODELS\"", "SELECT_PROPERTIES Distance Torsion"}), 0);
  EXPECT_THAT(desk.told("PROFILE"), Pair(0, Contains("PATHSTAT_ERROR_80"))) << "only as a distribution";
  ASSERT_EQ(desk.run("DISTRIBUTION"), 0);
  const auto distances = series("dst"), torsions = series("tors");
  EXPECT_EQ(distances.kind, 10005);
  ASSERT_EQ(distances.points, 2);
  EXPECT_EQ(distances.values_per_point, 2) << "as many as the model with most";
  EXPECT_EQ(torsions.points, 1) << "water has none";
  const auto models = desk.model.models();
  const auto& water = models.back()->data.positions;
  EXPECT_NEAR(distances.values[1][0], length(minus(water[1], water[0])), 1e-12);
  EXPECT_NEAR(distances.values[1][1], length(minus(water[2], water[0])), 1e-12);
}

}  // namespace
}  // namespace pathstat::desk
