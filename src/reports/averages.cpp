#include "reports/averages.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "reports/value_set.h"

namespace pathstat {
namespace {

bool holds_rows(std::span<const double> table, std::int32_t values, std::int64_t rows) {
  return values > 0 && rows > 0 && std::cmp_greater_equal(table.size(), rows * values);
}

double window_mean(std::span<const double> table, std::size_t values, std::size_t column, BlockWindow window) {
  const double* value = table.data() + static_cast<std::size_t>(window.first - 1) * values + column;
  double mean = *value;
  for (std::int32_t t = 1; t <= window.last - window.first; ++t) {
    value += values;
    mean += (*value - mean) / (t + 1);
  }
  return mean;
}

struct Bins {
  double first_centre = 0;
  double largest = 0;
  double width = 0;
};

/// The bin of a value, from 0; a value that is no number falls into the first bin.
std::size_t bin_of(double value, double lowest, double width, std::size_t bins) {
  const double place = std::round((value - lowest) / width);
  if (!(place > 0)) return 0;
  return place < static_cast<double>(bins) ? static_cast<std::size_t>(place) : bins - 1;
}

/// Counts the set's values; `all` is what every bin gets when there is no spread.
Bins count_values(const ValueSet& set, double all, std::span<double> counts) {
  double low = set.table[static_cast<std::size_t>(set.first)];
  double high = low;
  set.each([&](double value) {
    low = std::min(low, value);
    high = std::max(high, value);
  });
  const double range = high - low;
  if (range < least_spread) {
    std::ranges::fill(counts, all);
    return {low + range * 0.5, high, 0.0};
  }
  const double width = range / static_cast<double>(counts.size());
  std::ranges::fill(counts, 0.0);
  set.each([&](double value) { counts[bin_of(value, low, width, counts.size())] += 1.0; });
  return {low + width * 0.5, high, width};
}

}  // namespace

std::int32_t block_count(std::int32_t frames, std::int32_t interval) {
  if (frames < 1 || interval < 1) return 0;
  return (frames - 1) / interval + 1;
}

BlockWindow block_window(std::int32_t block, std::int32_t frames, std::int32_t width, std::int32_t interval,
                         std::int32_t half) {
  const std::int64_t start = (std::int64_t{block} - 1) * interval;
  return {static_cast<std::int32_t>(std::max<std::int64_t>(1, 1 - half + start)),
          static_cast<std::int32_t>(std::min<std::int64_t>(frames, width - half + start))};
}

std::int32_t keep_block_starts(std::span<double> of_frames, std::int32_t frames, std::int32_t interval) {
  const std::int32_t blocks = block_count(frames, interval);
  for (std::size_t k = 0; k < static_cast<std::size_t>(blocks); ++k) {
    of_frames[k] = of_frames[k * static_cast<std::size_t>(interval)];
  }
  return blocks;
}

void runningaverage_(std::int32_t values, std::int32_t frames, std::span<double> table, std::int32_t& status) {
  status = holds_rows(table, values, frames) ? 0 : 1;
  if (status != 0) return;
  const auto row_length = static_cast<std::size_t>(values);
  double* row = table.data();
  for (std::int32_t frame = 2; frame <= frames; ++frame) {
    const double* before = row;
    row += row_length;
    for (std::size_t j = 0; j < row_length; ++j) row[j] = before[j] + (row[j] - before[j]) / frame;
  }
}

void blockaverage_(std::int32_t values, std::int32_t frames, std::span<double> table, std::span<double> work,
                   std::int32_t width, std::int32_t interval, std::int32_t half, std::int32_t& status) {
  const std::int32_t blocks = block_count(frames, interval);
  const bool fits = holds_rows(table, values, frames) && std::cmp_greater_equal(work.size(), blocks);
  status = fits && blocks > 0 && width > 0 && half >= 0 ? 0 : 1;
  if (status != 0) return;
  const auto row_length = static_cast<std::size_t>(values);
  for (std::size_t column = 0; column < row_length; ++column) {
    for (std::int32_t b = 0; b < blocks; ++b) {
      const BlockWindow window = block_window(b + 1, frames, width, interval, half);
      work[static_cast<std::size_t>(b)] = window_mean(table, row_length, column, window);
    }
    for (std::size_t b = 0; b < static_cast<std::size_t>(blocks); ++b) table[b * row_length + column] = work[b];
  }
}

void histogram_(std::int32_t values, std::int32_t frames, std::span<const std::int32_t> row_sizes,
                std::span<double> table, std::span<double> counts, std::int32_t bins, bool is_measure,
                std::int32_t stride, std::span<double> bin_data, std::int32_t& status) {
  const std::int32_t histograms = is_measure ? stride : values;
  const bool fits = bins > 0 && frames > 0 && histograms > 0 && histograms <= values &&
                    holds_rows(table, values, std::max(frames, bins)) && std::cmp_greater_equal(counts.size(), bins) &&
                    std::cmp_greater_equal(bin_data.size(), std::int64_t{3} * histograms) &&
                    (!is_measure || std::cmp_greater_equal(row_sizes.size(), frames));
  status = fits ? 0 : 1;
  if (status != 0) return;
  const auto bin_counts = counts.first(static_cast<std::size_t>(bins));
  const auto total = static_cast<double>(is_measure ? std::int64_t{values} * frames / stride : std::int64_t{frames});
  for (std::int32_t j = 0; j < histograms; ++j) {
    const ValueSet set =
        is_measure ? ValueSet{table, values, frames, row_sizes, j, stride} : column_of(table, values, frames, j);
    const Bins found = count_values(set, total, bin_counts);
    if (found.width == 0.0) status = no_spread;
    const auto column = static_cast<std::size_t>(j);
    bin_data[3 * column] = found.first_centre;
    bin_data[3 * column + 1] = found.largest;
    bin_data[3 * column + 2] = found.width;
    for (std::size_t k = 0; k < bin_counts.size(); ++k) {
      table[k * static_cast<std::size_t>(values) + column] = bin_counts[k] / total;
    }
  }
}

}  // namespace pathstat
