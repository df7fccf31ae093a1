#include "desk/graphs/figure.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>
#include <set>
#include <utility>

#include "desk/advice/nearest.h"
#include "desk/graphs/axis_text.h"
#include "desk/graphs/graph_kind.h"
#include "desk/messages/visible_text.h"
#include "support/text_field.h"

namespace pathstat::desk {
namespace {

bool drawable(const PlotPoint& point) { return std::isfinite(point.x) && std::isfinite(point.y); }

std::optional<PlotPoint> highlighted(const DataSet& set) {
  for (auto mark = set.marks.rbegin(); mark != set.marks.rend(); ++mark) {
    if (mark->mode != highlight_mark || mark->points.empty()) continue;
    const auto place = static_cast<std::size_t>(mark->points.front() - 1);
    if (place < set.points.size() && drawable(set.points[place])) return set.points[place];
  }
  return std::nullopt;
}

Curve curve_of(const GraphStore& store, std::int32_t handle, bool only_one) {
  const auto& set = *store.data_set(handle);
  Curve curve;
  if (!only_one) curve.label = curve_label(set.label.empty() ? store.info(handle)->name : set.label);
  curve.colour = set.colour;
  curve.histogram = set.style == histogram_style;
  curve.points = &set.points;
  curve.highlighted = highlighted(set);
  return curve;
}

Figure figure_of(const GraphStore& store, std::int32_t handle) {
  const auto& graph = *store.graph(handle);
  const auto& info = *store.info(handle);
  Figure figure;
  figure.graph = handle;
  figure.title = typeset(info.name);
  figure.facts = graph.facts;
  const auto frames = std::min(graph.facts.of.find(", "), graph.facts.of.size());
  auto text = graph_text(info.name, std::string_view(graph.facts.of).substr(0, frames));
  figure.name = text.file.empty() ? file_name_of(info.name) : std::move(text.file);
  figure.heading = text.heading.empty() ? figure.title : std::move(text.heading);
  figure.x_text = axis_text(graph.x_label, graph.title);
  figure.y_text = graph.labels == title_on_y_axis ? axis_text(graph.title, {}) : axis_text(graph.y_label, graph.title);
  if (!text.y_text.empty()) figure.y_text = std::move(text.y_text);
  figure.aspect_ratio = graph.aspect_ratio;
  if (graph.layout == fixed_x_layout && graph.x_low < graph.x_high) figure.x_range = {graph.x_low, graph.x_high};
  for (const auto set : graph.sets) figure.curves.push_back(curve_of(store, set, graph.sets.size() == 1));
  return figure;
}

/// The name with a number behind it where it is taken. Case makes no difference, as on some file systems.
std::string unlike(const std::string& name, std::set<std::string>& taken) {
  std::string candidate = name;
  for (int number = 2;; ++number) {
    std::string folded = candidate;
    std::transform(folded.begin(), folded.end(), folded.begin(), [](unsigned char c) { return std::tolower(c); });
    if (taken.insert(folded).second) return candidate;
    candidate = fmt::format("{}-{}", name, number);
  }
}

bool same_x(const std::vector<Curve>& curves) {
  return std::all_of(curves.begin(), curves.end(), [&](const Curve& curve) {
    return std::equal(curve.points->begin(), curve.points->end(), curves[0].points->begin(), curves[0].points->end(),
                      [](const PlotPoint& a, const PlotPoint& b) { return a.x == b.x; });
  });
}

std::string column_name(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\n' || c == '\t'; }, ' ');
  return visible(text);
}

/// Lines that tell what the points are of, each with a "#" in front of it.
std::string origin_lines(const Figure& figure) {
  const std::pair<std::string_view, const std::string*> facts[] = {
      {"graph", &figure.title},    {"command", &figure.facts.command},       {"settings", &figure.facts.settings},
      {"atoms", &figure.facts.of}, {"trajectory", &figure.facts.trajectory}, {"note", &figure.note}};
  auto lines = fmt::format("# {}\n", column_name(figure.heading));
  for (const auto& [name, fact] : facts) {
    if (!fact->empty()) lines += fmt::format("# {}: {}\n", name, column_name(*fact));
  }
  return lines;
}

}  // namespace

bool Figure::has_points() const {
  return std::any_of(curves.begin(), curves.end(), [](const Curve& curve) {
    return std::any_of(curve.points->begin(), curve.points->end(), drawable);
  });
}

std::vector<Figure> figures_of(const GraphStore& store) {
  std::vector<Figure> figures;
  std::set<std::string> taken;
  std::map<std::string, int> headings;
  for (const auto handle : store.shown_graphs()) {
    auto& figure = figures.emplace_back(figure_of(store, handle));
    figure.name = unlike(figure.name, taken);
    if (const int times = ++headings[figure.heading]; times > 1) figure.heading += fmt::format(" ({})", times);
    if (const auto& remark = store.graph(handle)->remark; !remark.empty())
      figure.heading += fmt::format(" ({})", remark);
  }
  return figures;
}

const Figure* find_figure(const GraphStore& store, std::span<const Figure> figures, std::string_view name) {
  const auto found = std::find_if(figures.rbegin(), figures.rend(), [&](const Figure& figure) {
    return same_in_any_case(figure.heading, name) || same_in_any_case(figure.name, name) ||
           same_in_any_case(trimmed(store.info(figure.graph)->name), name);
  });
  return found == figures.rend() ? nullptr : &*found;
}

std::string points_table(const Figure& figure) {
  if (figure.curves.empty()) return {};
  const bool shared = same_x(figure.curves);
  auto table = origin_lines(figure);
  std::string headings;
  std::size_t rows = 0;
  int columns = 0;
  const auto add_column = [&](const std::string& text, const std::string& unit) {
    headings += (headings.empty() ? "" : "\t") + column_name(text);
    table += fmt::format("# column {}: {}, {}\n", ++columns, column_name(text), unit.empty() ? "without a unit" : unit);
  };
  for (const auto& curve : figure.curves) {
    const bool first = &curve == &figure.curves.front();
    if (first || !shared) add_column(figure.x_text, unit_of(figure.x_text));
    add_column(curve.label.empty() ? figure.y_text : curve.label, unit_of(figure.y_text));
    rows = std::max(rows, curve.points->size());
  }
  table += headings;
  for (std::size_t row = 0; row < rows; ++row) {
    table += '\n';
    for (const auto& curve : figure.curves) {
      const bool first = &curve == &figure.curves.front();
      const auto* point = row < curve.points->size() ? &(*curve.points)[row] : nullptr;
      if (!first) table += '\t';
      if (first || !shared) table += point ? fmt::format("{}\t", point->x) : "\t";
      if (point) table += fmt::format("{}", point->y);
    }
  }
  return table + '\n';
}

}  // namespace pathstat::desk
