#pragma once

#include <span>

#include "desk/graphs/figure.h"

namespace pathstat::desk {

/// Adds to figures what they say: frames and the number that matters most in small letters, the window of a fit, the
/// mean of a distribution and one standard deviation to both sides of it, and the minimum behind the first peak of a
/// radial distribution.
void annotate(std::span<Figure> figures);

/// Mean and standard deviation of a distribution.
struct Moments {
  double mean = 0, deviation = 0;
};

/// From a histogram of bins of equal width h as the process makes it, with points at the middles of bins: it counts a
/// value in the bin whose lower end is nearest, so that half a width is taken off the mean of the points, and h²/12 off
/// their variance (Sheppard's correction). Absent for an empty one.
std::optional<Moments> moments_of(std::span<const PlotPoint> histogram);

}  // namespace pathstat::desk
