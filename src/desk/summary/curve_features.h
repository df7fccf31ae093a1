#pragma once

#include <optional>
#include <span>
#include <vector>

#include "desk/graphs/graph_store.h"

namespace pathstat::desk {

/// The points of a curve with low <= x <= high.
std::span<const PlotPoint> within(std::span<const PlotPoint> points, double low, double high);

/// What a line of least squares leaves of the points: 1 - Σ (y - line)² / Σ (y - mean)². Absent for fewer than three
/// points and where all y are the same.
std::optional<double> determination(std::span<const PlotPoint> points, double slope, double intercept);

/// The exponent a of y ~ x^a: the slope of a line of least squares through (ln x, ln y). Absent for fewer than three
/// points above zero in both.
std::optional<double> exponent(std::span<const PlotPoint> points);

/// A maximum or minimum at the vertex of the parabola through the extreme point and its neighbours.
struct Extreme {
  double x = 0, y = 0;
};

/// The first peak of a radial distribution and the minimum behind it. A peak is a maximum above 1 from which the curve
/// falls by a tenth of it; the minimum, a value from which it rises by a twentieth of its depth below the peak, 0.1 at
/// most. Smaller ups and downs are noise.
struct FirstShell {
  std::optional<Extreme> peak, minimum;
};
FirstShell first_shell(std::span<const PlotPoint> g);

/// The highest peaks of a curve, the highest first: maxima from which it falls, on both sides, by a twentieth of its
/// highest value. An end of the curve is no peak.
std::vector<Extreme> highest_peaks(std::span<const PlotPoint> points, std::size_t most);

/// The running coordination number, ρ Σ 4π r² g(r) Δr up to the far end of each bin: as g(r) is normalised by the same
/// 4π r² Δr, the mean number of neighbours that were counted up to there.
///
/// @param g        values at the middles of bins of equal width, from that at half a width on
/// @param density  neighbours in a unit of volume, 1/Å³
std::vector<PlotPoint> running_coordination(std::span<const PlotPoint> g, double density);

}  // namespace pathstat::desk
