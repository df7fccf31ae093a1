#include "correlation/linear_fit.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "coreapi/messages.h"
#include "correlation/column_plots.h"
#include "correlation/correlation_series.h"
#include "correlation/displacement.h"
#include "plots/graph.h"
#include "support/named_memory.h"
#include "support/number_format.h"

namespace pathstat {
namespace {

constexpr std::int32_t fit_colour = 4;
constexpr double square_cm_per_s = 0.0001;  ///< of 1 Å²/ps

constexpr ColumnTexts graph_names{"MSD/LineFit XX", "MSD/LineFit YY", "MSD/LineFit ZZ", "MSD/LineFit XY",
                                  "MSD/LineFit XZ", "MSD/LineFit YZ", "MSD/LineFit"};
constexpr ColumnTexts fit_names{"Linear Fit XX", "Linear Fit YY", "Linear Fit ZZ", "Linear Fit XY",
                                "Linear Fit XZ", "Linear Fit YZ", "Linear Fit"};
constexpr ColumnTexts result_names{"Dxx", "Dyy", "Dzz", "Dxy", "Dxz", "Dyz", "D"};

struct Line {
  double slope = 0.0;
  double intercept = 0.0;
  float diffusion = 0.0F;  ///< Å²/ps
};

/// Points of the fit, first and last, from 1.
struct FitRange {
  std::size_t first;
  std::size_t last;
};

FitRange fit_range(std::span<const double> lags, double min_time, double max_time) {
  FitRange range{1, lags.size()};
  for (std::size_t i = 1; i < lags.size(); ++i) {
    if (lags[i - 1] <= min_time && min_time < lags[i]) range.first = i;
    if (lags[i - 1] < max_time && max_time <= lags[i]) range.last = i + 1;
  }
  return range;
}

Line fit(const CorrelationSeries& series, std::size_t column, const FitRange& range, std::span<double> values) {
  for (std::size_t i = 0; i < series.size(); ++i) values[i] = series.value(i, column);
  Line line;
  linefit_(values.subspan(range.first - 1, range.last - range.first + 1), line.slope, line.intercept,
           static_cast<std::int32_t>(range.first) - 1);
  const double per_ps = column == total_column ? line.slope / 6.0 : line.slope * 0.5;
  line.diffusion = static_cast<float>(per_ps / series.spacing_ps());
  return line;
}

/// Draws the data of a column and the line over all lags.
void draw(const CorrelationSeries& series, const ColumnPlot& plot, std::int32_t fit_set, const Line& line,
          std::span<float> points) {
  const std::array sets{plot.data_set, fit_set};
  lay_out(plot.graph, sets,
          {.title = "A*A per atom", .x_label = "Time/ps", .y_label = result_names[plot.column], .text_code = 15});
  for (std::size_t i = 0; i < series.size(); ++i) {
    points[2 * i + 1] = static_cast<float>(series.value(i, plot.column));
  }
  write_points(plot.data_set, points);
  for (std::size_t i = 0; i < series.size(); ++i) {
    points[2 * i + 1] = static_cast<float>(line.intercept + line.slope * static_cast<double>(i + 1));
  }
  write_points(fit_set, points);
}

void print(std::string_view name, float diffusion) {
  const auto row = [&](float value, const char* unit) {
    const std::string number = formatted(static_cast<double>(value), "(e12.4)");
    std::printf(" %-3s=%s %s per atom\n", std::string(name).c_str(), number.c_str(), unit);
  };
  std::puts("");
  row(diffusion * static_cast<float>(square_cm_per_s), "cm*cm/(second)");
  row(diffusion, "A*A/(pico second)");
}

void fit_lines(double min_time, double max_time, std::int32_t& status) {
  const CorrelationSeries series(displacement_file, "PathStat/MSDlf/MSD", "PathStat/MSDlf/MSDx",
                                 {"PATHSTAT_ERROR_29", "PATHSTAT_ERROR_30", "PATHSTAT_ERROR_31"}, status);
  if (status != 0) return;
  const FitRange range = fit_range(series.lags(), min_time, max_time);
  if (range.last < range.first + 2) {
    status = 1;
    return show_message("PATHSTAT_ERROR_32");
  }
  const auto count = static_cast<std::int64_t>(series.size());
  const NamedBlock<float> points("PathStat/MSDlf/PlotData", 2 * count, status);
  NamedBlock<double> values;
  if (status == 0) values = NamedBlock<double>("PathStat/MSDlf/data", count, status);
  if (status != 0) {
    status = 1;
    return show_message("PATHSTAT_ERROR_33");
  }
  for (std::size_t i = 0; i < series.size(); ++i) points.span()[2 * i] = static_cast<float>(series.lags()[i]);

  std::vector<ColumnPlot> plots;
  std::array<std::int32_t, correlation_columns> fit_sets{};
  for (std::size_t column = series.first(); column < correlation_columns; ++column) {
    const auto plot = make_column_plot(column, graph_names[column], "MSD");
    if (!plot) continue;
    plots.push_back(*plot);
    fit_sets[column] = take_data_set(fit_names[column], fit_colour, DrawStyle::curve, "FIT");
  }
  const std::int32_t viewer = hand_to_viewer(plots, false);
  std::array<Line, correlation_columns> lines;
  for (std::size_t column = series.first(); column < correlation_columns; ++column) {
    lines[column] = fit(series, column, range, values.span());
  }
  for (const ColumnPlot& plot : plots) {
    draw(series, plot, fit_sets[plot.column], lines[plot.column], points.span());
  }
  for (std::size_t column = series.first(); column < correlation_columns; ++column) {
    print(result_names[column], lines[column].diffusion);
  }
  redraw(viewer);
}

}  // namespace

void linefit_(std::span<const double> values, double& slope, double& intercept, std::int32_t offset) {
  const auto [low, high] = std::ranges::minmax(values);
  const auto count = static_cast<double>(values.size());
  const double middle = (2.0 * offset + count + 1.0) * 0.5;
  const double level = (low + high) * 0.5;
  double sum = 0.0;
  double square = 0.0;
  double product = 0.0;
  for (std::size_t j = 0; j < values.size(); ++j) {
    const double u = offset + static_cast<double>(j + 1) - middle;
    const double v = values[j] - level;
    sum += v;
    square += u * u;
    product += u * v;
  }
  slope = product / square;
  intercept = sum / count - middle * slope + level;
}

void run_linefit_(double min_time, double max_time, std::int32_t& status) try {
  fit_lines(min_time, max_time, status);
} catch (const std::bad_alloc&) {
  status = 1;
  show_message("PATHSTAT_ERROR_33");
}

}  // namespace pathstat
