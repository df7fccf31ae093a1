#include "pairs/pair_vectors.h"

#include <array>
#include <cmath>
#include <limits>

#include "pairs/pair_distance.h"

#ifdef __x86_64__
#include <immintrin.h>
#endif

// Each loop is written once and built for several instruction sets; what they compute is the same to the last bit.

namespace pathstat {
namespace {

/// Stands for the square of an atom's distance from its own image, which is no pair.
constexpr double itself = std::numeric_limits<double>::infinity();

/// Moves the squares below the limit to the front. @return their number
[[gnu::always_inline]] inline std::size_t keep_below(double limit, double* squares, std::size_t count) {
  std::size_t kept = 0;
  for (std::size_t k = 0; k < count; ++k) {
    const double square = squares[k];
    squares[kept] = square;
    kept += square < limit ? 1 : 0;
  }
  return kept;
}

[[gnu::always_inline]] inline void squares_between_two(const PairAtom& atom, const PairOthers& others,
                                                       double* __restrict squares) {
  const auto [ax, ay, az] = atom.at;
  const auto [tx, ty, tz] = atom.image;
  for (std::size_t k = 0; k < others.atoms; k += vector_lanes) {
    for (std::size_t lane = k; lane < k + vector_lanes; ++lane) {
      squares[lane] = square((ax - others.x[lane]) + tx, (ay - others.y[lane]) + ty, (az - others.z[lane]) + tz);
    }
  }
}

[[gnu::always_inline]] inline double moved_lower(bool atom_is_lower, double at, double moved, double other,
                                                 double image) {
  return atom_is_lower ? moved - other : (other - image) - at;
}

[[gnu::always_inline]] inline void squares_within_one(const PairAtom& atom, const PairOthers& others,
                                                      double* __restrict squares) {
  const auto [ax, ay, az] = atom.at;
  const auto [tx, ty, tz] = atom.image;
  const double mx = ax + tx, my = ay + ty, mz = az + tz;
  const auto order = static_cast<double>(atom.order);
  for (std::size_t k = 0; k < others.atoms; k += vector_lanes) {
    for (std::size_t lane = k; lane < k + vector_lanes; ++lane) {
      const auto other = static_cast<double>(others.order[lane]);
      const bool lower = order < other;
      const double found =
          square(moved_lower(lower, ax, mx, others.x[lane], tx), moved_lower(lower, ay, my, others.y[lane], ty),
                 moved_lower(lower, az, mz, others.z[lane], tz));
      squares[lane] = order == other ? itself : found;
    }
  }
}

[[gnu::always_inline]] inline void bins_of(const double* __restrict squares, std::size_t count, double interval,
                                           double last_bin, std::int32_t* __restrict bins) {
  for (std::size_t k = 0; k < count; ++k) bins[k] = bin_of(std::sqrt(squares[k]), interval, last_bin);
}

[[gnu::always_inline]] inline double clamped(double value, double low, double high) {
  const double above = value > low ? value : low;
  return above < high ? above : high;
}

[[gnu::always_inline]] inline void cells_of(const ColumnSearch& column, std::size_t count,
                                            std::int32_t* __restrict first, std::int32_t* __restrict last) {
  const double* __restrict u = column.atoms[0];
  const double* __restrict v = column.atoms[1];
  const double* __restrict w = column.atoms[2];
  const ColumnSearch c = column;
  for (std::size_t k = 0; k < count; ++k) {
    const double at_u = u[k] + c.image[0], at_v = v[k] + c.image[1], at_w = w[k] + c.image[2] - c.origin;
    const double gap_u = at_u - clamped(at_u, c.low[0], c.high[0]);
    const double gap_v = at_v - clamped(at_v, c.low[1], c.high[1]);
    const double room = c.reach * c.reach - gap_u * gap_u - gap_v * gap_v;
    const double chord = std::sqrt(room > 0.0 ? room : 0.0);
    first[k] = static_cast<std::int32_t>(clamped((at_w - chord) * c.per_length, 0.0, c.cells));
    last[k] = static_cast<std::int32_t>(clamped((at_w + chord) * c.per_length + 1.0, 0.0, room > 0.0 ? c.cells : 0.0));
  }
}

namespace plain {
std::size_t between_two(const PairAtom& atom, const PairOthers& others, double limit, double* squares) {
  squares_between_two(atom, others, squares);
  return keep_below(limit, squares, others.atoms);
}
std::size_t within_one(const PairAtom& atom, const PairOthers& others, double limit, double* squares) {
  squares_within_one(atom, others, squares);
  return keep_below(limit, squares, others.atoms);
}
void bins(const double* squares, std::size_t count, double interval, double last_bin, std::int32_t* bins) {
  bins_of(squares, count, interval, last_bin, bins);
}
void cells_near(const ColumnSearch& column, std::size_t count, std::int32_t* first, std::int32_t* last) {
  cells_of(column, count, first, last);
}
}  // namespace plain

#ifdef __x86_64__
namespace avx2 {
[[gnu::target("avx2")]] std::size_t between_two(const PairAtom& atom, const PairOthers& others, double limit,
                                                double* squares) {
  squares_between_two(atom, others, squares);
  return keep_below(limit, squares, others.atoms);
}
[[gnu::target("avx2")]] std::size_t within_one(const PairAtom& atom, const PairOthers& others, double limit,
                                               double* squares) {
  squares_within_one(atom, others, squares);
  return keep_below(limit, squares, others.atoms);
}
[[gnu::target("avx2")]] void bins(const double* squares, std::size_t count, double interval, double last_bin,
                                  std::int32_t* bins) {
  bins_of(squares, count, interval, last_bin, bins);
}
[[gnu::target("avx2")]] void cells_near(const ColumnSearch& column, std::size_t count, std::int32_t* first,
                                        std::int32_t* last) {
  cells_of(column, count, first, last);
}
}  // namespace avx2

namespace avx512 {
/// keep_below by the instruction that packs lanes.
[[gnu::target("avx512f,avx512dq,avx512vl")]] inline std::size_t packed_below(double limit, double* squares,
                                                                             std::size_t count) {
  const __m512d limits = _mm512_set1_pd(limit);
  std::size_t kept = 0;
  for (std::size_t k = 0; k < count; k += vector_lanes) {
    const auto counted = static_cast<__mmask8>(count - k < vector_lanes ? (1U << (count - k)) - 1 : 0xff);
    const __m512d lanes = _mm512_loadu_pd(squares + k);
    const __mmask8 below = _mm512_mask_cmp_pd_mask(counted, lanes, limits, _CMP_LT_OQ);
    _mm512_storeu_pd(squares + kept, _mm512_maskz_compress_pd(below, lanes));
    kept += static_cast<std::size_t>(__builtin_popcount(below));
  }
  return kept;
}

[[gnu::target("avx512f,avx512dq,avx512vl")]] std::size_t between_two(const PairAtom& atom, const PairOthers& others,
                                                                     double limit, double* squares) {
  squares_between_two(atom, others, squares);
  return packed_below(limit, squares, others.atoms);
}
[[gnu::target("avx512f,avx512dq,avx512vl")]] std::size_t within_one(const PairAtom& atom, const PairOthers& others,
                                                                    double limit, double* squares) {
  squares_within_one(atom, others, squares);
  return packed_below(limit, squares, others.atoms);
}
[[gnu::target("avx512f,avx512dq,avx512vl")]] void bins(const double* squares, std::size_t count, double interval,
                                                       double last_bin, std::int32_t* bins) {
  bins_of(squares, count, interval, last_bin, bins);
}
[[gnu::target("avx512f,avx512dq,avx512vl")]] void cells_near(const ColumnSearch& column, std::size_t count,
                                                             std::int32_t* first, std::int32_t* last) {
  cells_of(column, count, first, last);
}
}  // namespace avx512
#endif

constexpr std::array choices{
    PairVectors{plain::between_two, plain::within_one, plain::bins, plain::cells_near},
#ifdef __x86_64__
    PairVectors{avx2::between_two, avx2::within_one, avx2::bins, avx2::cells_near},
    PairVectors{avx512::between_two, avx512::within_one, avx512::bins, avx512::cells_near},
#endif
};

}  // namespace

std::size_t pair_vector_choices() {
#ifdef __x86_64__
  if (__builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl")) return 3;
  if (__builtin_cpu_supports("avx2")) return 2;
#endif
  return 1;
}

const PairVectors& pair_vectors(std::size_t choice) { return choices[choice]; }

const PairVectors& pair_vectors() {
  static const PairVectors& best = pair_vectors(pair_vector_choices() - 1);
  return best;
}

}  // namespace pathstat
