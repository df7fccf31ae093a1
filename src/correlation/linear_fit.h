#pragma once

#include <cstdint>
#include <span>

namespace pathstat {

/// Straight line of least squares through evenly spaced values.
/// @param values     at least two
/// @param slope      per step from value to value
/// @param intercept  at abscissa 0
/// @param offset     the abscissa of value j, from 1, is offset + j
void linefit_(std::span<const double> values, double& slope, double& intercept, std::int32_t offset);

/// Fits a line to the kept mean square displacement between two lags, shows both together, and prints the diffusion
/// coefficients in cm²/s and Å²/ps: a component's is half its slope, the total's a sixth. Source: Einstein relation.
///
/// @param min_time, max_time  ps; outside the data, all of them
/// @param status              0, or 1 after a message
void run_linefit_(double min_time, double max_time, std::int32_t& status);

}  // namespace pathstat
