#pragma once

#include <cstdint>

#include "support/text_field.h"

namespace pathstat {

/// What a report makes of a series.
constexpr std::int32_t profile_mode = 1001;
constexpr std::int32_t running_average_mode = 1002;
constexpr std::int32_t block_average_mode = 1003;
constexpr std::int32_t distribution_mode = 1004;
constexpr std::int32_t whole_run_mode = 1005;

/// Curve colour number n of the sequence of thirteen; n is not negative.
std::int32_t colourwheel_(std::int32_t n);

/// Label of a curve, column or table.
///
/// @param id      identifier of the property or fluctuation
/// @param mode    what the report makes of the series
/// @param index   column, from 1
/// @param label   32 characters, out; "Unknown" for what is not listed
/// @param status  0
void trjdatalabel_(std::int32_t id, std::int32_t mode, std::int32_t index, TextField label, std::int32_t& status);

/// Writes the label of measure `number`, from 1, of family `id`, 501 to 505; false if there is no such measure.
using MeasureLabels = bool (*)(std::int32_t id, std::int32_t number, TextField label);

/// Names the source of the labels of single measures; until then they are unknown.
void register_measure_labels(MeasureLabels source);

}  // namespace pathstat
