#include "desk/graphs/graph_store.h"

#include <algorithm>

namespace pathstat::desk {
namespace {

bool is_kind(std::int32_t kind) {
  return kind >= static_cast<std::int32_t>(PlotKind::viewer) && kind <= static_cast<std::int32_t>(PlotKind::data_set);
}

std::string key_of(std::string_view name, std::int32_t kind) { return std::to_string(kind).append(name); }

}  // namespace

std::int32_t GraphStore::make(std::string_view name, PlotKind kind, std::vector<std::int32_t>& versions) {
  Handle handle{kind, std::string(name), static_cast<std::int32_t>(versions.size()) + 1, 0};
  switch (kind) {
    case PlotKind::viewer:
      handle.place = viewers_.size();
      viewers_.emplace_back();
      break;
    case PlotKind::graph:
      handle.place = graphs_.size();
      graphs_.emplace_back();
      break;
    case PlotKind::data_set:
      handle.place = sets_.size();
      sets_.emplace_back();
      break;
  }
  handles_.push_back(std::move(handle));
  versions.push_back(static_cast<std::int32_t>(handles_.size()));
  return versions.back();
}

std::int32_t GraphStore::write(std::string_view name, std::int32_t kind) {
  if (!is_kind(kind)) return 0;
  auto& versions = by_name_[key_of(name, kind)];
  const auto plot_kind = static_cast<PlotKind>(kind);
  if (plot_kind == PlotKind::viewer && !versions.empty()) return versions.front();
  return make(name, plot_kind, versions);
}

std::int32_t GraphStore::write_specific(std::string_view name, std::int32_t version, std::int32_t kind) {
  if (!is_kind(kind) || version < 1) return 0;
  auto& versions = by_name_[key_of(name, kind)];
  const auto wanted = static_cast<std::size_t>(version);
  if (wanted <= versions.size()) return versions[wanted - 1];
  return wanted == versions.size() + 1 ? make(name, static_cast<PlotKind>(kind), versions) : 0;
}

const GraphStore::Handle* GraphStore::info(std::int32_t handle) const {
  return handle >= 1 && static_cast<std::size_t>(handle) <= handles_.size()
             ? &handles_[static_cast<std::size_t>(handle) - 1]
             : nullptr;
}

const GraphStore::Handle* GraphStore::of_kind(std::int32_t handle, PlotKind kind) const {
  const auto* found = info(handle);
  return found && found->kind == kind ? found : nullptr;
}

std::int32_t GraphStore::set_data_method(std::int32_t set, std::int32_t colour, std::int32_t style, std::string label) {
  const auto* handle = of_kind(set, PlotKind::data_set);
  if (!handle) return no_such_handle;
  auto& data = sets_[handle->place];
  data.colour = colour;
  data.style = style;
  data.label = std::move(label);
  data.revision = ++changes_;
  return 0;
}

std::int32_t GraphStore::write_points(std::int32_t set, bool append, std::span<const float> xy) {
  const auto* handle = of_kind(set, PlotKind::data_set);
  if (!handle) return no_such_handle;
  auto& data = sets_[handle->place];
  data.revision = ++changes_;
  auto& points = data.points;
  if (!append) {
    points.clear();
    data.rewritten = data.revision;
  }
  points.reserve(points.size() + xy.size() / 2);
  for (std::size_t k = 0; k + 1 < xy.size(); k += 2) points.push_back({xy[k], xy[k + 1]});
  return 0;
}

std::int32_t GraphStore::mark(std::string_view name, std::int32_t set, std::int32_t mode,
                              std::span<const std::int32_t> points) {
  const auto* handle = of_kind(set, PlotKind::data_set);
  if (!handle) return no_such_handle;
  auto& data = sets_[handle->place];
  const auto count = static_cast<std::int64_t>(data.points.size());
  if (std::any_of(points.begin(), points.end(), [&](auto point) { return point < 1 || point > count; })) {
    return bad_points;
  }
  data.marks.push_back({std::string(name), mode, {points.begin(), points.end()}});
  data.revision = ++changes_;
  return 0;
}

void GraphStore::clear_marks(std::string_view name) {
  for (auto& set : sets_) {
    if (std::erase_if(set.marks, [&](const PointMark& mark) { return mark.name == name; }) > 0) {
      set.revision = ++changes_;
    }
  }
}

std::int32_t GraphStore::set_graph_method(std::int32_t graph, Graph layout) {
  const auto* handle = of_kind(graph, PlotKind::graph);
  if (!handle) return no_such_handle;
  for (const auto set : layout.sets) {
    if (!of_kind(set, PlotKind::data_set)) return no_such_handle;
  }
  auto& old = graphs_[handle->place];
  layout.aspect_ratio = old.aspect_ratio;
  layout.shown = old.shown;
  layout.facts = std::move(old.facts);
  old = std::move(layout);
  old.revision = ++changes_;
  return 0;
}

std::int32_t GraphStore::set_aspect_ratio(std::int32_t graph, float ratio) {
  const auto* handle = of_kind(graph, PlotKind::graph);
  if (!handle) return no_such_handle;
  auto& changed = graphs_[handle->place];
  changed.aspect_ratio = ratio;
  changed.revision = ++changes_;
  return 0;
}

std::int32_t GraphStore::set_remark(std::int32_t graph, std::string remark) {
  const auto* handle = of_kind(graph, PlotKind::graph);
  if (!handle) return no_such_handle;
  auto& changed = graphs_[handle->place];
  changed.remark = std::move(remark);
  changed.revision = ++changes_;
  return 0;
}

std::int32_t GraphStore::set_facts(std::int32_t graph, GraphFacts facts) {
  const auto* handle = of_kind(graph, PlotKind::graph);
  if (!handle) return no_such_handle;
  auto& changed = graphs_[handle->place];
  changed.facts = std::move(facts);
  changed.revision = ++changes_;
  return 0;
}

std::int32_t GraphStore::set_graph_list(std::int32_t viewer, std::span<const std::int32_t> graphs) {
  const auto* handle = of_kind(viewer, PlotKind::viewer);
  if (!handle) return no_such_handle;
  for (const auto graph : graphs) {
    if (!of_kind(graph, PlotKind::graph)) return no_such_handle;
  }
  viewers_[handle->place].assign(graphs.begin(), graphs.end());
  for (const auto graph : graphs) graphs_[info(graph)->place].shown = true;
  return 0;
}

std::span<const std::int32_t> GraphStore::graph_list(std::int32_t viewer) const {
  const auto* handle = of_kind(viewer, PlotKind::viewer);
  return handle ? std::span<const std::int32_t>(viewers_[handle->place]) : std::span<const std::int32_t>{};
}

const Graph* GraphStore::graph(std::int32_t handle) const {
  const auto* found = of_kind(handle, PlotKind::graph);
  return found ? &graphs_[found->place] : nullptr;
}

const DataSet* GraphStore::data_set(std::int32_t handle) const {
  const auto* found = of_kind(handle, PlotKind::data_set);
  return found ? &sets_[found->place] : nullptr;
}

std::vector<std::int32_t> GraphStore::shown_graphs() const {
  std::vector<std::int32_t> shown;
  for (std::size_t k = 0; k < handles_.size(); ++k) {
    const auto& handle = handles_[k];
    if (handle.kind == PlotKind::graph && graphs_[handle.place].shown)
      shown.push_back(static_cast<std::int32_t>(k) + 1);
  }
  return shown;
}

std::uint64_t GraphStore::revision(std::int32_t graph) const {
  const auto* found = this->graph(graph);
  if (!found) return 0;
  auto latest = found->revision;
  for (const auto set : found->sets) latest = std::max(latest, data_set(set)->revision);
  return latest;
}

}  // namespace pathstat::desk
