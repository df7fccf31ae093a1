#pragma once

#include <cstdint>

#include "reports/value_set.h"

namespace pathstat {

/// Moments of the population (sums are divided by the count) and the extremes of a set of numbers.
struct Moments {
  std::int64_t count = 0;
  double mean = 0;
  double deviation = 0;  ///< square root of the variance
  double skewness = 0;   ///< third central moment over deviation³; 0 where that vanishes
  double kurtosis = 0;   ///< fourth central moment over variance², less 3; 0 where that vanishes
  double smallest = 0;
  double largest = 0;
  bool has_skewness = true;
  bool has_kurtosis = true;
};

/// Two passes over the set: mean and extremes first, then the central moments about that mean.
Moments moments_of(const ValueSet& set);

}  // namespace pathstat
