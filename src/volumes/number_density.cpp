#include "volumes/number_density.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace pathstat {
namespace {

constexpr std::size_t atoms_at_once = 512;
constexpr double farthest = 1e9;  ///< in points, from the first; within it a whole number holds in 32 bits

std::size_t grid_size(const std::array<std::int32_t, 3>& points) {
  std::size_t size = 1;
  for (const auto n : points) size *= static_cast<std::size_t>(n);
  return size;
}

/// The nearest of n points that repeat for ever. @param position  in points, within `farthest`
std::size_t nearest(double position, std::int32_t n) {
  const double above = position + 0.5;
  auto point = static_cast<std::int32_t>(above);
  point -= above < point ? 1 : 0;
  if (static_cast<std::uint32_t>(point) >= static_cast<std::uint32_t>(n)) {
    point %= n;
    point += point < 0 ? n : 0;
  }
  return static_cast<std::size_t>(point);
}

/// The numbers of the points nearest to atoms. @return how many atoms are anywhere
std::size_t find_points(std::span<const double> coordinates, std::span<const std::int32_t> places, const Matrix3& m,
                        const Vector3& shift, const std::array<std::int32_t, 3>& points,
                        std::span<std::size_t, atoms_at_once> found) {
  const auto nx = points[0], ny = points[1], nz = points[2];
  std::size_t count = 0;
  for (const auto place : places) {
    const auto* const at = &coordinates[3 * static_cast<std::size_t>(place)];
    const double x = at[0], y = at[1], z = at[2];
    const double u = m[0] * x + m[3] * y + m[6] * z + shift[0];
    const double v = m[1] * x + m[4] * y + m[7] * z + shift[1];
    const double w = m[2] * x + m[5] * y + m[8] * z + shift[2];
    if (!(std::abs(u) < farthest && std::abs(v) < farthest && std::abs(w) < farthest)) continue;
    const auto row = nearest(w, nz) * static_cast<std::size_t>(ny) + nearest(v, ny);
    found[count++] = row * static_cast<std::size_t>(nx) + nearest(u, nx);
  }
  return count;
}

}  // namespace

NumberDensity::NumberDensity(const std::array<std::int32_t, 3>& points)
    : points_(points), counts_(grid_size(points), 0) {}

bool NumberDensity::add(std::span<const double> coordinates, std::span<const std::int32_t> places, const Matrix3& cell,
                        const std::optional<Vector3>& middle) {
  Matrix3 to_grid;
  std::int32_t status = 0;
  dmatinv_(cell, to_grid, status);
  if (status != 0) return false;
  for (std::size_t k = 0; k < to_grid.size(); ++k) to_grid[k] *= points_[k % 3];
  Vector3 shift{};
  if (middle) dmatmul_(to_grid, *middle, shift);
  for (std::size_t k = 0; middle && k < 3; ++k) shift[k] = points_[k] / 2 - shift[k];
  // Points are found first and counted then: the counts are strewn over memory, and what waits for one of them would
  // hold up the arithmetic behind it.
  std::array<std::size_t, atoms_at_once> found;
  for (std::size_t first = 0; first < places.size(); first += atoms_at_once) {
    const auto piece = places.subspan(first, std::min(atoms_at_once, places.size() - first));
    const auto count = find_points(coordinates, piece, to_grid, shift, points_, found);
    for (std::size_t k = 0; k < count; ++k) ++counts_[found[k]];
  }
  const auto column = std::span(cell);
  volume_ += std::abs(dvectrip_(column.first<3>(), column.subspan<3, 3>(), column.last<3>()));
  std::ranges::transform(cells_, cell, cells_.begin(), std::plus{});
  ++frames_;
  return true;
}

Matrix3 NumberDensity::mean_cell() const {
  Matrix3 mean = cells_;
  for (auto& number : mean) number /= static_cast<double>(std::max<std::int64_t>(frames_, 1));
  return mean;
}

std::vector<float> NumberDensity::mean() const {
  std::vector<float> density(counts_.size(), 0);
  if (frames_ == 0) return density;
  // Both counts and volumes are sums over the frames.
  const double per_count = static_cast<double>(counts_.size()) / volume_;
  std::ranges::transform(counts_, density.begin(),
                         [&](std::uint32_t count) { return static_cast<float>(count * per_count); });
  return density;
}

}  // namespace pathstat
