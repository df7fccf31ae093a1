#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "support/vectors.h"

namespace pathstat {

/// Mean number density of atoms over frames, on a grid over the periodic cell. The grid moves with the cell: point
/// (i, j, k), counted from 0, stands at i / nx, j / ny, k / nz of its vectors, and each atom counts for the point that
/// is nearest to it in fractions of the cell.
class NumberDensity {
 public:
  /// @param points  on each axis, at least 1; in all less than 2^31
  explicit NumberDensity(const std::array<std::int32_t, 3>& points);

  /// Adds a frame.
  ///
  /// @param coordinates  three for each atom, Å; they may lie in any image of the cell. One that is no number or more
  ///                     than 10^9 points away leaves its atom out
  /// @param places       the atoms that count, by their places in `coordinates`, from 0
  /// @param cell         vectors as columns, Å
  /// @param middle       what stands at the point in the middle of the cell, n / 2 in whole numbers on each axis;
  ///                     without it, coordinates count as they are
  /// @return false for a flat cell; nothing is added then
  bool add(std::span<const double> coordinates, std::span<const std::int32_t> places, const Matrix3& cell,
           const std::optional<Vector3>& middle = {});

  std::int64_t frames() const { return frames_; }

  /// Atoms counted at each point, x fastest.
  std::span<const std::uint32_t> counts() const { return std::span(counts_).first(counts_.size() - 1); }

  /// The cell, each of its numbers the mean over the frames.
  Matrix3 mean_cell() const;

  /// Atoms per Å³ at each point, x fastest, then y, then z: the mean count over the mean volume of a point. Zero
  /// without frames.
  std::vector<float> mean() const;

 private:
  std::array<std::int32_t, 3> points_;
  std::vector<std::uint32_t> counts_;  ///< and, behind the points, the atoms that are nowhere
  std::int64_t frames_ = 0;
  double volume_ = 0;  ///< of the cell, summed over the frames
  Matrix3 cells_{};    ///< summed over the frames
};

}  // namespace pathstat
