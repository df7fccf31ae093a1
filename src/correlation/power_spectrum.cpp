#include "correlation/power_spectrum.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "coreapi/messages.h"
#include "correlation/column_plots.h"
#include "correlation/correlation_series.h"
#include "correlation/velocity_autocorrelation.h"
#include "plots/graph.h"
#include "support/named_memory.h"
#include "transforms/transforms.h"

namespace pathstat {
namespace {

constexpr double light_cm_per_ps = 0.03;
constexpr double highest_wavenumber = 7000.0;  ///< of the points
constexpr float axis_end = 5000.0F;
constexpr std::int64_t longest_transform = 131073;

constexpr ColumnTexts titles{"Power Spectrum component XX A^4/ps^2",
                             "Power Spectrum component YY A^4/ps^2",
                             "Power Spectrum component ZZ A^4/ps^2",
                             "Power Spectrum component XY A^4/ps^2",
                             "Power Spectrum component XZ A^4/ps^2",
                             "Power Spectrum component YZ A^4/ps^2",
                             "Power Spectrum A^4/ps^2"};

/// Lengths of a transform, in points, and the distance of its frequencies.
struct Frequencies {
  std::size_t transformed;
  std::size_t shown;
  double step_per_cm;
};

/// Without points, `message` says why there are none.
Frequencies frequencies(const CorrelationSeries& series, double max_time, std::string_view& message) {
  const double points = max_time / series.spacing_ps();
  if (!(points >= 2.0)) message = "PATHSTAT_ERROR_49";
  if (points >= longest_transform + 1.0) message = "PATHSTAT_ERROR_52";
  if (!message.empty()) return {};
  const auto transformed = static_cast<std::size_t>(points);
  const double step = 0.5 / (static_cast<double>(transformed) * series.spacing_ps() * light_cm_per_ps);
  const double shown = std::min(static_cast<double>(transformed), highest_wavenumber / step + 1.0);
  return {transformed, static_cast<std::size_t>(shown), step};
}

/// The spectrum of a column into the front of `data`.
void transform(const CorrelationSeries& series, std::size_t column, const Frequencies& range, std::span<double> data) {
  std::ranges::fill(data, 0.0);
  for (std::size_t i = 0; i < std::min(data.size(), series.size()); ++i) data[i] = series.value(i, column);
  fftcos_(data, data);
  for (double& value : data.first(range.shown)) {
    value *= series.spacing_ps();
    value *= value;
  }
}

/// The x axis begins at the first frequency above 0.
GraphLayout layout(std::size_t column, const Frequencies& range) {
  const std::pair axis{static_cast<float>(range.step_per_cm), axis_end};
  return {.title = titles[column], .x_label = "1/cm", .y_label = " ", .text_code = 7, .x_range = axis};
}

void show_spectra(double max_time, std::int32_t& status) {
  const CorrelationSeries series(velocity_file, "PathStat/PWR/VAC", "PathStat/PWR/VACx",
                                 {"PATHSTAT_ERROR_49", "PATHSTAT_ERROR_50", "PATHSTAT_ERROR_51"}, status);
  if (status != 0) return;
  std::string_view message;
  const Frequencies range = frequencies(series, max_time, message);
  if (!message.empty()) {
    status = 1;
    return show_message(message);
  }
  const auto length = static_cast<std::int64_t>(range.transformed);
  const NamedBlock<double> data("PathStat/PWR/data", length, status);
  NamedBlock<float> block;
  if (status == 0) block = NamedBlock<float>("PathStat/PWR/PlotData", 4 * length, status);
  if (status != 0) {
    status = 1;
    return show_message("PATHSTAT_ERROR_53");
  }
  const auto points = block.span().first(2 * range.shown);
  for (std::size_t i = 0; i < range.shown; ++i) {
    points[2 * i] = static_cast<float>(static_cast<double>(i) * range.step_per_cm);
  }
  std::vector<ColumnPlot> plots;
  for (std::size_t column = series.first(); column < correlation_columns; ++column) {
    const auto plot = make_column_plot(column, titles[column], " ");
    if (!plot) continue;
    plots.push_back(*plot);
    lay_out(plot->graph, std::span(&plot->data_set, 1), layout(column, range));
    transform(series, column, range, data.span());
    for (std::size_t i = 0; i < range.shown; ++i) points[2 * i + 1] = static_cast<float>(data.span()[i]);
    write_points(plot->data_set, points);
  }
  const std::int32_t viewer = hand_to_viewer(plots, true);
  // The Core takes the points of a lone graph once the viewer has it.
  if (series.first() == total_column && !plots.empty()) write_points(plots[0].data_set, points);
  redraw(viewer);
}

}  // namespace

void run_pwr_(double max_time, std::int32_t& status) try {
  show_spectra(max_time, status);
} catch (const std::bad_alloc&) {
  status = 1;
  show_message("PATHSTAT_ERROR_53");
}

}  // namespace pathstat
