#include "desk/summary/coordination_graph.h"

#include <string>
#include <vector>

#include "desk/summary/curve_features.h"

namespace pathstat::desk {

std::int32_t add_coordination_graph(GraphStore& store, std::int32_t distribution) {
  constexpr std::string_view start = "Total RDF";
  constexpr std::int32_t colour = 5;
  const auto* source = store.graph(distribution);
  const auto* info = store.info(distribution);
  if (!source || !info->name.starts_with(start) || source->sets.empty() || !(source->facts.density > 0)) return 0;
  const auto numbers = running_coordination(store.data_set(source->sets.front())->points, source->facts.density);
  if (numbers.empty()) return 0;
  std::vector<float> points;
  for (const auto& [x, y] : numbers) points.insert(points.end(), {x, y});

  Graph layout;
  layout.layout = source->layout;
  layout.title = "Running coordination number";
  layout.x_label = source->x_label;
  auto facts = source->facts;
  const auto name = layout.title + info->name.substr(start.size());
  const auto set = store.write(name, static_cast<std::int32_t>(PlotKind::data_set));
  store.set_data_method(set, colour, curve_style, {});
  store.write_points(set, false, points);
  layout.sets = {set};
  const auto graph = store.write(name, static_cast<std::int32_t>(PlotKind::graph));
  store.set_graph_method(graph, std::move(layout));
  store.set_facts(graph, std::move(facts));
  store.set_graph_list(store.write("pathdesk", static_cast<std::int32_t>(PlotKind::viewer)), {&graph, 1});
  return graph;
}

}  // namespace pathstat::desk
