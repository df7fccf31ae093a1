#include "structure/crystal_lattice.h"
#include "structure/crystal_cell.h"
#include "structure/crystal_orientation.h"
#include "structure/crystal_vectors.h"
#include "testing.h"

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

const Six cube{5, 5, 5, 90, 90, 90};
const Six diamond{5, 5, 5, tetrahedral, tetrahedral, tetrahedral};
/// Three angles whose cosines sum to -1, with 120 degrees as one.
const double beside_120 = std::acos(-0.25) / degree, beside_both = std::acos(-1.0 / 6) / degree;
const Six wide{5, 5, 5, beside_120, beside_120, 120}, twelve{5, 5, 5, 120, tetrahedral, beside_both};
const Six hexagon{4, 4, 7, 90, 90, 120};
const Six rhomb{5, 5, 5, 70, 70, 70};
const Six scalene{5, 6, 7, 80, 85, 95};

const Case cases[] = {
    {"1 alpha is free", 1, {5, 6, 7, 80, 90, 90}, {5, 6, 7, 75, 88, 92}, {5, 6, 7, 75, 90, 90}, 2},
    {"4 lengths are free", 4, {5, 6, 7, 90, 90, 90}, {4, 6, 7, 89, 90, 90}, {4, 6, 7, 90, 90, 90}, 2},
    {"5 a and b go together", 5, hexagon, {4, 4.5, 7, 90, 90, 120}, {4.5, 4.5, 7, 90, 90, 120}, 1},
    {"8 gamma stays 120", 8, hexagon, {4.5, 4, 7, 90, 90, 110}, {4.5, 4.5, 7, 90, 90, 120}, 3},
    {"6 the edited angle rules", 6, rhomb, {5, 5, 5, 70, 75, 70}, {5, 5, 5, 75, 75, 75}, 2},
    {"9 b rules alone", 9, cube, {5, 6, 5, 90, 90, 90}, {6, 6, 6, 90, 90, 90}, 1},
    {"10 beta rules alpha", 10, {5, 5, 7, 80, 80, 95}, {5, 5, 7, 80, 85, 95}, {5, 5, 7, 85, 85, 95}, 2},
    {"14 alpha and beta follow gamma", 14, diamond, {5, 5, 5, tetrahedral, tetrahedral, 120}, wide, 2},
    {"12 gamma follows alpha", 12, diamond, {5, 5, 5, 120, tetrahedral, tetrahedral}, twelve, 2},
    {"12 falls back", 12, diamond, {5, 5, 5, 60, tetrahedral, tetrahedral}, diamond, 2},
    {"15 tetrahedral", 15, cube, cube, diamond, 2},
    {"16 sixty", 16, cube, {5, 5, 6, 90, 90, 90}, {6, 6, 6, 60, 60, 60}, 3},
    {"13 acute triangle", 13, scalene, {6, 6, 6, 80, 85, 95}, {6, 6, 6, 60, 60, 60}, 2},
    {"13 no triangle", 13, scalene, {5, 6, 17, 80, 85, 95}, scalene, 1},
    {"0 no type", 0, cube, {5, 6, 7, 80, 85, 95}, {5, 6, 7, 80, 85, 95}, 0}};

TEST(CheckLattice, forces_the_constraints_and_keeps_the_place) {
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const auto before = cell_of(c.before);
    auto cell = cell_of(c.edited);
    const auto edited = cell;
    std::int32_t result = -1;
    EXPECT_EQ(
        status_of(kva_cry_checklattice_, cell[0], cell[1], cell[2], before[0], before[1], before[2], c.lattice, result),
        0);
    EXPECT_EQ(result, c.result);
    const Six after = parameters_of(cell);
    for (std::size_t k = 0; k < 6; ++k) EXPECT_NEAR(after[k], c.after[k], 1e-8) << "parameter " << k;
    if (c.result == 0) {
      EXPECT_EQ(cell, edited);
      continue;
    }
    EXPECT_NEAR(length(cross(unit(cell[2]), unit(edited[2]))), 0, 1e-9) << "c left its direction";
    const Vector3 normal = unit(cross(edited[1], edited[2]));
    EXPECT_NEAR(dot(normal, cell[1]), 0, 1e-9) << "b left its plane";
  }
}

}  // namespace
}  // namespace pathstat
