#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "state/analysis_settings.h"

namespace pathstat {

/// What is drawn of a property.
struct PlottedSeries {
  std::int32_t id = 0;
  std::string_view name;
  std::string_view short_name;
  std::string_view units;
  std::int32_t colour = 0;        ///< of all curves; below 1: where the walk along the colour wheel starts
  std::int32_t values = 0;        ///< numbers per row of the table
  std::int32_t points = 0;        ///< rows that are drawn; for a histogram its bins
  std::span<const double> table;  ///< row by row
};

/// The graphs that the running command has made.
using PlotGraphList = std::array<std::int32_t, most_plot_graphs>;

/// Tells once that the viewer takes no more graphs, and keeps later series of the command from making any.
void close_full_list();

/// Draws the columns of a series as curves: two graphs for stress and cell parameters, three for vectors, one for
/// everything else. Nothing is drawn once the list has no room for the property's graphs.
///
/// @param xy      2 * points numbers with x in place; y is overwritten from curve to curve
/// @param mode    profile, running or block average
/// @param kind    kind_frames or kind_models
/// @param save    keeps the handles for marking
/// @param status  0, or that of the allocation
void plotprofile_(const PlottedSeries& series, std::span<float> xy, bool has_time_axis, std::int32_t mode,
                  std::int32_t& plot_graph_count, PlotGraphList& plot_graph_list, std::int32_t kind, bool save,
                  std::int32_t& status);

/// Draws the frequencies of histogram_ as step plots.
///
/// @param xy        work space of 2 * points numbers
/// @param bin_data  three numbers per column: first bin centre, largest value, bin width
/// @param status    0, or that of the allocation
void plothistogram_(const PlottedSeries& series, std::span<float> xy, std::span<const double> bin_data,
                    std::int32_t& plot_graph_count, PlotGraphList& plot_graph_list, std::int32_t& status);

/// The points of a step plot, and the two that bring it down to zero on each side.
///
/// @param row_length  numbers per row of the table
/// @param column      from 1
/// @param xy          2 * bins numbers, out
/// @param left,right  x and y, out
/// @param status      0
void makehistxy_(std::span<const double> bin_data, std::int32_t row_length, std::span<const double> table,
                 std::int32_t column, std::int32_t bins, std::span<float> xy, std::span<float, 2> left,
                 std::span<float, 2> right, std::int32_t& status);

}  // namespace pathstat
