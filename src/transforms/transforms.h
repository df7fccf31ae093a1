#pragma once

#include <cstdint>
#include <span>

// Cosine, sine and radial transforms of any length, not normalised. Sequences count from 1 in the formulas; a length
// whose prime factors are 2, 3 and 5 is fast; another prime factor p costs O(p) per element, and a large one O(log p).
namespace pathstat {

/// Cosine transform of an even sequence: X(i) = x(1) + (-1)^(i-1) x(n) + sum over k = 2 ... n-1 of
/// 2 x(k) cos((k-1)(i-1) pi / (n-1)). Twice in a row gives 2(n-1) times the input.
///
/// Fewer than 3 points show PATHSTAT_ERROR_35, lack of memory PATHSTAT_ERROR_34; the output is then not written.
/// @param output  n elements; may be the input itself
void fftcos_(std::span<const double> input, std::span<double> output);

/// Sine transform of an odd sequence: X(i) = sum over k = 1 ... n of 2 x(k) sin(k i pi / (n+1)). Twice in a row gives
/// 2(n+1) times the input.
///
/// Fewer than 3 points show PATHSTAT_ERROR_36, lack of memory PATHSTAT_ERROR_34; the output is then not written.
/// @param output  n + 1 elements, of which the last is work space; may begin at the input itself
void fftsin_(std::span<const double> input, std::span<double> output);

/// Radial transform in place of f(i) at r = i h, i = 1 ... n: value i from 2 on is 4 pi / k times the integral of
/// r f(r) sin(k r) by the rectangle rule, at k = (i-1) pi / (n h); value 1 is 2 h^3 times the sum of i^2 f(i).
void fft3d_(std::span<double> values, double spacing);

// The transforms by steps: tables first, then as many transforms of that length as wanted. The work space, 6n + 30
// elements for the cosine and 5n + 30 for the sine transform, holds the table of the pre-step (n or n/2 elements) and
// behind it the scratch, the twiddles and the factors of the real transform of length n-1 or n+1.

/// Prints a sentence and makes no table for n < 4.
void fftcosi_(std::int64_t n, std::span<double> work);
/// Prints a sentence for n < 2.
void fftsini_(std::int64_t n, std::span<double> work);
void fft2ost_(std::span<const double> input, std::span<double> output, std::span<double> work);
void fft2int_(std::span<const double> input, std::span<double> output, std::span<double> work);

}  // namespace pathstat
