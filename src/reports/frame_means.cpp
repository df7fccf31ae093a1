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
  static constexpr std::int32_t components = 1;

  Column(const FrameTable& frames, std::int32_t column)
      : first(frames.table.data() + column - 1), stride(static_cast<std::size_t>(frames.values)) {}
  double operator()(std::int32_t frame) const { return first[static_cast<std::size_t>(frame - 1) * stride]; }

  const double* first;
  std::size_t stride;
};

struct Product {
  static constexpr std::int32_t components = 1;

  Product(const FrameTable& frames, std::int32_t a, std::int32_t b) : first(frames, a), second(frames, b) {}
  double operator()(std::int32_t frame) const { return first(frame) * second(frame); }

  Column first, second;
};

struct ScalarProduct {
  static constexpr std::int32_t components = 3;

  ScalarProduct(const FrameTable& frames, std::int32_t a, std::int32_t b)
      : x(frames, a, b), y(frames, a + 1, b + 1), z(frames, a + 2, b + 2) {}
  double operator()(std::int32_t frame) const { return x(frame) + y(frame) + z(frame); }

  Product x, y, z;
};

/// Averaged component by component; the result is the squared length of the mean.
struct Vector {
  static constexpr std::int32_t components = 3;

  Vector(const FrameTable& frames, std::int32_t column)
      : axes{Column(frames, column), Column(frames, column + 1), Column(frames, column + 2)} {}

  std::array<Column, 3> axes;
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

double mean(BlockWindow window, const Vector& vector) {
  double square = 0.0;
  for (const Column& axis : vector.axes) {
    const double component = mean(window, axis);
    square += component * component;
  }
  return square;
}

template <class Value>
void running_means(const Value& value, std::span<double> means, std::int32_t& /*status*/) {
  double mean = 0.0;
  for (std::size_t k = 0; k < means.size(); ++k) {
    const auto frame = static_cast<std::int32_t>(k + 1);
    mean += (value(frame) - mean) / frame;
    means[k] = mean;
  }
}

void running_means(const Vector& vector, std::span<double> squares, std::int32_t& status) {
  const std::size_t count = squares.size();
  const NamedBlock<double> means("pathstat/FL/TmpVec", static_cast<std::int64_t>(3 * count), status);
  if (status != 0) return;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    running_means(vector.axes[axis], means.span().subspan(axis * count, count), status);
  }
  for (std::size_t k = 0; k < count; ++k) {
    const double x = means.span()[k], y = means.span()[count + k], z = means.span()[2 * count + k];
    squares[k] = x * x + y * y + z * z;
  }
}

struct Blocks {
  std::int32_t width;
  std::int32_t interval;
  std::int32_t half;

  bool fit(std::int32_t frames, std::span<double> result) const {
    return width > 0 && interval > 0 && half >= 0 && half < width &&
           std::cmp_greater_equal(result.size(), block_count(frames, interval));
  }
};

// The three kinds of means, of a Value that is made from these columns.

template <class Value, class... Columns>
void mean_of_all(const FrameTable& of, double& result, std::int32_t& status, Columns... columns) {
  status = of.check({columns...}, Value::components);
  if (status == 0) result = mean(BlockWindow{1, of.frames}, Value(of, columns...));
}

template <class Value, class... Columns>
void means_up_to_each(const FrameTable& of, std::span<double> result, std::int32_t& status, Columns... columns) {
  status = std::cmp_less(result.size(), of.frames) ? 1 : of.check({columns...}, Value::components);
  if (status == 0) running_means(Value(of, columns...), result.first(static_cast<std::size_t>(of.frames)), status);
}

template <class Value, class... Columns>
void means_of_blocks(const FrameTable& of, const Blocks& blocks, std::span<double> result, std::int32_t& status,
                     Columns... columns) {
  status = blocks.fit(of.frames, result) ? of.check({columns...}, Value::components) : 1;
  if (status != 0) return;
  const Value value(of, columns...);
  for (std::int32_t b = 1; b <= block_count(of.frames, blocks.interval); ++b) {
    const BlockWindow window = block_window(b, of.frames, blocks.width, blocks.interval, blocks.half);
    result[static_cast<std::size_t>(b - 1)] = mean(window, value);
  }
}

}  // namespace

void avgval_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column,
             double& result, std::int32_t& status) {
  mean_of_all<Column>({values, frames, table}, result, status, column);
}

void avgval2_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column_a,
              std::int32_t column_b, double& result, std::int32_t& status) {
  mean_of_all<Product>({values, frames, table}, result, status, column_a, column_b);
}

void avgvecsqr_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column,
                double& result, std::int32_t& status) {
  mean_of_all<Vector>({values, frames, table}, result, status, column);
}

void avgvec2_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column_a,
              std::int32_t column_b, double& result, std::int32_t& status) {
  mean_of_all<ScalarProduct>({values, frames, table}, result, status, column_a, column_b);
}

void cumavgval_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column,
                std::span<double> result, std::int32_t& status) {
  means_up_to_each<Column>({values, frames, table}, result, status, column);
}

void cumavgval2_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column_a,
                 std::int32_t column_b, std::span<double> result, std::int32_t& status) {
  means_up_to_each<Product>({values, frames, table}, result, status, column_a, column_b);
}

void cumavgvecsqr_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column,
                   std::span<double> result, std::int32_t& status) {
  means_up_to_each<Vector>({values, frames, table}, result, status, column);
}

void cumavgvec2_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column_a,
                 std::int32_t column_b, std::span<double> result, std::int32_t& status) {
  means_up_to_each<ScalarProduct>({values, frames, table}, result, status, column_a, column_b);
}

void blkavgval_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column,
                std::int32_t width, std::int32_t interval, std::int32_t half, std::span<double> result,
                std::int32_t& status) {
  means_of_blocks<Column>({values, frames, table}, {width, interval, half}, result, status, column);
}

void blkavgval2_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column_a,
                 std::int32_t column_b, std::int32_t width, std::int32_t interval, std::int32_t half,
                 std::span<double> result, std::int32_t& status) {
  means_of_blocks<Product>({values, frames, table}, {width, interval, half}, result, status, column_a, column_b);
}

void blkavgvecsqr_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column,
                   std::int32_t width, std::int32_t interval, std::int32_t half, std::span<double> result,
                   std::int32_t& status) {
  means_of_blocks<Vector>({values, frames, table}, {width, interval, half}, result, status, column);
}

void blkavgvec2_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column_a,
                 std::int32_t column_b, std::int32_t width, std::int32_t interval, std::int32_t half,
                 std::span<double> result, std::int32_t& status) {
  means_of_blocks<ScalarProduct>({values, frames, table}, {width, interval, half}, result, status, column_a, column_b);
}

}  // namespace pathstat
