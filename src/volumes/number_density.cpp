#include "volumes/number_density.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace pathstat {
namespace {

constexpr std::size_t atoms_at_once = 512;
constexpr double farthest = 1e9;  ///< in points, from the first; within it all that is computed of points is exact

std::size_t grid_size(const std::array<std::int32_t, 3>& points) {
  std::size_t size = 1;
  for (const auto n : points) size *= static_cast<std::size_t>(n);
  return size;
}

/// Some atoms on their way to the grid.
struct Piece {
  std::array<std::array<double, atoms_at_once>, 3> positions;  ///< x, y, z
  std::array<std::int32_t, atoms_at_once> found;               ///< the numbers of their points
};

/// An axis of the grid: a row of the matrix that leads to its points, and how many there are.
struct Axis {
  double x, y, z, from, n, one_nth;

  /// Where an atom stands, in points.
  [[gnu::always_inline]] double at(double px, double py, double pz) const { return x * px + y * py + z * pz + from; }
  /// The nearest of the points, which repeat for ever. The quotient may be off by one at the ends of the cell, where
  /// the point is the first all the same.
  [[gnu::always_inline]] double nearest(double u) const {
    const double point = std::floor(u - n * std::floor(u * one_nth) + 0.5);
    return point < n ? point : 0.0;
  }
};

// Without branches and whole numbers until the end, so that whole registers of atoms go through it. It is written once
// and built for two instruction sets; what they compute is the same.
[[gnu::always_inline]] inline void find_points(Piece& piece, const std::array<Axis, 3>& axes, double nowhere) {
  const auto [i, j, k] = axes;
  const auto& [x, y, z] = piece.positions;
  for (std::size_t atom = 0; atom < atoms_at_once; ++atom) {
    const double u = i.at(x[atom], y[atom], z[atom]);
    const double v = j.at(x[atom], y[atom], z[atom]);
    const double w = k.at(x[atom], y[atom], z[atom]);
    const double point = (k.nearest(w) * j.n + j.nearest(v)) * i.n + i.nearest(u);
    const bool sound = (std::abs(u) < farthest) & (std::abs(v) < farthest) & (std::abs(w) < farthest);
    piece.found[atom] = static_cast<std::int32_t>(sound ? point : nowhere);
  }
}

#ifdef __x86_64__
[[gnu::target("avx2")]] void find_points_wide(Piece& piece, const std::array<Axis, 3>& axes, double nowhere) {
  find_points(piece, axes, nowhere);
}
#endif

void find(Piece& piece, const std::array<Axis, 3>& axes, double nowhere) {
#ifdef __x86_64__
  if (__builtin_cpu_supports("avx2")) return find_points_wide(piece, axes, nowhere);
#endif
  find_points(piece, axes, nowhere);
}

void take(Piece& piece, std::span<const double> coordinates, std::span<const std::int32_t> places) {
  auto& [x, y, z] = piece.positions;
  for (std::size_t k = 0; k < places.size(); ++k) {
    const auto* const at = &coordinates[3 * static_cast<std::size_t>(places[k])];
    x[k] = at[0], y[k] = at[1], z[k] = at[2];
  }
}

}  // namespace

NumberDensity::NumberDensity(const std::array<std::int32_t, 3>& points)
    : points_(points), counts_(grid_size(points) + 1, 0) {}

bool NumberDensity::add(std::span<const double> coordinates, std::span<const std::int32_t> places, const Matrix3& cell,
                        const std::optional<Vector3>& middle) {
  Matrix3 to_grid;
  std::int32_t status = 0;
  dmatinv_(cell, to_grid, status);
  if (status != 0) return false;
  for (std::size_t k = 0; k < to_grid.size(); ++k) to_grid[k] *= points_[k % 3];
  Vector3 shift{};
  if (middle) dmatmul_(to_grid, *middle, shift);
  std::array<Axis, 3> axes{};
  for (std::size_t k = 0; k < 3; ++k) {
    const double from = middle ? points_[k] / 2 - shift[k] : 0.0;
    axes[k] = {to_grid[k], to_grid[k + 3], to_grid[k + 6], from, static_cast<double>(points_[k]), 1.0 / points_[k]};
  }
  // Points are found first and counted then: the counts are strewn over memory, and what waits for one of them would
  // hold up the arithmetic behind it.
  Piece piece{};
  const auto nowhere = static_cast<double>(counts().size());
  for (std::size_t first = 0; first < places.size(); first += atoms_at_once) {
    const auto some = places.subspan(first, std::min(atoms_at_once, places.size() - first));
    take(piece, coordinates, some);
    find(piece, axes, nowhere);
    for (const auto point : std::span(piece.found).first(some.size())) ++counts_[static_cast<std::size_t>(point)];
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
  std::vector<float> density(counts().size(), 0);
  if (frames_ == 0) return density;
  // Both counts and volumes are sums over the frames.
  const double per_count = static_cast<double>(counts().size()) / volume_;
  std::ranges::transform(counts(), density.begin(),
                         [&](std::uint32_t count) { return static_cast<float>(count * per_count); });
  return density;
}

}  // namespace pathstat
