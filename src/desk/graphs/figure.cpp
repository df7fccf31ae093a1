#include "desk/graphs/figure.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <set>

#include "desk/graphs/axis_text.h"
#include "desk/messages/visible_text.h"

namespace pathstat::desk {
namespace {

constexpr std::size_t longest_name = 80;

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
  if (!only_one) curve.label = typeset(set.label.empty() ? store.info(handle)->name : set.label);
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
  figure.heading = typeset(info.name);
  if (info.version > 1) figure.heading += fmt::format(" ({})", info.version);
  if (!graph.remark.empty()) figure.heading += fmt::format(" ({})", graph.remark);
  figure.x_text = axis_text(graph.x_label, graph.title);
  figure.y_text = graph.labels == title_on_y_axis ? axis_text(graph.title, {}) : axis_text(graph.y_label, graph.title);
  figure.facts = graph.facts;
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

}  // namespace

bool Figure::has_points() const {
  return std::any_of(curves.begin(), curves.end(), [](const Curve& curve) {
    return std::any_of(curve.points->begin(), curve.points->end(), drawable);
  });
}

std::string file_name_of(std::string_view title) {
  std::string name;
  for (const unsigned char c : title) {
    if (name.size() >= longest_name) break;
    if (c < 0x80 && std::isalnum(c)) {
      name += static_cast<char>(c);
    } else if (!name.empty() && name.back() != '-') {
      name += '-';
    }
  }
  while (!name.empty() && name.back() == '-') name.pop_back();
  return name.empty() ? "graph" : name;
}

std::vector<Figure> figures_of(const GraphStore& store) {
  std::vector<Figure> figures;
  std::set<std::string> taken;
  for (const auto handle : store.shown_graphs()) {
    figures.push_back(figure_of(store, handle));
    figures.back().name = unlike(file_name_of(store.info(handle)->name), taken);
  }
  return figures;
}

std::string points_table(const Figure& figure) {
  if (figure.curves.empty()) return {};
  const bool shared = same_x(figure.curves);
  std::string table;
  std::size_t rows = 0;
  for (const auto& curve : figure.curves) {
    const bool first = &curve == &figure.curves.front();
    if (first || !shared) table += (first ? "" : "\t") + column_name(figure.x_text);
    table += "\t" + column_name(curve.label.empty() ? figure.y_text : curve.label);
    rows = std::max(rows, curve.points->size());
  }
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
