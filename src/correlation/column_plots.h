#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "correlation/correlation_kernels.h"

// Plots of a correlation: one graph for each column in use.
namespace pathstat {

/// A text for each column, in the order of the columns.
using ColumnTexts = std::array<std::string_view, correlation_columns>;

/// The first column in use: all are, or the last one only.
constexpr std::size_t first_column(bool anisotropic) { return anisotropic ? 0 : total_column; }

/// A column with its graph and data set.
struct ColumnPlot {
  std::size_t column;
  std::int32_t graph;
  std::int32_t data_set;
};

/// Makes a graph and a data set of this name. A graph that cannot be made shows PATHSTAT_ERROR_118.
std::optional<ColumnPlot> make_column_plot(std::size_t column, std::string_view name, std::string_view label);

/// Hands the graphs, if there are any, to the one viewer. @return the viewer
std::int32_t hand_to_viewer(std::span<const ColumnPlot> plots, bool wide);

void redraw(std::int32_t viewer);

}  // namespace pathstat
