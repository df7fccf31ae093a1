#include "pairs/cell_columns.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace pathstat {
namespace {

constexpr std::size_t few_atoms = 64;
/// Atoms that a column should have within reach of an atom: enough for long vectors, few enough to be near.
constexpr double wanted_run = 64.0;
/// The mean length of a column within a reach of 1.
constexpr double mean_chord = 1.3;
constexpr double least_atoms_in_cell = 0.5;
constexpr std::uint32_t no_cell = std::numeric_limits<std::uint32_t>::max();

bool is_finite(const double* atom) {
  return std::isfinite(atom[0]) && std::isfinite(atom[1]) && std::isfinite(atom[2]);
}

}  // namespace

void CellColumns::find_box(std::span<const double> coordinates) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  box_.fill({infinity, -infinity});
  finite_ = 0;
  for (std::size_t at = 0; at + 2 < coordinates.size(); at += 3) {
    if (!is_finite(&coordinates[at])) continue;
    ++finite_;
    for (std::size_t k = 0; k < 3; ++k) {
      box_[k].low = std::min(box_[k].low, coordinates[at + k]);
      box_[k].high = std::max(box_[k].high, coordinates[at + k]);
    }
  }
  if (finite_ == 0) box_.fill({});
}

void CellColumns::choose_cells(double reach, std::size_t along) {
  std::array<double, 3> length{};
  for (std::size_t k = 0; k < 3; ++k) length[k] = box_[k].high - box_[k].low;
  if (along == longest_axis) along = static_cast<std::size_t>(std::ranges::max_element(length) - length.begin());
  axis_ = {0, 1, 2};
  std::swap(axis_[2], axis_[along]);
  counts_ = {1, 1, 1};
  per_length_ = {};
  const double greatest = std::ranges::max(length);
  for (std::size_t k = 0; k < 3; ++k) size_[k] = length[axis_[k]];
  if (finite_ <= few_atoms || !(greatest > 0.5 * reach) || !std::isfinite(greatest)) return;

  const auto atoms = static_cast<double>(finite_);
  double density = atoms;
  for (const double each : length) density /= std::max(each, 0.5 * reach);
  const double width = std::clamp(std::sqrt(wanted_run / (density * mean_chord * reach)), 0.25 * reach, reach);
  const double height = std::max(0.125 * reach, least_atoms_in_cell / (density * width * width));
  std::array<double, 3> wanted{width, width, height};
  const auto cells = [&](std::size_t k) { return std::floor(length[axis_[k]] / wanted[k]) + 1.0; };
  while (cells(0) * cells(1) * cells(2) > 4.0 * atoms) {
    for (double& each : wanted) each *= 1.25;
  }
  for (std::size_t k = 0; k < 3; ++k) {
    counts_[k] = static_cast<std::size_t>(cells(k));
    size_[k] = wanted[k];
    per_length_[k] = 1.0 / wanted[k];
  }
}

void CellColumns::fill(std::span<const double> coordinates) {
  const std::size_t atoms = coordinates.size() / 3;
  cells_.resize(atoms);
  starts_.assign(counts_[0] * counts_[1] * counts_[2] + 1, 0);
  for (std::size_t i = 0; i < atoms; ++i) {
    cells_[i] = no_cell;
    if (!is_finite(&coordinates[3 * i])) continue;
    std::size_t cell = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      const double place = (coordinates[3 * i + axis_[k]] - box_[axis_[k]].low) * per_length_[k];
      cell = cell * counts_[k] + std::min(static_cast<std::size_t>(place), counts_[k] - 1);
    }
    cells_[i] = static_cast<std::uint32_t>(cell);
    ++starts_[cell];
  }
  std::uint32_t sum = 0;
  for (auto& start : starts_) sum += std::exchange(start, sum);
  for (auto& each : axes_) each.resize(finite_ + vector_lanes);
  order_.resize(finite_ + vector_lanes);
  for (std::size_t i = 0; i < atoms; ++i) {
    if (cells_[i] == no_cell) continue;
    const std::size_t to = starts_[cells_[i]]++;
    for (std::size_t k = 0; k < 3; ++k) axes_[k][to] = coordinates[3 * i + k];
    order_[to] = static_cast<std::int32_t>(i);
  }
  std::shift_right(starts_.begin(), starts_.end(), 1);
  starts_.front() = 0;
}

ColumnSearch CellColumns::search_of(std::size_t column, const Vector3& image, double reach,
                                    const CellColumns& searching, std::size_t first_atom) const {
  ColumnSearch search{};
  for (std::size_t k = 0; k < 3; ++k) {
    search.atoms[k] = &searching.axes_[axis_[k]][first_atom];
    search.image[k] = image[axis_[k]];
  }
  for (std::size_t k = 0; k < 2; ++k) {
    const auto sides = stretch(k, place(column, k));
    search.low[k] = sides.low;
    search.high[k] = sides.high;
  }
  search.origin = box_[axis_[2]].low;
  search.per_length = per_length_[2];
  search.cells = static_cast<double>(counts_[2]);
  search.reach = reach;
  return search;
}

void CellColumns::sort(std::span<const double> coordinates, double reach, std::size_t along) {
  find_box(coordinates);
  choose_cells(reach, along);
  fill(coordinates);
}

}  // namespace pathstat
