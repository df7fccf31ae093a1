#include "desk/summary/run_summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "desk/graphs/axis_text.h"
#include "desk/messages/visible_text.h"
#include "desk/summary/curve_features.h"
#include "desk/summary/series_statistics.h"

namespace pathstat::desk {
namespace {

using Points = std::vector<PlotPoint>;

/// The title without how it begins.
std::string behind(std::string_view title, std::string_view start) {
  title.remove_prefix(std::min(start.size(), title.size()));
  title.remove_prefix(std::min(title.find_first_not_of(' '), title.size()));
  return std::string(title);
}

/// True for an angle that leaps from one end of its turn to the other.
bool goes_round(const Points& points) {
  constexpr float half_turn = 180;
  return std::ranges::adjacent_find(
             points, [](const auto& a, const auto& b) { return std::abs(a.y - b.y) > half_turn; }) != points.end();
}

std::string hint_about(const SeriesStatistics& s) {
  switch (doubt_about(s)) {
    case SeriesDoubt::none:
      return {};
    case SeriesDoubt::constant:
      return "does not change";
    case SeriesDoubt::drifting:
      return fmt::format("not in equilibrium: the drift is {:.0f} times its error",
                         std::abs(*s.drift / *s.drift_error));
    case SeriesDoubt::too_short:
      return s.effective ? fmt::format("the run is too short: it has some {:.0f} independent values",
                                       std::max(1.0, *s.effective))
                         : "the run is too short: it has one value";
    case SeriesDoubt::errors_disagree:
      return "the error is not certain: blocks and the correlation time tell different ones";
  }
  return {};
}

void add_series(const Figure& figure, std::vector<SummaryItem>& items) {
  for (const auto& curve : figure.curves) {
    if (curve.points->empty()) continue;
    const auto& points = *curve.points;
    std::vector<double> values;
    values.reserve(points.size());
    for (const auto& point : points) values.push_back(point.y);
    const auto s = series_statistics(values);
    const double intervals = std::max(1.0, static_cast<double>(points.size()) - 1);
    const double spacing = std::abs(double{points.back().x} - points.front().x) / intervals;
    const auto unit = unit_of(figure.y_text);
    const auto time = unit_of(figure.x_text);
    const auto correlation =
        s.correlation_time ? std::optional(*s.correlation_time * spacing) : std::optional<double>{};
    auto name = behind(figure.title, "Profile of");
    if (!curve.label.empty()) name = curve.label.starts_with(name) ? curve.label : name + ": " + curve.label;
    auto hint = hint_about(s);
    if (unit == "°" && goes_round(points)) hint = "the angle goes round: its mean says little";
    if (s.skipped > 0) hint += fmt::format("{}{} values are no numbers", hint.empty() ? "" : "; ", s.skipped);
    items.push_back({std::move(name),
                     {{"mean", s.values > 0 ? std::optional(s.mean) : std::nullopt, s.error, unit},
                      {"standard deviation", s.deviation, {}, unit},
                      {"drift over the run", s.drift, s.drift_error, unit},
                      {"correlation time", correlation, {}, time.empty() ? "frames" : time},
                      {"independent values", s.effective, {}, ""},
                      {"values", static_cast<double>(s.values), {}, ""}},
                     std::move(hint)});
  }
}

constexpr std::string_view fit_graph = "MSD/LineFit";

/// Columns of a displacement in front of the total, as the names of their graphs end.
constexpr std::array<std::string_view, 6> components{"XX", "YY", "ZZ", "XY", "XZ", "YZ"};

/// Why not to rely on a fit: motion that is not diffusive, or a window of which the run holds only a few.
/// @param noise  relative error of the slope; an exponent that is off by less than two of it may be so by chance
std::string hint_about_fit(const std::optional<double>& power, double noise, const FittedWindow& window, double to) {
  constexpr double most_off = 0.1, fewest_windows = 5;
  std::string hint;
  if (power && std::abs(*power - 1) > std::max(most_off, 2 * noise)) {
    hint = fmt::format("not diffusive in the window but {}: the displacement grows as time to the power {:.2f}",
                       *power < 1 ? "subdiffusive" : "superdiffusive", *power);
  }
  if (window.run > 0 && window.run < fewest_windows * to) {
    hint += fmt::format("{}the error is rough: the run is {:.1f} times as long as the window reaches",
                        hint.empty() ? "" : "; ", window.run / to);
  }
  return hint;
}

/// The displacement and the line through it, which is drawn over all lags.
void add_diffusion(const Figure& figure, std::vector<SummaryItem>& items) {
  constexpr double square_cm_per_s = 1e-4;
  if (figure.curves.size() != 2 || figure.curves[1].points->size() < 3) return;
  const auto& line = *figure.curves[1].points;
  const double slope = (double{line.back().y} - line.front().y) / (double{line.back().x} - line.front().x);
  const double intercept = line.front().y - slope * line.front().x;
  auto name = behind(figure.title, fit_graph).substr(0, 2);
  const auto column =
      static_cast<std::size_t>(std::ranges::find(components, std::string_view(name)) - components.begin());
  const bool is_component = column < components.size();
  const double share = is_component ? 2 : 6;
  const double longest = line.back().x;
  const auto window = figure.facts.fitted.value_or(FittedWindow{line.front().x, longest, {}, 0});
  const double to = std::min(window.to, longest);
  const auto fitted = within(*figure.curves[0].points, window.from, to);
  const bool is_mixed = is_component && name[0] != name[1];  // of two axes: may well be negative
  const auto power = is_mixed ? std::nullopt : exponent(fitted);
  const auto& errors = window.slope_errors;
  const auto error_at = errors.size() == 1 && !is_component ? 0 : column;
  const auto slope_error = error_at < errors.size() ? errors[error_at] : std::nullopt;
  const auto of_slope = [&](double factor) {
    return slope_error ? std::optional(*slope_error * factor) : std::nullopt;
  };
  if (!is_component) name.clear();
  std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::tolower(c); });
  name = "D" + name + " ";
  name += figure.facts.of.empty() ? figure.heading : "of " + figure.facts.of;
  items.push_back({std::move(name),
                   {{"diffusion coefficient", slope / share, of_slope(1 / share), "Å²/ps"},
                    {"in cm²/s", slope / share * square_cm_per_s, of_slope(square_cm_per_s / share), "cm²/s"},
                    {"fitted from", window.from, {}, "ps"},
                    {"fitted to", to, {}, "ps"},
                    {"slope", slope, slope_error, "Å²/ps"},
                    {"intercept", intercept, {}, "Å²"},
                    {"R²", determination(fitted, slope, intercept), {}, ""},
                    {"exponent", power, {}, ""}},
                   hint_about_fit(power, slope_error.value_or(0) / std::abs(slope), window, to)});
}

std::optional<double> place(const std::optional<Extreme>& extreme) {
  return extreme ? std::optional(extreme->x) : std::nullopt;
}
std::optional<double> height(const std::optional<Extreme>& extreme) {
  return extreme ? std::optional(extreme->y) : std::nullopt;
}

void add_pairs(const Figure& figure, std::vector<SummaryItem>& items) {
  if (figure.curves.empty() || figure.curves[0].points->size() < 3) return;
  const auto& g = *figure.curves[0].points;
  const auto shell = first_shell(g);
  std::optional<double> neighbours;
  if (shell.minimum && figure.facts.density > 0) {
    const auto numbers = running_coordination(g, figure.facts.density);
    const auto up_to = std::ranges::find_if(numbers, [&](const auto& point) { return point.x >= shell.minimum->x; });
    if (up_to != numbers.end()) neighbours = up_to->y;
  }
  items.push_back({figure.facts.of.empty() ? figure.heading : "g(r) of " + figure.facts.of,
                   {{"first peak", place(shell.peak), {}, "Å"},
                    {"its height", height(shell.peak), {}, ""},
                    {"first minimum", place(shell.minimum), {}, "Å"},
                    {"g(r) there", height(shell.minimum), {}, ""},
                    {"coordination number", neighbours, {}, ""}},
                   shell.peak ? "" : "no peak above 1"});
}

void add_spectrum(const Figure& figure, std::vector<SummaryItem>& items) {
  constexpr std::array<std::array<std::string_view, 2>, 3> names{
      {{"highest peak", "its height"}, {"second peak", "second height"}, {"third peak", "third height"}}};
  const auto unit = unit_of(figure.x_text);
  for (const auto& curve : figure.curves) {
    const auto peaks = highest_peaks(*curve.points, names.size());
    SummaryItem item{figure.heading + (curve.label.empty() ? "" : ": " + curve.label), {}, {}};
    for (std::size_t k = 0; k < names.size(); ++k) {
      const auto peak = k < peaks.size() ? std::optional(peaks[k]) : std::nullopt;
      item.values.push_back({names[k][0], place(peak), {}, unit});
      item.values.push_back({names[k][1], height(peak), {}, ""});
    }
    items.push_back(std::move(item));
  }
}

/// The kinds of graphs that say something in numbers, by how their names begin.
struct Kind {
  std::string_view start, kind, title;
  std::size_t beside;
  void (*add)(const Figure& figure, std::vector<SummaryItem>& items);
};
constexpr std::array kinds{
    Kind{"Profile of ", "series", "Means", 0, add_series},
    Kind{fit_graph, "diffusion", "Diffusion", 0, add_diffusion},
    Kind{"Total RDF", "pairs", "Pairs", 4, add_pairs},
    Kind{"Power Spectrum", "spectra", "Spectra", 0, add_spectrum},
    Kind{"DAC Power Spectrum", "spectra", "Spectra", 0, add_spectrum},
};

std::string json_number(const std::optional<double>& value) {
  return value && std::isfinite(*value) ? fmt::format("{}", *value) : std::string("null");
}

std::string json_text(std::string_view text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string plain(const std::optional<double>& value) { return value ? fmt::format("{}", *value) : std::string{}; }

/// Both to the second digit of the error, seven digits behind the point at most.
std::string to_digits_of_error(double value, double error) {
  constexpr int most_decimals = 7;
  const int decimals = std::min(1 - static_cast<int>(std::floor(std::log10(error))), most_decimals);
  if (decimals >= 0) return fmt::format("{:.{}f} ± {:.{}f}", value, decimals, error, decimals);
  const double unit = std::pow(10.0, -decimals);
  return fmt::format("{:.0f} ± {:.0f}", std::round(value / unit) * unit, std::round(error / unit) * unit);
}

/// A whole number as an exponent is set: "⁻⁵".
std::string raised(int number) {
  constexpr std::array<std::string_view, 10> digits{"⁰", "¹", "²", "³", "⁴", "⁵", "⁶", "⁷", "⁸", "⁹"};
  std::string text;
  for (const char c : fmt::format("{}", number)) text += c == '-' ? "⁻" : digits[static_cast<std::size_t>(c - '0')];
  return text;
}

std::string cell(std::string text) {
  std::ranges::replace_if(
      text, [](char c) { return c == '\t' || c == '\n'; }, ' ');
  return visible(text);
}

}  // namespace

std::vector<SummaryTable> summarise(std::span<const Figure> figures) {
  std::vector<SummaryTable> tables;
  for (const auto& kind : kinds) {
    if (tables.empty() || tables.back().kind != kind.kind) tables.push_back({kind.kind, kind.title, kind.beside, {}});
    for (const auto& figure : figures) {
      if (figure.title.starts_with(kind.start)) kind.add(figure, tables.back().items);
    }
  }
  std::erase_if(tables, [](const auto& table) { return table.items.empty(); });
  return tables;
}

std::string with_error(const SummaryValue& value) {
  if (!value.value || !std::isfinite(*value.value)) return "–";
  const double size = std::abs(*value.value);
  if (!value.error || !(*value.error > 0) || !std::isfinite(*value.error)) return fmt::format("{:.6g}", *value.value);
  constexpr double least_plain = 1e-3, most_plain = 1e6;
  const double larger = std::max(size, *value.error);
  if (larger >= least_plain && larger < most_plain) return to_digits_of_error(*value.value, *value.error);
  const int power = static_cast<int>(std::floor(std::log10(larger)));
  const double unit = std::pow(10.0, power);
  return fmt::format("({}) × 10{}", to_digits_of_error(*value.value / unit, *value.error / unit), raised(power));
}

std::string in_words(const SummaryValue& value) {
  const bool is_exact = value.value && !(value.error.value_or(0) > 0);
  return fmt::format("{} {}{}{}", value.quantity, is_exact ? fmt::format("{:.5g}", *value.value) : with_error(value),
                     value.unit.empty() ? "" : " ", value.unit);
}

std::string summary_tsv(std::span<const SummaryTable> tables) {
  std::string text = "kind\tname\tquantity\tvalue\terror\tunit\thint\n";
  for (const auto& table : tables) {
    for (const auto& item : table.items) {
      for (const auto& value : item.values) {
        text += fmt::format("{}\t{}\t{}\t{}\t{}\t{}\t{}\n", table.kind, cell(item.name), value.quantity,
                            plain(value.value), plain(value.error), value.unit, cell(item.hint));
      }
    }
  }
  return text;
}

// Arrays and objects of the library ask for memory as they are destroyed, which ends the process where there is none.
std::string summary_json(std::span<const SummaryTable> tables) {
  std::string text = "{";
  std::string_view before_table = "\n";
  for (const auto& table : tables) {
    text += fmt::format("{}  {}: [", std::exchange(before_table, ",\n"), json_text(table.kind));
    std::string_view before_item = "\n";
    for (const auto& item : table.items) {
      text += fmt::format("{}    {{\n      \"name\": {},\n      \"hint\": {}", std::exchange(before_item, ",\n"),
                          json_text(item.name), json_text(item.hint));
      for (const auto& value : item.values) {
        text += fmt::format(",\n      {}: {{\"value\": {}, \"error\": {}, \"unit\": {}}}", json_text(value.quantity),
                            json_number(value.value), json_number(value.error), json_text(value.unit));
      }
      text += "\n    }";
    }
    text += table.items.empty() ? "]" : "\n  ]";
  }
  return text + (tables.empty() ? "}\n" : "\n}\n");
}

std::vector<std::string> summary_lines(std::span<const SummaryTable> tables) {
  constexpr std::size_t most_lines = 24;
  std::vector<std::string> lines;
  std::size_t items = 0;
  for (const auto& table : tables) {
    for (const auto& item : table.items) {
      if (++items > most_lines) continue;
      const auto beside = table.beside > 0 ? ", " + in_words(item.values[table.beside]) : std::string{};
      lines.push_back(fmt::format("  {}: {}{}{}", visible(item.name), in_words(item.values.front()), beside,
                                  item.hint.empty() ? "" : "   (" + item.hint + ")"));
    }
  }
  if (items > most_lines) lines.push_back(fmt::format("  and {} more in summary.tsv", items - most_lines));
  return lines;
}

}  // namespace pathstat::desk
