#include "plots/graph.h"

#include <vector>

#include "coreapi/messages.h"
#include "coreapi/operations.h"

namespace pathstat {
namespace {

constexpr std::int32_t write_mode = 801;
constexpr std::int32_t append_mode = 802;
constexpr std::int32_t free_axes = 2060;
constexpr std::int32_t fixed_x_axis = 2056;

}  // namespace

PlotTransaction::PlotTransaction() {
  std::int32_t error = 0;
  kvp_sys_begin_(error);
}

PlotTransaction::~PlotTransaction() {
  std::int32_t error = 0;
  kvp_sys_end_(error);
}

std::int32_t take_viewer() {
  std::int32_t viewer = 0;
  std::int32_t error = 0;
  kvp_han_write_("Varlane Graphs", viewer_kind, viewer, error);
  return viewer;
}

std::optional<std::int32_t> take_graph(std::string_view name) {
  std::int32_t graph = 0;
  std::int32_t error = 0;
  kvp_han_write_(name, graph_kind, graph, error);
  if (error == 0) return graph;
  show_message("PATHSTAT_ERROR_118", name);
  return std::nullopt;
}

std::int32_t take_data_set(std::string_view name, std::int32_t colour, DrawStyle style, std::string_view label) {
  std::int32_t data_set = 0;
  std::int32_t error = 0;
  kvp_han_write_(name, data_set_kind, data_set, error);
  kvp_dat_setmethodxy_(data_set, colour, static_cast<std::int32_t>(style), 0.0F, label, error);
  return data_set;
}

void write_points(std::int32_t data_set, std::span<const float> xy) {
  std::int32_t error = 0;
  kvp_dat_writexy_(data_set, write_mode, xy, error);
}

void append_points(std::int32_t data_set, std::span<const float> xy) {
  std::int32_t error = 0;
  kvp_dat_writexy_(data_set, append_mode, xy, error);
}

void lay_out(std::int32_t graph, std::span<const std::int32_t> data_sets, const GraphLayout& layout) {
  const auto [low, high] = layout.x_range.value_or(std::pair{0.0F, 0.0F});
  std::int32_t error = 0;
  kvp_grf_setmethodxy_(graph, data_sets, layout.x_range ? fixed_x_axis : free_axes, low, high, 0.0F, 0.0F, 1,
                       layout.title, layout.x_label, layout.y_label, layout.text_code, error);
}

void widen(std::span<const std::int32_t> graphs) {
  const std::vector<float> ratios(graphs.size(), 2.0F);
  std::int32_t error = 0;
  kvp_grf_setaspectratio_(graphs, std::span<const float>(ratios), error);
}

void show_graphs(std::int32_t viewer, std::span<const std::int32_t> graphs) {
  std::int32_t error = 0;
  kvp_vwr_setgraphlist_(viewer, graphs, error);
  kvp_vwr_redraw_(viewer, error);
}

}  // namespace pathstat
