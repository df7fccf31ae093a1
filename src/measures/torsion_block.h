#pragma once

#include <array>
#include <cstddef>

namespace pathstat {

/// Torsions whose points lie as vector instructions take them: one array a coordinate.
struct TorsionBlock {
  static constexpr std::size_t size = 64;
  using Lanes = std::array<double, size>;

  std::array<std::array<Lanes, 3>, 4> points;  ///< by point and direction
  Lanes angles;

  /// Puts the signed torsions into `angles`, in radians, as `torsion_of` defines them to rounding. One that has no
  /// plane on a side, or whose products no number holds, becomes not a number.
  void compute();
};

}  // namespace pathstat
