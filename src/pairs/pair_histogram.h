#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

#include "pairs/pair_search.h"
#include "support/vectors.h"

namespace pathstat {

/// Values of PairCount::set_mode.
namespace pair_sets {
constexpr std::int32_t within_one = 1;   ///< each pair of list 1 counts twice, as (i, j) and (j, i)
constexpr std::int32_t between_two = 2;  ///< each pair of list 1 with list 2 counts once
}  // namespace pair_sets

/// Repeats of a cell to be searched to either side for all images within the cutoff: the cutoff over the distance
/// between opposite faces, cut to an integer, and one more.
///
/// @param periodic_type  0: no repeats; 100: a, b, c; 101: b, c; 102: c
/// @param cutoff         Å, as the vectors
/// A direction without extent gets no repeats, and none gets more than a million.
void cellrange_(std::int32_t periodic_type, const Vector3& a, const Vector3& b, const Vector3& c, double cutoff,
                std::int32_t& ia, std::int32_t& ib, std::int32_t& ic);

/// Widens the ranges of a periodic question to all images that can hold a pair: cellrange_ has the cell's two lengths
/// the other way round for slabs, and takes the atoms to lie within one cell. Ranges are never made narrower, and stay
/// as they are where atoms are so far apart that a million images would be needed.
void widen_repeats(PairCount& pairs);
/// The same for atoms that were folded into the cell, without a look at each.
void widen_repeats_of_folded(PairCount& pairs);

/// Adds the distances of all pairs, through all images in the given ranges, to a histogram.
///
/// A distance r below the cutoff goes to bin trunc(r / interval), from 0, and beyond the last bin to the last. There is
/// no minimum image: each image p e1 + q e2 + s e3 with |p|, |q|, |s| up to the repeats counts by itself. Within one
/// set, each atom also counts once for each image of its own.
///
/// Pairs are found by cells, so that the cost grows with the pairs within the cutoff, and counted as integers. The
/// counts are those of count_pairs_plainly(), to which small questions go, and the atoms beyond 1e9 Å of others.
///
/// @param search  work space, which keeps its memory from call to call
/// @param status     0; 1 unknown set mode, no bins, or a cutoff or interval that is none; 2 no memory. Nothing is
/// added unless it is 0
/// @param meanwhile  called on this thread while others count, once if the status is 0; may be empty
void calculaterdf_(const PairCount& pairs, std::span<double> histogram, PairSearch& search, std::int32_t& status,
                   const std::function<void()>& meanwhile = {});

/// Does ahead of calculaterdf_ what can be done before others count, for the same question and search; the lists stay
/// as they are until then. Without memory std::bad_alloc is thrown.
void prepare_pairs(const PairCount& pairs, std::size_t bins, PairSearch& search);

/// The count by the definition: every image, every pair.
void count_pairs_plainly(const PairCount& pairs, std::span<double> histogram, std::int32_t& status);

}  // namespace pathstat
