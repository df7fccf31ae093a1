#include "structure/crystal_orientation.h"

#include <array>
#include <numbers>

#include "structure/crystal_cell.h"
#include "structure/crystal_vectors.h"

namespace pathstat {

using namespace crystal;

namespace {

enum Axis : std::size_t { X, Y, Z };
enum CellVector : std::size_t { A, B, C };
enum SlabVector : std::size_t { U, V };

/// One cell vector lies on an axis, a second one in the plane of that axis and the next, on the side of the next.
struct Orientation {
  CellVector first;
  Axis axis;
  CellVector second;
  Axis next;
};
constexpr std::array<Orientation, 18> orientations{{
    {C, Z, B, Y},
    {B, Z, A, Y},
    {A, Z, C, Y},  // 1 to 3
    {A, X, B, Y},
    {C, X, A, Y},
    {B, X, C, Y},  // 4 to 6
    {B, Y, A, X},
    {A, Y, C, X},
    {C, Y, B, X},  // 7 to 9
    {C, Z, A, X},
    {B, Z, C, X},
    {A, Z, B, X},  // 10 to 12
    {A, X, C, Z},
    {C, X, B, Z},
    {B, X, A, Z},  // 13 to 15
    {B, Y, C, Z},
    {A, Y, B, Z},
    {C, Y, A, Z},  // 16 to 18
}};
constexpr std::int32_t diagonal_orientation = 19;

/// One slab vector lies on an axis, the other in the plane of that axis and a second one, on the side of the sign.
/// An alignment frame has the slab's normal on the third axis and a cross product on the second.
struct SlabOrientation {
  SlabVector fixed;
  Axis axis;
  Axis side;
  double sign;
  bool axis_times_normal;  ///< the order of the cross product
};
constexpr std::int32_t first_slab_orientation = 101;
constexpr std::array<SlabOrientation, 12> slab_orientations{{
    {V, Y, X, +1, true},   // 101
    {U, X, Y, +1, false},  // 102
    {U, Y, X, -1, false},  // 103
    {V, X, Y, -1, true},   // 104
    {U, X, Z, +1, false},  // 105
    {V, Z, X, +1, true},   // 106
    {U, Z, X, -1, false},  // 107
    {V, X, Z, -1, true},   // 108
    {U, Y, Z, +1, false},  // 109
    {V, Y, Z, -1, true},   // 110
    {U, Z, Y, -1, true},   // 111
    {V, Z, Y, +1, true},   // 112
}};

/// The row of a code in a table whose first row has the code `first`; null if there is none.
template <class Table>
const typename Table::value_type* row_of(const Table& table, std::int32_t first, std::int32_t code) {
  if (code < first || code - first >= static_cast<std::int32_t>(table.size())) return nullptr;
  return &table[static_cast<std::size_t>(code - first)];
}

/// The third of three things numbered 0, 1, 2.
constexpr std::size_t other(std::size_t one, std::size_t two) { return 3 - one - two; }
constexpr bool follows(std::size_t next, std::size_t axis) { return next == (axis + 1) % 3; }

std::array<Vector3, 3> placed(const Vector3& length, const Vector3& cosine, const Vector3& sine,
                              const Orientation& row) {
  const std::size_t p = row.first, q = row.second, r = other(p, q);
  const std::size_t last = other(row.axis, row.next);
  std::array<Vector3, 3> cell{};
  cell[p][row.axis] = length[p];
  cell[q][row.axis] = length[q] * cosine[r];
  cell[q][row.next] = length[q] * sine[r];
  const double along = length[r] * cosine[q];
  const double beside = (length[q] * length[r] * cosine[p] - cell[q][row.axis] * along) / cell[q][row.next];
  cell[r][row.axis] = along;
  cell[r][row.next] = beside;
  cell[r][last] = std::sqrt(std::max(0.0, length[r] * length[r] - along * along - beside * beside));
  return cell;
}

/// The unit vectors that are to become x, y and z.
std::array<Vector3, 3> aligned_frame(const std::array<Vector3, 3>& cell, const Orientation& row) {
  std::array<Vector3, 3> frame;
  const std::size_t last = other(row.axis, row.next);
  const Vector3& on_axis = frame[row.axis] = cell[row.first];
  const bool right_handed = follows(row.next, row.axis);
  frame[last] = right_handed ? cross(on_axis, cell[row.second]) : cross(cell[row.second], on_axis);
  frame[row.next] = right_handed ? cross(frame[last], on_axis) : cross(on_axis, frame[last]);
  return frame;
}

std::array<Vector3, 3> diagonal_frame(const std::array<Vector3, 3>& cell) {
  const Vector3 x = sum(cell[A], cell[B]);
  const Vector3 z = cross(cell[A], cell[B]);
  return {x, cross(z, x), z};
}

std::array<Vector3, 3> slab_frame(const Vector3& u, const Vector3& v, const SlabOrientation& row) {
  std::array<Vector3, 3> frame;
  const Vector3& on_axis = frame[row.axis] = row.fixed == U ? u : v;
  const Vector3& normal = frame[other(row.axis, row.side)] = unit(cross(u, v));
  frame[row.side] = row.axis_times_normal ? cross(on_axis, normal) : cross(normal, on_axis);
  return frame;
}

/// The matrix that turns the frame's vectors, once they are of length 1, into x, y and z.
void matrix_of_frame(const std::array<Vector3, 3>& frame, Matrix3& m, std::int32_t& status) {
  dmatinv_(columns(unit(frame[X]), unit(frame[Y]), unit(frame[Z])), m, status);
  if (status != 0) status = matrix_singular;
}

bool angles_make_a_cell(double alpha, double beta, double gamma) {
  return alpha - beta + gamma > 0 && beta - alpha + gamma > 0 && alpha + beta - gamma > 0 &&
         alpha + beta + gamma < 2 * std::numbers::pi;
}

}  // namespace

void kva_cry_3dparamtocell_(double a, double b, double c, double alpha, double beta, double gamma,
                            std::int32_t orientation, Vector3& a_vector, Vector3& b_vector, Vector3& c_vector,
                            std::int32_t& status) {
  const bool diagonal = orientation == diagonal_orientation;
  const Orientation* row = row_of(orientations, 1, diagonal ? 1 : orientation);
  status = !angles_make_a_cell(alpha, beta, gamma)     ? cell_angles_impossible
           : vanishes(a) || vanishes(b) || vanishes(c) ? cell_length_vanishes
           : row == nullptr                            ? orientation_unknown
                                                       : 0;
  if (status != 0) return;
  auto cell = placed({a, b, c}, {std::cos(alpha), std::cos(beta), std::cos(gamma)},
                     {std::sin(alpha), std::sin(beta), std::sin(gamma)}, *row);
  if (diagonal) {
    Matrix3 turn;
    kva_cry_3dalignmentmatrix_(cell[A], cell[B], cell[C], diagonal_orientation, turn, status);
    if (status != 0) return;
    for (Vector3& vector : cell) vector = product(turn, vector);
  }
  a_vector = cell[A], b_vector = cell[B], c_vector = cell[C];
}

void kva_cry_2dparamtocell_(double u, double v, double gamma, std::int32_t orientation, Vector3& u_vector,
                            Vector3& v_vector, std::int32_t& status) {
  const SlabOrientation* row = row_of(slab_orientations, first_slab_orientation, orientation);
  status = vanishes(u) ? cell_length_vanishes : row == nullptr ? orientation_unknown : 0;
  if (status != 0) return;
  Vector3& fixed = row->fixed == U ? u_vector : v_vector;
  Vector3& free = row->fixed == U ? v_vector : u_vector;
  const double free_length = row->fixed == U ? v : u;
  fixed = free = {};
  fixed[row->axis] = row->fixed == U ? u : v;
  free[row->axis] = free_length * std::cos(gamma);
  free[row->side] = row->sign * free_length * std::sin(gamma);
}

void kva_cry_3dalignmentmatrix_(const Vector3& a, const Vector3& b, const Vector3& c, std::int32_t orientation,
                                Matrix3& m, std::int32_t& status) {
  const std::array cell{unit(a), unit(b), unit(c)};
  const Orientation* row = row_of(orientations, 1, orientation);
  status = row == nullptr && orientation != diagonal_orientation ? orientation_unknown : 0;
  if (status != 0) return;
  matrix_of_frame(row == nullptr ? diagonal_frame(cell) : aligned_frame(cell, *row), m, status);
}

void kva_cry_2dalignmentmatrix_(const Vector3& u, const Vector3& v, std::int32_t orientation, Matrix3& m,
                                std::int32_t& status) {
  const SlabOrientation* row = row_of(slab_orientations, first_slab_orientation, orientation);
  status = row == nullptr ? orientation_unknown : 0;
  if (status != 0) return;
  matrix_of_frame(slab_frame(unit(u), unit(v), *row), m, status);
}

}  // namespace pathstat
