#include "volumes/molecule_density.h"

#include <algorithm>
#include <cmath>

#include "structure/crystal_vectors.h"

namespace pathstat {
namespace {

/// Positions in a cell that repeats.
class Cell {
 public:
  Cell(const Matrix3& cell, std::int32_t& status) : cell_(cell) { dmatinv_(cell, inverse_, status); }

  /// The way from one position to the nearest image of another; exact where it is shorter than half the distance of
  /// any two faces.
  Vector3 way(const Vector3& from, const Vector3& to) const {
    const Vector3 d{to[0] - from[0], to[1] - from[1], to[2] - from[2]};
    Vector3 cells = crystal::product(inverse_, d);
    for (auto& x : cells) x = std::round(x);
    const auto move = crystal::product(cell_, cells);
    return {d[0] - move[0], d[1] - move[1], d[2] - move[2]};
  }

 private:
  Matrix3 cell_, inverse_{};
};

Vector3 position(std::span<const double> coordinates, std::int32_t place) {
  const auto at = coordinates.subspan(3 * static_cast<std::size_t>(place));
  return {at[0], at[1], at[2]};
}

/// Unit vectors along the axes of a molecule. @return false for three atoms on a line
bool axes_of(const Vector3& to_x, const Vector3& to_plane, std::array<Vector3, 3>& axes) {
  constexpr double least_sine = 1e-3;
  const auto x = crystal::unit(to_x);
  const auto z = crystal::cross(x, crystal::unit(to_plane));
  if (!(crystal::length(z) > least_sine)) return false;
  axes[0] = x, axes[2] = crystal::unit(z);
  axes[1] = crystal::cross(axes[2], axes[0]);
  return true;
}

}  // namespace

MoleculeDensity::MoleculeDensity(std::int32_t points, double edge) : points_(points), edge_(edge) {
  const auto n = static_cast<std::size_t>(points);
  counts_.resize(n * n * n);
}

bool MoleculeDensity::add(std::span<const double> coordinates, std::span<const std::int32_t> places,
                          std::span<const std::int32_t> molecules, std::span<const MoleculeAtoms> around,
                          const Matrix3& matrix) {
  std::int32_t status = 0;
  const Cell cell(matrix, status);
  if (status != 0) return false;
  const double per_step = points_ / edge_, middle_point = points_ / 2;
  const double farthest_squared = 0.75 * edge_ * edge_;
  for (const auto& molecule : around) {
    const auto middle = position(coordinates, molecule.middle);
    std::array<Vector3, 3> axes;
    if (!axes_of(cell.way(middle, position(coordinates, molecule.on_x)),
                 cell.way(middle, position(coordinates, molecule.in_plane)), axes))
      continue;
    ++samples_;
    for (std::size_t k = 0; k < places.size(); ++k) {
      if (molecules[k] == molecule.number) continue;
      const auto d = cell.way(middle, position(coordinates, places[k]));
      if (!(crystal::dot(d, d) <= farthest_squared)) continue;
      std::size_t point = 0;
      bool inside = true;
      for (std::size_t axis = 3; axis-- > 0;) {
        const double at = std::floor(crystal::dot(d, axes[axis]) * per_step + middle_point + 0.5);
        inside = inside && at >= 0 && at < points_;
        point = point * static_cast<std::size_t>(points_) + (inside ? static_cast<std::size_t>(at) : 0);
      }
      if (inside) ++counts_[point];
    }
  }
  return true;
}

std::vector<float> MoleculeDensity::mean() const {
  std::vector<float> density(counts_.size(), 0);
  if (samples_ == 0) return density;
  const double step = edge_ / points_;
  const double per_count = 1 / (static_cast<double>(samples_) * step * step * step);
  std::ranges::transform(counts_, density.begin(),
                         [&](std::uint32_t count) { return static_cast<float>(count * per_count); });
  return density;
}

double cube_within(const Matrix3& cell) {
  Matrix3 inverse{};
  std::int32_t status = 0;
  dmatinv_(cell, inverse, status);
  if (status != 0) return 0;
  double between = 0;  // the faces that are nearest to each other
  for (std::size_t row = 0; row < 3; ++row) {
    const double distance = 1 / std::hypot(inverse[row], inverse[row + 3], inverse[row + 6]);
    between = row == 0 ? distance : std::min(between, distance);
  }
  return between / std::sqrt(3.0);
}

}  // namespace pathstat
