#pragma once

#include <cstddef>
#include <span>

#include "transforms/complex_value.h"
#include "transforms/real_transform.h"

namespace pathstat {

/// The stage of a radix from 2 to 5. Four frequencies go side by side through the vector instructions of a processor
/// that has them.
/// @param input, output, twiddles  as fft4trf_ takes them
void real_stage(std::size_t radix, StageShape shape, std::span<const double> input, std::span<double> output,
                std::span<const double> twiddles);

/// Puts Y(q) at frequency q * points + m, and Y(P-q) as its conjugate at q * points - m.
inline void put_pair(double* out, std::size_t q_points, std::size_t m, const Complex& even, const Complex& odd) {
  double* upper = out + 2 * (q_points + m) - 1;
  upper[0] = even.re + odd.im;
  upper[1] = even.im - odd.re;
  double* lower = out + 2 * (q_points - m) - 1;
  lower[0] = even.re - odd.im;
  lower[1] = -(even.im + odd.re);
}

}  // namespace pathstat
