#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "extraction/scratch_file.h"

namespace pathstat {

/// What a report has made of one property, as text and table show it.
struct ResultSeries {
  std::int32_t id = 0;
  std::string_view name = {};
  std::int32_t mode = 0;  ///< profile, running or block average, or distribution
  std::int32_t kind = kind_frames;
  bool has_time_axis = false;                   ///< x is a time in ps, not a conformer number
  std::int32_t values = 0;                      ///< numbers per row of the table
  std::int32_t points = 0;                      ///< rows; of a distribution its bins
  std::span<const double> table = {};           ///< points rows, row by row
  std::span<const double> x = {};               ///< one per row; unused in a distribution
  std::span<const ModelName> model_names = {};  ///< one per row; for kind_models only
  std::span<const double> bin_data = {};  ///< of a distribution, per column: first bin centre, largest value, bin width

  double value(std::int32_t row, std::int32_t column) const {
    return table[static_cast<std::size_t>(row) * static_cast<std::size_t>(values) + static_cast<std::size_t>(column)];
  }
  double first_centre(std::int32_t column) const { return bin_data[3 * static_cast<std::size_t>(column)]; }
  double bin_width(std::int32_t column) const { return bin_data[3 * static_cast<std::size_t>(column) + 2]; }
};

/// The nearest integer, halves away from zero: a conformer number that is kept as a double.
inline std::int32_t whole_number(double x) { return static_cast<std::int32_t>(std::llround(x)); }

}  // namespace pathstat
