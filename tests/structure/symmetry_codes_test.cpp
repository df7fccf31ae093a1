#include "structure/symmetry_codes.h"

#include "in_process_core.h"
#include "structure/crystal_vectors.h"
#include "support/named_memory.h"
#include "testing.h"

namespace pathstat {
namespace {

constexpr Matrix3 identity{1, 0, 0, 0, 1, 0, 0, 0, 1};
using Whole = std::array<std::int32_t, 3>;

struct Operator {
  Matrix3 rotation = identity;
  Vector3 translation{};
};

/// By rows, as it is written in tables.
Operator op(const std::array<double, 9>& rows, const Vector3& translation = {}) {
  const auto& r = rows;
  return {{r[0], r[3], r[6], r[1], r[4], r[7], r[2], r[5], r[8]}, translation};
}

std::int32_t code_of(const Operator& of, std::int32_t& status) {
  std::int32_t code = -1;
  encodesinglesymmetry_(of.rotation, of.translation, code, status);
  return code;
}

TEST(SymmetryCode, has_the_translation_in_twelfths_above_the_rotation_by_rows) {
  constexpr std::int32_t of_identity = 0b10'01'01'01'10'01'01'01'10;
  const auto with = [](std::int32_t x, std::int32_t y, std::int32_t z) { return x << 26 | y << 22 | z << 18; };
  struct Case {
    Operator of;
    std::int32_t code;
  };
  for (const auto& [of, code] : {
           Case{{}, of_identity},
           {{identity, {-0.25, 1.25, 0}}, with(9, 3, 0) | of_identity},
           {{identity, {1.0 / 3, 2.0 / 3, 5.0 / 6}}, with(4, 8, 10) | of_identity},
           {{identity, {0.5 / 12, -0.5 / 12, 11.4999 / 12}}, with(1, 11, 11) | of_identity},  // halves away from zero
           {{identity, {0.9999999, -1e-9, 7}}, of_identity},
           {op({0, -1, 0, 1, -1, 0, 0, 0, 1}, {0, 0, 1.0 / 3}), with(0, 0, 4) | 0b01'00'01'10'00'01'01'01'10},
           {op({.51, -.51, .49, 1.4, -1.4, 0, 0, 0, 1}), 0b10'00'01'10'00'01'01'01'10},
       }) {
    std::int32_t status = -1;
    EXPECT_EQ(code_of(of, status), code);
    EXPECT_EQ(status, 0);
  }
}

TEST(SymmetryCode, is_refused_for_what_is_no_operator) {
  const double nothing = std::numeric_limits<double>::quiet_NaN();
  std::int32_t status = 0;
  for (const double element : {2.0, -1.5, 1e300, nothing}) {
    EXPECT_EQ(stdout_of([&] {
                code_of({{element, 0, 0, 0, 1, 0, 0, 0, 1}, {}}, status);
              }),
              "Rotation element out of range\n");
    EXPECT_EQ(status, 1);
  }
  for (const double move : {nothing, std::numeric_limits<double>::infinity()}) {
    code_of({identity, {0, move, 0}}, status);
    EXPECT_EQ(status, 1);
  }
}

/// A group as its generators make it, by the plain definition: products until no new operator comes up.
class Group {
 public:
  Group(const std::vector<Operator>& generators) {
    std::vector<Operator> all{{}};
    for (std::size_t k = 0; k < all.size(); ++k) {
      for (const auto& generator : generators) {
        Operator next{};
        dmatmat_(generator.rotation, all[k].rotation, next.rotation);
        next.translation =
            crystal::sum(crystal::product(generator.rotation, all[k].translation), generator.translation);
        for (double& t : next.translation) t -= std::floor(t + 1e-6);
        if (std::ranges::none_of(all, [&](const Operator& known) { return same(known, next); })) all.push_back(next);
      }
    }
    for (const auto& of : all) {
      rotations.insert(rotations.end(), of.rotation.begin(), of.rotation.end());
      translations.insert(translations.end(), of.translation.begin(), of.translation.end());
    }
    codes.resize(all.size());
    index.resize(all.size());
    EXPECT_EQ(status_of(encodeallsymmetry_, rotations, translations, codes, index), 0);
  }

  std::int32_t order() const { return static_cast<std::int32_t>(codes.size()); }

  std::vector<double> rotations, translations;
  std::vector<std::int32_t> codes, index;

 private:
  static bool same(const Operator& a, const Operator& b) {
    const auto close = [](double x, double y) { return std::abs(x - y) < 1e-6; };
    return std::ranges::equal(a.rotation, b.rotation, close) && std::ranges::equal(a.translation, b.translation, close);
  }
};

/// Of all seven systems, with screws, glides, and every kind of centring.
std::vector<Group> groups() {
  const Operator inversion = op({-1, 0, 0, 0, -1, 0, 0, 0, -1});
  const Operator three = op({0, -1, 0, 1, -1, 0, 0, 0, 1}), diagonal = op({0, 0, 1, 1, 0, 0, 0, 1, 0});
  const Operator body{identity, {.5, .5, .5}}, face_a{identity, {0, .5, .5}}, face_b{identity, {.5, 0, .5}};
  const Operator rhombohedral{identity, {2. / 3, 1. / 3, 1. / 3}};
  return {
      Group({}),
      Group({inversion}),
      Group({inversion, op({-1, 0, 0, 0, 1, 0, 0, 0, -1}, {0, .5, .5})}),
      Group({op({-1, 0, 0, 0, -1, 0, 0, 0, 1}, {.5, 0, .5}), op({-1, 0, 0, 0, 1, 0, 0, 0, -1}, {0, .5, .5})}),
      Group({inversion, op({0, -1, 0, 1, 0, 0, 0, 0, 1}, {.25, .75, .25}),
             op({-1, 0, 0, 0, 1, 0, 0, 0, -1}, {.5, 0, .5}), body}),
      Group({{three.rotation, {0, 0, 2. / 3}}, op({0, 1, 0, 1, 0, 0, 0, 0, -1})}),
      Group({three, inversion, op({0, -1, 0, -1, 0, 0, 0, 0, 1}, {0, 0, .5}), rhombohedral}),
      Group({op({1, -1, 0, 1, 0, 0, 0, 0, 1}, {0, 0, 1. / 6}), op({0, 1, 0, 1, 0, 0, 0, 0, -1}, {0, 0, 1. / 3})}),
      Group({face_a, face_b, diagonal, op({-1, 0, 0, 0, -1, 0, 0, 0, 1}, {.75, .25, .5}),
             op({-1, 0, 0, 0, 1, 0, 0, 0, -1}, {.25, .5, .75}), op({0, 1, 0, 1, 0, 0, 0, 0, -1}, {.75, .25, .5}),
             inversion}),
  };
}

TEST(SymmetryTable, has_all_operators_in_the_order_of_their_codes) {
  const std::vector<std::int32_t> orders{1, 2, 4, 4, 32, 6, 36, 12, 192};
  std::vector<std::int32_t> found;
  for (const auto& group : groups()) {
    found.push_back(group.order());
    EXPECT_TRUE(std::ranges::is_sorted(group.codes));
    EXPECT_EQ(std::ranges::adjacent_find(group.codes), group.codes.end());
    for (std::size_t k = 0; k < group.codes.size(); ++k) {
      const auto at = static_cast<std::size_t>(group.index[k]) - 1;
      std::int32_t code = 0, status = -1;
      encodesinglesymmetry_(std::span(group.rotations).subspan(9 * at).first<9>(),
                            std::span(group.translations).subspan(3 * at).first<3>(), code, status);
      EXPECT_EQ(code, group.codes[k]);
    }
  }
  EXPECT_EQ(found, orders);
}

/// What a pair of an operator and a shift makes of a point.
Vector3 moved(const Group& group, std::int32_t number, const Whole& shift, const Vector3& point) {
  Vector3 result{};
  std::int32_t status = -1;
  sym_transformfractionallocal_(std::span(&number, 1), shift, point, result, group.rotations, group.translations,
                                status);
  EXPECT_EQ(status, 0);
  return result;
}

void expect_near(const Vector3& a, const Vector3& b) {
  for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(a[k], b[k], 1e-9);
}

TEST(SymmetryTable, multiplies_as_the_points_move_and_inverts) {
  std::mt19937 random(1);
  std::uniform_int_distribution<std::int32_t> whole(-5, 5);
  const auto any_shift = [&] { return Whole{whole(random), whole(random), whole(random)}; };
  const Vector3 point{0.123, -0.456, 1.789};
  for (const auto& group : groups()) {
    for (std::int32_t one = 1; one <= group.order(); ++one) {
      const Whole shift_one = any_shift();
      for (std::int32_t two = 1; two <= group.order(); ++two) {
        const Whole shift_two = any_shift();
        std::int32_t product = 0, status = -1;
        Whole shift{};
        sym_multiplyfromtable_(one, shift_one, two, shift_two, product, shift, group.rotations, group.translations,
                               group.codes, group.index, status);
        ASSERT_EQ(status, 0);
        expect_near(moved(group, product, shift, point),
                    moved(group, two, shift_two, moved(group, one, shift_one, point)));
      }
      std::int32_t inverse = 0, neutral = 0, status = -1;
      Whole shift_back{}, shift{9, 9, 9};
      sym_invertfromtable_(one, shift_one, inverse, shift_back, group.rotations, group.translations, group.codes,
                           group.index, status);
      ASSERT_EQ(status, 0);
      multiplysymmetry_(one, shift_one, inverse, shift_back, neutral, shift, group.rotations, group.translations,
                        group.codes, group.index, status);
      EXPECT_EQ(neutral, 1);
      EXPECT_EQ(shift, Whole{});
    }
  }
}

TEST(SymmetryTable, refuses_what_is_not_in_the_group) {
  const Group screw({op({-1, 0, 0, 0, -1, 0, 0, 0, 1}, {0, 0, .5})});
  std::int32_t found = 77, status = -1;
  Whole shift{8, 8, 8};
  const auto locate = [&](const Operator& of) {
    locatesymmetrycode_(of.rotation, of.translation, found, shift, screw.translations, screw.codes, screw.index,
                        status);
    return status;
  };
  EXPECT_EQ(locate(op({-1, 0, 0, 0, -1, 0, 0, 0, -1})), 99999);
  EXPECT_EQ(locate({identity, {0, 0, .5}}), 99999);
  EXPECT_EQ(locate({identity, {0, 1e30, 0}}), 99999);  // no shift holds it
  EXPECT_TRUE(found == 77 && shift == (Whole{8, 8, 8}));
  EXPECT_EQ(locate(op({-1, 0, 0, 0, -1, 0, 0, 0, 1}, {2, -3, 1.5})), 0);
  EXPECT_TRUE(found == 2 && shift == (Whole{2, -3, 1}));
  for (const auto& [one, two] : {std::array{0, 1}, {1, 3}, {3, 1}, {-1, 1}, {1, 1 << 30}}) {
    multiplysymmetry_(one, Whole{}, two, Whole{}, found, shift, screw.rotations, screw.translations, screw.codes,
                      screw.index, status);
    EXPECT_EQ(status, 99998);
  }
  EXPECT_EQ(status_of(invertsymmetry_, 3, Whole{}, found, shift, screw.rotations, screw.translations, screw.codes,
                      screw.index),
            99998);
  // Half of a group: its product is outside.
  const std::vector<double> quarter_turn{0, 1, 0, -1, 0, 0, 0, 0, 1}, unmoved(3);
  std::vector<std::int32_t> codes(1), index(1);
  encodeallsymmetry_(quarter_turn, unmoved, codes, index, status);
  EXPECT_EQ(status_of(multiplysymmetry_, 1, Whole{}, 1, Whole{}, found, shift, quarter_turn, unmoved, codes, index),
            99999);
}

TEST(SymmetryTable, keeps_the_points_before_a_faulty_operator) {
  const Group group({op({-1, 0, 0, 0, -1, 0, 0, 0, -1})});
  std::vector<double> xyz{.1, .2, .3, .4, .5, .6, .7, .8, .9};
  const std::vector<std::int32_t> operators{2, 3, 1}, shifts{1, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(status_of(sym_transformfractionallocal_, operators, shifts, xyz, xyz, group.rotations, group.translations),
            99998);
  EXPECT_EQ(xyz, (std::vector<double>{.9, -.2, -.3, .4, .5, .6, .7, .8, .9}));
}

const Vector3 a{7, 0, 0}, b{-3.5, 6.0621778264910704, 0}, c{0.3, 0.4, 11};

TEST(SymmetryTable, moves_cartesian_points_as_fractional_ones) {
  const auto all = groups();
  const Group& group = all[7];
  const Matrix3 cell = crystal::columns(a, b, c);
  const Vector3 point{0.123, -0.456, 1.789};
  for (std::int32_t number = 1; number <= group.order(); ++number) {
    const Whole shift{1, -2, 3};
    Vector3 xyz = crystal::product(cell, point);
    std::int32_t status = -1;
    sym_transformcartesianlocal_(std::span(&number, 1), shift, xyz, xyz, group.rotations, group.translations, a, b, c,
                                 status);
    EXPECT_EQ(status, 0);
    expect_near(xyz, crystal::product(cell, moved(group, number, shift, point)));
  }
  std::int32_t first = 1, status = -1;
  Vector3 xyz{};
  sym_transformcartesianlocal_(std::span(&first, 1), Whole{}, xyz, xyz, group.rotations, group.translations, a, a, c,
                               status);
  EXPECT_EQ(status, 1);
}

TEST(SymmetryOperators, take_cartesian_form_into_other_arrays_or_their_own) {
  const auto all = groups();
  auto rotations = all[7].rotations, translations = all[7].translations;
  auto other_rotations = rotations, other_translations = translations;
  EXPECT_EQ(status_of(sym_getcartsymmetry_, a, b, c, all[7].rotations, all[7].translations, other_rotations,
                      other_translations),
            0);
  EXPECT_EQ(status_of(sym_getcartsymmetry_, a, b, c, rotations, translations, rotations, translations), 0);
  EXPECT_EQ(rotations, other_rotations);
  EXPECT_EQ(translations, other_translations);
  // t' = M t, for the screw of a sixth
  expect_near({translations[3], translations[4], translations[5]}, crystal::scaled(c, 1. / 6));
}

/// The same by the identifier of a group that the Core holds: that of a model with a screw along z.
class GroupOfTheCore : public testing::Test {
 protected:
  GroupOfTheCore() {
    const auto model = core.import_text(
        "(1 Model screw\n (A I PeriodicType 100)\n (A V Cell ((5 0 0) (0 6 0) (0 0 8)))\n"
        " (A I AtomId (1))\n (A C Element (Ar))\n (A V XYZ ((1 1 1)))\n"
        " (A D Rotation (1 0 0 0 1 0 0 0 1  -1 0 0 0 -1 0 0 0 1))\n (A D Translation (0 0 0  0 0 0.5))\n)\n");
    group = core.model.model(model)->space_group;
  }
  InProcessCore core;
  std::int32_t group = 0, status = -1;
};

TEST_F(GroupOfTheCore, multiplies_inverts_and_moves_points) {
  std::int32_t found = 0;
  Whole shift{};
  EXPECT_EQ(status_of(sym_multiply_, group, 2, Whole{1, 0, 0}, 2, Whole{0, 0, 4}, found, shift), 0);
  EXPECT_EQ(found, 1);
  EXPECT_EQ(shift, (Whole{-1, 0, 5}));
  EXPECT_EQ(status_of(sym_invert_, group, 2, Whole{0, 2, 0}, found, shift), 0);
  EXPECT_EQ(found, 2);
  EXPECT_EQ(shift, (Whole{0, 2, -1}));
  const std::int32_t screw = 2;
  Vector3 point{.1, .2, .3};
  sym_transformfractional_(group, std::span(&screw, 1), Whole{1, 0, 0}, point, point, status);
  EXPECT_EQ(status, 0);
  expect_near(point, {.9, -.2, .8});
  Vector3 xyz{1, 2, 3};
  sym_transformcartesian_(group, {5, 0, 0}, {0, 6, 0}, {0, 0, 8}, std::span(&screw, 1), Whole{1, 0, 0}, xyz, xyz,
                          status);
  EXPECT_EQ(status, 0);
  expect_near(xyz, {4, -2, 7});
  EXPECT_EQ(status_of(sym_multiply_, group, 3, Whole{}, 1, Whole{}, found, shift), 99998);
}

TEST_F(GroupOfTheCore, fills_a_table_that_has_room_for_it) {
  std::vector<double> rotations(18), translations(6);
  std::vector<std::int32_t> codes(2), index(2);
  std::int32_t count = 0;
  EXPECT_EQ(status_of(sym_constructgrouptable_, group, count, rotations, translations, codes, index), 0);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(index, (std::vector<std::int32_t>{1, 2}));
  EXPECT_EQ(translations[5], 0.5);
  const std::span one(codes.data(), 1);
  EXPECT_EQ(status_of(sym_constructgrouptable_, group, count, rotations, translations, one, index), 1);
}

TEST_F(GroupOfTheCore, gives_its_failures_and_frees_what_it_took) {
  std::int32_t found = 0, count = 0;
  Whole shift{};
  const auto held = [] { return mem_alloc_call_count - mem_free_call_count; };
  const auto before = held();
  EXPECT_NE(status_of(sym_multiply_, -5, 1, Whole{}, 1, Whole{}, found, shift), 0);
  // A Core that lies about its operators, in one way after the other.
  core.server.on("kvD_SGR_NumOperators",
                 [&](const desk::OperationCall&, desk::OperationReply& reply) { reply.put(count); });
  for (const auto& [told, expected] : {std::array{0, 99998}, {-1, 99998}, {1, 1}, {193, 1}, {1 << 30, 1}, {2, 0}}) {
    count = told;
    EXPECT_EQ(status_of(sym_invert_, group, 2, Whole{}, found, shift), expected) << told;
  }
  EXPECT_EQ(held(), before);
}

}  // namespace
}  // namespace pathstat
