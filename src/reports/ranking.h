#pragma once

#include <cstdint>

namespace pathstat {

/// Prints the highest or lowest extrema_number values of a property, with the frames or models where they occur: one
/// list per column, and one list of all values for measures of models. Equal values come in the order of dsortidx_.
///
/// @param index      row of the property catalogue, from 1
/// @param direction  1 for the highest values first, -1 for the lowest
/// @param status     0; that of the scratch file after PATHSTAT_MSG_4, or of an allocation; 1 for no such row
void calcrank_(std::int32_t index, std::int32_t direction, std::int32_t& status);

}  // namespace pathstat
