#include "correlation/column_plots.h"

#include <vector>

#include "coreapi/operations.h"
#include "plots/graph.h"

namespace pathstat {
namespace {

constexpr std::int32_t colour = 3;

}  // namespace

std::optional<ColumnPlot> make_column_plot(std::size_t column, std::string_view name, std::string_view label) {
  const auto graph = take_graph(name);
  if (!graph) return std::nullopt;
  return ColumnPlot{column, *graph, take_data_set(name, colour, DrawStyle::curve, label)};
}

std::int32_t hand_to_viewer(std::span<const ColumnPlot> plots, bool wide) {
  const std::int32_t viewer = take_viewer();
  if (plots.empty()) return viewer;
  std::vector<std::int32_t> graphs;
  for (const ColumnPlot& plot : plots) graphs.push_back(plot.graph);
  std::int32_t error = 0;
  kvp_vwr_setgraphlist_(viewer, std::span<const std::int32_t>(graphs), error);
  if (wide) widen(graphs);
  return viewer;
}

void redraw(std::int32_t viewer) {
  std::int32_t error = 0;
  kvp_vwr_redraw_(viewer, error);
}

}  // namespace pathstat
