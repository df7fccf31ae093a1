#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "correlation/batch_store.h"
#include "correlation/correlation_kernels.h"
#include "correlation/frame_window.h"
#include "transforms/lane_transform.h"

namespace pathstat {

/// What is correlated and over which pairs.
struct SpectralShape {
  OriginSeries series;
  bool of_velocities;  ///< products of the vectors themselves, else of their differences
  bool anisotropic;    ///< all columns of a correlation table, else the total alone

  std::size_t products() const { return anisotropic ? correlation_columns - 1 : 1; }
};

/// The sums over pairs of frames of all lags at once, by transforms (the correlation theorem; for displacements with
/// the squares summed apart, as V. Calandrini et al., École thématique de la Société Française de la Neutronique 12,
/// 201 (2011)). Positions are taken from the mean of each atom, rounded to a 32-bit float so that differences stay
/// what they are to the last bit. With an origin at each s-th record, the records fall into s interleaved series; the
/// first is correlated with each.
///
/// Rounding: the transforms and their sums are off by 2 e |X(k)| (|X(k)| + root mean square of X) in the spectrum at
/// frequency k, e = 4 x 2^-53 sqrt(log2 L); a sum over pairs by four times the root of the squared errors over L (that
/// of the interleaved series in proportion to their lengths). A lag is as the definition gives it where that
/// is below 1e-10 of its value: of the value itself for the displacements' XX, YY, ZZ and total, of the geometric mean
/// of XX and YY for XY; for velocities at least of a hundredth of the statistical noise, lag 0 / sqrt(3 x atoms x
/// origins).
class SpectralSums {
 public:
  /// @param workers  that may call transform() at the same time
  SpectralSums(const SpectralShape& shape, std::size_t workers);

  /// Transforms a batch into the sums of a worker.
  void transform(const AtomBatch& batch, std::size_t worker);
  /// Adds the sums of a worker to those of all batches. One call at a time.
  void join(std::size_t worker);

  /// Sums over pairs by lag.
  struct Lags {
    std::vector<double> sums;  ///< products() of a lag
    std::vector<bool> sure;
  };
  /// @param atoms  transformed so far
  Lags lags(std::int64_t atoms) const;

  /// Bytes that the sums of so many workers take, and the lags at the end.
  static std::int64_t bytes(const SpectralShape& shape, std::size_t workers);
  /// Workers whose sums fit into so many bytes; one at least, `most` at most.
  static std::size_t workers_in(std::int64_t memory, const SpectralShape& shape, std::size_t most);
  /// Operations that an atom costs, in units of a pair of frames of one atom by a pair kernel.
  static double cost_per_atom(const SpectralShape& shape);

 private:
  struct Sums {
    std::vector<std::complex<double>> spectra;  ///< by product, interleaved series and frequency
    std::vector<double> squares;                ///< by product and record
  };
  struct Worker {
    std::vector<LaneComplex> data;  ///< by axis and interleaved series
    Sums sums;
  };

  std::size_t length() const { return plan_.length(); }
  std::size_t records_of(std::size_t series) const;
  void load(const AtomBatch& batch, std::size_t axis, std::span<LaneComplex> data) const;
  void add_squares(std::span<const LaneComplex> a, std::span<const LaneComplex> b, std::span<double> squares) const;
  void transform_all(std::span<LaneComplex> data) const;
  void add_products(std::span<const LaneComplex> a, std::span<const LaneComplex> b,
                    std::span<std::complex<double>> spectra) const;
  void fill_correlations(std::size_t product, std::span<double> sums) const;
  void subtract_from_squares(std::size_t product, std::span<double> sums) const;
  std::vector<double> bounds(std::size_t product) const;
  void judge(std::int64_t atoms, Lags& lags) const;

  SpectralShape shape_;
  std::size_t records_;       ///< that take part in pairs
  std::size_t series_count_;  ///< interleaved ones that lags reach
  LanePlan plan_;
  std::vector<Worker> workers_;
  Sums total_;
};

}  // namespace pathstat
