#include "reports/moments.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace pathstat {
namespace {

constexpr double least_denominator = 1e-99;

}  // namespace

Moments moments_of(const ValueSet& set) {
  Moments found;
  double sum = 0;
  double smallest = std::numeric_limits<double>::infinity();
  double largest = -smallest;
  set.each([&](double value) {
    ++found.count;
    sum += value;
    smallest = std::min(smallest, value);
    largest = std::max(largest, value);
  });
  if (found.count == 0) return found;
  const auto count = static_cast<double>(found.count);
  found.mean = sum / count;
  found.smallest = smallest;
  found.largest = largest;

  double squares = 0;
  double cubes = 0;
  double fourths = 0;
  set.each([&](double value) {
    const double d = value - found.mean;
    squares += d * d;
    cubes += d * d * d;
    fourths += d * d * d * d;
  });
  const double variance = squares / count;
  found.deviation = std::sqrt(variance);
  const double deviation_cubed = found.deviation * variance;
  const double variance_squared = variance * variance;
  found.has_skewness = !(std::abs(deviation_cubed) < least_denominator);
  found.has_kurtosis = !(std::abs(variance_squared) < least_denominator);
  if (found.has_skewness) found.skewness = cubes / count / deviation_cubed;
  if (found.has_kurtosis) found.kurtosis = fourths / count / variance_squared - 3.0;
  return found;
}

}  // namespace pathstat
