#include "structure/lattice_types.h"

#include "in_process_core.h"
#include "structure/crystal_vectors.h"
#include "testing.h"

namespace pathstat {
namespace {

constexpr double degree = std::numbers::pi / 180;
using Messages = std::vector<std::string>;

TEST(LatticeTypes, have_texts_and_texts_have_types) {
  const std::vector<std::string> texts{"UNSET",        "TRICLINIC",    "MONOCLINIC-A",   "MONOCLINIC-B", "MONOCLINIC-C",
                                       "ORTHORHOMBIC", "TRIGONAL-HEX", "TRIGONAL-RHOMB", "TETRAGONAL",   "HEXAGONAL",
                                       "CUBIC",        "mC-PRIMITIVE", "oC-PRIMITIVE",   "oI-PRIMITIVE", "oF-PRIMITIVE",
                                       "tI-PRIMITIVE", "cI-PRIMITIVE", "cF-PRIMITIVE"};
  std::int32_t type = -1, status = -1;
  for (const auto& expected : texts) {
    Text<20> text;
    kva_sgr_latticestringfromtype_(type, text, status);
    EXPECT_EQ(text.str(), expected);
    EXPECT_EQ(status, 0);
    std::int32_t back = 99;
    kva_sgr_latticetypefromstring_(expected + "  ", back, status);
    EXPECT_EQ(back, type++) << expected;
    EXPECT_EQ(status, 0);
  }
  Text<20> text;
  for (const std::int32_t unknown : {-2, 17, 1 << 30}) {
    kva_sgr_latticestringfromtype_(unknown, text, status);
    EXPECT_EQ(text.str() + std::to_string(status), "UNSET1");
    kva_sgr_centeringstringfromtype_(unknown, text, status);
    EXPECT_EQ(text.str() + std::to_string(status), "UNKNOWN1");
  }
  for (const char* unknown : {"", "cubic", "CUBIC-P", " CUBIC"}) {
    kva_sgr_latticetypefromstring_(unknown, type, status);
    EXPECT_TRUE(type == -1 && status == 1) << unknown;
  }
}

TEST(LatticeTypes, have_centrings) {
  const std::vector<std::string> texts{"PRIMITIVE", "BODY-CENTRED", "FACE-CENTRED", "A-CENTRED",
                                       "B-CENTRED", "C-CENTRED",    "RHOMBOHEDRAL"};
  std::int32_t type = 0, back = 99, status = -1;
  for (const auto& expected : texts) {
    Text<20> text;
    kva_sgr_centeringstringfromtype_(type, text, status);
    EXPECT_EQ(text.str(), expected);
    kva_sgr_centeringtypefromstring_(expected, back, status);
    EXPECT_EQ(back, type++);
    EXPECT_EQ(status, 0);
  }
  kva_sgr_centeringtypefromstring_("UNKNOWN", back, status);
  EXPECT_TRUE(back == -1 && status == 1);
}

class Constraints : public testing::Test {
 protected:
  struct Validated {
    LatticeConstraints result{};
    std::int32_t changed = -1, status = -1;
  };
  static Validated validated(std::int32_t type, const LatticeConstraints& before, const LatticeConstraints& edited) {
    Validated v;
    kva_sgr_validatelatticecons_(type, before, edited, v.result, v.changed, v.status);
    return v;
  }
  InProcessCore core;
};

TEST_F(Constraints, are_those_of_the_type) {
  const std::vector<LatticeConstraints> expected{
      {1, 2, 3, 4, 5, 6},  {1, 2, 3, 4, 5, 6}, {1, 2, 3, 4, 0, 0}, {1, 2, 3, 0, 5, 0},  {1, 2, 3, 0, 0, 6},
      {1, 2, 3, 0, 0, 0},  {1, 1, 3, 0, 0, 0}, {1, 1, 1, 4, 4, 4}, {1, 1, 3, 0, 0, 0},  {1, 1, 3, 0, 0, 0},
      {1, 1, 1, 0, 0, 0},  {1, 1, 3, 4, 4, 6}, {1, 1, 3, 0, 0, 6}, {1, 1, 1, 4, 5, -1}, {1, 2, 3, -2, -2, -2},
      {1, 1, 1, 4, 4, -1}, {1, 1, 1, 0, 0, 0}, {1, 1, 1, 0, 0, 0}};
  std::int32_t type = -1;
  for (const auto& row : expected) {
    LatticeConstraints constraints{};
    std::int32_t status = -1;
    kva_sgr_latticeconstraints_(type, constraints, status);
    EXPECT_EQ(constraints, row) << type;
    EXPECT_EQ(status, 0);
    // What a type asks for is in line with it.
    const auto kept = validated(type, row, row);
    EXPECT_EQ(kept.result, row) << type;
    EXPECT_EQ(kept.changed, 0);
    ++type;
  }
  EXPECT_TRUE(core.messages.empty());
}

TEST_F(Constraints, of_an_unknown_type_are_told_to_the_user) {
  LatticeConstraints constraints{7, 7, 7, 7, 7, 7};
  std::int32_t status = 0;
  kva_sgr_latticeconstraints_(17, constraints, status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(constraints[0], 7);
  const auto v = validated(-2, constraints, {1, 2, 3, 4, 5, 6});
  EXPECT_EQ(v.result, (LatticeConstraints{1, 2, 3, 4, 5, 6}));
  EXPECT_TRUE(v.changed == 0 && v.status == 1);
  EXPECT_EQ(core.messages, (Messages{"CrystalBadLattice", "CrystalBadLattice"}));
}

TEST_F(Constraints, that_were_edited_come_into_line) {
  struct Case {
    std::int32_t type;
    LatticeConstraints before, edited, result;
  };
  const LatticeConstraints all{1, 2, 3, 4, 5, 6}, none{};
  for (const Case& c : std::vector<Case>{
           {0, none, all, all},
           {1, none, all, {1, 2, 3, 4, 0, 0}},
           {2, none, all, {1, 2, 3, 0, 5, 0}},
           {3, none, all, {1, 2, 3, 0, 0, 6}},
           {4, none, all, {1, 2, 3, 0, 0, 0}},
           {7, {1, 1, 3, 0, 0, 0}, {1, 0, 3, 4, 0, 0}, {0, 0, 3, 0, 0, 0}},  // b was edited
           {8, all, all, {1, 1, 3, 0, 0, 0}},                                // nothing was: the first
           {6, {1, 1, 1, 4, 4, 4}, {1, 1, 0, 4, 0, 4}, {0, 0, 0, 0, 0, 0}},  // c and beta
           {6, {1, 1, 1, 4, 4, 4}, {2, 1, 3, 4, 5, 6}, {2, 2, 2, 5, 5, 5}},  // the first of those edited
           {9, {1, 1, 1, 0, 0, 0}, {1, 1, 0, 0, 0, 6}, {0, 0, 0, 0, 0, 0}},
           {10, {1, 1, 3, 4, 4, 6}, {1, 1, 3, 4, 0, 6}, {1, 1, 3, 0, 0, 6}},
           {11, {1, 1, 3, 0, 0, 6}, {1, 2, 3, 4, 5, 6}, {2, 2, 3, 0, 0, 6}},
           {12, {1, 1, 1, 4, 5, -1}, {1, 1, 1, 4, 0, -1}, {1, 1, 1, 0, 0, 0}},
           {12, {0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 6}, {0, 0, 0, 4, 5, -1}},
           {13, {1, 2, 3, -2, -2, -2}, {0, 0, 0, -2, -2, -2}, {0, 0, 0, 0, 0, 0}},
           {13, {0, 0, 0, 0, 0, 0}, {0, 2, 0, 0, 0, 0}, {0, 2, 0, -2, -2, -2}},
           {14, {1, 1, 1, 4, 4, -1}, {1, 1, 1, 4, 4, 0}, {1, 1, 1, 0, 0, 0}},
           {14, {0, 0, 0, 0, 0, 0}, {1, 0, 0, 4, 0, 0}, {1, 1, 1, 4, 4, -1}},
           {16, none, all, {1, 1, 1, 0, 0, 0}},
       }) {
    const auto v = validated(c.type, c.before, c.edited);
    EXPECT_EQ(v.result, c.result) << c.type;
    EXPECT_EQ(v.changed, c.result == c.edited ? 0 : 1) << c.type;
    EXPECT_EQ(v.status, 0);
  }
}

TEST(LatticeParameters, take_tied_and_derived_values) {
  struct Case {
    LatticeConstraints constraints;
    Vector3 lengths, angles, new_lengths, new_angles;  ///< Å, degrees
    std::int32_t status = 0;
  };
  const double tetrahedral = std::acos(-1.0 / 3) / degree;
  for (const Case& c : std::vector<Case>{
           {{1, 2, 3, 4, 5, 6}, {3, 4, 5}, {70, 80, 95}, {3, 4, 5}, {70, 80, 95}},
           {{1, 1, 1, 4, 4, 4}, {3, 4, 5}, {70, 80, 95}, {3, 3, 3}, {70, 70, 70}},
           {{2, 2, 2, 5, 5, 5}, {3, 4, 5}, {70, 80, 95}, {4, 4, 4}, {80, 80, 80}},
           {{3, 3, 3, 6, 6, 6}, {3, 4, 5}, {70, 80, 95}, {5, 5, 5}, {95, 95, 95}},
           {{1, 1, 3, 4, 4, 6}, {3, 4, 5}, {70, 80, 95}, {3, 3, 5}, {70, 70, 95}},
           {{2, 2, 3, 5, 5, 6}, {3, 4, 5}, {70, 80, 95}, {4, 4, 5}, {80, 80, 95}},
           {{3, 2, 3, 6, 5, 6}, {3, 4, 5}, {70, 80, 95}, {5, 4, 5}, {95, 80, 95}},
           {{1, 3, 3, 4, 6, 6}, {3, 4, 5}, {70, 80, 95}, {3, 5, 5}, {70, 95, 95}},
           {{1, 2, 2, 4, 5, 5}, {3, 4, 5}, {70, 80, 95}, {3, 4, 4}, {70, 80, 80}},
           {{0, 0, 0, 0, 0, 0}, {3, 4, 5}, {70, 80, 95}, {3, 4, 5}, {70, 80, 95}},  // fixed is not tied
           {{1, 1, 1, 4, 5, -1}, {3, 4, 5}, {120, 90, 90}, {3, 3, 3}, {120, 90, 120}},
           {{1, 1, 1, 4, 4, -1}, {3, 4, 5}, {tetrahedral, 1, 1}, {3, 3, 3}, {tetrahedral, tetrahedral, tetrahedral}},
           {{1, 1, 1, 4, 5, -1}, {3, 4, 5}, {60, 80, 95}, {3, 3, 3}, {60, 80, 95}, 1},
           {{1, 2, 3, -2, -2, -2},
            {5, 4, 3},
            {1, 1, 1},
            {5, 4, 3},
            {90, std::atan(4.0 / 3) / degree, std::atan(3.0 / 4) / degree}},
           {{1, 2, 3, -2, -2, -2}, {2, 2, 2}, {1, 1, 1}, {2, 2, 2}, {60, 60, 60}},
           {{1, 2, 3, -2, -2, -2}, {3, 4, 8}, {70, 80, 95}, {3, 4, 8}, {70, 80, 95}, 1},  // no triangle
           {{1, 2, 3, -2, -2, -2}, {0, 0, 0}, {70, 80, 95}, {0, 0, 0}, {70, 80, 95}, 1},
       }) {
    Vector3 lengths = c.lengths, angles = crystal::scaled(c.angles, degree);
    std::int32_t status = -1;
    kva_sgr_derivelatticeparams_(lengths, angles, c.constraints, status);
    EXPECT_EQ(lengths, c.new_lengths);
    for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(angles[k] / degree, c.new_angles[k], 1e-10);
    EXPECT_EQ(status, c.status);
  }
}

struct Primitive {
  std::array<Vector3, 3> column{};
  std::int32_t type = 99, status = -1;
};

Primitive primitive(std::int32_t lattice, std::int32_t centring) {
  Primitive p;
  kva_sgr_primitivelattice_(lattice, centring, p.column[0], p.column[1], p.column[2], p.type, p.status);
  return p;
}

/// The points of a centring, beside whole numbers.
std::vector<Vector3> centring_points(std::int32_t centring) {
  switch (centring) {
    case 1:
      return {{.5, .5, .5}};
    case 2:
      return {{0, .5, .5}, {.5, 0, .5}, {.5, .5, 0}};
    case 3:
      return {{0, .5, .5}};
    case 4:
      return {{.5, 0, .5}};
    case 5:
      return {{.5, .5, 0}};
    default:
      return {{2. / 3, 1. / 3, 1. / 3}, {1. / 3, 2. / 3, 2. / 3}};
  }
}

bool is_whole(double x) { return std::abs(x - std::round(x)) < 1e-12; }
bool is_whole(const Vector3& v) { return is_whole(v[0]) && is_whole(v[1]) && is_whole(v[2]); }

TEST(PrimitiveLattice, has_the_points_of_the_centred_one_and_no_others) {
  struct Row {
    std::int32_t lattice, centring, type;
  };
  for (const Row& row : {Row{1, 4, 10},
                         {1, 5, 10},
                         {1, 1, 10},
                         {2, 5, 10},
                         {2, 3, 10},
                         {2, 1, 10},
                         {3, 3, 10},
                         {3, 4, 10},
                         {3, 1, 10},
                         {4, 3, 11},
                         {4, 4, 11},
                         {4, 5, 11},
                         {4, 1, 12},
                         {4, 2, 13},
                         {7, 1, 14},
                         {9, 1, 15},
                         {9, 2, 16},
                         {5, 6, 6}}) {
    const auto [column, type, status] = primitive(row.lattice, row.centring);
    EXPECT_EQ(type, row.type);
    EXPECT_EQ(status, 0);
    const auto points = centring_points(row.centring);
    const double volume = crystal::dot(column[0], crystal::cross(column[1], column[2]));
    EXPECT_NEAR(std::abs(volume), 1.0 / (double(points.size()) + 1), 1e-12) << row.lattice << " " << row.centring;
    Matrix3 to_primitive;
    std::int32_t singular = -1;
    dmatinv_(crystal::columns(column[0], column[1], column[2]), to_primitive, singular);
    ASSERT_EQ(singular, 0);
    for (const auto& point : points) {
      EXPECT_TRUE(is_whole(crystal::product(to_primitive, point))) << row.lattice << " " << row.centring;
    }
    for (const Vector3& unit : {Vector3{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}) {
      EXPECT_TRUE(is_whole(crystal::product(to_primitive, unit))) << row.lattice << " " << row.centring;
    }
  }
}

TEST(PrimitiveLattice, is_the_lattice_itself_without_a_centring_that_it_has) {
  const std::array<Vector3, 3> identity{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
  for (std::int32_t type = -1; type <= 17; ++type) {
    for (const auto& [centring, expected] : {std::array{0, 0}, {-1, 0}, {7, 1}, {-2, 1}}) {
      const auto [column, primitive_type, status] = primitive(type, centring);
      EXPECT_EQ(column, identity);
      EXPECT_EQ(primitive_type, type);
      EXPECT_EQ(status, expected);
    }
  }
  EXPECT_EQ(primitive(9, 3).status, 1);
  EXPECT_EQ(primitive(9, 3).type, 9);
  EXPECT_EQ(primitive(9, 3).column, identity);
}

}  // namespace
}  // namespace pathstat
