#include "desk/script/kept_graphs.h"

#include <fmt/format.h>

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <vector>

namespace pathstat::desk {
namespace {

using nlohmann::json;

std::filesystem::path graphs_file(const std::filesystem::path& folder) { return folder / "graphs.cbor"; }

json optional_number(const std::optional<double>& value) { return value ? json(*value) : json(); }

json facts_of(const GraphFacts& facts) {
  json kept{{"of", facts.of},
            {"command", facts.command},
            {"settings", facts.settings},
            {"trajectory", facts.trajectory},
            {"density", facts.density}};
  if (!facts.fitted) return kept;
  json errors = json::array();
  for (const auto& error : facts.fitted->slope_errors) errors.push_back(optional_number(error));
  kept["fitted"] = {facts.fitted->from, facts.fitted->to, facts.fitted->run, errors};
  return kept;
}

GraphFacts facts_from(const json& kept) {
  GraphFacts facts{.of = kept.at("of").get<std::string>(),
                   .command = kept.at("command").get<std::string>(),
                   .settings = kept.at("settings").get<std::string>(),
                   .trajectory = kept.at("trajectory").get<std::string>(),
                   .fitted = {},
                   .density = kept.at("density").get<double>()};
  if (!kept.contains("fitted")) return facts;
  const auto& window = kept.at("fitted");
  facts.fitted = FittedWindow{.from = window.at(0).get<double>(),
                              .to = window.at(1).get<double>(),
                              .slope_errors = {},
                              .run = window.at(2).get<double>()};
  for (const auto& error : window.at(3)) {
    facts.fitted->slope_errors.push_back(error.is_null() ? std::nullopt : std::optional(error.get<double>()));
  }
  return facts;
}

json content_of(const GraphStore& store, std::int32_t handle, PlotKind kind) {
  if (kind == PlotKind::viewer) {
    const auto graphs = store.graph_list(handle);
    return std::vector<std::int32_t>(graphs.begin(), graphs.end());
  }
  if (const auto* graph = store.graph(handle)) {
    return {{"layout", graph->layout},        {"x_low", graph->x_low},
            {"x_high", graph->x_high},        {"labels", graph->labels},
            {"title", graph->title},          {"x_label", graph->x_label},
            {"y_label", graph->y_label},      {"sets", graph->sets},
            {"aspect", graph->aspect_ratio},  {"remark", graph->remark},
            {"facts", facts_of(graph->facts)}};
  }
  const auto& set = *store.data_set(handle);
  std::vector<float> xy;
  for (const auto& point : set.points) xy.insert(xy.end(), {point.x, point.y});
  json marks = json::array();
  for (const auto& mark : set.marks) marks.push_back({mark.name, mark.mode, mark.points});
  return {{"colour", set.colour}, {"style", set.style}, {"label", set.label}, {"xy", xy}, {"marks", marks}};
}

std::int32_t bring_back(const json& content, std::int32_t handle, PlotKind kind, GraphStore& store) {
  if (kind == PlotKind::viewer) return store.set_graph_list(handle, content.get<std::vector<std::int32_t>>());
  if (kind == PlotKind::graph) {
    Graph graph;
    graph.layout = content.at("layout").get<std::int32_t>();
    graph.x_low = content.at("x_low").get<float>();
    graph.x_high = content.at("x_high").get<float>();
    graph.labels = content.at("labels").get<std::int32_t>();
    graph.title = content.at("title").get<std::string>();
    graph.x_label = content.at("x_label").get<std::string>();
    graph.y_label = content.at("y_label").get<std::string>();
    graph.sets = content.at("sets").get<std::vector<std::int32_t>>();
    graph.remark = content.at("remark").get<std::string>();
    const auto failure = store.set_graph_method(handle, std::move(graph));
    store.set_aspect_ratio(handle, content.at("aspect").get<float>());
    store.set_facts(handle, facts_from(content.at("facts")));
    return failure;
  }
  store.set_data_method(handle, content.at("colour").get<std::int32_t>(), content.at("style").get<std::int32_t>(),
                        content.at("label").get<std::string>());
  store.write_points(handle, false, content.at("xy").get<std::vector<float>>());
  for (const auto& mark : content.at("marks")) {
    store.mark(mark.at(0).get<std::string>(), handle, mark.at(1).get<std::int32_t>(),
               mark.at(2).get<std::vector<std::int32_t>>());
  }
  return 0;
}

}  // namespace

std::string keep_graphs(const GraphStore& store, const std::filesystem::path& folder) {
  json handles = json::array();
  for (std::int32_t handle = 1; const auto* info = store.info(handle); ++handle) {
    handles.push_back({{"kind", static_cast<std::int32_t>(info->kind)},
                       {"name", info->name},
                       {"version", info->version},
                       {"content", content_of(store, handle, info->kind)}});
  }
  const json kept{{"handles", handles}, {"shown", store.shown_graphs()}, {"open", store.open_transactions()}};
  std::ofstream file(graphs_file(folder), std::ios::binary);
  const auto bytes = json::to_cbor(kept);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  return file ? std::string{} : fmt::format("cannot write {}", graphs_file(folder).string());
}

std::string read_kept_graphs(const std::filesystem::path& folder, GraphStore& store) try {
  std::ifstream file(graphs_file(folder), std::ios::binary);
  const auto kept = json::from_cbor(file);
  const auto kind_of = [](const json& row) { return row.at("kind").get<std::int32_t>(); };
  std::int32_t next = 1, viewer = 0;
  bool same = true;
  for (const auto& row : kept.at("handles")) {
    const auto handle =
        store.write_specific(row.at("name").get<std::string>(), row.at("version").get<std::int32_t>(), kind_of(row));
    same = same && handle == next++;
    if (kind_of(row) == static_cast<std::int32_t>(PlotKind::viewer)) viewer = handle;
  }
  // A viewer has shown graphs that are in no list any more.
  if (same && viewer != 0) store.set_graph_list(viewer, kept.at("shown").get<std::vector<std::int32_t>>());
  std::int32_t handle = 1;
  for (const auto& row : kept.at("handles")) {
    same = same && bring_back(row.at("content"), handle++, static_cast<PlotKind>(kind_of(row)), store) == 0;
  }
  for (auto open = kept.at("open").get<int>(); open > 0; --open) store.begin();
  return same ? std::string{} : "the graphs can't be brought back as the process knows them";
} catch (const std::exception&) {
  return fmt::format("{} can't be read", graphs_file(folder).string());
}

}  // namespace pathstat::desk
