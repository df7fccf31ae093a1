#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "correlation/column_plots.h"
#include "correlation/correlation_run.h"
#include "support/named_memory.h"

namespace pathstat {

/// The growing result of a correlation: sums by lag and column, and how many origins have fed each lag.
class CorrelationTable {
 public:
  /// @param atoms  whose vectors the sums are over
  CorrelationTable(const CorrelationKind& kind, std::int32_t intervals, bool anisotropic, std::int64_t atoms,
                   double spacing_ps, std::int32_t& status);

  std::size_t first() const { return first_; }
  std::size_t columns() const { return correlation_columns - first_; }
  std::size_t intervals() const { return lags_.size(); }

  /// Adds the sums of one pair, columns() of them.
  void add(std::size_t lag, std::span<const double> sums);
  /// Puts the sums of all pairs of a lag, and of fewer atoms while not all are done.
  void put(std::size_t lag, std::span<const double> sums, std::int64_t pairs);
  void set_atoms(std::int64_t atoms);

  /// Over atoms and origins; 0 where no pair has come in.
  double mean(std::size_t lag, std::size_t column) const;
  /// Puts the means in the place of the sums.
  void normalise();
  void save(std::string_view file, std::int32_t& status) const;

 private:
  double& at(std::size_t lag, std::size_t column) const { return table_.span()[lag * correlation_columns + column]; }

  std::size_t first_;
  double cross_factor_;
  NamedBlock<double> table_;
  NamedBlock<double> counts_;
  NamedBlock<double> lags_;
  NamedBlock<std::int32_t> numbers_;
  std::array<double, correlation_columns> factors_{};
};

/// The graphs of the table and their points.
class TablePlots {
 public:
  /// @param points  room for two values of each lag
  TablePlots(const CorrelationKind& kind, const CorrelationTable& table, double spacing_ps, std::span<float> points);
  void draw();

 private:
  const CorrelationTable& table_;
  std::vector<ColumnPlot> plots_;
  std::span<float> points_;
  std::int32_t viewer_ = 0;
};

}  // namespace pathstat
