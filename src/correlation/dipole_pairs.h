#pragma once

#include <cstdint>
#include <span>

#include "correlation/correlation_kernels.h"
#include "support/named_memory.h"

namespace pathstat {

/// Sums over the pairs of frames of a series of dipole vectors: an origin, which is every `origin_step`th frame from
/// the first on, and the frame a lag later. Tables hold a row of correlation_columns sums for each lag from 0 on: XX,
/// YY, ZZ, XY + YX, XZ + ZX, YZ + ZY and the total.
class DipolePairs {
 public:
  /// @param vectors      x, y, z of each frame
  /// @param origin_step  from 1
  /// @param status       0, or that of the allocation
  DipolePairs(std::span<const double> vectors, std::int64_t origin_step, std::int32_t& status);

  std::int64_t frames() const { return frames_; }
  std::int64_t origins() const { return (frames_ + step_ - 1) / step_; }
  /// Pairs of a lag that the first so many origins take part in.
  std::int64_t pairs(std::int64_t lag, std::int64_t origins) const;

  /// Adds the pairs of the origins from `first`, counted from 0, up to `end`.
  /// @param components  all columns, or the total alone
  void add(std::int64_t first, std::int64_t end, bool components, std::span<double> table) const;

  /// True if `sum_all` can sum so many lags, and costs less than `add` does.
  bool transforms_pay(std::int64_t lags, bool components) const;

  /// Sums the pairs of all origins, which have to be all frames, by the transform of the series with zeros behind it:
  /// the spectrum of the sums is the product of the spectra (N. Wiener, Acta Math. 55, 117, 1930). Sums of few pairs
  /// are formed as they stand, so that no sum is less accurate than some 1e-14 of the mean square times its pairs.
  /// @return false if there is no memory for that, and the table is as it was
  bool sum_all(bool components, std::span<double> table) const;

 private:
  /// Frames p, p + step, p + 2 step and so on stand one behind the other, those of phase p + 1 behind them.
  std::int64_t start(std::int64_t phase) const;
  Axes axes(std::int64_t first, std::int64_t count) const;
  void add_lag(std::int64_t lag, std::int64_t first, std::int64_t end, bool components, std::span<double> row) const;

  std::int64_t frames_;
  std::int64_t step_;
  NamedBlock<double> columns_;
};

}  // namespace pathstat
