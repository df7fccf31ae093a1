#include "transforms/real_stages.h"

#include <array>
#include <cstring>

namespace pathstat {
namespace {

/// The transform of P values as sums that keep real values real: Y(q) = even[q] - i odd[q-1] and Y(P-q) = even[q] +
/// i odd[q-1]; Y(0) and, for even P, Y(P/2) are even parts alone.
template <std::size_t P, class Value>
struct Parts {
  std::array<Value, P / 2 + 1> even;
  std::array<Value, (P - 1) / 2> odd;
};

template <class V>
[[gnu::always_inline]] constexpr Parts<2, V> butterfly(const std::array<V, 2>& z) {
  return {{z[0] + z[1], z[0] - z[1]}, {}};
}

template <class V>
[[gnu::always_inline]] constexpr Parts<3, V> butterfly(const std::array<V, 3>& z) {
  constexpr double sin3 = 0.8660254037844386;
  const V sum = z[1] + z[2];
  return {{z[0] + sum, z[0] + -0.5 * sum}, {sin3 * (z[1] - z[2])}};
}

template <class V>
[[gnu::always_inline]] constexpr Parts<4, V> butterfly(const std::array<V, 4>& z) {
  const V outer = z[0] + z[2];
  const V inner = z[1] + z[3];
  return {{outer + inner, z[0] - z[2], outer - inner}, {z[1] - z[3]}};
}

template <class V>
[[gnu::always_inline]] constexpr Parts<5, V> butterfly(const std::array<V, 5>& z) {
  constexpr double cos1 = 0.30901699437494745;
  constexpr double cos2 = -0.8090169943749475;
  constexpr double sin1 = 0.9510565162951535;
  constexpr double sin2 = 0.5877852522924731;
  const V a = z[1] + z[4];
  const V b = z[2] + z[3];
  const V c = z[1] - z[4];
  const V d = z[2] - z[3];
  return {{z[0] + a + b, z[0] + cos1 * a + cos2 * b, z[0] + cos2 * a + cos1 * b},
          {sin1 * c + sin2 * d, sin2 * c - sin1 * d}};
}

/// Frequency 0 of the parts, which is real.
template <std::size_t P>
void real_columns(std::size_t points, std::size_t groups, const double* in, double* out) {
  for (std::size_t k = 0; k < groups; ++k) {
    std::array<double, P> z;
    for (std::size_t j = 0; j < P; ++j) z[j] = in[points * (k + groups * j)];
    const auto [even, odd] = butterfly(z);
    double* to = out + points * P * k;
    to[0] = even[0];
    for (std::size_t q = 1; q <= odd.size(); ++q) {
      to[2 * q * points - 1] = even[q];
      to[2 * q * points] = -odd[q - 1];
    }
    if constexpr (P % 2 == 0) to[P * points - 1] = even[P / 2];
  }
}

// A complex value, or four that follow each other, from and to an array of real and imaginary parts. Four stand in the
// order 0, 2, 1, 3, into which the halves of the registers fall.

using Four [[gnu::vector_size(4 * sizeof(double))]] = double;
using FourComplex = ComplexOf<Four>;

[[gnu::always_inline]] inline void load(const double* from, Complex& to) { to = {from[0], from[1]}; }
[[gnu::always_inline]] inline void load(const double* from, FourComplex& to) {
  Four first, second;
  std::memcpy(&first, from, sizeof first);
  std::memcpy(&second, from + 4, sizeof second);
  to.re = __builtin_shufflevector(first, second, 0, 4, 2, 6);
  to.im = __builtin_shufflevector(first, second, 1, 5, 3, 7);
}

[[gnu::always_inline]] inline void store(const Complex& from, double* to) { to[0] = from.re, to[1] = from.im; }
[[gnu::always_inline]] inline void store(const FourComplex& from, double* to) {
  const Four first = __builtin_shufflevector(from.re, from.im, 0, 4, 2, 6);
  const Four second = __builtin_shufflevector(from.re, from.im, 1, 5, 3, 7);
  std::memcpy(to, &first, sizeof first);
  std::memcpy(to + 4, &second, sizeof second);
}

/// Stores the conjugates, the first one at `to` and the others in front of it.
[[gnu::always_inline]] inline void store_mirrored(const Complex& from, double* to) {
  to[0] = from.re, to[1] = -from.im;
}
[[gnu::always_inline]] inline void store_mirrored(const FourComplex& from, double* to) {
  const Four conjugate = -from.im;
  const Four first = __builtin_shufflevector(from.re, conjugate, 2, 6, 0, 4);
  const Four second = __builtin_shufflevector(from.re, conjugate, 3, 7, 1, 5);
  std::memcpy(to - 2, &first, sizeof first);
  std::memcpy(to - 6, &second, sizeof second);
}

/// The frequency m of the parts, or four from m on.
template <class Value, std::size_t P>
[[gnu::always_inline]] inline void complex_column(std::size_t m, std::size_t points, std::size_t part,
                                                  const double* from, double* to, const double* twiddles) {
  const std::size_t at = 2 * m - 1;
  std::array<Value, P> z;
  load(from + at, z[0]);
  for (std::size_t j = 1; j < P; ++j) {
    Value twiddle;
    load(from + part * j + at, z[j]);
    load(twiddles + points * (j - 1) + at - 1, twiddle);
    z[j] = turned(z[j], twiddle);
  }
  const auto [even, odd] = butterfly(z);
  store(even[0], to + at);
  for (std::size_t q = 1; q <= odd.size(); ++q) {
    const Value turn{odd[q - 1].im, -odd[q - 1].re};
    store(even[q] + turn, to + 2 * q * points + at);
    store_mirrored(even[q] - turn, to + 2 * (q * points - m) - 1);
  }
  if constexpr (P % 2 == 0) store_mirrored(even[P / 2], to + P * points - at - 2);
}

/// The complex frequencies of the parts.
template <std::size_t P>
[[gnu::always_inline]] inline void complex_columns(std::size_t points, std::size_t groups, const double* in,
                                                   double* out, const double* twiddles) {
  for (std::size_t k = 0; k < groups; ++k) {
    const double* from = in + points * k;
    double* to = out + points * P * k;
    std::size_t m = 1;
    for (; 2 * (m + 3) < points; m += 4) {
      complex_column<FourComplex, P>(m, points, points * groups, from, to, twiddles);
    }
    for (; 2 * m < points; ++m) complex_column<Complex, P>(m, points, points * groups, from, to, twiddles);
  }
}

/// The highest frequency of parts of even length, which is real, for an even radix.
void last_columns_of_two(std::size_t points, std::size_t groups, std::span<const double> input,
                         std::span<double> output) {
  const auto count = static_cast<std::int64_t>(groups);
  const auto step = static_cast<std::int64_t>(points);
  fftcopy_(count, input.subspan(points - 1), step, output.subspan(points - 1), 2 * step);
  fftvcal_(count, -1.0, input.subspan(points * groups + points - 1), step, output.subspan(points), 2 * step);
}

void last_columns_of_four(std::size_t points, std::size_t groups, const double* in, double* out) {
  constexpr double half_root = 0.7071067811865476;
  for (std::size_t k = 0; k < groups; ++k) {
    std::array<double, 4> z;
    for (std::size_t j = 0; j < 4; ++j) z[j] = in[points * (k + groups * j + 1) - 1];
    const double even = half_root * (z[1] - z[3]);
    const double odd = half_root * (z[1] + z[3]);
    double* to = out + 4 * points * k + points - 1;
    to[0] = z[0] + even;
    to[1] = -odd - z[2];
    to[2 * points] = z[0] - even;
    to[2 * points + 1] = z[2] - odd;
  }
}

template <std::size_t P>
[[gnu::always_inline]] inline void stage(StageShape shape, std::span<const double> input, std::span<double> output,
                                         std::span<const double> twiddles) {
  const auto points = static_cast<std::size_t>(shape.points);
  const auto groups = static_cast<std::size_t>(shape.groups);
  real_columns<P>(points, groups, input.data(), output.data());
  if (points > 2) complex_columns<P>(points, groups, input.data(), output.data(), twiddles.data());
  if (points % 2 != 0) return;
  if constexpr (P == 2) last_columns_of_two(points, groups, input, output);
  if constexpr (P == 4) last_columns_of_four(points, groups, input.data(), output.data());
}

[[gnu::always_inline]] inline void dispatch_stage(std::size_t radix, StageShape shape, std::span<const double> input,
                                                  std::span<double> output, std::span<const double> twiddles) {
  if (radix == 2) return stage<2>(shape, input, output, twiddles);
  if (radix == 3) return stage<3>(shape, input, output, twiddles);
  if (radix == 4) return stage<4>(shape, input, output, twiddles);
  stage<5>(shape, input, output, twiddles);
}

void plain_stage(std::size_t radix, StageShape shape, std::span<const double> input, std::span<double> output,
                 std::span<const double> twiddles) {
  dispatch_stage(radix, shape, input, output, twiddles);
}

#if defined(__x86_64__)
[[gnu::target("avx2,fma")]] void wide_stage(std::size_t radix, StageShape shape, std::span<const double> input,
                                            std::span<double> output, std::span<const double> twiddles) {
  dispatch_stage(radix, shape, input, output, twiddles);
}
#endif

}  // namespace

void real_stage(std::size_t radix, StageShape shape, std::span<const double> input, std::span<double> output,
                std::span<const double> twiddles) {
#if defined(__x86_64__)
  static const bool is_wide = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
  if (is_wide) return wide_stage(radix, shape, input, output, twiddles);
#endif
  plain_stage(radix, shape, input, output, twiddles);
}

}  // namespace pathstat
