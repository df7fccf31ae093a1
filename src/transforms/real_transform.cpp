#include "transforms/real_transform.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <utility>
#include <vector>

#include "transforms/lane_transform.h"
#include "transforms/real_stages.h"

namespace pathstat {
namespace {

constexpr double two_pi = 6.283185307179586;
/// Beyond it a convolution costs less than a factor's own square.
constexpr std::size_t largest_direct_radix = 128;

/// A whole number out of the factor table.
std::int64_t whole(double value) { return static_cast<std::int64_t>(value + (value < 0 ? -0.5 : 0.5)); }

/// Makes the factor list of `length` behind the first two elements; gives their number.
std::size_t factorise(std::int64_t length, std::span<double> factors) {
  constexpr std::array<std::int64_t, 4> first_trials{4, 2, 3, 5};
  std::size_t count = 0;
  std::int64_t left = length;
  std::int64_t trial = 0;
  for (std::size_t k = 0; left > 1; ++k) {
    trial = k < first_trials.size() ? first_trials[k] : trial + 2;
    // A rest without a divisor up to its root is itself the last factor.
    if (k >= first_trials.size() && trial > left / trial) trial = left;
    for (; left % trial == 0; left /= trial) {
      const std::size_t at = trial == 2 ? 0 : count;
      for (std::size_t i = count; i > at; --i) factors[2 + i] = factors[1 + i];
      factors[2 + at] = static_cast<double>(trial);
      ++count;
    }
  }
  factors[0] = static_cast<double>(length);
  factors[1] = static_cast<double>(count);
  return count;
}

void twiddle_parts(std::size_t radix, std::size_t points, std::size_t groups, std::span<double> data,
                   std::span<const double> twiddles) {
  const std::size_t part = points * groups;
  for (std::size_t j = 1; j < radix; ++j) {
    const double* twiddle = twiddles.data() + points * (j - 1);
    for (std::size_t k = 0; k < groups; ++k) {
      double* from = data.data() + part * j + points * k;
      for (std::size_t at = 1; at < points; at += 2) {
        const Complex z = turned(Complex{from[at], from[at + 1]}, {twiddle[at - 1], twiddle[at]});
        from[at] = z.re;
        from[at + 1] = z.im;
      }
    }
  }
}

/// Puts the sum of parts j and p-j in the place of j, and their difference in that of p-j.
void fold_parts(std::size_t radix, std::size_t part, std::span<double> data) {
  for (std::size_t j = 1; 2 * j < radix; ++j) {
    double* a = data.data() + part * j;
    double* b = data.data() + part * (radix - j);
    for (std::size_t i = 0; i < part; ++i) {
      const double sum = a[i] + b[i];
      b[i] = a[i] - b[i];
      a[i] = sum;
    }
  }
}

/// From folded parts: the even part of Y(q) in the place of q, the odd part in that of p-q.
void combine_parts(std::size_t radix, std::size_t part, const double* folded, double* sums, std::span<double> table) {
  for (std::size_t t = 0; t < radix; ++t) {
    const double angle = two_pi * static_cast<double>(t) / static_cast<double>(radix);
    table[2 * t] = std::cos(angle);
    table[2 * t + 1] = std::sin(angle);
  }
  for (std::size_t q = 0; 2 * q < radix; ++q) {
    double* even = sums + part * q;
    double* odd = sums + part * ((radix - q) % radix);
    for (std::size_t i = 0; i < part; ++i) odd[i] = 0.0;
    for (std::size_t i = 0; i < part; ++i) even[i] = folded[i];
    std::size_t turn = 0;
    for (std::size_t j = 1; 2 * j < radix; ++j) {
      turn += q;
      if (turn >= radix) turn -= radix;
      const double cos = table[2 * turn];
      const double sin = table[2 * turn + 1];
      const double* a = folded + part * j;
      const double* b = folded + part * (radix - j);
      for (std::size_t i = 0; i < part; ++i) even[i] += cos * a[i];
      if (q == 0) continue;
      for (std::size_t i = 0; i < part; ++i) odd[i] += sin * b[i];
    }
  }
}

/// What fold_parts and combine_parts make of the parts, for a large prime: the transform of its length as a convolution
/// with a chirp (L. I. Bluestein, A linear filtering approach to the computation of the discrete Fourier transform,
/// 1970). Eight elements of the parts are two in each of the lanes, as a real and an imaginary part.
void combine_by_chirp(std::size_t radix, std::size_t part, const double* parts, double* sums) {
  const LanePlan plan(LanePlan::cheapest(static_cast<std::int64_t>(2 * radix - 1)));
  std::vector<Complex> chirp(radix);
  for (std::size_t j = 0; j < radix; ++j) {
    const double angle = two_pi / 2.0 * static_cast<double>(j * j % (2 * radix)) / static_cast<double>(radix);
    chirp[j] = {std::cos(angle), std::sin(angle)};
  }
  std::vector<LaneComplex> filter(plan.length());
  for (std::size_t j = 0; j < radix; ++j) {
    filter[j].re.fill(chirp[j].re / static_cast<double>(plan.length()));
    filter[j].im.fill(chirp[j].im / static_cast<double>(plan.length()));
    if (j > 0) filter[plan.length() - j] = filter[j];
  }
  plan.transform(filter, plan.length());
  std::vector<LaneComplex> data(plan.length());
  for (std::size_t first = 0; first < part; first += 2 * lanes_together) {
    const std::size_t count = std::min(part - first, 2 * lanes_together);
    std::ranges::fill(data, LaneComplex{});
    for (std::size_t j = 0; j < radix; ++j) {
      std::array<double, 2 * lanes_together> z{};
      std::copy_n(parts + part * j + first, count, z.begin());
      for (std::size_t k = 0; k < lanes_together; ++k) {
        const Complex turn = turned(Complex{z[k], z[k + lanes_together]}, chirp[j]);
        data[j].re[k] = turn.re;
        data[j].im[k] = turn.im;
      }
    }
    plan.transform(data, radix);
    multiply_lanes(data, filter);
    plan.back(data);
    const auto at = [&](std::size_t q, std::size_t k) {
      return turned(Complex{data[q].re[k], data[q].im[k]}, chirp[q]);
    };
    for (std::size_t q = 0; 2 * q < radix; ++q) {
      const std::size_t mirrored = (radix - q) % radix;
      for (std::size_t k = 0; k < count; ++k) {
        const bool is_real = k < lanes_together;
        const Complex y = at(q, k % lanes_together);
        const Complex mirror = at(mirrored, k % lanes_together);
        sums[part * mirrored + first + k] = 0.5 * (is_real ? mirror.im - y.im : y.re - mirror.re);
        sums[part * q + first + k] = 0.5 * (is_real ? y.re + mirror.re : y.im + mirror.im);
      }
    }
  }
}

/// Puts the parts of combine_parts in the order of the transform.
void spread_parts(std::size_t radix, std::size_t points, std::size_t groups, const double* sums, double* out) {
  const std::size_t part = points * groups;
  for (std::size_t k = 0; k < groups; ++k) {
    const double* from = sums + points * k;
    double* to = out + radix * points * k;
    for (std::size_t i = 0; i < points; ++i) to[i] = from[i];
    for (std::size_t q = 1; 2 * q < radix; ++q) {
      const double* even = from + part * q;
      const double* odd = from + part * (radix - q);
      to[2 * q * points - 1] = even[0];
      to[2 * q * points] = -odd[0];
      for (std::size_t m = 1; 2 * m < points; ++m) {
        const std::size_t at = 2 * m - 1;
        put_pair(to, q * points, m, {even[at], even[at + 1]}, {odd[at], odd[at + 1]});
      }
    }
  }
}

}  // namespace

void fftcopy_(std::int64_t count, std::span<const double> source, std::int64_t source_stride,
              std::span<double> destination, std::int64_t destination_stride) {
  fftvcal_(count, 1.0, source, source_stride, destination, destination_stride);
}

void fftvcal_(std::int64_t count, double factor, std::span<const double> source, std::int64_t source_stride,
              std::span<double> destination, std::int64_t destination_stride) {
  std::int64_t from = source_stride < 0 ? (1 - count) * source_stride : 0;
  std::int64_t to = destination_stride < 0 ? (1 - count) * destination_stride : 0;
  for (std::int64_t k = 0; k < count; ++k, from += source_stride, to += destination_stride) {
    destination[static_cast<std::size_t>(to)] = factor * source[static_cast<std::size_t>(from)];
  }
}

void fftftri_(std::int64_t length, std::span<double> work) {
  if (length < 1) {
    std::puts(" The length of sequence has to be greater than 1");
    return;
  }
  const auto size = static_cast<std::size_t>(length);
  fft3tri_(length, work.subspan(size, size), work.subspan(2 * size));
}

void fft3tri_(std::int64_t length, std::span<double> twiddles, std::span<double> factors) {
  const std::size_t count = factorise(length, factors);
  std::size_t at = 0;
  std::int64_t groups = 1;
  for (std::size_t k = 0; k + 1 < count; ++k) {
    const std::int64_t radix = whole(factors[2 + k]);
    const std::int64_t points = length / (groups * radix);
    for (std::int64_t j = 1; j < radix; ++j, at += static_cast<std::size_t>(points)) {
      for (std::int64_t m = 1; 2 * m < points; ++m) {
        const double angle = two_pi * static_cast<double>(j * groups * m) / static_cast<double>(length);
        const auto pair = at + 2 * static_cast<std::size_t>(m) - 2;
        twiddles[pair] = std::cos(angle);
        twiddles[pair + 1] = std::sin(angle);
      }
    }
    groups *= radix;
  }
}

void fft4trf_(StageShape shape, std::span<const double> input, std::span<double> output,
              std::span<const double> twiddles) {
  real_stage(2, shape, input, output, twiddles);
}
void fft5trf_(StageShape shape, std::span<const double> input, std::span<double> output,
              std::span<const double> twiddles) {
  real_stage(3, shape, input, output, twiddles);
}
void fft6trf_(StageShape shape, std::span<const double> input, std::span<double> output,
              std::span<const double> twiddles) {
  real_stage(4, shape, input, output, twiddles);
}
void fft7trf_(StageShape shape, std::span<const double> input, std::span<double> output,
              std::span<const double> twiddles) {
  real_stage(5, shape, input, output, twiddles);
}

void fft8trf_(std::int64_t radix, StageShape shape, std::span<double> data, std::span<double> scratch,
              std::span<const double> twiddles, std::span<double> table) {
  const auto parts = static_cast<std::size_t>(radix);
  const auto points = static_cast<std::size_t>(shape.points);
  const auto groups = static_cast<std::size_t>(shape.groups);
  twiddle_parts(parts, points, groups, data, twiddles);
  if (parts > largest_direct_radix) {
    combine_by_chirp(parts, points * groups, data.data(), scratch.data());
  } else {
    fold_parts(parts, points * groups, data);
    combine_parts(parts, points * groups, data.data(), scratch.data(), table);
  }
  spread_parts(parts, points, groups, scratch.data(), data.data());
}

void fft3trf_(std::span<double> data, std::span<double> scratch, std::span<const double> twiddles,
              std::span<double> factors) {
  const auto length = static_cast<std::int64_t>(data.size());
  if (length <= 1) return;
  const auto count = static_cast<std::size_t>(whole(factors[1]));
  std::span<double> from = data;
  std::span<double> to = scratch;
  std::int64_t spanned = length;
  std::size_t twiddle = data.size() - 1;
  for (std::size_t k = count; k-- > 0;) {
    const std::int64_t radix = whole(factors[2 + k]);
    const StageShape shape{length / spanned, spanned / radix};
    twiddle -= static_cast<std::size_t>((radix - 1) * shape.points);
    if (radix <= 5) {
      real_stage(static_cast<std::size_t>(radix), shape, from, to, twiddles.subspan(twiddle));
      std::swap(from, to);
    } else {
      fft8trf_(radix, shape, from, to, twiddles.subspan(twiddle), factors.subspan(2 + count));
    }
    spanned = shape.groups;
  }
  if (from.data() != data.data()) fftcopy_(length, from, 1, data, 1);
}

}  // namespace pathstat
