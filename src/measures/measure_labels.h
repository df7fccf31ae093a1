#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "measures/measure_blocks.h"

namespace pathstat {

/// The numbers of a measure's atoms with marks between them: "1-2", "IJKL:1-2-3-4", "1,2,3-4,5,6".
/// @param numbers  of each atom of the measure: 2, 3, 4 or 6 of them, the six being two planes
MeasureLabel label_of_atoms(std::string_view prefix, std::span<const std::int32_t> numbers);

/// What stands in front of an inversion's atoms: the name of its convention.
std::string_view inversion_prefix(std::int32_t convention);

/// Numbers equal labels: the first of them gets a blank and 1, those behind it 2, 3 and so on, over the end of a label
/// that fills its field.
void number_equal_labels(std::span<MeasureLabel> labels);

}  // namespace pathstat
