#include "structure/crystal_lattice.h"

#include <array>
#include <numbers>

#include "structure/crystal_cell.h"
#include "structure/crystal_orientation.h"
#include "structure/crystal_vectors.h"

namespace pathstat {

using namespace crystal;

namespace {

constexpr double tolerance = 1e-10;
constexpr std::int32_t upright = 1;  ///< the orientation in which a cell is rebuilt

constexpr double open = 0;
constexpr double right = std::numbers::pi / 2;
constexpr double hexagonal = 2.0943951023931953;
constexpr double tetrahedral = 1.9106332362490184;  ///< arccos of -1/3
constexpr double sixty = 1.0471975511965976;

/// What ties the angles that a row leaves open.
enum class Tie { none, alpha_beta, all, cosines_sum_to_minus_one, triangle, two_and_one };

struct LatticeRow {
  std::size_t equal_lengths;  ///< of a, b, c: 0 none, 2 a and b, 3 all
  Vector3 angles;
  Tie tie = Tie::none;
};
constexpr std::array<LatticeRow, 16> lattice_rows{{
    {0, {open, right, right}},
    {0, {right, open, right}},
    {0, {right, right, open}},
    {0, {right, right, right}},
    {2, {right, right, hexagonal}},
    {3, {open, open, open}, Tie::all},
    {2, {right, right, right}},
    {2, {right, right, hexagonal}},
    {3, {right, right, right}},
    {2, {open, open, open}, Tie::alpha_beta},
    {2, {right, right, open}},
    {3, {open, open, open}, Tie::cosines_sum_to_minus_one},
    {0, {open, open, open}, Tie::triangle},
    {3, {open, open, open}, Tie::two_and_one},
    {3, {tetrahedral, tetrahedral, tetrahedral}},
    {3, {sixty, sixty, sixty}},
}};

struct Parameters {
  Vector3 length;
  Vector3 angle;
};

using Changes = std::array<bool, 3>;

Changes changes(const Vector3& now, const Vector3& before) {
  Changes changed{};
  for (std::size_t k = 0; k < 3; ++k) changed[k] = std::abs(now[k] - before[k]) > tolerance;
  return changed;
}

bool any(const Changes& changed) { return changed[0] || changed[1] || changed[2]; }

/// Gives the first `count` values the first one among them that changed, or else the first.
void equalise(Vector3& values, const Changes& changed, std::size_t count) {
  std::size_t chosen = 0;
  while (chosen < count && !changed[chosen]) ++chosen;
  const double value = values[chosen < count ? chosen : 0];
  for (std::size_t k = 0; k < count; ++k) values[k] = value;
}

Parameters parameters_of(const Vector3& a, const Vector3& b, const Vector3& c, std::int32_t& status) {
  Parameters cell{};
  auto& [length, angle] = cell;
  kva_cry_3dcelltoparam_(a, b, c, length[0], length[1], length[2], angle[0], angle[1], angle[2], status);
  return cell;
}

std::array<Vector3, 3> vectors_of(const Parameters& cell, std::int32_t& status) {
  std::array<Vector3, 3> vectors{};
  const auto& [length, angle] = cell;
  kva_cry_3dparamtocell_(length[0], length[1], length[2], angle[0], angle[1], angle[2], upright, vectors[0], vectors[1],
                         vectors[2], status);
  return vectors;
}

void tie_cosine_sum(Vector3& angle, const Changes& changed, const Vector3& reference) {
  const std::size_t solved = changed[1] && changed[2] && !changed[0] ? 0 : changed[2] ? 1 : 2;
  double cosine = -1;
  for (std::size_t k = 0; k < 3; ++k) {
    if (k != solved) cosine -= std::cos(angle[k]);
  }
  if (cosine < -1) {
    angle = reference;
  } else {
    angle[solved] = angle_of(cosine);
  }
}

void tie_two_and_one(Vector3& angle, const Changes& changed, const Vector3& reference) {
  if (!changed[0] && !changed[1] && changed[2]) {
    angle[0] = angle[1] = angle_of((-1 - std::cos(angle[2])) / 2);
    return;
  }
  equalise(angle, changed, 2);
  const double cosine = -1 - 2 * std::cos(angle[0]);
  if (cosine < -1) {
    angle = reference;
  } else {
    angle[2] = angle_of(cosine);
  }
}

/// The angles of the triangle that has the lengths as its sides.
void tie_triangle(Parameters& cell, const Parameters& reference) {
  Parameters tied = cell;
  bool possible = true;
  for (std::size_t k = 0; k < 3; ++k) {
    const double opposite = cell.length[k], p = cell.length[(k + 1) % 3], q = cell.length[(k + 2) % 3];
    const double cosine = (p * p + q * q - opposite * opposite) / (2 * p * q);
    possible = possible && std::abs(cosine) <= 1;
    tied.angle[k] = angle_of(cosine);
  }
  std::int32_t status = 0;
  if (possible) vectors_of(tied, status);
  cell = possible && status == 0 ? tied : reference;
}

Parameters constrained(const Parameters& edited, const Parameters& reference, const LatticeRow& row) {
  Parameters cell = edited;
  const Changes angle_changed = changes(edited.angle, reference.angle);
  if (row.equal_lengths > 0) equalise(cell.length, changes(edited.length, reference.length), row.equal_lengths);
  for (std::size_t k = 0; k < 3; ++k) {
    if (row.angles[k] != open) cell.angle[k] = row.angles[k];
  }
  switch (row.tie) {
    case Tie::none:
      break;
    case Tie::alpha_beta:
      equalise(cell.angle, angle_changed, 2);
      break;
    case Tie::all:
      equalise(cell.angle, angle_changed, 3);
      break;
    case Tie::cosines_sum_to_minus_one:
      tie_cosine_sum(cell.angle, angle_changed, reference.angle);
      break;
    case Tie::triangle:
      tie_triangle(cell, reference);
      break;
    case Tie::two_and_one:
      tie_two_and_one(cell.angle, angle_changed, reference.angle);
      break;
  }
  return cell;
}

/// The cell's vectors, turned so that they lie in space as the edited cell does.
std::array<Vector3, 3> in_place(const Parameters& cell, const Vector3& a, const Vector3& b, const Vector3& c,
                                std::int32_t& status) {
  Matrix3 turn{};
  auto vectors = vectors_of(cell, status);
  if (status == 0) kva_cry_3dalignmentmatrix_(a, b, c, upright, turn, status);
  if (status == 0) dmatinv_(turn, turn, status);
  for (Vector3& vector : vectors) vector = product(turn, vector);
  return vectors;
}

}  // namespace

void kva_cry_checklattice_(Vector3& a, Vector3& b, Vector3& c, const Vector3& a0, const Vector3& b0, const Vector3& c0,
                           std::int32_t lattice, std::int32_t& result, std::int32_t& status) {
  result = 0;
  Parameters reference;
  const Parameters edited = parameters_of(a, b, c, status);
  if (status == 0) reference = parameters_of(a0, b0, c0, status);
  if (status != 0 || lattice < 1 || lattice > static_cast<std::int32_t>(lattice_rows.size())) return;

  const Parameters cell = constrained(edited, reference, lattice_rows[static_cast<std::size_t>(lattice - 1)]);
  const bool lengths = any(changes(cell.length, edited.length)), angles = any(changes(cell.angle, edited.angle));
  if (!lengths && !angles) return;
  const auto vectors = in_place(cell, a, b, c, status);
  if (status != 0) return;
  a = vectors[0], b = vectors[1], c = vectors[2];
  result = (lengths ? 1 : 0) + (angles ? 2 : 0);
}

}  // namespace pathstat
