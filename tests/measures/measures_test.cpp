#include "measures/measures.h"

#include "catalogue/measure_families.h"
#include "measures/measure_blocks.h"
#include "measures/measure_labels.h"
#include "recording_core.h"
#include "services/work_directory.h"
#include "structure/measure_geometry.h"
#include "support/named_memory.h"
#include "testing.h"

namespace pathstat {
namespace {

using Answer = RecordingCore::Answer;
using Ints = std::vector<std::int32_t>;

/// What the Core says of an atom; its number is its identifier less 100 for one that is in place.
struct CoreAtom {
  std::int32_t parent;
  Ints image{0, 0, 0};
};

/// A Core with atoms 101 to 108, some images of them, and monitors.
class Measures : public WorkDirectory {
 protected:
  Measures() {
    for (std::int32_t atom = 101; atom <= 108; ++atom) atoms_[atom] = {atom};
    const auto each = [this](auto values) {
      return [this, values](const RecordingCore::Inputs& inputs) {
        Answer answer;
        for (std::size_t k = 1; k < inputs.size(); ++k) {
          for (const auto value : values(std::stoi(inputs[k]))) answer.integers.push_back(value);
        }
        return answer;
      };
    };
    core_.answers["kvD_Id"] = each([this](std::int32_t id) { return Ints{atoms_.at(id).parent - 100}; });
    core_.answers["kvD_PER_PeriodicParent"] = each([this](std::int32_t id) { return Ints{atoms_.at(id).parent}; });
    core_.answers["kvD_PER_Translation"] = each([this](std::int32_t id) { return atoms_.at(id).image; });
    core_.answers["kvD_IsA"] = [this](const RecordingCore::Inputs& inputs) {
      EXPECT_EQ(inputs[0], "3");
      Answer answer;
      for (std::size_t k = 2; k < inputs.size(); ++k) answer.integers.push_back(atoms_.contains(std::stoi(inputs[k])));
      return answer;
    };
    core_.answers["kvD_MON_NumMonitors"] = [this](const RecordingCore::Inputs&) {
      return Answer{{static_cast<std::int32_t>(monitors_.size())}, {}, {}};
    };
    core_.answers["kvD_MON_MonitorList"] = [this](const RecordingCore::Inputs&) {
      Answer answer{{monitors_.begin(), monitors_.end()}, {}, {}};
      answer.integers.push_back(static_cast<std::int32_t>(monitors_.size()));
      return answer;
    };
    core_.answers["kvD_UD_AddObjectArray"] = [this](const RecordingCore::Inputs& inputs) {
      remembered_[inputs[1]].clear();
      for (std::size_t k = 3; k < inputs.size(); ++k) remembered_[inputs[1]].push_back(std::stoi(inputs[k]));
      return Answer{};
    };
    core_.answers["kvD_UD_FindObjectArray"] = [this](const RecordingCore::Inputs& inputs) {
      const Ints& kept = remembered_[inputs[1]];
      return Answer{{kept.begin(), kept.end()}, {}, {}};
    };
  }
  ~Measures() override {
    std::int32_t status = 0;
    for (const auto& family : measure_families) cleanupmeasures_(family.id, status);
    trjmeasures_i_ = {};
  }

  /// Lays the atoms of the monitors ready: first atoms, second atoms and so on.
  void answer_atoms(const char* operation, Ints atoms) {
    core_.answers[operation] = [atoms](const auto&) { return Answer{{atoms.begin(), atoms.end()}, {}, {}}; };
  }
  std::int32_t set_up(std::int32_t id, std::int32_t periodicity = 0) {
    return status_of(setupmeasures_, 1, id, static_cast<std::int32_t>(monitors_.size()), width_, periodicity, frame_);
  }
  static std::string label(std::int32_t id, std::int32_t number) {
    MeasureLabel text;
    return measure_label(id, number, text) ? text.str() : "none";
  }

  RecordingCore core_;
  std::map<std::int32_t, CoreAtom> atoms_;
  Ints monitors_{9, 7};
  std::map<std::string, Ints> remembered_;
  Ints frame_{103, 101, 102, 104, 105, 106, 107, 108};  ///< in the order of the trajectory
  std::int32_t width_ = 0;
};

/// Atom k of the frame stands at (k, 0, 0).
std::vector<double> atoms_in_a_row(std::size_t atoms) {
  std::vector<double> xyz(3 * atoms);
  for (std::size_t k = 0; k < atoms; ++k) xyz[3 * k] = static_cast<double>(k);
  return xyz;
}

constexpr Vector3 a{10, 0, 0}, b{0, 20, 0}, c{0, 0, 40};

struct ImageCase {
  std::int32_t periodicity;
  Ints told;
  Vector3 vector;  ///< from atom 103, at 0, to the image of atom 102, at (2, 0, 0)
};

TEST_F(Measures, take_images_along_the_directions_in_which_a_model_repeats) {
  monitors_ = {7};
  const ImageCase cases[] = {{3, {1, -1, 2}, {12, -20, 80}},
                             {2, {1, -1, 0}, {2, 20, -40}},
                             {1, {-1, 0, 0}, {2, 0, -40}},
                             {0, {1, 1, 1}, {2, 0, 0}}};
  for (const auto& [periodicity, told, vector] : cases) {
    atoms_[201] = {102, told};
    answer_atoms("kvD_MON_DistanceObjects", {103, 201});
    ASSERT_EQ(set_up(506, periodicity), 0);
    EXPECT_EQ(width_, 3);
    Vector3 found{};
    std::int32_t status = 7;
    EXPECT_EQ(status_of(calcdistvecmeasures_, 1, atoms_in_a_row(8), a, b, c, found), 0);
    EXPECT_EQ(found, vector) << periodicity;
    double length = 0;
    calcdistmeasures_(1, atoms_in_a_row(8), a, b, c, std::span(&length, 1), status);
    EXPECT_DOUBLE_EQ(length, dveclen_(vector)) << "the same monitors";
  }
  EXPECT_EQ(label(501, 1), "3-2") << "numbers of the atoms, in whatever cell";
}

TEST_F(Measures, follow_the_order_of_the_monitors_and_of_the_frame) {
  // In order of their identifiers, 7 then 9: angles 101-102-103 and 104-106-105 along the row, at places 1 2 0 and 3
  // 5 4.
  answer_atoms("kvD_MON_AngleObjects", {101, 104, 102, 106, 103, 105});
  ASSERT_EQ(set_up(502), 0);
  EXPECT_THAT(core_.calls("kvD_MON_AngleObjects"), ElementsAre("kvD_MON_AngleObjects|2|7|9"));
  EXPECT_EQ(label(502, 1) + " " + label(502, 2) + " " + label(502, 3), "1-2-3 4-6-5 none");
  std::vector<double> angles(2);
  auto xyz = atoms_in_a_row(8);
  xyz[3 * 5 + 1] = 1;  // atom 106
  EXPECT_EQ(status_of(calcangmeasures_, 2, xyz, a, b, c, angles), 0);
  EXPECT_DOUBLE_EQ(angles[0], 0.0);
  // From (5, 1) to (3, 0) and to (4, 0).
  EXPECT_NEAR(angles[1], degrees_per_radian * (std::atan2(1, 1) - std::atan2(1, 2)), 1e-12);
  EXPECT_EQ(status_of(calcangmeasures_, 3, xyz, a, b, c, angles), 1) << "three are not set up";
  EXPECT_EQ(status_of(calcangmeasures_, 2, std::span(xyz).first(15), a, b, c, angles), 1)
      << "atom 106 is not among five";
}

TEST_F(Measures, of_planes_take_three_atoms_of_each) {
  monitors_ = {7};
  answer_atoms("kvD_MON_PlanePlaneObjects", {51, 52});
  core_.answers["kvD_MON_PlaneObjects"] = [](const RecordingCore::Inputs& inputs) {
    return inputs[0] == "51" ? Answer{{101, 102, 103, 3}, {}, {}} : Answer{{104, 105, 106, 3}, {}, {}};
  };
  ASSERT_EQ(set_up(504), 0);
  EXPECT_EQ(label(504, 1), "1,2,3-4,5,6");
  // 103, 101, 102 in the plane z = 0, the others in one that rises by 3 on 4.
  const std::vector<double> xyz{0, 0, 0, 1, 0, 0, 0, 1, 0, 4, 0, 3, 0, 0, 0, 0, 1, 0};
  double angle = 0;
  std::int32_t status = 7;
  calcplanemeasures_(1, xyz, a, b, c, std::span(&angle, 1), status);
  // (101, 102, 103) has its normal along +z, (104, 105, 106) along (3, 0, -4), up to length.
  EXPECT_NEAR(angle, degrees_per_radian * std::acos(-0.8), 1e-10);
  core_.answers["kvD_MON_PlaneObjects"] = [](const auto&) { return Answer{{101, 102, 0, 2}, {}, {}}; };
  EXPECT_EQ(set_up(504), 1) << "a plane of two atoms";
}

TEST_F(Measures, tell_of_an_inversion_that_is_undefined_and_go_on) {
  monitors_ = {7, 8, 9};
  answer_atoms("kvD_MON_InversionType", {2, 1, 4});
  answer_atoms("kvD_MON_InversionObjects", {101, 101, 101, 102, 101, 102, 103, 104, 103, 104, 105, 104});
  ASSERT_EQ(set_up(505), 0);
  EXPECT_EQ(label(505, 1) + " " + label(505, 2) + " " + label(505, 3), "JILK:1-2-3-4 IJKL:1-1-4-5 UMBR:1-2-3-4");
  // 103 at (0, 0, 1), 101 at 0, 102 on x, 104 on y; 105 in a row with 101 and 104.
  const std::vector<double> xyz{0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 2, 0};
  std::vector<double> values(3, 5.0);
  EXPECT_EQ(status_of(calcinvmeasures_, 3, xyz, a, b, c, values), -1);
  EXPECT_NEAR(values[0], -90, 1e-12) << "from x to z against the clock about y";
  EXPECT_EQ(values[1], 0.0);
  EXPECT_NEAR(values[2], -90, 1e-12) << "the normal x × z points away from y";
  EXPECT_THAT(core_.messages(),
              ElementsAre("Inversion angle is undefined. Since we cannot define \na plane. DisplayText"));
}

TEST_F(Measures, are_refused_unless_every_atom_is_one_of_the_frame) {
  monitors_ = {7};
  answer_atoms("kvD_MON_DistanceObjects", {101, 300});
  EXPECT_EQ(set_up(501), 1) << "300 is no atom";
  atoms_[300] = {300};
  EXPECT_EQ(set_up(501, 3), 1) << "300 is not in the frame";
  answer_atoms("kvD_MON_DistanceObjects", {101, 102});
  EXPECT_EQ(set_up(501, 3), 0);
  core_.answers["kvD_MON_MonitorList"] = [](const auto&) { return Answer{{7, 0}, {}, {}}; };
  EXPECT_EQ(set_up(501), 1) << "fewer are listed than counted";
  EXPECT_EQ(set_up(507), 1);
}

TEST_F(Measures, are_extracted_afresh_when_their_monitors_have_changed) {
  const auto file = (directory_ / "series").string();
  Logical on_disk = true;
  bool do_it = false;
  std::int32_t count = 0, status = 7;
  const auto ask = [&] {
    std::ofstream(file) << "old";
    domeasures_(1, 501, file, on_disk, do_it, count, status);
    EXPECT_EQ(status, 0);
    return std::filesystem::exists(file);
  };
  answer_atoms("kvD_MON_DistanceObjects", {101, 102, 103, 104});
  EXPECT_FALSE(ask()) << "no set-up has been made";
  EXPECT_TRUE(do_it);
  ASSERT_EQ(set_up(501), 0);
  EXPECT_TRUE(ask()) << "the same monitors";
  EXPECT_FALSE(do_it);
  on_disk = false;
  ask();
  EXPECT_TRUE(do_it) << "not current";
  on_disk = true;
  monitors_ = {7, 10};
  EXPECT_FALSE(ask()) << "one has been replaced";
  EXPECT_TRUE(do_it);
  EXPECT_EQ(count, 2);
  monitors_ = {};
  EXPECT_FALSE(ask()) << "all are gone";
  EXPECT_FALSE(do_it);
  EXPECT_FALSE(on_disk);
  EXPECT_THAT(core_.messages(), ElementsAre("DISTANCE PATHSTAT_WARN_6"));
  trjmeasures_i_ = {};
  EXPECT_FALSE(measureschanged_(1, 60, status)) << "none now, none then";
  core_.answers["kvD_MON_NumMonitors"] = [](const auto&) { return Answer{{2'000'000'000}, {}, {}}; };
  ask();
  EXPECT_FALSE(do_it) << "no Core has so many";
}

TEST_F(Measures, of_models_are_the_values_of_the_core) {
  core_.answers["kvD_MON_NumMonitors"] = [](const RecordingCore::Inputs& inputs) {
    return Answer{{std::stoi(inputs[0])}, {}, {}};  // model n has n monitors
  };
  const Ints models{1, 2, 0};
  std::int32_t status = 7, count = 0;
  EXPECT_EQ(maxnummodelmeasures_(models, 506, status), 2);
  EXPECT_EQ(status, 0);
  core_.answers["kvD_MON_TorsionCurrent"] = [](const auto&) { return Answer{{}, {-60, 180}, {}}; };
  std::vector<double> values(2);
  getmodelmeasures_(50, 2, values, count, status);
  EXPECT_EQ(count, 2);
  EXPECT_THAT(values, ElementsAre(-60, 180));
  EXPECT_EQ(status_of(getmodelmeasures_, 50, 3, values, count), 1) << "three do not fit";
  EXPECT_EQ(count, 0);
  answer_atoms("kvD_MON_DistanceObjects", {101, 102, 103, 104});
  core_.answers["kvD_XYZ"] = [](const RecordingCore::Inputs& inputs) {
    return inputs[1] == "101" ? Answer{{}, {1, 2, 3, 4, 5, 6}, {}} : Answer{{}, {11, 22, 33, 4, 4, 4}, {}};
  };
  std::vector<double> vectors(6);
  getmodeldistvectors_(2, count, vectors, status);
  EXPECT_EQ(count, 6);
  EXPECT_THAT(vectors, ElementsAre(10, 20, 30, 0, -1, -2));
}

std::vector<std::string> numbered(std::vector<std::string> texts) {
  std::vector<MeasureLabel> labels;
  for (const auto& text : texts) labels.emplace_back(text);
  number_equal_labels(labels);
  std::ranges::transform(labels, texts.begin(), &MeasureLabel::str);
  return texts;
}

TEST(MeasureValues, of_many_torsions_are_those_of_the_definition) {
  constexpr std::int32_t torsions = 150, atoms = 60;
  const auto& family = measure_family(503);
  std::int32_t status = 0;
  make_measure_blocks(family, torsions, status);
  std::mt19937 random(5);
  std::uniform_real_distribution<double> place(-9, 9);
  std::uniform_int_distribution<std::int32_t> atom(1, atoms), image(-1, 1);
  std::vector<double> xyz(3 * std::size_t{atoms});
  std::ranges::generate(xyz, [&] { return place(random); });
  for (std::size_t k = 0; k < 4; ++k) {
    std::ranges::generate(measure_atoms(family, k), [&] { return atom(random); });
    std::ranges::generate(measure_images(family, k), [&] { return image(random); });
  }
  // One without a plane, one whose points lie flat on one side, one on both.
  const auto set = [&](std::size_t measure, std::array<std::int32_t, 4> of) {
    for (std::size_t k = 0; k < 4; ++k) {
      measure_atoms(family, k)[measure] = of[k];
      std::ranges::fill(measure_images(family, k).subspan(3 * measure, 3), 0);
    }
  };
  set(3, {1, 1, 2, 3}), set(70, {4, 5, 6, 4}), set(149, {7, 8, 9, 10});
  std::ranges::copy(std::array{0., 1., 0., 0., 0., 0., 2., 0., 0., 2., -1., 0.}, xyz.begin() + 18);
  const Vector3 u{20, 0, 0}, v{3, 19, 0}, w{-2, 4, 21};
  std::vector<double> values(torsions);
  ASSERT_EQ(status_of(calctormeasures_, torsions, xyz, u, v, w, values), 0);
  for (std::size_t i = 0; i < values.size(); ++i) {
    std::array<Vector3, 4> p;
    for (std::size_t k = 0; k < 4; ++k) {
      const auto at = 3 * static_cast<std::size_t>(measure_atoms(family, k)[i] - 1);
      measurescoords_(std::span(xyz).subspan(at).first<3>(), u, v, w,
                      measure_images(family, k).subspan(3 * i).first<3>(), p[k]);
    }
    EXPECT_NEAR(values[i], degrees_per_radian * torsion_of(p[0], p[1], p[2], p[3]), 1e-9) << i;
  }
  EXPECT_EQ(values[149], 180);
  free_measure_blocks(family);
}

TEST(MeasureLabels, that_are_equal_get_numbers) {
  EXPECT_THAT(numbered({"1-2", "1-3", "1-2", "1-2"}), ElementsAre("1-2 1", "1-3", "1-2 2", "1-2 3"));
  // At most 32 characters: the number takes the place of the last ones.
  const std::string full(32, '8'), nearly(30, '8');
  EXPECT_THAT(numbered({full, full}), ElementsAre(nearly + " 1", nearly + " 2"));
  std::vector<std::string> many(10, full);
  EXPECT_EQ(numbered(many).back(), std::string(29, '8') + " 10");
  EXPECT_THAT(numbered({nearly, nearly, full}), ElementsAre(nearly + " 1", nearly + " 2", full));
}

TEST(MeasureLabels, are_cut_to_their_field) {
  const Ints numbers(6, 1234567);
  EXPECT_EQ(label_of_atoms("", numbers).str(), "1234567,1234567,1234567-1234567,");
  EXPECT_EQ(label_of_atoms(inversion_prefix(3), std::span(numbers).first(4)).str(), "????:1234567-1234567-1234567-123");
}

}  // namespace
}  // namespace pathstat
