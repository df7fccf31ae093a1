#pragma once

#include <cstdint>

namespace pathstat::actions {

// Each routine lists the highest or lowest values of the selected properties, with where they occur. A property that
// cannot be had does not keep back the others; the first failure is the result.

std::int32_t find_extrema();
std::int32_t find_maxima();
std::int32_t find_minima();

}  // namespace pathstat::actions
