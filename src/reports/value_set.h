#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace pathstat {

/// The numbers of a value table that are counted together: a column, a component of all vectors, or everything.
///
/// The table is kept row by row, `values` numbers a row. Of each row the set takes the numbers at `first`,
/// `first + step`, ... that lie below the row's size; `first` counts from 0.
struct ValueSet {
  std::span<const double> table;
  std::int32_t values = 0;
  std::int32_t rows = 0;
  std::span<const std::int32_t> row_sizes;  ///< one size per row, each at most `values`; empty: all rows are full
  std::int32_t first = 0;
  std::int32_t step = 1;

  /// Calls visit(number) row by row.
  template <class Visit>
  void each(Visit visit) const {
    for (std::int32_t row = 0; row < rows; ++row) {
      const auto at = static_cast<std::size_t>(row);
      const std::int32_t size = row_sizes.empty() ? values : row_sizes[at];
      const double* numbers = table.data() + at * static_cast<std::size_t>(values);
      for (std::int32_t k = first; k < size; k += step) visit(numbers[k]);
    }
  }
};

/// The numbers of one column over all rows; `column` counts from 0.
inline ValueSet column_of(std::span<const double> table, std::int32_t values, std::int32_t rows, std::int32_t column) {
  return {table, values, rows, {}, column, values};
}

}  // namespace pathstat
