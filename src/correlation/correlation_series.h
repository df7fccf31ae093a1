#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "correlation/correlation_kernels.h"
#include "support/named_memory.h"
#include "support/plain_array.h"

namespace pathstat {

/// What goes wrong with the points of a series, as messages. Points with nothing to be said of are taken as they are.
struct SeriesMessages {
  std::string_view too_few;
  std::string_view uneven;
  std::string_view not_ahead;  ///< in time
};

/// A displacement or an autocorrelation read back from its file.
class CorrelationSeries {
 public:
  /// Reads a file of one column or of seven, whose lags are evenly spaced unless all messages are empty. A missing file
  /// shows PATHSTAT_ERROR_70, one that cannot be read into memory PATHSTAT_ERROR_69, both with its name.
  /// @param table_label, lag_label  of the named blocks
  /// @param status                  0 or 1
  CorrelationSeries(std::string_view file, std::string_view table_label, std::string_view lag_label,
                    const SeriesMessages& messages, std::int32_t& status);

  std::size_t size() const { return lags_.size(); }
  /// The first column in use.
  std::size_t first() const { return first_; }
  std::span<const double> lags() const { return lags_.span(); }
  /// The integer column of the file.
  std::span<const std::int32_t> numbers() const { return numbers_.span(); }
  double value(std::size_t point, std::size_t column) const {
    return table_.span()[point * correlation_columns + column];
  }
  /// Distance of the lags, ps; 0 for a single one.
  double spacing_ps() const { return spacing_ps_; }

 private:
  bool read(std::string_view file, std::string_view table_label, std::string_view lag_label);
  std::string_view flaw(const SeriesMessages& messages);

  NamedBlock<double> table_;
  NamedBlock<double> lags_;
  PlainArray<std::int32_t> numbers_;
  std::size_t first_ = total_column;
  double spacing_ps_ = 0.0;
};

}  // namespace pathstat
