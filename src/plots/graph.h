#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

namespace pathstat {

/// Kinds of plot handles.
constexpr std::int32_t viewer_kind = 100;
constexpr std::int32_t graph_kind = 101;
constexpr std::int32_t data_set_kind = 102;

/// How a data set is drawn.
enum class DrawStyle : std::int32_t { curve = 901, histogram = 903 };

/// A bracket of plot work: begins where it is made and ends with its scope.
class PlotTransaction {
 public:
  PlotTransaction();
  ~PlotTransaction();
  PlotTransaction(const PlotTransaction&) = delete;
  PlotTransaction& operator=(const PlotTransaction&) = delete;
};

/// The handle of the one graph viewer.
std::int32_t take_viewer();

/// Makes or finds the graph of this name. A failure shows PATHSTAT_ERROR_118 with the name.
std::optional<std::int32_t> take_graph(std::string_view name);

/// Makes or finds a data set and says how it is drawn.
std::int32_t take_data_set(std::string_view name, std::int32_t colour, DrawStyle style, std::string_view label);

/// Replaces the points of a data set by these x, y pairs.
void write_points(std::int32_t data_set, std::span<const float> xy);

/// Appends x, y pairs to a data set.
void append_points(std::int32_t data_set, std::span<const float> xy);

/// The texts and axes of a graph.
struct GraphLayout {
  std::string_view title;
  std::string_view x_label;
  std::string_view y_label;
  std::int32_t text_code = 11;
  std::optional<std::pair<float, float>> x_range{};  ///< fixed x axis; free axes without it
};

/// Puts data sets into a graph, with its texts and axes.
void lay_out(std::int32_t graph, std::span<const std::int32_t> data_sets, const GraphLayout& layout);

/// Gives each of the graphs twice the width of its height.
void widen(std::span<const std::int32_t> graphs);

/// Shows these graphs in the viewer and draws them.
void show_graphs(std::int32_t viewer, std::span<const std::int32_t> graphs);

}  // namespace pathstat
