#include "correlation/dipole_pairs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "support/plain_array.h"
#include "transforms/real_transform.h"

namespace pathstat {
namespace {

/// A sum of fewer than this part of all pairs is formed as it stands.
constexpr std::int64_t few_pairs = 16;

// Costs, as measured, in terms of a pair's: of a lag beyond its pairs, and of each point and factor of 2 of a
// transform.
constexpr double cost_of_lag = 8;
constexpr double cost_of_point = 2.3;
constexpr double transforms_of_total = 4, transforms_with_components = 10;

/// The shortest even length from `least` on without other prime factors than 2, 3 and 5.
std::int64_t transform_length(std::int64_t least) {
  std::int64_t best = 2;
  while (best < least) best *= 2;
  for (std::int64_t fives = 2; fives < best; fives *= 5) {
    for (std::int64_t length = fives; length < best; length *= 3) {
      std::int64_t even = length;
      while (even < least) even *= 2;
      best = std::min(best, even);
    }
  }
  return best;
}

/// Real transforms of one length, and room for the spectra of three axes and for one product of them.
class Spectra {
 public:
  explicit Spectra(std::int64_t length) : length_(static_cast<std::size_t>(length)), room_(6 * length + extra) {
    if (allocated()) fftftri_(length, work());
  }
  bool allocated() const { return room_.allocated(); }

  /// Transforms a column, with zeros behind it, into the spectrum of an axis.
  void set(std::size_t axis, std::span<const double> column) {
    const auto out = part(axis);
    std::ranges::copy(column, out.begin());
    std::ranges::fill(out.subspan(column.size()), 0.0);
    transform(out);
  }

  /// Adds factor × Σ over t of a(t) b(t + lag) + b(t) a(t + lag), halved, of two axes to a product.
  void multiply(std::size_t a, std::size_t b, double factor, std::span<double> product) const {
    const auto p = part(a), q = part(b);
    const std::size_t half = length_ / 2;
    product[0] += factor * p[0] * q[0];
    product[half] += factor * p[length_ - 1] * q[length_ - 1];
    for (std::size_t k = 1; k < half; ++k) {
      product[k] += factor * (p[2 * k - 1] * q[2 * k - 1] + p[2 * k] * q[2 * k]);
    }
  }

  /// Room for a product, filled with zeros.
  std::span<double> empty_product() const {
    std::ranges::fill(part(3), 0.0);
    return part(3);
  }

  /// Brings a product back from its frequencies into a column of the table.
  void put_back(std::span<double> product, std::size_t column, std::span<double> table) {
    for (std::size_t k = 1; k < length_ / 2; ++k) product[length_ - k] = product[k];
    transform(product);
    const double scale = 1.0 / static_cast<double>(length_);
    const std::size_t lags = table.size() / correlation_columns;
    for (std::size_t lag = 0; lag < lags; ++lag) {
      table[lag * correlation_columns + column] = scale * product[lag == 0 ? 0 : 2 * lag - 1];
    }
  }

 private:
  static constexpr std::int64_t extra = 4096;  ///< the factors of a length and twice the largest one

  std::span<double> part(std::size_t k) const { return room_.span().subspan(k * length_, length_); }
  std::span<double> work() const { return room_.span().subspan(4 * length_); }
  void transform(std::span<double> data) {
    fft3trf_(data, work().first(length_), work().subspan(length_, length_), work().subspan(2 * length_));
  }

  std::size_t length_;
  PlainArray<double> room_;
};

constexpr std::array<std::array<std::size_t, 2>, 6> axes_of_column{{{0, 0}, {1, 1}, {2, 2}, {0, 1}, {0, 2}, {1, 2}}};

}  // namespace

DipolePairs::DipolePairs(std::span<const double> vectors, std::int64_t origin_step, std::int32_t& status)
    : frames_(std::ssize(vectors) / 3), step_(origin_step), columns_("DAC/Columns", 3 * frames_, status) {
  if (status != 0) return;
  const auto columns = columns_.span();
  const auto n = static_cast<std::size_t>(frames_);
  for (std::int64_t phase = 0; phase < std::min(step_, frames_); ++phase) {
    auto to = static_cast<std::size_t>(start(phase));
    for (std::int64_t frame = phase; frame < frames_; frame += step_, ++to) {
      for (std::size_t axis = 0; axis < 3; ++axis) {
        columns[axis * n + to] = vectors[3 * static_cast<std::size_t>(frame) + axis];
      }
    }
  }
}

std::int64_t DipolePairs::start(std::int64_t phase) const {
  return phase * (frames_ / step_) + std::min(phase, frames_ % step_);
}

Axes DipolePairs::axes(std::int64_t first, std::int64_t count) const {
  const auto n = static_cast<std::size_t>(frames_);
  const std::span<const double> columns = columns_.span();
  return Axes{columns.first(n), columns.subspan(n, n), columns.subspan(2 * n)}.part(static_cast<std::size_t>(first),
                                                                                    static_cast<std::size_t>(count));
}

std::int64_t DipolePairs::pairs(std::int64_t lag, std::int64_t origins) const {
  return lag < frames_ ? std::min(origins, (frames_ - 1 - lag) / step_ + 1) : 0;
}

void DipolePairs::add_lag(std::int64_t lag, std::int64_t first, std::int64_t end, bool components,
                          std::span<double> row) const {
  const std::int64_t count = pairs(lag, end) - first;
  if (count <= 0) return;
  const Axes origins = axes(first, count);
  const Axes later = axes(start(lag % step_) + lag / step_ + first, count);
  if (components) {
    add_velocity_products(origins, later, row);
  } else {
    add_velocity_product(origins, later, row.last(1));
  }
}

void DipolePairs::add(std::int64_t first, std::int64_t end, bool components, std::span<double> table) const {
  for (std::size_t at = 0; at < table.size(); at += correlation_columns) {
    add_lag(static_cast<std::int64_t>(at / correlation_columns), first, end, components,
            table.subspan(at, correlation_columns));
  }
}

bool DipolePairs::transforms_pay(std::int64_t lags, bool components) const {
  double by_pairs = cost_of_lag * static_cast<double>(lags);
  for (std::int64_t lag = 0; lag < lags; ++lag) by_pairs += static_cast<double>(pairs(lag, frames_));
  const auto length = static_cast<double>(transform_length(frames_ + lags));
  const double transforms = components ? transforms_with_components : transforms_of_total;
  return step_ == 1 && by_pairs > cost_of_point * transforms * length * std::log2(length);
}

bool DipolePairs::sum_all(bool components, std::span<double> table) const {
  const std::int64_t lags = std::ssize(table) / static_cast<std::int64_t>(correlation_columns);
  Spectra spectra(transform_length(frames_ + lags));
  if (!spectra.allocated()) return false;
  const Axes all = axes(0, frames_);
  const std::array columns{all.x, all.y, all.z};
  for (std::size_t axis = 0; axis < 3; ++axis) spectra.set(axis, columns[axis]);
  if (components) {
    for (std::size_t column = 0; column < axes_of_column.size(); ++column) {
      const auto [a, b] = axes_of_column[column];
      const auto product = spectra.empty_product();
      spectra.multiply(a, b, a == b ? 1.0 : 2.0, product);
      spectra.put_back(product, column, table);
    }
  }
  const auto total = spectra.empty_product();
  for (std::size_t axis = 0; axis < 3; ++axis) spectra.multiply(axis, axis, 1.0, total);
  spectra.put_back(total, total_column, table);
  for (std::int64_t lag = std::max<std::int64_t>(frames_ - frames_ / few_pairs, 0); lag < lags; ++lag) {
    const auto row = table.subspan(static_cast<std::size_t>(lag) * correlation_columns, correlation_columns);
    std::ranges::fill(row, 0.0);
    add_lag(lag, 0, frames_, components, row);
  }
  return true;
}

}  // namespace pathstat
