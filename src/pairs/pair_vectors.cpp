#include "pairs/pair_vectors.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "pairs/pair_distance.h"

#ifdef __x86_64__
#include <immintrin.h>
#endif

// Loops are built for several instruction sets; what they compute is the same to the last bit.

namespace pathstat {
namespace {

/// An atom and the image that it is seen in.
struct PairAtom {
  Vector3 at;
  Vector3 image;
  std::int32_t order;
};

/// Walks on through a batch.
/// @param squares_below  puts the squares of an atom and `count` others below the limit to the front; may write
/// vector_lanes more. @return their number
template <class SquaresBelow>
[[gnu::always_inline]] inline std::size_t walk_on(const PairBatch& batch, PairPlace& place, double* squares,
                                                  std::size_t found, SquaresBelow squares_below) {
  const PairAtoms& atoms = batch.atoms;
  const PairAtoms& others = batch.others;
  for (; place.atom < batch.count; ++place.atom, place.other = 0) {
    const std::size_t i = batch.first + place.atom;
    const std::size_t last = batch.starts[batch.last_cells[place.atom]];
    std::size_t other = std::max<std::size_t>(place.other, batch.starts[batch.first_cells[place.atom]]);
    if (batch.later_only) other = std::max(other, i + 1);
    const PairAtom atom{{atoms.x[i], atoms.y[i], atoms.z[i]}, batch.image, atoms.order[i]};
    while (other < last) {
      const std::size_t count = std::min(last - other, longest_stretch);
      const PairAtoms some{others.x + other, others.y + other, others.z + other, others.order + other};
      found += squares_below(atom, some, count, batch.limit, squares + found);
      other += count;
      if (found < enough_squares) continue;
      place.other = other;
      return found;
    }
  }
  return found;
}

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

struct BelowBetweenTwo {
  [[gnu::always_inline]] std::size_t operator()(const PairAtom& atom, const PairAtoms& others, std::size_t count,
                                                double limit, double* __restrict squares) const {
    const auto [ax, ay, az] = atom.at;
    const auto [tx, ty, tz] = atom.image;
    for (std::size_t k = 0; k < count; k += vector_lanes) {
      for (std::size_t lane = k; lane < k + vector_lanes; ++lane) {
        squares[lane] = square((ax - others.x[lane]) + tx, (ay - others.y[lane]) + ty, (az - others.z[lane]) + tz);
      }
    }
    return keep_below(limit, squares, count);
  }
};

[[gnu::always_inline]] inline double moved_lower(bool atom_is_lower, double at, double moved, double other,
                                                 double image) {
  return atom_is_lower ? moved - other : (other - image) - at;
}

struct BelowWithinOne {
  [[gnu::always_inline]] std::size_t operator()(const PairAtom& atom, const PairAtoms& others, std::size_t count,
                                                double limit, double* __restrict squares) const {
    const auto [ax, ay, az] = atom.at;
    const auto [tx, ty, tz] = atom.image;
    const double mx = ax + tx, my = ay + ty, mz = az + tz;
    const auto order = static_cast<double>(atom.order);
    for (std::size_t k = 0; k < count; k += vector_lanes) {
      for (std::size_t lane = k; lane < k + vector_lanes; ++lane) {
        const auto other = static_cast<double>(others.order[lane]);
        const bool lower = order < other;
        const double found =
            square(moved_lower(lower, ax, mx, others.x[lane], tx), moved_lower(lower, ay, my, others.y[lane], ty),
                   moved_lower(lower, az, mz, others.z[lane], tz));
        squares[lane] = order == other ? itself : found;
      }
    }
    return keep_below(limit, squares, count);
  }
};

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
std::size_t between_two(const PairBatch& batch, PairPlace& place, double* squares, std::size_t found) {
  return walk_on(batch, place, squares, found, BelowBetweenTwo{});
}
std::size_t within_one(const PairBatch& batch, PairPlace& place, double* squares, std::size_t found) {
  return walk_on(batch, place, squares, found, BelowWithinOne{});
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
[[gnu::target("avx2")]] std::size_t between_two(const PairBatch& batch, PairPlace& place, double* squares,
                                                std::size_t found) {
  return walk_on(batch, place, squares, found, BelowBetweenTwo{});
}
[[gnu::target("avx2")]] std::size_t within_one(const PairBatch& batch, PairPlace& place, double* squares,
                                               std::size_t found) {
  return walk_on(batch, place, squares, found, BelowWithinOne{});
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

// Squares stay in registers until those below the limit are packed by one instruction.
namespace avx512 {
struct Lanes {
  __m512d x, y, z;
};

[[gnu::target("avx512f,avx512dq,avx512vl")]] inline Lanes lanes_of(const Vector3& vector) {
  return {_mm512_set1_pd(vector[0]), _mm512_set1_pd(vector[1]), _mm512_set1_pd(vector[2])};
}
[[gnu::target("avx512f,avx512dq,avx512vl")]] inline Lanes lanes_at(const PairAtoms& atoms, std::size_t k) {
  return {_mm512_loadu_pd(atoms.x + k), _mm512_loadu_pd(atoms.y + k), _mm512_loadu_pd(atoms.z + k)};
}
[[gnu::target("avx512f,avx512dq,avx512vl")]] inline Lanes operator+(const Lanes& a, const Lanes& b) {
  return {_mm512_add_pd(a.x, b.x), _mm512_add_pd(a.y, b.y), _mm512_add_pd(a.z, b.z)};
}
[[gnu::target("avx512f,avx512dq,avx512vl")]] inline Lanes operator-(const Lanes& a, const Lanes& b) {
  return {_mm512_sub_pd(a.x, b.x), _mm512_sub_pd(a.y, b.y), _mm512_sub_pd(a.z, b.z)};
}
[[gnu::target("avx512f,avx512dq,avx512vl")]] inline Lanes chosen(__mmask8 second, const Lanes& a, const Lanes& b) {
  return {_mm512_mask_blend_pd(second, a.x, b.x), _mm512_mask_blend_pd(second, a.y, b.y),
          _mm512_mask_blend_pd(second, a.z, b.z)};
}

/// Packs the squares of the separations that are below the limit. @return their number
[[gnu::target("avx512f,avx512dq,avx512vl")]] inline std::size_t pack_below(__mmask8 counted, const Lanes& apart,
                                                                           __m512d limit, double* squares) {
  const __m512d xy = _mm512_add_pd(_mm512_mul_pd(apart.x, apart.x), _mm512_mul_pd(apart.y, apart.y));
  const __m512d sum = _mm512_add_pd(xy, _mm512_mul_pd(apart.z, apart.z));
  const __mmask8 below = _mm512_mask_cmp_pd_mask(counted, sum, limit, _CMP_LT_OQ);
  _mm512_storeu_pd(squares, _mm512_maskz_compress_pd(below, sum));
  return static_cast<std::size_t>(__builtin_popcount(below));
}

inline __mmask8 counted_lanes(std::size_t left) {
  return static_cast<__mmask8>(left < vector_lanes ? (1U << left) - 1 : 0xff);
}

struct BelowBetweenTwo {
  [[gnu::target("avx512f,avx512dq,avx512vl")]] std::size_t operator()(const PairAtom& atom, const PairAtoms& others,
                                                                      std::size_t count, double limit,
                                                                      double* squares) const {
    const Lanes at = lanes_of(atom.at), image = lanes_of(atom.image);
    const __m512d limits = _mm512_set1_pd(limit);
    std::size_t found = 0;
    for (std::size_t k = 0; k < count; k += vector_lanes) {
      const Lanes apart = (at - lanes_at(others, k)) + image;
      found += pack_below(counted_lanes(count - k), apart, limits, squares + found);
    }
    return found;
  }
};

struct BelowWithinOne {
  [[gnu::target("avx512f,avx512dq,avx512vl")]] std::size_t operator()(const PairAtom& atom, const PairAtoms& others,
                                                                      std::size_t count, double limit,
                                                                      double* squares) const {
    const Lanes at = lanes_of(atom.at), image = lanes_of(atom.image), moved = at + image;
    const __m512d limits = _mm512_set1_pd(limit);
    const __m256i order = _mm256_set1_epi32(atom.order);
    std::size_t found = 0;
    for (std::size_t k = 0; k < count; k += vector_lanes) {
      const Lanes other = lanes_at(others, k);
      const __m256i orders = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(others.order + k));
      const __mmask8 atom_is_lower = _mm256_cmplt_epi32_mask(order, orders);
      const __mmask8 is_itself = _mm256_cmpeq_epi32_mask(order, orders);
      const Lanes apart = chosen(atom_is_lower, (other - image) - at, moved - other);
      const auto counted = static_cast<__mmask8>(counted_lanes(count - k) & ~is_itself);
      found += pack_below(counted, apart, limits, squares + found);
    }
    return found;
  }
};

[[gnu::target("avx512f,avx512dq,avx512vl")]] std::size_t between_two(const PairBatch& batch, PairPlace& place,
                                                                     double* squares, std::size_t found) {
  return walk_on(batch, place, squares, found, BelowBetweenTwo{});
}
[[gnu::target("avx512f,avx512dq,avx512vl")]] std::size_t within_one(const PairBatch& batch, PairPlace& place,
                                                                    double* squares, std::size_t found) {
  return walk_on(batch, place, squares, found, BelowWithinOne{});
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
