#pragma once

#include <cstdint>

#include "reports/result_series.h"

namespace pathstat {

/// Prints a result line by line through the messages of the Core: of a distribution one table of centre and frequency
/// per column, of a series tables of up to six columns beside x. Without points nothing is printed.
/// @param status  0
void writeprofile_(const ResultSeries& series, std::int32_t& status);

}  // namespace pathstat
