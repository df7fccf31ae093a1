#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <string>

#include "structure/crystal_cell.h"
#include "structure/crystal_lattice.h"
#include "structure/crystal_orientation.h"
#include "structure/crystal_vectors.h"

namespace pathstat {
namespace {

using namespace crystal;

constexpr double degree = std::numbers::pi / 180;
const double tetrahedral = std::acos(-1.0 / 3) / degree;

/// Lengths in Å and angles in degrees.
using Six = std::array<double, 6>;

struct Case {
  const char* what;
  std::int32_t lattice;
  Six before, edited, after;
  std::int32_t result;
};

/// The third angle, in degrees, of three whose cosines sum to -1.
double third(double one, double two) {
  return std::acos(-1 - std::cos(one * degree) - std::cos(two * degree)) / degree;
}

std::array<Vector3, 3> cell_of(const Six& p) {
  std::array<Vector3, 3> cell{};
  std::int32_t status = -1;
  kva_cry_3dparamtocell_(p[0], p[1], p[2], p[3] * degree, p[4] * degree, p[5] * degree, 7, cell[0], cell[1], cell[2],
                         status);
  EXPECT_EQ(status, 0);
  // Somewhere in space: turned by an angle about (1, 1, 1).
  Matrix3 turn{2.0 / 3, 2.0 / 3, -1.0 / 3, -1.0 / 3, 2.0 / 3, 2.0 / 3, 2.0 / 3, -1.0 / 3, 2.0 / 3};
  for (Vector3& vector : cell) vector = product(turn, vector);
  return cell;
}

Six parameters_of(const std::array<Vector3, 3>& cell) {
  Six p{};
  std::int32_t status = -1;
  kva_cry_3dcelltoparam_(cell[0], cell[1], cell[2], p[0], p[1], p[2], p[3], p[4], p[5], status);
  for (std::size_t k = 3; k < 6; ++k) p[k] /= degree;
  return p;
}

class CheckLattice : public testing::TestWithParam<Case> {};

TEST_P(CheckLattice, forces_the_constraints_and_keeps_the_place) {
  const Case& c = GetParam();
  const auto before = cell_of(c.before);
  auto cell = cell_of(c.edited);
  const auto edited = cell;
  std::int32_t result = -1, status = -1;
  kva_cry_checklattice_(cell[0], cell[1], cell[2], before[0], before[1], before[2], c.lattice, result, status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(result, c.result);
  const Six after = parameters_of(cell);
  for (std::size_t k = 0; k < 6; ++k) EXPECT_NEAR(after[k], c.after[k], 1e-8) << "parameter " << k;
  if (c.result == 0) {
    EXPECT_EQ(cell, edited);
    return;
  }
  EXPECT_NEAR(length(cross(unit(cell[2]), unit(edited[2]))), 0, 1e-9) << "c left its direction";
  const Vector3 normal = unit(cross(edited[1], edited[2]));
  EXPECT_NEAR(dot(normal, cell[1]), 0, 1e-9) << "b left its plane";
}

const Six cube{5, 5, 5, 90, 90, 90};
const Six hexagon{4, 4, 7, 90, 90, 120};
const Six rhomb{5, 5, 5, 70, 70, 70};
const Six scalene{5, 6, 7, 80, 85, 95};

INSTANTIATE_TEST_SUITE_P(
    rules, CheckLattice,
    testing::Values(
        Case{"1 alpha is free", 1, {5, 6, 7, 80, 90, 90}, {5, 6, 7, 75, 88, 92}, {5, 6, 7, 75, 90, 90}, 2},
        Case{"2 beta is free", 2, {5, 6, 7, 90, 80, 90}, {5, 6, 7.5, 91, 75, 90}, {5, 6, 7.5, 90, 75, 90}, 2},
        Case{"3 gamma is free", 3, {5, 6, 7, 90, 90, 80}, {5, 6, 7, 90, 91, 75}, {5, 6, 7, 90, 90, 75}, 2},
        Case{"4 lengths are free", 4, {5, 6, 7, 90, 90, 90}, {4, 6, 7, 89, 90, 90}, {4, 6, 7, 90, 90, 90}, 2},
        Case{"5 a and b go together", 5, hexagon, {4, 4.5, 7, 90, 90, 120}, {4.5, 4.5, 7, 90, 90, 120}, 1},
        Case{"8 gamma stays 120", 8, hexagon, {4.5, 4, 7, 90, 90, 110}, {4.5, 4.5, 7, 90, 90, 120}, 3},
        Case{"6 the edited angle rules", 6, rhomb, {5, 5, 5, 70, 75, 70}, {5, 5, 5, 75, 75, 75}, 2},
        Case{"6 the first edited length rules", 6, rhomb, {5, 6, 7, 70, 70, 70}, {6, 6, 6, 70, 70, 70}, 1},
        Case{"7 c is free", 7, {4, 4, 7, 90, 90, 90}, {4, 4, 8, 90, 90, 90}, {4, 4, 8, 90, 90, 90}, 0},
        Case{"9 b rules alone", 9, cube, {5, 6, 5, 90, 90, 90}, {6, 6, 6, 90, 90, 90}, 1},
        Case{"9 unedited", 9, cube, cube, cube, 0},
        Case{"10 beta rules alpha", 10, {5, 5, 7, 80, 80, 95}, {5, 5, 7, 80, 85, 95}, {5, 5, 7, 85, 85, 95}, 2},
        Case{"11 gamma is free", 11, {5, 5, 7, 90, 90, 70}, {5, 5, 7, 90, 90, 65}, {5, 5, 7, 90, 90, 65}, 0},
        Case{"12 gamma follows alpha",
             12,
             {5, 5, 5, tetrahedral, tetrahedral, tetrahedral},
             {5, 5, 5, 100, tetrahedral, tetrahedral},
             {5, 5, 5, 100, tetrahedral, third(100, tetrahedral)},
             2},
        Case{"12 beta follows gamma",
             12,
             {5, 5, 5, tetrahedral, tetrahedral, tetrahedral},
             {5, 5, 5, tetrahedral, tetrahedral, 105},
             {5, 5, 5, tetrahedral, third(tetrahedral, 105), 105},
             2},
        Case{"12 alpha follows both",
             12,
             {5, 5, 5, tetrahedral, tetrahedral, tetrahedral},
             {5, 5, 5, tetrahedral, 105, 112},
             {5, 5, 5, third(105, 112), 105, 112},
             2},
        Case{"12 falls back",
             12,
             {5, 5, 5, tetrahedral, tetrahedral, tetrahedral},
             {5, 5, 5, 60, tetrahedral, tetrahedral},
             {5, 5, 5, tetrahedral, tetrahedral, tetrahedral},
             2},
        Case{"14 gamma follows beta",
             14,
             {5, 5, 5, tetrahedral, tetrahedral, tetrahedral},
             {5, 5, 5, tetrahedral, 100, tetrahedral},
             {5, 5, 5, 100, 100, third(100, 100)},
             2},
        Case{"14 alpha follows gamma",
             14,
             {5, 5, 5, tetrahedral, tetrahedral, tetrahedral},
             {5, 5, 5, tetrahedral, tetrahedral, 120},
             {5, 5, 5, std::acos(-0.25) / degree, std::acos(-0.25) / degree, 120},
             2},
        Case{"14 falls back",
             14,
             {5, 5, 5, tetrahedral, tetrahedral, tetrahedral},
             {5, 5, 5, 80, tetrahedral, tetrahedral},
             {5, 5, 5, tetrahedral, tetrahedral, tetrahedral},
             2},
        Case{"15 tetrahedral", 15, cube, cube, {5, 5, 5, tetrahedral, tetrahedral, tetrahedral}, 2},
        Case{"16 sixty", 16, cube, {5, 5, 6, 90, 90, 90}, {6, 6, 6, 60, 60, 60}, 3},
        Case{"13 an acute triangle has cosines of its sides",
             13,
             scalene,
             {6, 6, 6, 80, 85, 95},
             {6, 6, 6, 60, 60, 60},
             2},
        Case{"13 no triangle", 13, scalene, {5, 6, 17, 80, 85, 95}, scalene, 1},
        Case{"0 no type", 0, cube, {5, 6, 7, 80, 85, 95}, {5, 6, 7, 80, 85, 95}, 0},
        Case{"17 no type", 17, cube, {5, 6, 7, 80, 85, 95}, {5, 6, 7, 80, 85, 95}, 0}),
    [](const auto& tested) {
      std::string name = tested.param.what;
      for (char& c : name) c = c == ' ' ? '_' : c;
      return "type_" + name;
    });

TEST(CheckLatticeRefusal, a_flat_cell_stays_as_it_is) {
  Vector3 a{5, 0, 0}, b{0, 5, 0}, c{};
  std::int32_t result = -1, status = 0;
  kva_cry_checklattice_(a, b, c, {5, 0, 0}, {0, 5, 0}, {0, 0, 5}, 9, result, status);
  EXPECT_EQ(status, 50302);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(a, (Vector3{5, 0, 0}));
}

}  // namespace
}  // namespace pathstat
