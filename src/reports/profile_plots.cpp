#include "reports/profile_plots.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <optional>
#include <string>

#include "catalogue/measure_families.h"
#include "coreapi/messages.h"
#include "coreapi/operations.h"
#include "extraction/scratch_format.h"
#include "plots/graph.h"
#include "plots/labels.h"
#include "plots/saved_handles.h"
#include "reports/printed_line.h"
#include "support/named_memory.h"
#include "support/text_field.h"

namespace pathstat {
namespace {

constexpr std::int32_t stress = 205;
constexpr std::int32_t cell_parameters = 206;
constexpr std::int32_t distance_vector = 506;
constexpr std::int32_t most_curves = 10;
constexpr std::size_t title_width = 20;
constexpr std::array<std::string_view, 3> axis_suffixes{" x", " y", " z"};

/// Suffix of the data set's name and label of the curve.
struct CurveText {
  std::string_view suffix;
  std::string_view label;
};

/// One component of stress or cell; the forms are for six, three and one number per frame, column 0 means none.
struct Slot {
  std::size_t graph;
  std::int32_t colour;
  std::array<std::int32_t, 3> column;
  std::array<CurveText, 3> stress;
  std::array<CurveText, 3> cell;
};

constexpr auto slots = std::to_array<Slot>({
    {0, 3, {1, 0, 0}, {{{" XX", "STRESS XX"}}}, {{{" A", "A"}}}},
    {0, 4, {2, 1, 0}, {{{" YY", "STRESS YY"}, {" YY", "STRESS YY"}}}, {{{" B", "B"}, {" U", "U"}}}},
    {0,
     5,
     {3, 2, 1},
     {{{" ZZ", "STRESS ZZ"}, {" ZZ", "STRESS ZZ"}, {" ZZ", "STRESS ZZ"}}},
     {{{" C", "C"}, {" V", "V"}, {" Repeat length", "Repeat length"}}}},
    {1, 3, {4, 3, 0}, {{{" YZ", "STRESS YZ"}, {" YZ", "STRESS YZ"}}}, {{{" alpha", "alpha"}, {" angle", "angle"}}}},
    {1, 4, {5, 0, 0}, {{{" XZ", "STRESS XZ"}}}, {{{" beta", "beta"}}}},
    {1, 5, {6, 0, 0}, {{{" XY", "STRESS XY"}}}, {{{" gamma", "gamma"}}}},
});

/// The two graphs of stress or cell.
struct ComponentGraph {
  std::string_view suffix;
  std::string_view title;
  std::string_view y_label;
};

constexpr std::array<ComponentGraph, 2> stress_graphs{
    {{" diagonal", "Stress components", "Stress/GPa"}, {" off diagonal", "Shear components", "Shears/GPa"}}};
constexpr std::array<ComponentGraph, 2> cell_graphs{
    {{" lengths", "Cell lengths", "Length/A"}, {" angles", "Cell angles", "Angle/degrees"}}};

bool has_components(std::int32_t id) { return id == stress || id == cell_parameters; }

std::int32_t graphs_needed(const PlottedSeries& series) {
  if (has_components(series.id)) return 2;
  return series.id == distance_vector ? 3 : 1;
}

/// How the curves of one series are drawn.
struct Drawing {
  DrawStyle style;
  std::int32_t mode;
  std::string tag;  ///< of data set names
  std::string long_title;
  std::string graph_name;  ///< of the one graph
  std::string x_label;
  std::string y_label;  ///< empty: the property's own
  bool save;
  std::function<void(std::int32_t data_set, std::int32_t column)> write;

  bool is_histogram() const { return style == DrawStyle::histogram; }

  /// A histogram goes on with what it gets.
  std::optional<std::int32_t> graph(std::string_view name) const {
    if (!is_histogram()) return take_graph(name);
    std::int32_t handle = 0;
    std::int32_t error = 0;
    kvp_han_write_(name, graph_kind, handle, error);
    return handle;
  }
  std::int32_t curve(std::string_view name, std::int32_t colour, std::string_view label, std::int32_t column) const {
    const std::int32_t data_set = take_data_set(name, colour, style, label);
    write(data_set, column);
    return data_set;
  }
  std::string label(std::int32_t id, std::int32_t index) const {
    Text<32> text;
    std::int32_t status = 0;
    trjdatalabel_(id, mode, index, text, status);
    return text.str();
  }
  void keep(std::span<const std::int32_t> handles) const {
    std::int32_t status = 0;
    if (save) savehandles_(handles, status);
  }
};

/// The graphs of the command.
struct GraphList {
  std::int32_t& count;
  PlotGraphList& list;

  bool has_room(std::int32_t graphs) const { return count >= 0 && count + graphs <= std::ssize(list); }
  void add(std::int32_t graph) {
    if (has_room(1)) list[static_cast<std::size_t>(count++)] = graph;
  }
};

/// The colour of the next curve; a start below 1 walks down the wheel.
std::int32_t next_colour(std::int32_t& walk) { return walk < 1 ? colourwheel_(std::abs(walk--)) : walk; }

std::string_view first_title_characters(std::string_view name) { return trimmed(name.substr(0, title_width)); }

/// Data sets of one graph of stress or cell.
std::size_t draw_slots(const Drawing& drawing, const PlottedSeries& series, std::size_t graph,
                       std::span<std::int32_t> data_sets) {
  const std::size_t form = series.values > 3 ? 0 : series.values > 1 ? 1 : 2;
  std::size_t drawn = 0;
  for (const Slot& slot : slots) {
    const std::int32_t column = slot.column[form];
    if (slot.graph != graph || column == 0 || column > series.values) continue;
    const CurveText& text = series.id == stress ? slot.stress[form] : slot.cell[form];
    const std::string name = drawing.tag + drawing.long_title + std::string(text.suffix);
    data_sets[drawn++] = drawing.curve(name, slot.colour, text.label, column);
  }
  return drawn;
}

void draw_components(const Drawing& drawing, const PlottedSeries& series, GraphList list) {
  const auto& layouts = series.id == stress ? stress_graphs : cell_graphs;
  const std::size_t graph_count = series.values < 2 ? 1 : 2;
  std::array<std::int32_t, 2> graphs{};
  for (std::size_t g = 0; g < graph_count; ++g) {
    const ComponentGraph& layout = layouts[g];
    const auto graph = drawing.graph(drawing.long_title + std::string(layout.suffix));
    if (!graph) return;
    graphs[g] = *graph;
    std::array<std::int32_t, slots.size()> handles{};
    const auto data_sets = std::span<std::int32_t>(handles).first(draw_slots(drawing, series, g, handles));
    const std::string_view y_label = drawing.y_label.empty() ? layout.y_label : drawing.y_label;
    if (drawing.is_histogram()) widen(std::span(&graphs[g], 1));
    lay_out(*graph, data_sets, {layout.title, drawing.x_label, y_label});
    if (!drawing.is_histogram()) widen(std::span(&graphs[g], 1));
    drawing.keep(std::span(&graphs[g], 1));
    drawing.keep(data_sets);
  }
  for (std::size_t g = 0; g < graph_count; ++g) list.add(graphs[g]);
}

/// One graph per axis, with a curve for each vector.
void draw_vector_profiles(const Drawing& drawing, const PlottedSeries& series, std::int32_t limit,
                          std::span<std::int32_t> data_sets, GraphList list) {
  std::array<std::int32_t, 3> graphs{};
  for (std::int32_t m = 0; m < 3; ++m) {
    const std::string suffix(axis_suffixes[static_cast<std::size_t>(m)]);
    const auto graph = drawing.graph(drawing.long_title + suffix);
    if (!graph) return;
    std::int32_t walk = series.colour;
    std::size_t drawn = 0;
    for (std::int32_t column = m + 1; column <= limit; column += 3) {
      const std::int32_t colour = next_colour(walk);
      const std::string label = drawing.label(series.id, column);
      data_sets[drawn++] = drawing.curve(drawing.tag + label, colour, label, column);
    }
    const std::string title = std::string(first_title_characters(series.name)) + suffix;
    const std::string y_label = suffix + ' ' + std::string(series.units);
    widen(std::span(&*graph, 1));
    lay_out(*graph, data_sets.first(drawn), {title, drawing.x_label, y_label});
    drawing.keep(data_sets.first(drawn));
    list.add(*graph);
    graphs[static_cast<std::size_t>(m)] = *graph;
  }
  drawing.keep(graphs);
}

/// One graph per axis, with the histogram of that component of all vectors.
void draw_vector_histograms(const Drawing& drawing, const PlottedSeries& series, GraphList list) {
  for (std::int32_t m = 0; m < 3; ++m) {
    const std::string suffix(axis_suffixes[static_cast<std::size_t>(m)]);
    const std::string label = drawing.label(series.id, m + 1);
    const auto graph = drawing.graph(label);
    const std::int32_t colour = colourwheel_(std::abs(series.colour - m));
    const std::int32_t data_set = drawing.curve(drawing.tag + label, colour, label, m + 1);
    const std::string title = std::string(first_title_characters(series.name)) + suffix;
    const std::string x_label = suffix + ' ' + std::string(series.units);
    widen(std::span(&*graph, 1));
    lay_out(*graph, std::span(&data_set, 1), {title, x_label, drawing.y_label});
    list.add(*graph);
  }
}

/// One graph for all curves.
void draw_single(const Drawing& drawing, const PlottedSeries& series, std::int32_t curves,
                 std::span<std::int32_t> data_sets, GraphList list) {
  const auto graph = drawing.graph(drawing.graph_name);
  if (!graph) return;
  std::int32_t walk = series.colour;
  for (std::int32_t j = 1; j <= curves; ++j) {
    const std::int32_t colour = next_colour(walk);
    const std::string label = drawing.label(series.id, j);
    data_sets[static_cast<std::size_t>(j - 1)] = drawing.curve(drawing.tag + label, colour, label, j);
  }
  const auto drawn = data_sets.first(static_cast<std::size_t>(curves));
  const std::string_view title_source = drawing.is_histogram() ? series.name : series.short_name;
  const std::string_view y_label = drawing.y_label.empty() ? series.units : drawing.y_label;
  widen(std::span(&*graph, 1));
  lay_out(*graph, drawn, {first_title_characters(title_source), drawing.x_label, y_label});
  drawing.keep(std::span(&*graph, 1));
  drawing.keep(drawn);
  list.add(*graph);
}

/// The curves that are drawn; the user hears of those that are not. A vector counts as one.
std::int32_t curve_limit(std::int32_t values, std::int32_t numbers_per_curve) {
  if (values / numbers_per_curve > most_curves) show_message("PATHSTAT_WARN_5", most_curves);
  return std::min(values, most_curves * numbers_per_curve);
}

void draw(const Drawing& drawing, const PlottedSeries& series, std::int32_t limit, std::span<std::int32_t> data_sets,
          GraphList list) {
  if (!list.has_room(graphs_needed(series))) return;
  if (has_components(series.id)) return draw_components(drawing, series, list);
  if (series.id != distance_vector) {
    const bool is_pooled = drawing.is_histogram() && is_measure(series.id);
    return draw_single(drawing, series, is_pooled ? 1 : limit, data_sets, list);
  }
  if (drawing.is_histogram()) return draw_vector_histograms(drawing, series, list);
  draw_vector_profiles(drawing, series, limit, data_sets, list);
}

std::string_view prefix_of(std::int32_t mode) {
  if (mode == running_average_mode) return "Running Average of ";
  return mode == block_average_mode ? "Block Average of " : "Profile of ";
}

std::string_view tag_of(std::int32_t mode) {
  if (mode == running_average_mode) return "ra ";
  return mode == block_average_mode ? "ba " : "pr ";
}

std::string_view x_label_of(std::int32_t kind, bool has_time_axis) {
  if (kind == kind_models) return "Model Number";
  return has_time_axis ? "Time (ps)" : "Conformation";
}

}  // namespace

void close_full_list() {
  std::int32_t& graph_count = trj_gui_i_.plot_graph_count;
  constexpr auto most_graphs = static_cast<std::int32_t>(most_plot_graphs);
  if (graph_count != most_graphs) return;
  print_line("PATHSTAT_MSG_3", most_graphs);
  ++graph_count;
}

void plotprofile_(const PlottedSeries& series, std::span<float> xy, bool has_time_axis, std::int32_t mode,
                  std::int32_t& plot_graph_count, PlotGraphList& plot_graph_list, std::int32_t kind, bool save,
                  std::int32_t& status) {
  status = 0;
  if (series.points < 1) return;
  const std::int32_t limit = curve_limit(series.values, series.id == distance_vector ? 3 : 1);
  const NamedBlock<std::int32_t> data_sets("pathstat/PP/DataHandle", limit, status);
  if (status != 0) return;
  const auto points = static_cast<std::size_t>(series.points);
  const auto row_length = static_cast<std::size_t>(series.values);
  const auto write = [&](std::int32_t data_set, std::int32_t column) {
    const auto c = static_cast<std::size_t>(column - 1);
    for (std::size_t k = 0; k < points; ++k) xy[2 * k + 1] = static_cast<float>(series.table[k * row_length + c]);
    write_points(data_set, xy.first(2 * points));
  };
  const std::string prefix(prefix_of(mode));
  const std::string_view name = trimmed(series.name);
  const std::string short_title = prefix + std::string(trimmed(series.short_name));
  const std::string long_title = name.size() < title_width ? prefix + std::string(name) : short_title;
  const Drawing drawing{DrawStyle::curve,
                        mode,
                        std::string(tag_of(mode)),
                        long_title,
                        short_title,
                        std::string(x_label_of(kind, has_time_axis)),
                        "",
                        save,
                        write};
  draw(drawing, series, limit, data_sets.span(), {plot_graph_count, plot_graph_list});
}

void plothistogram_(const PlottedSeries& series, std::span<float> xy, std::span<const double> bin_data,
                    std::int32_t& plot_graph_count, PlotGraphList& plot_graph_list, std::int32_t& status) {
  status = 0;
  if (series.points < 1) return;
  const std::int32_t limit = is_measure(series.id) ? series.values : curve_limit(series.values, 1);
  const NamedBlock<std::int32_t> data_sets("pathstat/PH/DataHandle", limit, status);
  if (status != 0) return;
  const auto write = [&](std::int32_t data_set, std::int32_t column) {
    std::array<float, 2> left{};
    std::array<float, 2> right{};
    std::int32_t error = 0;
    makehistxy_(bin_data, series.values, series.table, column, series.points, xy, left, right, error);
    write_points(data_set, left);
    append_points(data_set, xy.first(2 * static_cast<std::size_t>(series.points)));
    append_points(data_set, right);
  };
  const std::string title = "Histogram of " + std::string(trimmed(series.name));
  const Drawing drawing{DrawStyle::histogram,
                        distribution_mode,
                        "hs ",
                        title,
                        title,
                        std::string(trimmed(series.units)),
                        "Frequency",
                        false,
                        write};
  draw(drawing, series, limit, data_sets.span(), {plot_graph_count, plot_graph_list});
}

void makehistxy_(std::span<const double> bin_data, std::int32_t row_length, std::span<const double> table,
                 std::int32_t column, std::int32_t bins, std::span<float> xy, std::span<float, 2> left,
                 std::span<float, 2> right, std::int32_t& status) {
  status = 0;
  const auto c = static_cast<std::size_t>(column - 1);
  const auto first_centre = static_cast<float>(bin_data[3 * c]);
  const auto largest = static_cast<float>(bin_data[3 * c + 1]);
  const auto width = static_cast<float>(bin_data[3 * c + 2]);
  float x = width > 0 ? first_centre : largest;
  for (std::size_t k = 0; k < static_cast<std::size_t>(bins); ++k) {
    xy[2 * k] = x;
    xy[2 * k + 1] = static_cast<float>(table[k * static_cast<std::size_t>(row_length) + c]);
    if (width > 0) x += width;
  }
  left[0] = xy[0] - width;
  left[1] = 0;
  right[0] = xy[2 * static_cast<std::size_t>(bins) - 2] + width;
  right[1] = 0;
}

}  // namespace pathstat
