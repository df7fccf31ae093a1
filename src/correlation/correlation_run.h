#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "correlation/column_plots.h"
#include "correlation/correlation_kernels.h"

namespace pathstat {

/// What sets one correlation over pairs of frames apart from another.
struct CorrelationKind {
  bool of_velocities;
  PairKernel total;     ///< of the last column alone
  PairKernel products;  ///< of all columns
  TileKernel totals;    ///< of the last column alone, for several pairs
  double cross_factor;  ///< of the columns XY, XZ and YZ in the mean
  std::string_view file;

  ColumnTexts titles;
  std::string_view y_label;
  bool wide_graphs;

  std::array<std::string_view, 5> cache_messages;  ///< by the status of the cache, from 1 on
  std::string_view memory_message;
  std::array<std::int32_t, 3> memory_statuses;  ///< frames, table, plot points

  std::array<std::string_view, 6> frame_labels;
  std::string_view table_label;
  std::string_view count_label;
  std::string_view lag_label;
  std::string_view number_label;
  std::string_view plot_label;
};

/// What the user has chosen.
struct CorrelationRequest {
  std::int32_t intervals;  ///< lags, that of 0 included
  std::int32_t frames;
  std::string_view trajectory;
  std::int32_t model;
  std::int32_t first;
  std::int32_t last;
  std::int32_t step;
  bool monitor;
  std::string_view atoms;  ///< "ALL" or "SELECTED"
  std::int32_t origin_step;
  bool anisotropic;
};

/// Sums the products of all pairs of frames from each time origin on, shows the means over origins and atoms while they
/// grow and at the end, and saves them. An interrupted run keeps the origins that are done.
///
/// @param available  true if the file was written
/// @param status     0, that of the cache, of the kind's allocations or of the file
void run_correlation(const CorrelationKind& kind, const CorrelationRequest& request, bool& available,
                     std::int32_t& status);

}  // namespace pathstat
