#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "pairs/cell_columns.h"
#include "pairs/pair_distance.h"
#include "pairs/pair_vectors.h"

namespace pathstat {

/// An image of a cell that atoms are seen in.
struct SearchImage {
  Vector3 translation;
  bool is_zero;
};

/// The two sets of a search in their cells; within one set both are the same.
struct SearchCells {
  const CellColumns& first;
  const CellColumns& others;
  bool one_set;
  double reach;  ///< the cutoff, and what rounding may add to it
  double limit;  ///< the square of the cutoff
};

/// Counts the pairs of some columns: what one thread of a search works with.
class ColumnPairs {
 public:
  explicit ColumnPairs(const PairVectors& vectors) : vectors_(vectors) {}

  /// Begins a count.
  void start(double interval, std::size_t bins) {
    interval_ = interval;
    counts_.assign(bins, 0);
  }

  /// Counts what the atoms of a column of the first set see in an image of the others.
  void add_column(const SearchCells& cells, std::size_t column, const SearchImage& image);
  /// The number of pairs in each bin.
  std::span<const std::int64_t> counts();

 private:
  void add_columns(const SearchCells& cells, std::size_t column, CellColumns::Run atoms, std::size_t other_column,
                   const SearchImage& image);
  void sort_into_bins();

  const PairVectors& vectors_;
  double interval_ = 0.0;

  static constexpr std::size_t at_once = 256;
  std::array<std::int32_t, at_once> first_cells_, last_cells_;

  std::size_t found_ = 0;
  std::array<double, room_for_squares> squares_;
  std::array<std::int32_t, room_for_squares> bins_;
  std::vector<std::int64_t> counts_;
};

/// Counts pairs by distance, searching cells for those within the cutoff. It counts the pairs that the definition of
/// count_pairs_plainly() counts, each in the same bin, but for an atom's own images. Keeps its memory between counts.
class PairSearch {
 public:
  explicit PairSearch(const PairVectors& vectors = pair_vectors()) : vectors_(vectors) {}

  /// Sorts the atoms of a question into cells, ahead of the next count if it is of the same.
  void sort(const PairCount& pairs);
  /// @param meanwhile  called on this thread while others count; may be empty
  /// @return the number of pairs in each bin; lives until the next count. Without memory std::bad_alloc is thrown.
  std::span<const std::int64_t> count(const PairCount& pairs, std::size_t bins,
                                      const std::function<void()>& meanwhile = {});

 private:
  void choose_images(const PairCount& pairs, const SearchCells& cells);

  const PairVectors& vectors_;
  CellColumns first_, second_;
  const double* sorted_ = nullptr;  ///< the first list that the next count finds sorted
  std::vector<SearchImage> images_;
  std::vector<std::unique_ptr<ColumnPairs>> workers_;
  std::vector<std::int64_t> counts_;
};

}  // namespace pathstat
