#include "trajectory/archive_adapter.h"

#include "desk/model/coordinate_file.h"
#include "scratch_folder.h"
#include "testing.h"
#include "trajectory/front_end_fixture.h"

namespace pathstat {
namespace {

constexpr double degrees = std::numbers::pi / 180;

auto near(const Doubles& numbers, double tolerance = 1e-9) { return Pointwise(DoubleNear(tolerance), numbers); }

std::string numbers(const Doubles& values) {
  std::string text;
  for (const double value : values) text += " " + std::to_string(value);
  return text;
}

/// A trajectory of an archive, asked with room enough unless a test says otherwise.
class ArchiveTrajectory : public FrontEnd {
 protected:
  std::int32_t open(const std::string& text, std::int32_t mode = 1) {
    return FrontEnd::open(folder.write("run.arc", text), mode);
  }
  Doubles doubles(std::int32_t key, std::size_t capacity = 100, std::int32_t expected = 0) {
    auto answer = FrontEnd::doubles(key, capacity);
    EXPECT_EQ(answer.status, expected) << key;
    if (answer.status == 0) answer.values.resize(static_cast<std::size_t>(answer.count));
    return answer.values;
  }
  Integers integers(std::int32_t key, std::int32_t expected = 0) {
    auto answer = FrontEnd::integers(key, 100);
    EXPECT_EQ(answer.status, expected) << key;
    answer.values.resize(answer.status == 0 ? static_cast<std::size_t>(answer.count) : 0);
    return answer.values;
  }
  bool logical(std::int32_t key) { return logicals(key).values[0]; }
  /// The model of the archive's own first frame.
  std::int32_t own_model(const std::string& text) {
    auto imported = desk::read_coordinate_file(folder.write("run.car", text));
    EXPECT_THAT(imported.problem, IsEmpty());
    return core.model.add_model(std::move(imported.models.front()));
  }

  ScratchFolder folder;
};

const std::string title = "frame                                                           ";  // 64 characters
const std::string cluster = "a cluster\n" + title +
                            " -1.5\nd\nC1 1 2 3 R 1 c C 0.5\nO1 2 3 4.5 R 1 o O -0.5\nend\nend\n" + title +
                            " -2.5\nd\nC1 0 0 0 R 1 c C 0.25\nO1 0 0 1 R 1 o O -0.25\nend\nend\n";

TEST_F(ArchiveTrajectory, gives_its_values_as_they_become_known) {
  const auto model = own_model(cluster);
  ASSERT_EQ(open(cluster), 0);
  EXPECT_EQ(handle_, 1);
  EXPECT_EQ(arctrj_c_.arc_title, "a cluster");
  using Single = std::tuple<std::int32_t, std::int32_t>;
  const Single cases[] = {{200000, 5}, {200001, 1}, {200004, 0}, {200019, 0}, {200140, -1}, {200141, -1},
                          {200142, 0}, {200153, 2}, {200157, 0}, {200164, 2}, {200165, 2},  {200166, 0}};
  for (const auto& [key, value] : cases) {
    EXPECT_THAT(integers(key), ElementsAre(value)) << key;
  }
  for (const std::int32_t key : {200083, 200135, 200152, 200155, 200156, 200159, 200167, 200168}) {
    integers(key, trajectory_status::not_attached);
  }
  for (const std::int32_t key : {200018, 200145, 200177, 1}) integers(key, trajectory_status::no_such_key);
  for (const std::int32_t key : {100005, 100008, 100054}) EXPECT_FALSE(logical(key)) << key;
  EXPECT_THAT(doubles(400049), ElementsAre(0)) << "no frame is read yet";
  for (const std::int32_t key : {200169, 200170, 400173}) doubles(key, 100, trajectory_status::no_such_key);

  ASSERT_EQ(read(2), 0);
  EXPECT_THAT(integers(200019), ElementsAre(2));
  EXPECT_THAT(doubles(400049), ElementsAre(-2.5));
  EXPECT_THAT(doubles(200169), ElementsAre(0, 0, 0, 0, 0, 1));
  EXPECT_THAT(doubles(400173), ElementsAre(0.25, -0.25));
  for (const std::int32_t key : {200160, 200161, 400100}) doubles(key, 100, trajectory_status::not_attached);
  for (const std::int32_t key : {400078, 400105, 400149}) doubles(key, 100, trajectory_status::not_periodic);
  for (const std::int32_t key : {400058, 400064}) doubles(key, 100, trajectory_status::not_three_dimensional);
  doubles(400151, 100, trajectory_status::not_two_dimensional);
  for (const std::int32_t key : {200162, 200163, 200171, 200172, 400017, 400020, 400025, 400176}) {
    doubles(key, 100, trajectory_status::no_such_key);
  }

  ASSERT_EQ(attach({model}), 0);
  for (const std::int32_t key : {200160, 200161, 200169, 200170}) {
    EXPECT_THAT(doubles(key), ElementsAre(0, 0, 0, 0, 0, 1)) << key;
    EXPECT_THAT(doubles(key, 4, trajectory_status::too_small), ElementsAre(0, 0, 0, 0)) << "what fits is filled";
  }
  EXPECT_THAT(doubles(400100), ElementsAre(0.25, -0.25));
  for (const std::int32_t key : {200083, 200155, 200156}) EXPECT_THAT(integers(key), ElementsAre(2)) << key;
  for (const std::int32_t key : {200152, 200159, 200167, 200168}) EXPECT_THAT(integers(key), ElementsAre(1, 2)) << key;
  EXPECT_THAT(integers(200135), ElementsAre(1));
  EXPECT_THAT(doubles(1, 0), IsEmpty()) << "without capacity there is nothing to do";

  EXPECT_EQ(read(3), trajectory_status::end_of_file);
  doubles(200169, 100, trajectory_status::no_such_key);
  ASSERT_EQ(read(1), 0);
  EXPECT_THAT(doubles(200169), ElementsAre(1, 2, 3, 2, 3, 4.5));
}

TEST_F(ArchiveTrajectory, gives_the_same_values_as_floats) {
  ASSERT_EQ(open(cluster), 0);
  ASSERT_EQ(read(1), 0);
  std::array<float, 4> values{};
  std::int32_t count = 0;
  EXPECT_EQ(status_of(trj_rvalue_, handle_, 200169, values, count), trajectory_status::too_small);
  EXPECT_EQ(count, 6);
  EXPECT_THAT(values, ElementsAre(1, 2, 3, 2));
  EXPECT_EQ(status_of(trj_rvalue_, handle_, 400049, values, count), 0);
  EXPECT_EQ(count, 1);
  EXPECT_THAT(values, ElementsAre(-1.5, 2, 3, 2));
  EXPECT_EQ(status_of(trj_rvalue_, handle_, 400020, values, count), trajectory_status::no_such_key);
}

TEST_F(ArchiveTrajectory, refuses_what_it_cannot_open_or_attach) {
  EXPECT_EQ(open(cluster, 2), 50002);
  EXPECT_EQ(FrontEnd::open("/none/run.arc"), 50012);
  EXPECT_EQ(open("t\nHELIX\n"), 50013);
  EXPECT_EQ(open("t\nPBC=4\n"), 50023);
  EXPECT_THAT(core.messages, ElementsAre("PATHSTAT_ERROR_106", "PATHSTAT_ERROR_107 \"/none/run.arc\"",
                                         "PATHSTAT_ERROR_110", "PATHSTAT_ERROR_119"));
  core.messages.clear();
  EXPECT_EQ(open("t\n"), 50021);
  EXPECT_EQ(open(""), 50022);
  EXPECT_EQ(handle_, 0);
  EXPECT_EQ(arctrj_i_.arc_unit, 0) << "the unit is free again";
  EXPECT_EQ(read(1), 50003);
  doubles(400049, 1, 50005);

  const auto model = own_model(cluster);
  const auto crystal =
      own_model("t\nPBC=ON\nf\nd\nPBC 8 9 7 90 90 90\nC 1 2 3 R 1 c C 0\nO 2 2 3 R 1 o O 0\nend\nend\n");
  const auto smaller = own_model("t\nf\nd\nC 1 2 3 R 1 c C 0\nend\nend\n");
  ASSERT_EQ(open(cluster), 0);
  EXPECT_EQ(attach({}), 50015);
  EXPECT_THAT(core.messages, IsEmpty());
  EXPECT_EQ(attach({model, crystal}), 50015);
  EXPECT_EQ(attach({crystal}), 50015);
  EXPECT_EQ(attach({smaller}), 50015);
  EXPECT_THAT(core.messages, ElementsAre("PATHSTAT_ERROR_111", "PATHSTAT_ERROR_112", "PATHSTAT_ERROR_112"));
  integers(200152, 50014);
  EXPECT_EQ(attach({model}), 0);
  EXPECT_EQ(attach({model}), 0) << "once more";
  EXPECT_THAT(integers(200152), ElementsAre(1, 2));
}

/// Atoms at the ends of the cell vectors, as the file has them, come to the ends of the vectors that are delivered.
TEST_F(ArchiveTrajectory, turns_a_crystal_as_models_lie) {
  const double a = 10, b = 12, c = 14, alpha = 80 * degrees, beta = 95 * degrees, gamma = 100 * degrees;
  const double c_y = c * (std::cos(alpha) - std::cos(beta) * std::cos(gamma)) / std::sin(gamma);
  const double c_z = std::sqrt(c * c - std::pow(c * std::cos(beta), 2) - c_y * c_y);
  const std::string text = "t\nPBC=ON\nf\nd\nPBC 10 12 14 80 95 100 (P1)\nC1" + numbers({a, 0, 0}) + " R 1 c C 0\nC2" +
                           numbers({b * std::cos(gamma), b * std::sin(gamma), 0}) + " R 1 c C 0\nC3" +
                           numbers({c * std::cos(beta), c_y, c_z}) + " R 1 c C 0\nend\nend\n";
  const auto model = own_model(text);
  ASSERT_EQ(open(text), 0);
  ASSERT_EQ(attach({model}), 0);
  ASSERT_EQ(read(1), 0);
  EXPECT_TRUE(logical(100005));
  EXPECT_THAT(integers(200142), ElementsAre(100));
  const auto cell = doubles(400105, 9);
  doubles(400105, 8, trajectory_status::too_small);
  EXPECT_THAT(cell, near({cell[0], cell[1], cell[2], 0, b * std::sin(alpha), b * std::cos(alpha), 0, 0, c}));
  EXPECT_NEAR(cell[2], a * std::cos(beta), 1e-9);
  EXPECT_NEAR(std::hypot(cell[0], cell[1], cell[2]), a, 1e-9);
  EXPECT_NEAR(cell[1] * cell[4] + cell[2] * cell[5], a * b * std::cos(gamma), 1e-9);
  EXPECT_THAT(doubles(200160), near(cell, 2e-6));
  EXPECT_THAT(doubles(400078), near({cell[0], cell[4], cell[8], cell[5], cell[2], cell[1]}));
  EXPECT_THAT(doubles(400149), near({a, b, c, alpha, beta, gamma}));
  EXPECT_THAT(doubles(400058), near({a * b * std::sin(gamma) * c_z}));
  EXPECT_EQ(doubles(400064), doubles(400058));
  doubles(400151, 1, trajectory_status::not_two_dimensional);
}

TEST_F(ArchiveTrajectory, turns_a_slab_with_its_first_vector_onto_z) {
  const double b = 8, c = 9, alpha = 60 * degrees;
  const std::string text = "t\nPBC=2\nf\nd\nPBC 8 9 60\nC1 8 0 0 R 1 c C 0\nC2" +
                           numbers({c * std::cos(alpha), c * std::sin(alpha), 0}) +
                           " R 1 c C 0\nC3 0 0 3 R 1 c C 0\nend\nend\n";
  const auto model = own_model(text);
  ASSERT_EQ(open(text), 0);
  ASSERT_EQ(attach({model}), 0);
  ASSERT_EQ(read(1), 0);
  EXPECT_THAT(integers(200142), ElementsAre(101));
  EXPECT_THAT(integers(200004), ElementsAre(2));
  const double y = c * std::sin(alpha), z = c * std::cos(alpha);
  EXPECT_THAT(doubles(400105), near({1, 0, 0, 0, y, z, 0, 0, b}));
  EXPECT_THAT(doubles(400078), near({1, y, b, z, 0, 0}));
  EXPECT_THAT(doubles(400149), near({1, c, b, alpha, 90 * degrees, 90 * degrees}));
  EXPECT_THAT(doubles(400151), near({b * c * std::sin(alpha)}));
  doubles(400058, 1, trajectory_status::not_three_dimensional);
  EXPECT_THAT(doubles(200160), near({0, 0, b, 0, y, z, -3, 0, 0}, 2e-6));
}

/// A monoclinic crystal of four operators: x y z; -x y+1/2 -z+1/2; -x -y -z; x -y+1/2 z+1/2.
class SymmetricArchive : public ArchiveTrajectory {
 protected:
  static constexpr double beta = 100 * degrees;
  static Doubles in_file(const Doubles& f, double a, double b, double c) {
    return {f[0] * a + f[2] * c * std::cos(beta), f[1] * b, f[2] * c * std::sin(beta)};
  }
  static Doubles in_model(const Doubles& f, double a, double b, double c) {
    return {f[0] * a * std::sin(beta), f[1] * b, f[0] * a * std::cos(beta) + f[2] * c};
  }
  static std::string frame(double a, double b, double c, const std::string& charge) {
    return "f\nd\nPBC " + numbers({a, b, c}) + " 90 100 90\nC1" + numbers(in_file({0.1, 0.2, 0.3}, a, b, c)) +
           " R 1 c C " + charge + "\nC2" + numbers(in_file({0.4, 0.05, 0.6}, a, b, c)) + " R 1 c C -0.5\nend\nend\n";
  }
  std::int32_t symmetric_model() {
    const auto vectors = [](const Doubles& v) { return "(" + numbers(v) + ")"; };
    const std::string rows =
        "(1 Model crystal\n (A I PeriodicType 100)\n (A V Cell (" + vectors(in_model({1, 0, 0}, 10, 12, 14)) +
        vectors({0, 12, 0}) + vectors({0, 0, 14}) + "))\n (A I AtomId (5 3))\n (A C Element (C C))\n (A V XYZ (" +
        vectors(in_model({0.1, 0.2, 0.3}, 10, 12, 14)) + vectors(in_model({0.4, 0.05, 0.6}, 10, 12, 14)) +
        "))\n (A D Rotation (1 0 0 0 1 0 0 0 1 -1 0 0 0 1 0 0 0 -1 -1 0 0 0 -1 0 0 0 -1 "
        "1 0 0 0 -1 0 0 0 1))\n (A D Translation (0 0 0 0 0.5 0.5 0 0 0 0 0.5 0.5))\n)\n";
    return core.import_text(rows);
  }
  /// Positions of all atoms: the stored ones, then the images of each.
  static Doubles expected(double a, double b, double c) {
    Doubles all;
    for (const Doubles& f : {Doubles{0.1, 0.2, 0.3},
                             {0.4, 0.05, 0.6},  //
                             {-0.1, 0.7, 0.2},
                             {-0.1, -0.2, -0.3},
                             {0.1, 0.3, 0.8},  //
                             {-0.4, 0.55, -0.1},
                             {-0.4, -0.05, -0.6},
                             {0.4, 0.45, 1.1}}) {
      for (const double x : in_model(f, a, b, c)) all.push_back(x);
    }
    return all;
  }
};

TEST_F(SymmetricArchive, has_the_images_that_the_operators_make) {
  const auto model = symmetric_model();
  ASSERT_EQ(open("t\nPBC=ON\n" + frame(10, 12, 14, "0.5") + frame(11, 12.5, 15, "0.25")), 0);
  ASSERT_EQ(attach({model}), 0);
  EXPECT_THAT(integers(200135), ElementsAre(4));
  for (const std::int32_t key : {200083, 200155, 200156}) EXPECT_THAT(integers(key), ElementsAre(8)) << key;
  EXPECT_THAT(integers(200164), ElementsAre(2));
  EXPECT_THAT(integers(200167), ElementsAre(5, 3));
  EXPECT_THAT(integers(200152), SizeIs(8));
  EXPECT_EQ(integers(200159), integers(200152));
  ASSERT_EQ(read(1), 0);
  EXPECT_THAT(doubles(200160), near(expected(10, 12, 14), 2e-6));
  EXPECT_THAT(doubles(400100), ElementsAre(0.5, -0.5, 0.5, 0.5, 0.5, -0.5, -0.5, -0.5));
  ASSERT_EQ(read(2), 0);
  EXPECT_THAT(doubles(200161), near(expected(11, 12.5, 15), 2e-6)) << "in the cell of the frame";
  EXPECT_THAT(doubles(200169), SizeIs(6));
  EXPECT_THAT(doubles(400173), ElementsAre(0.25, -0.5));
  EXPECT_THAT(doubles(400100), ElementsAre(0.25, -0.5, 0.25, 0.25, 0.25, -0.5, -0.5, -0.5));
}

/// The Core's own images of the model are those of the first frame, atom by atom.
TEST_F(SymmetricArchive, lists_the_identifiers_with_the_positions) {
  const auto model = symmetric_model();
  ASSERT_EQ(open("t\nPBC=ON\n" + frame(10, 12, 14, "0.5")), 0);
  ASSERT_EQ(attach({model}), 0);
  ASSERT_EQ(read(1), 0);
  const auto ids = integers(200152);
  const auto xyz = doubles(200160);
  const auto& data = core.model.model(model)->data;
  ASSERT_EQ(ids.size(), data.atoms());
  for (std::size_t k = 0; k < ids.size(); ++k) {
    const auto place = std::ranges::find(data.ids, ids[k]) - data.ids.begin();
    const auto& x = data.positions[static_cast<std::size_t>(place)];
    EXPECT_THAT(x, near({xyz[3 * k], xyz[3 * k + 1], xyz[3 * k + 2]}, 2e-6)) << ids[k];
  }
}

}  // namespace
}  // namespace pathstat
