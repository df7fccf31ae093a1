#include "correlation/spectral_sums.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>

namespace pathstat {
namespace {

constexpr std::size_t axes = 3;
/// The axes of each product of a table.
struct AxisPair {
  std::size_t a;
  std::size_t b;
};
constexpr std::array<AxisPair, correlation_columns - 1> axis_pairs{{{0, 0}, {1, 1}, {2, 2}, {0, 1}, {0, 2}, {1, 2}}};

constexpr double relative_accuracy = 1e-10;
constexpr double part_of_noise = 0.01;

/// Long enough that no lag wraps around onto another.
LanePlan::Shape transform_for(const OriginSeries& series) {
  return LanePlan::cheapest(series.count() + (series.intervals + series.step - 1) / series.step);
}

/// Interleaved series that lags reach.
std::size_t series_of(const OriginSeries& series) {
  return static_cast<std::size_t>(
      std::min({series.step, std::max<std::int64_t>(series.intervals, 1), std::max<std::int64_t>(series.frames, 1)}));
}

/// The mean of each atom along an axis, as a 32-bit float.
std::array<double, atoms_in_batch> means(const AtomBatch& batch, std::size_t axis, std::size_t records) {
  std::array<double, atoms_in_batch> sums{};
  for (std::size_t t = 0; t < records; ++t) {
    const auto values = batch.axis(t, axis);
    for (std::size_t k = 0; k < atoms_in_batch; ++k) sums[k] += values[k];
  }
  for (double& sum : sums) sum = static_cast<float>(sum / static_cast<double>(records));
  return sums;
}

}  // namespace

SpectralSums::SpectralSums(const SpectralShape& shape, std::size_t workers)
    : shape_(shape),
      records_(static_cast<std::size_t>(std::max<std::int64_t>(shape.series.frames - 1, 0))),
      series_count_(series_of(shape.series)),
      plan_(transform_for(shape.series)),
      workers_(workers) {
  const auto sized = [&](Sums& sums) {
    sums.spectra.resize(shape_.products() * series_count_ * length());
    sums.squares.resize(shape_.products() * records_);
  };
  sized(total_);
  for (Worker& worker : workers_) {
    worker.data.resize((shape_.anisotropic ? axes : 1) * series_count_ * length());
    sized(worker.sums);
  }
}

std::size_t SpectralSums::records_of(std::size_t series) const {
  const auto step = static_cast<std::size_t>(shape_.series.step);
  return series < records_ ? (records_ - series + step - 1) / step : 0;
}

/// One axis of a batch as interleaved series, transformed.
void SpectralSums::load(const AtomBatch& batch, std::size_t axis, std::span<LaneComplex> data) const {
  std::array<double, atoms_in_batch> middle{};
  if (!shape_.of_velocities) middle = means(batch, axis, records_);
  const auto step = static_cast<std::size_t>(shape_.series.step);
  for (std::size_t series = 0; series < series_count_; ++series) {
    const auto part = data.subspan(series * length(), length());
    const std::size_t filled = records_of(series);
    for (std::size_t j = 0; j < filled; ++j) {
      const auto values = batch.axis(series + j * step, axis);
      for (std::size_t k = 0; k < lanes_together; ++k) {
        part[j].re[k] = values[k] - middle[k];
        part[j].im[k] = values[k + lanes_together] - middle[k + lanes_together];
      }
    }
    std::memset(static_cast<void*>(part.data() + filled), 0, (length() - filled) * sizeof(LaneComplex));
  }
}

void SpectralSums::add_squares(std::span<const LaneComplex> a, std::span<const LaneComplex> b,
                               std::span<double> squares) const {
  for (std::size_t series = 0; series < series_count_; ++series) {
    std::size_t record = series;
    const std::size_t first = series * length();
    for (std::size_t j = first; j < first + records_of(series); ++j) {
      double sum = 0.0;
      for (std::size_t k = 0; k < lanes_together; ++k) sum += a[j].re[k] * b[j].re[k] + a[j].im[k] * b[j].im[k];
      squares[record] += sum;
      record += static_cast<std::size_t>(shape_.series.step);
    }
  }
}

void SpectralSums::transform_all(std::span<LaneComplex> data) const {
  for (std::size_t series = 0; series < series_count_; ++series) {
    plan_.transform(data.subspan(series * length(), length()), records_of(series));
  }
}

/// The first of a's series with each of b's.
void SpectralSums::add_products(std::span<const LaneComplex> a, std::span<const LaneComplex> b,
                                std::span<std::complex<double>> spectra) const {
  for (std::size_t series = 0; series < series_count_; ++series) {
    const std::size_t first = series * length();
    add_lane_products(a.first(length()), b.subspan(first, length()), spectra.subspan(first, length()));
  }
}

void SpectralSums::transform(const AtomBatch& batch, std::size_t worker) {
  auto& data = workers_[worker].data;
  Sums& sums = workers_[worker].sums;
  const std::size_t points = series_count_ * length();
  if (!shape_.anisotropic) {
    for (std::size_t axis = 0; axis < axes; ++axis) {
      load(batch, axis, data);
      add_squares(data, data, sums.squares);
      transform_all(data);
      add_products(data, data, sums.spectra);
    }
    return;
  }
  const auto axis_data = [&](std::size_t axis) { return std::span(data).subspan(axis * points, points); };
  for (std::size_t axis = 0; axis < axes; ++axis) load(batch, axis, axis_data(axis));
  for (std::size_t product = 0; product < axis_pairs.size(); ++product) {
    const auto [a, b] = axis_pairs[product];
    add_squares(axis_data(a), axis_data(b), std::span(sums.squares).subspan(product * records_, records_));
  }
  for (std::size_t axis = 0; axis < axes; ++axis) transform_all(axis_data(axis));
  for (std::size_t product = 0; product < axis_pairs.size(); ++product) {
    const auto [a, b] = axis_pairs[product];
    const auto spectra = std::span(sums.spectra).subspan(product * points, points);
    add_products(axis_data(a), axis_data(b), spectra);
    if (a != b) add_products(axis_data(b), axis_data(a), spectra);
  }
}

void SpectralSums::join(std::size_t worker) {
  const auto move = [](auto& from, auto& to) {
    for (std::size_t k = 0; k < to.size(); ++k) to[k] += from[k];
    std::ranges::fill(from, 0.0);
  };
  move(workers_[worker].sums.spectra, total_.spectra);
  move(workers_[worker].sums.squares, total_.squares);
}

void SpectralSums::fill_correlations(std::size_t product, std::span<double> sums) const {
  const auto intervals = static_cast<std::size_t>(shape_.series.intervals);
  const auto step = static_cast<std::size_t>(shape_.series.step);
  for (std::size_t series = 0; series < series_count_; ++series) {
    const auto from = std::span(total_.spectra).subspan((product * series_count_ + series) * length(), length());
    std::vector<std::complex<long double>> values(from.begin(), from.end());
    plan_.back(values);
    for (std::size_t j = 0, lag = series; lag < intervals; ++j, lag += step) {
      sums[lag] = static_cast<double>(values[j].real() / static_cast<long double>(length()));
    }
  }
}

/// Makes products of differences of products: of (w - u)(w' - u') over all pairs from the squares u u' and w w' and the
/// sums of u w' (and of u' w, where they are two).
void SpectralSums::subtract_from_squares(std::size_t product, std::span<double> sums) const {
  const auto step = static_cast<std::size_t>(shape_.series.step);
  const auto squares = std::span(total_.squares).subspan(product * records_, records_);
  std::vector<long double> before(records_ + step);  // of the records of the same series up to and with this one
  for (std::size_t t = 0; t < records_; ++t) before[t + step] = before[t] + squares[t];
  const double times = product < axes ? 2.0 : 1.0;
  for (std::size_t lag = 0; lag < sums.size(); ++lag) {
    const auto pairs = static_cast<std::size_t>(shape_.series.pairs(static_cast<std::int64_t>(lag)));
    if (pairs == 0) continue;
    const std::size_t last_origin = (pairs - 1) * step;
    const long double origins = before[last_origin + step];
    const long double ends = before[last_origin + lag + step] - before[lag];
    sums[lag] = lag == 0 ? 0.0 : static_cast<double>(origins + ends - times * static_cast<long double>(sums[lag]));
  }
}

/// Of the rounding of a product's sums, by interleaved series.
std::vector<double> SpectralSums::bounds(std::size_t product) const {
  constexpr double safety = 4.0;
  constexpr double unit = std::numeric_limits<double>::epsilon() / 2.0;
  const auto points = static_cast<double>(length());
  const auto spectrum = std::span(total_.spectra).subspan(product * series_count_ * length(), length());
  const double mean = std::accumulate(spectrum.begin(), spectrum.end(), 0.0,
                                      [](double sum, auto value) { return sum + value.real(); }) /
                      points;
  double errors = 0.0;
  for (const auto& value : spectrum) {
    const double power = std::max(value.real(), 0.0);
    errors += std::pow(power + std::sqrt(power * std::max(mean, 0.0)), 2);
  }
  const double first = safety * 2.0 * unit * std::sqrt(std::log2(points) * errors) / points;
  std::vector<double> energies(series_count_);
  for (std::size_t series = 0; series < series_count_; ++series) {
    for (std::size_t t = series; t < records_; t += static_cast<std::size_t>(shape_.series.step)) {
      energies[series] += total_.squares[product * records_ + t];
    }
  }
  std::vector<double> bounds(series_count_);
  std::ranges::transform(energies, bounds.begin(),
                         [&](double energy) { return first * std::sqrt(energy / energies[0]); });
  return bounds;
}

/// Marks the lags that are as the definition gives them.
void SpectralSums::judge(std::int64_t atoms, Lags& lags) const {
  const std::size_t products = shape_.products();
  std::vector<std::vector<double>> bound;
  for (std::size_t product = 0; product < std::min(products, axes); ++product) bound.push_back(bounds(product));
  const auto first_sums = std::span(lags.sums).first(products);
  for (std::size_t lag = 0; lag < lags.sure.size(); ++lag) {
    const auto pairs = static_cast<double>(shape_.series.pairs(static_cast<std::int64_t>(lag)));
    const auto sums = std::span(lags.sums).subspan(lag * products, products);
    const double noise =
        part_of_noise * std::sqrt(pairs / static_cast<double>(3 * atoms)) / static_cast<double>(shape_.series.pairs(0));
    const auto scale = [&](std::size_t product) {
      return shape_.of_velocities ? std::max(std::abs(sums[product]), noise * first_sums[product]) : sums[product];
    };
    const std::size_t series = lag % static_cast<std::size_t>(shape_.series.step);
    const double terms = shape_.of_velocities ? 1.0 : 2.0;
    bool sure = true;
    for (std::size_t product = 0; product < products; ++product) {
      const auto [a, b] = axis_pairs[product];
      const double error = 0.5 * terms * (bound[a][series] + bound[b][series]);
      sure = sure && error <= relative_accuracy * std::sqrt(std::max(scale(a), 0.0) * std::max(scale(b), 0.0));
    }
    lags.sure[lag] = sure || pairs == 0.0 || (lag == 0 && !shape_.of_velocities);
  }
}

SpectralSums::Lags SpectralSums::lags(std::int64_t atoms) const {
  const std::size_t products = shape_.products();
  const auto intervals = static_cast<std::size_t>(shape_.series.intervals);
  Lags lags{std::vector<double>(intervals * products), std::vector<bool>(intervals)};
  std::vector<double> column(intervals);
  for (std::size_t product = 0; product < products; ++product) {
    fill_correlations(product, column);
    if (!shape_.of_velocities) subtract_from_squares(product, column);
    for (std::size_t lag = 0; lag < intervals; ++lag) lags.sums[lag * products + product] = column[lag];
  }
  judge(atoms, lags);
  return lags;
}

std::int64_t SpectralSums::bytes(const SpectralShape& shape, std::size_t workers) {
  const std::size_t series = series_of(shape.series);
  const std::size_t points = series * transform_for(shape.series).length;
  const std::size_t sums = shape.products() * (points * sizeof(std::complex<double>) +
                                               static_cast<std::size_t>(shape.series.frames) * sizeof(double));
  const std::size_t data = (shape.anisotropic ? axes : 1) * points * sizeof(LaneComplex);
  const std::size_t at_the_end = 2 * points / series * sizeof(std::complex<long double>);
  return static_cast<std::int64_t>(workers * (sums + data) + sums + at_the_end);
}

std::size_t SpectralSums::workers_in(std::int64_t memory, const SpectralShape& shape, std::size_t most) {
  const std::int64_t shared = bytes(shape, 0);
  const std::int64_t fit = (memory - shared) / std::max<std::int64_t>(bytes(shape, 1) - shared, 1);
  return static_cast<std::size_t>(std::clamp<std::int64_t>(fit, 1, static_cast<std::int64_t>(most)));
}

double SpectralSums::cost_per_atom(const SpectralShape& shape) {
  constexpr double load_and_products = 10.0;
  constexpr double of_a_pair = 0.8;
  const LanePlan::Shape transform = transform_for(shape.series);
  const auto series =
      static_cast<double>(std::min(shape.series.step, std::max<std::int64_t>(shape.series.intervals, 1)));
  const double per_axis = series * (transform.cost + load_and_products * static_cast<double>(transform.length));
  return of_a_pair * per_axis * (shape.anisotropic ? 2.0 : 1.0) * axes / atoms_in_batch;
}

}  // namespace pathstat
