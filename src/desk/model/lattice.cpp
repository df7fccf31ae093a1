#include "desk/model/lattice.h"

#include <algorithm>
#include <cmath>

namespace pathstat::desk {
namespace {

Vector3 unit_normal(const Vector3& a, const Vector3& b) {
  Vector3 normal{};
  dvecprod_(a, b, normal);
  dvecnorm_(normal, normal);
  return normal;
}

/// The axis that a vector leans on least.
Vector3 least_axis(const Vector3& v) {
  const auto less = [](double x, double y) { return std::abs(x) < std::abs(y); };
  Vector3 axis{};
  axis[static_cast<std::size_t>(std::min_element(v.begin(), v.end(), less) - v.begin())] = 1;
  return axis;
}

Cell completed(std::int32_t type, Cell cell) {
  if (type == not_periodic) return {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
  if (type == periodic_1d) cell[1] = unit_normal(cell[2], least_axis(cell[2]));
  if (type != periodic_3d) cell[0] = unit_normal(cell[1], cell[2]);
  return cell;
}

Matrix3 columns(const Cell& cell) {
  Matrix3 m{};
  for (std::size_t k = 0; k < 9; ++k) m[k] = cell[k / 3][k % 3];
  return m;
}

double length_squared(const Vector3& v) { return dvecdot_(v, v); }

}  // namespace

bool is_usable_cell(std::int32_t type, const Cell& cell) {
  if (type == not_periodic) return true;
  const auto filled = columns(completed(type, cell));
  Matrix3 inverse{};
  std::int32_t status = 0;
  dmatinv_(filled, inverse, status);
  const auto finite = [](double x) { return std::isfinite(x); };
  return status == 0 && std::all_of(inverse.begin(), inverse.end(), finite) &&
         std::all_of(cell.begin(), cell.end(),
                     [&](const Vector3& v) { return std::all_of(v.begin(), v.end(), finite); });
}

Vector3 translated(const Vector3& point, const Cell& cell, const Translation& translation) {
  Vector3 moved = point;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    if (translation[axis] == 0) continue;
    for (std::size_t k = 0; k < 3; ++k) moved[k] += translation[axis] * cell[axis][k];
  }
  return moved;
}

Lattice::Lattice(std::int32_t type, const Cell& cell)
    : first_(3 - periodic_directions(type)), cell_(completed(type, cell)), basis_(columns(cell_)) {
  std::int32_t status = 0;
  dmatinv_(basis_, inverse_, status);
  double smallest_width = INFINITY;
  for (auto axis = static_cast<std::size_t>(first_); axis < 3; ++axis) {
    smallest_width = std::min(smallest_width, width(axis));
  }
  safe_length_squared_ = smallest_width * smallest_width / 4;
}

double Lattice::width(std::size_t axis) const {
  const Vector3 reciprocal{inverse_[axis], inverse_[axis + 3], inverse_[axis + 6]};
  return 1 / dveclen_(reciprocal);
}

Vector3 Lattice::fractional(const Vector3& point) const {
  Vector3 f{};
  dmatvecmul_(inverse_, point, f);
  return f;
}

Vector3 Lattice::cartesian(const Vector3& fractional) const {
  Vector3 x{};
  dmatvecmul_(basis_, fractional, x);
  return x;
}

Translation Lattice::nearest_image(const Vector3& difference) const {
  Translation best{};
  if (first_ == 3) return best;
  const auto f = fractional(difference);
  for (auto axis = static_cast<std::size_t>(first_); axis < 3; ++axis) {
    if (!(std::abs(f[axis]) < 1e9)) return {};
    best[axis] = static_cast<std::int32_t>(-std::round(f[axis]));
  }
  double nearest = length_squared(translated(difference, cell_, best));
  if (nearest < safe_length_squared_) return best;

  const Translation rounded = best;
  Translation step{};
  const auto reach = [&](int axis) { return axis < first_ ? 0 : 1; };
  for (step[0] = -reach(0); step[0] <= reach(0); ++step[0]) {
    for (step[1] = -reach(1); step[1] <= reach(1); ++step[1]) {
      for (step[2] = -reach(2); step[2] <= reach(2); ++step[2]) {
        const Translation t{rounded[0] + step[0], rounded[1] + step[1], rounded[2] + step[2]};
        const double length = length_squared(translated(difference, cell_, t));
        if (length < nearest * (1 - 1e-12)) nearest = length, best = t;
      }
    }
  }
  return best;
}

}  // namespace pathstat::desk
