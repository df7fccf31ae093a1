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

// The loops over atoms are written once and built for two instruction sets; what they compute is the same.

/// Some atoms on their way to the grid.
struct Piece {
  std::array<std::array<double, atoms_at_once>, 3> positions;      ///< x, y, z
  std::array<std::array<std::int32_t, atoms_at_once>, 3> nearest;  ///< points along the axes of the grid
  std::array<std::int32_t, atoms_at_once> anywhere;                ///< 0 for atoms that are too far away or nowhere
  std::array<std::size_t, atoms_at_once> found;                    ///< the numbers of the points of the others
};

/// The nearest of n points that repeat for ever; no branch, so that whole registers of positions go through it.
/// @param position  in points, within `farthest`
[[gnu::always_inline]] inline std::int32_t nearest(double position, std::int32_t n, double one_nth) {
  const double above = position + 0.5;
  auto point = static_cast<std::int32_t>(above);
  point -= above < point ? 1 : 0;
  // The quotient may be off by one, which the last lines put right.
  point -= static_cast<std::int32_t>(point * one_nth) * n;
  point += point < 0 ? n : 0;
  point -= point >= n ? n : 0;
  return point;
}

[[gnu::always_inline]] inline void find_nearest(Piece& piece, const Matrix3& m, const Vector3& shift,
                                                const std::array<std::int32_t, 3>& points) {
  const auto& [x, y, z] = piece.positions;
  piece.anywhere.fill(1);
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const double mx = m[axis], my = m[axis + 3], mz = m[axis + 6], from = shift[axis];
    const std::int32_t n = points[axis];
    const double one_nth = 1.0 / n;
    for (std::size_t k = 0; k < atoms_at_once; ++k) {
      const double u = mx * x[k] + my * y[k] + mz * z[k] + from;
      const bool sound = std::abs(u) < farthest;
      piece.nearest[axis][k] = nearest(sound ? u : 0.0, n, one_nth);
      piece.anywhere[k] &= sound ? 1 : 0;
    }
  }
}

#ifdef __x86_64__
[[gnu::target("avx2")]] void find_nearest_wide(Piece& piece, const Matrix3& m, const Vector3& shift,
                                               const std::array<std::int32_t, 3>& points) {
  find_nearest(piece, m, shift, points);
}
#endif

/// The numbers of the points nearest to atoms.
std::span<const std::size_t> find_points(Piece& piece, std::span<const double> coordinates,
                                         std::span<const std::int32_t> places, const Matrix3& m, const Vector3& shift,
                                         const std::array<std::int32_t, 3>& points) {
  for (std::size_t k = 0; k < places.size(); ++k) {
    const auto* const at = &coordinates[3 * static_cast<std::size_t>(places[k])];
    for (std::size_t axis = 0; axis < 3; ++axis) piece.positions[axis][k] = at[axis];
  }
#ifdef __x86_64__
  if (__builtin_cpu_supports("avx2"))
    find_nearest_wide(piece, m, shift, points);
  else
#endif
    find_nearest(piece, m, shift, points);
  std::size_t count = 0;
  const auto& [on_x, on_y, on_z] = piece.nearest;
  for (std::size_t k = 0; k < places.size(); ++k) {
    const auto row =
        static_cast<std::size_t>(on_z[k]) * static_cast<std::size_t>(points[1]) + static_cast<std::size_t>(on_y[k]);
    piece.found[count] = row * static_cast<std::size_t>(points[0]) + static_cast<std::size_t>(on_x[k]);
    count += static_cast<std::size_t>(piece.anywhere[k]);
  }
  return std::span(piece.found).first(count);
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
  Piece piece{};
  for (std::size_t first = 0; first < places.size(); first += atoms_at_once) {
    const auto some = places.subspan(first, std::min(atoms_at_once, places.size() - first));
    for (const auto point : find_points(piece, coordinates, some, to_grid, shift, points_)) ++counts_[point];
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
