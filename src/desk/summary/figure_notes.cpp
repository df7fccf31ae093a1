#include "desk/summary/figure_notes.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "desk/graphs/axis_text.h"
#include "desk/summary/curve_features.h"
#include "desk/summary/run_summary.h"

namespace pathstat::desk {
namespace {

std::string with_unit(double value, std::string_view unit) {
  return fmt::format("{:.4g}{}{}", value, unit.empty() ? "" : " ", unit);
}

void add_distribution(Figure& figure) {
  if (figure.curves.size() != 1 || !figure.curves[0].histogram) return;
  const auto moments = moments_of(*figure.curves[0].points);
  if (!moments) return;
  const auto unit = unit_of(figure.x_text);
  const auto [mean, deviation] = *moments;
  figure.guides.push_back({mean, mean, "mean " + with_unit(mean, unit)});
  if (deviation == 0) return;
  figure.guides.push_back({mean - deviation, mean + deviation, "± one deviation, " + with_unit(deviation, unit)});
}

void add_shell(Figure& figure) {
  if (!figure.title.starts_with("Total RDF") || figure.curves.empty()) return;
  if (const auto minimum = first_shell(*figure.curves[0].points).minimum) {
    figure.guides.push_back({minimum->x, minimum->x, "first minimum, " + with_unit(minimum->x, "Å")});
  }
}

void add_window(Figure& figure) {
  if (!figure.facts.fitted || figure.curves.empty() || figure.curves[0].points->empty()) return;
  const double from = figure.facts.fitted->from;
  const double to = std::min<double>(figure.facts.fitted->to, figure.curves[0].points->back().x);
  figure.guides.push_back({from, to, fmt::format("fitted, {:.4g} to {:.4g} ps", from, to)});
}

/// The frames, and what the summary has in front of its other numbers.
void add_note(Figure& figure) {
  if (const auto at = figure.facts.of.find(", "); at != std::string::npos) figure.note = figure.facts.of.substr(at + 2);
  const auto tables = summarise({&figure, 1});
  if (tables.size() != 1 || tables[0].items.size() != 1) return;
  const auto& values = tables[0].items[0].values;
  if (!values[0].value) return;
  figure.note += (figure.note.empty() ? "" : " · ") + in_words(values[0]);
  const auto beside = tables[0].beside;
  if (beside > 0 && values[beside].value) figure.note += ", " + in_words(values[beside]);
}

}  // namespace

std::optional<Moments> moments_of(std::span<const PlotPoint> histogram) {
  double weight = 0, sum = 0, squares = 0;
  for (const auto& point : histogram) {
    weight += point.y;
    sum += double{point.y} * point.x;
  }
  if (!(weight > 0) || !std::isfinite(sum)) return std::nullopt;
  const double mean = sum / weight;
  for (const auto& point : histogram) squares += point.y * (point.x - mean) * (point.x - mean);
  const double bins = static_cast<double>(histogram.size()) - 1;
  const double width = bins > 0 ? (double{histogram.back().x} - histogram.front().x) / bins : 0;
  return Moments{mean - 0.5 * width, std::sqrt(std::max(0.0, squares / weight - width * width / 12))};
}

void annotate(std::span<Figure> figures) {
  for (auto& figure : figures) {
    add_distribution(figure);
    add_shell(figure);
    add_window(figure);
    add_note(figure);
  }
}

}  // namespace pathstat::desk
