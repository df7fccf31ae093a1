#include "reports/frame_means.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <utility>

#include "reports/averages.h"
#include "support/named_memory.h"

namespace pathstat {
namespace {

struct FrameTable {
  std::int32_t values;
  std::int32_t frames;
  std::span<const double> table;

  /// 0 if the table has all its rows and these columns, each with so many behind it as a value takes.
  std::int32_t check(std::initializer_list<std::int32_t> columns, std::int32_t components) const {
    if (values < 1 || frames < 1 || std::cmp_less(table.size(), std::int64_t{values} * frames)) return 1;
    for (const std::int32_t column : columns) {
      if (column < 1 || column > values - components + 1) return 1;
    }
    return 0;
  }
};

// What is averaged, by frame from 1.

struct Column {
  Column(const FrameTable& frames, std::int32_t column)
      : first(frames.table.data() + column - 1), stride(static_cast<std::size_t>(frames.values)) {}
  double operator()(std::int32_t frame) const { return first[static_cast<std::size_t>(frame - 1) * stride]; }

  const double* first;
  std::size_t stride;
};

struct Product {
  Product(const FrameTable& frames, std::int32_t a, std::int32_t b) : first(frames, a), second(frames, b) {}
  double operator()(std::int32_t frame) const { return first(frame) * second(frame); }

  Column first, second;
};

struct ScalarProduct {
  ScalarProduct(const FrameTable& frames, std::int32_t a, std::int32_t b)
      : x(frames, a, b), y(frames, a + 1, b + 1), z(frames, a + 2, b + 2) {}
  double operator()(std::int32_t frame) const { return x(frame) + y(frame) + z(frame); }

  Product x, y, z;
};

/// The mean over a window; what rounding takes from the sum is summed beside it.
template <class Value>
double mean(BlockWindow window, const Value& value) {
  double sum = 0.0, lost = 0.0;
  for (std::int32_t frame = window.first; frame <= window.last; ++frame) {
    const double next = value(frame), before = sum;
    sum += next;
    lost += std::abs(before) >= std::abs(next) ? (before - sum) + next : (next - sum) + before;
  }
  return (sum + lost) / (window.last - window.first + 1);
}

double square_of_mean_vector(const FrameTable& frames, BlockWindow window, std::int32_t column) {
  double square = 0.0;
  for (std::int32_t axis = 0; axis < 3; ++axis) {
    const double component = mean(window, Column(frames, column + axis));
    square += component * component;
  }
  return square;
}

BlockWindow all_of(const FrameTable& frames) { return {1, frames.frames}; }

template <class Value>
void running_means(const FrameTable& frames, const Value& value, std::span<double> means) {
  double mean = 0.0;
  for (std::int32_t k = 1; k <= frames.frames; ++k) {
    mean += (value(k) - mean) / k;
    means[static_cast<std::size_t>(k - 1)] = mean;
  }
}

struct Blocks {
  std::int32_t width;
  std::int32_t interval;
  std::int32_t half;

  std::int32_t check(const FrameTable& frames, std::span<double> result) const {
    const bool fits = width > 0 && interval > 0 && half >= 0 && half < width &&
                      std::cmp_greater_equal(result.size(), block_count(frames.frames, interval));
    return fits ? 0 : 1;
  }
  /// Puts average(window) of each block into the result.
  template <class Average>
  void each(const FrameTable& frames, std::span<double> result, Average average) const {
    for (std::int32_t b = 1; b <= block_count(frames.frames, interval); ++b) {
      result[static_cast<std::size_t>(b - 1)] = average(block_window(b, frames.frames, width, interval, half));
    }
  }
};

std::int32_t check_running(const FrameTable& frames, std::span<double> result) {
  return std::cmp_less(result.size(), frames.frames) ? 1 : 0;
}

}  // namespace

void avgval_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column,
             double& result, std::int32_t& status) {
  const FrameTable of{values, frames, table};
  status = of.check({column}, 1);
  if (status == 0) result = mean(all_of(of), Column(of, column));
}

void avgval2_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column_a,
              std::int32_t column_b, double& result, std::int32_t& status) {
  const FrameTable of{values, frames, table};
  status = of.check({column_a, column_b}, 1);
  if (status == 0) result = mean(all_of(of), Product(of, column_a, column_b));
}

void avgvecsqr_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column,
                double& result, std::int32_t& status) {
  const FrameTable of{values, frames, table};
  status = of.check({column}, 3);
  if (status == 0) result = square_of_mean_vector(of, all_of(of), column);
}

void avgvec2_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column_a,
              std::int32_t column_b, double& result, std::int32_t& status) {
  const FrameTable of{values, frames, table};
  status = of.check({column_a, column_b}, 3);
  if (status == 0) result = mean(all_of(of), ScalarProduct(of, column_a, column_b));
}

void cumavgval_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column,
                std::span<double> result, std::int32_t& status) {
  const FrameTable of{values, frames, table};
  status = of.check({column}, 1) | check_running(of, result);
  if (status == 0) running_means(of, Column(of, column), result);
}

void cumavgval2_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column_a,
                 std::int32_t column_b, std::span<double> result, std::int32_t& status) {
  const FrameTable of{values, frames, table};
  status = of.check({column_a, column_b}, 1) | check_running(of, result);
  if (status == 0) running_means(of, Product(of, column_a, column_b), result);
}

void cumavgvecsqr_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column,
                   std::span<double> result, std::int32_t& status) {
  const FrameTable of{values, frames, table};
  status = of.check({column}, 3) | check_running(of, result);
  if (status != 0) return;
  const NamedBlock<double> means("pathstat/FL/TmpVec", std::int64_t{3} * frames, status);
  if (status != 0) return;
  const auto count = static_cast<std::size_t>(frames);
  for (std::size_t axis = 0; axis < 3; ++axis) {
    running_means(of, Column(of, column + static_cast<std::int32_t>(axis)), means.span().subspan(axis * count, count));
  }
  for (std::size_t k = 0; k < count; ++k) {
    const double x = means.span()[k], y = means.span()[count + k], z = means.span()[2 * count + k];
    result[k] = x * x + y * y + z * z;
  }
}

void cumavgvec2_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column_a,
                 std::int32_t column_b, std::span<double> result, std::int32_t& status) {
  const FrameTable of{values, frames, table};
  status = of.check({column_a, column_b}, 3) | check_running(of, result);
  if (status == 0) running_means(of, ScalarProduct(of, column_a, column_b), result);
}

void blkavgval_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column,
                std::int32_t width, std::int32_t interval, std::int32_t half, std::span<double> result,
                std::int32_t& status) {
  const FrameTable of{values, frames, table};
  const Blocks blocks{width, interval, half};
  status = of.check({column}, 1) | blocks.check(of, result);
  if (status != 0) return;
  blocks.each(of, result, [&](BlockWindow window) { return mean(window, Column(of, column)); });
}

void blkavgval2_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column_a,
                 std::int32_t column_b, std::int32_t width, std::int32_t interval, std::int32_t half,
                 std::span<double> result, std::int32_t& status) {
  const FrameTable of{values, frames, table};
  const Blocks blocks{width, interval, half};
  status = of.check({column_a, column_b}, 1) | blocks.check(of, result);
  if (status != 0) return;
  blocks.each(of, result, [&](BlockWindow window) { return mean(window, Product(of, column_a, column_b)); });
}

void blkavgvecsqr_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column,
                   std::int32_t width, std::int32_t interval, std::int32_t half, std::span<double> result,
                   std::int32_t& status) {
  const FrameTable of{values, frames, table};
  const Blocks blocks{width, interval, half};
  status = of.check({column}, 3) | blocks.check(of, result);
  if (status != 0) return;
  blocks.each(of, result, [&](BlockWindow window) { return square_of_mean_vector(of, window, column); });
}

void blkavgvec2_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column_a,
                 std::int32_t column_b, std::int32_t width, std::int32_t interval, std::int32_t half,
                 std::span<double> result, std::int32_t& status) {
  const FrameTable of{values, frames, table};
  const Blocks blocks{width, interval, half};
  status = of.check({column_a, column_b}, 3) | blocks.check(of, result);
  if (status != 0) return;
  blocks.each(of, result, [&](BlockWindow window) { return mean(window, ScalarProduct(of, column_a, column_b)); });
}

}  // namespace pathstat
