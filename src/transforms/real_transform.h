#pragma once

#include <cstdint>
#include <span>

// The real forward transform below the cosine and sine transforms: mixed radix, any length, not normalised.
//
// A sequence x(1 ... L) becomes r(1 ... L) with r(1) the sum, r(2k) + i r(2k+1) = sum of x(j) e^(-2 pi i k (j-1) / L)
// for k = 1 ... (L-1)/2, and for even L r(L) = sum of (-1)^(j-1) x(j).
// Source of the structure: P. N. Swarztrauber, Vectorizing the FFTs, in Parallel Computations (1982).
namespace pathstat {

/// Prepares the transform of length L. Prints a sentence and does nothing for L < 1.
/// @param work  scratch of L elements, twiddles of L elements, and the factor table to the end
void fftftri_(std::int64_t length, std::span<double> work);

/// Factorises the length and fills the twiddles.
/// @param twiddles  L elements
/// @param factors   L, the number of factors and the factors: 2 first if there is one, then 4s, then odd ones upwards
void fft3tri_(std::int64_t length, std::span<double> twiddles, std::span<double> factors);

/// The transform, in place.
/// @param data, scratch, twiddles  L elements each
/// @param factors                  the factor table, and behind it room for 2p elements, p the largest factor
void fft3trf_(std::span<double> data, std::span<double> scratch, std::span<const double> twiddles,
              std::span<double> factors);

/// What one stage works on: `groups` transforms of length `radix * points` are made of `radix` times as many of length
/// `points`.
struct StageShape {
  std::int64_t points;
  std::int64_t groups;
};

// The stages of radix 2, 3, 4 and 5. Input: the transforms of length `points`, group by group, that of part j of all
// groups before that of part j + 1. Twiddles: for each part from the second on, `points` elements.
void fft4trf_(StageShape shape, std::span<const double> input, std::span<double> output,
              std::span<const double> twiddles);
void fft5trf_(StageShape shape, std::span<const double> input, std::span<double> output,
              std::span<const double> twiddles);
void fft6trf_(StageShape shape, std::span<const double> input, std::span<double> output,
              std::span<const double> twiddles);
void fft7trf_(StageShape shape, std::span<const double> input, std::span<double> output,
              std::span<const double> twiddles);

/// The stage of any odd radix, in O(radix) per element, and in O(log radix) for large ones. The number of points is
/// odd, as it is behind the factors 2 and 4.
/// @param data   input and result
/// @param table  2 x radix elements, filled with sines and cosines
void fft8trf_(std::int64_t radix, StageShape shape, std::span<double> data, std::span<double> scratch,
              std::span<const double> twiddles, std::span<double> table);

/// Copies `count` elements from one stride to another. A negative stride begins at element (1 - count) x stride + 1.
void fftcopy_(std::int64_t count, std::span<const double> source, std::int64_t source_stride,
              std::span<double> destination, std::int64_t destination_stride);
/// The same, each element multiplied by the factor.
void fftvcal_(std::int64_t count, double factor, std::span<const double> source, std::int64_t source_stride,
              std::span<double> destination, std::int64_t destination_stride);

}  // namespace pathstat
