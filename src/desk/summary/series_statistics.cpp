#include "desk/summary/series_statistics.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>

namespace pathstat::desk {
namespace {

/// A plateau seen in fewer blocks is one of chance.
constexpr std::size_t fewest_blocks = 5;

/// Lags of the correlation before the values are averaged in pairs.
constexpr std::size_t most_lags = 256;

/// A drift of fewer errors may be one of chance.
constexpr double most_drift_errors = 3;

/// The window of the sum of correlations, in correlation times.
constexpr double window = 6;

double mean_of(std::span<const double> values) {
  if (values.empty()) return 0;
  // About the first value, so that a small fluctuation on a large value keeps its digits.
  const double first = values.front();
  const double sum = std::accumulate(values.begin(), values.end(), 0.0,
                                     [&](double so_far, double value) { return so_far + (value - first); });
  return first + sum / static_cast<double>(values.size());
}

/// With one less than their number below the sum.
double variance(std::span<const double> values) {
  const double mean = mean_of(values);
  double sum = 0;
  for (const double value : values) sum += (value - mean) * (value - mean);
  return sum / static_cast<double>(values.size() - 1);
}

/// Averages of neighbours; of an odd number the first value, the farthest from equilibrium, is left out.
std::vector<double> averaged_in_pairs(std::span<const double> values) {
  const auto odd = values.size() % 2;
  std::vector<double> pairs(values.size() / 2);
  for (std::size_t k = 0; k < pairs.size(); ++k) pairs[k] = 0.5 * (values[2 * k + odd] + values[2 * k + odd + 1]);
  return pairs;
}

/// The correlation time of values whose correlation ends within the lags that are looked at; 0 if it does not.
double time_within(std::span<const double> values, std::size_t lags) {
  const double mean = mean_of(values);
  const auto covariance = [&](std::size_t lag) {
    double sum = 0;
    for (std::size_t k = 0; k + lag < values.size(); ++k) sum += (values[k] - mean) * (values[k + lag] - mean);
    return sum / static_cast<double>(values.size() - lag);
  };
  const double square = covariance(0);
  double time = 0.5;
  for (std::size_t lag = 1; lag <= lags; ++lag) {
    time += covariance(lag) / square;
    if (static_cast<double>(lag) < window * time) continue;
    const double bias = static_cast<double>(2 * lag + 1) / static_cast<double>(values.size());
    return std::max(time, 0.0) * (1 + bias);
  }
  return 0;
}

struct Line {
  double slope = 0;
  std::vector<double> residuals;
};

/// The line of least squares through values at 0, 1, 2, ...
Line fitted_line(std::span<const double> values) {
  const double centre = 0.5 * static_cast<double>(values.size() - 1);
  const double mean = mean_of(values);
  double products = 0, squares = 0;
  for (std::size_t k = 0; k < values.size(); ++k) {
    const double from_centre = static_cast<double>(k) - centre;
    products += from_centre * (values[k] - mean);
    squares += from_centre * from_centre;
  }
  Line line{products / squares, {values.begin(), values.end()}};
  for (std::size_t k = 0; k < values.size(); ++k) {
    line.residuals[k] -= mean + line.slope * (static_cast<double>(k) - centre);
  }
  return line;
}

/// The drift and its error, for at least three values: the variance of a slope is that of the values around the line
/// over Σ (k - centre)² = n (n² - 1) / 12, times their inefficiency.
void add_drift(std::span<const double> values, SeriesStatistics& statistics) {
  const auto line = fitted_line(values);
  const auto count = static_cast<double>(values.size());
  const double length = count - 1;
  double squares = 0;
  for (const double residual : line.residuals) squares += residual * residual;
  const auto blocking = blocking_error(line.residuals);
  statistics.drift = line.slope * length;
  statistics.drift_error =
      length * std::sqrt(blocking.inefficiency * squares / (count - 2) * 12 / (count * (count * count - 1)));
  statistics.drifts = blocking.has_plateau && std::abs(*statistics.drift) > most_drift_errors * *statistics.drift_error;
}

}  // namespace

BlockingError blocking_error(std::span<const double> values) {
  const auto count = static_cast<double>(values.size());
  const double first = std::sqrt(variance(values) / count);
  BlockingError best;
  best.error = first;
  if (first == 0) return best;
  std::vector<double> blocks(values.begin(), values.end());
  for (std::size_t width = 1; blocks.size() >= 2; width *= 2) {
    const auto b = static_cast<double>(width);
    const double error = std::sqrt(variance(blocks) * b / count);
    const double inefficiency = (error / first) * (error / first);
    const bool flat = b * b * b > 2 * count * inefficiency * inefficiency;
    const bool enough = blocks.size() >= fewest_blocks;
    if ((flat && enough) || error > best.error) best = {error, width, inefficiency, flat && enough};
    if (flat || !enough) break;
    blocks = averaged_in_pairs(blocks);
  }
  return best;
}

std::optional<double> correlation_time(std::span<const double> values) {
  constexpr std::size_t fewest_values = 4;
  if (values.size() < fewest_values) return std::nullopt;
  const double square = variance(values);
  if (square == 0) return std::nullopt;
  std::vector<double> averages(values.begin(), values.end());
  for (double width = 1; averages.size() >= fewest_values; width *= 2) {
    const double averages_square = variance(averages);
    if (averages_square == 0) return std::nullopt;
    const auto half = averages.size() / 2;
    const double time = time_within(averages, std::min(half, most_lags));
    if (time > 0) return time * width * averages_square / square;
    if (half <= most_lags) return std::nullopt;
    averages = averaged_in_pairs(averages);
  }
  return std::nullopt;
}

SeriesStatistics series_statistics(std::span<const double> all) {
  std::vector<double> values;
  values.reserve(all.size());
  std::ranges::copy_if(all, std::back_inserter(values), [](double value) { return std::isfinite(value); });
  SeriesStatistics statistics;
  statistics.values = values.size();
  statistics.skipped = all.size() - values.size();
  statistics.mean = mean_of(values);
  if (values.size() < 2) return statistics;
  statistics.deviation = std::sqrt(variance(values));
  const auto blocking = blocking_error(values);
  statistics.error = blocking.error;
  statistics.has_plateau = blocking.has_plateau;
  statistics.effective = std::min(1.0, 1 / blocking.inefficiency) * static_cast<double>(values.size());
  statistics.correlation_time = correlation_time(values);
  if (values.size() > 2) add_drift(values, statistics);
  return statistics;
}

SeriesDoubt doubt_about(const SeriesStatistics& statistics) {
  constexpr double fewest_independent = 20, most_difference = 1.5;
  if (statistics.deviation == 0) return SeriesDoubt::constant;
  if (statistics.drifts) return SeriesDoubt::drifting;
  if (!statistics.has_plateau || *statistics.effective < fewest_independent || !statistics.correlation_time) {
    return SeriesDoubt::too_short;
  }
  const double by_time =
      *statistics.deviation * std::sqrt(2 * *statistics.correlation_time / static_cast<double>(statistics.values));
  const double ratio = *statistics.error / by_time;
  return ratio > most_difference || ratio < 1 / most_difference ? SeriesDoubt::errors_disagree : SeriesDoubt::none;
}

}  // namespace pathstat::desk
