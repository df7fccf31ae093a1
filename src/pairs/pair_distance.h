#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "support/vectors.h"

// What a pair count asks, and the arithmetic that all ways of counting share, so that they put each pair into the same
// bin to the last bit. It is built without contraction of products and sums.

namespace pathstat {

/// A question for calculaterdf_. Coordinates are x, y, z of each atom, lengths in Å.
struct PairCount {
  std::span<const double> list1;
  std::span<const double> list2;  ///< unused within one set
  std::int32_t set_mode = 1;      ///< of pair_sets
  std::int32_t periodic_type = 0;
  std::array<Vector3, 3> vectors{};       ///< e1, e2, e3
  std::array<std::int32_t, 3> repeats{};  ///< images of each to either side; ignored without periodicity
  double cutoff = 0.0;
  double interval = 0.0;
};

/// Calls visit(T, is_zero) for each image T of the question; without periodicity for the zero image alone.
template <class Visit>
void for_each_image(const PairCount& pairs, Visit visit) {
  const auto [ia, ib, ic] = pairs.periodic_type == 0 ? std::array<std::int32_t, 3>{} : pairs.repeats;
  const auto& [e1, e2, e3] = pairs.vectors;
  for (std::int32_t p = -ia; p <= ia; ++p) {
    for (std::int32_t q = -ib; q <= ib; ++q) {
      for (std::int32_t s = -ic; s <= ic; ++s) {
        const bool is_zero = p == 0 && q == 0 && s == 0;
        Vector3 image{};
        for (std::size_t k = 0; k < 3 && !is_zero; ++k) image[k] = p * e1[k] + q * e2[k] + s * e3[k];
        visit(image, is_zero);
      }
    }
  }
}

/// The number of images of the question.
inline double image_count(const PairCount& pairs) {
  double count = 1.0;
  for (const auto repeats : pairs.repeats) count *= pairs.periodic_type == 0 ? 1.0 : 2.0 * repeats + 1.0;
  return count;
}

/// The bin of a distance, from 0.
/// @param last_bin  the greatest bin, which also takes what lies beyond it
inline std::int32_t bin_of(double distance, double interval, double last_bin) {
  const double place = distance / interval;
  return static_cast<std::int32_t>(place < last_bin ? place : last_bin);
}

/// The square of a separation, in the order of sums that all ways keep.
inline double square(double dx, double dy, double dz) { return dx * dx + dy * dy + dz * dz; }

}  // namespace pathstat
