#include "desk/graphs/overlay.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <vector>

#include "desk/advice/nearest.h"
#include "desk/graphs/axis_text.h"
#include "desk/graphs/figure.h"

namespace pathstat::desk {
namespace {

/// The viewer of overlays. The process makes no viewer, graph or data set of these names.
constexpr std::string_view viewer_name = "pathdesk overlays";
constexpr std::string_view set_name = "pathdesk overlay";

constexpr std::int32_t first_colour = 3, colours = 13;

std::string about_unknown(const std::vector<Figure>& figures, const std::string& name) {
  if (figures.empty()) return fmt::format("there is no graph {}; none has been drawn yet", name);
  std::vector<std::string> headings;
  std::string list;
  for (const auto& figure : figures) {
    headings.push_back(figure.heading);
    list += "\n    " + as_argument(figure.heading);
  }
  const auto meant = did_you_mean(name, headings);
  return fmt::format("there is no graph {}; {}", name, meant.empty() ? "there are:" + list : meant);
}

/// One axis of all figures: its text, or what is wrong.
struct CommonAxis {
  std::string text, problem;
};

CommonAxis common_axis(const std::vector<const Figure*>& figures, std::string Figure::*text) {
  const auto first = axis_parts(figures.front()->*text);
  std::string quantities;
  std::vector<std::string_view> named;
  for (const auto* figure : figures) {
    const auto axis = axis_parts(figure->*text);
    if (axis.unit != first.unit) {
      return {{},
              fmt::format("the axes differ: \"{}\" of {}, \"{}\" of {}", figures.front()->*text,
                          figures.front()->heading, figure->*text, figure->heading)};
    }
    if (std::find(named.begin(), named.end(), axis.quantity) != named.end()) continue;
    named.push_back(axis.quantity);
    quantities += fmt::format("{}{}", quantities.empty() ? "" : ", ", axis.quantity);
  }
  return {first.unit.empty() ? quantities : fmt::format("{} ({})", quantities, first.unit), {}};
}

bool is_overlay(const GraphStore& store, std::int32_t graph) {
  const auto& sets = store.graph(graph)->sets;
  return !sets.empty() && store.info(sets.front())->name == set_name;
}

/// The copy of a curve, as it is now.
std::int32_t copied(GraphStore& store, const Curve& curve, const std::string& label, std::size_t place) {
  const auto set = store.write(set_name, static_cast<std::int32_t>(PlotKind::data_set));
  store.set_data_method(set, first_colour + static_cast<std::int32_t>(place) % colours,
                        curve.histogram ? histogram_style : curve_style, label);
  std::vector<float> xy;
  xy.reserve(2 * curve.points->size());
  for (const auto& point : *curve.points) xy.insert(xy.end(), {point.x, point.y});
  store.write_points(set, false, xy);
  return set;
}

}  // namespace

std::string make_overlay(GraphStore& store, const std::string& name, std::span<const std::string> graphs) {
  const auto figures = figures_of(store);
  const auto* taken = find_figure(store, figures, name);
  if (taken && !is_overlay(store, taken->graph)) return fmt::format("there is a graph {} already", taken->heading);
  std::vector<const Figure*> chosen;
  for (const auto& graph : graphs) {
    chosen.push_back(find_figure(store, figures, graph));
    if (!chosen.back()) return about_unknown(figures, graph);
  }
  const auto x = common_axis(chosen, &Figure::x_text), y = common_axis(chosen, &Figure::y_text);
  if (!x.problem.empty() || !y.problem.empty()) return x.problem.empty() ? y.problem : x.problem;

  Graph layout;
  layout.title = name;
  layout.x_label = x.text;
  layout.y_label = y.text;
  for (const auto* figure : chosen) {
    for (const auto& curve : figure->curves) {
      const auto label = curve.label.empty() ? figure->heading : fmt::format("{}: {}", figure->heading, curve.label);
      layout.sets.push_back(copied(store, curve, label, layout.sets.size()));
    }
  }
  const auto graph = store.write(name, static_cast<std::int32_t>(PlotKind::graph));
  store.set_graph_method(graph, std::move(layout));
  const auto viewer = store.write(viewer_name, static_cast<std::int32_t>(PlotKind::viewer));
  const auto shown = store.graph_list(viewer);
  std::vector<std::int32_t> list(shown.begin(), shown.end());
  list.push_back(graph);
  store.set_graph_list(viewer, list);
  return {};
}

}  // namespace pathstat::desk
