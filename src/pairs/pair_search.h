#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "pairs/cell_columns.h"
#include "pairs/pair_distance.h"
#include "pairs/pair_vectors.h"

namespace pathstat {

/// Counts pairs by distance, searching cells for those within the cutoff. It counts the pairs that the definition of
/// count_pairs_plainly() counts, each in the same bin, but for an atom's own images. Keeps its memory between counts.
class PairSearch {
 public:
  explicit PairSearch(const PairVectors& vectors = pair_vectors()) : vectors_(vectors) {}

  /// @return the number of pairs in each bin; lives until the next count. Without memory std::bad_alloc is thrown.
  std::span<const std::int64_t> count(const PairCount& pairs, std::size_t bins);

 private:
  struct ImageOf {
    Vector3 translation;
    bool is_zero;
  };
  void add_image(const ImageOf& image);
  void add_column(std::size_t column, const ImageOf& image);
  void add_columns(std::size_t column, CellColumns::Run atoms, std::size_t other_column, const ImageOf& image);
  void add_run(const PairAtom& atom, CellColumns::Run others, bool either_moves);
  void sort_into_bins();
  const CellColumns& others() const { return one_set_ ? first_ : second_; }

  const PairVectors& vectors_;
  CellColumns first_, second_;
  bool one_set_ = true;
  double reach_ = 0.0;  // the cutoff, and what rounding may add to it
  double limit_ = 0.0;
  double interval_ = 0.0;

  static constexpr std::size_t at_once = 256;
  std::array<std::int32_t, at_once> first_cells_, last_cells_;

  static constexpr std::size_t enough = 1024;
  static constexpr std::size_t longest_run = 512;
  std::size_t found_ = 0;
  std::array<double, enough + longest_run + vector_lanes> squares_;
  std::array<std::int32_t, enough + longest_run> bins_;
  std::vector<std::int64_t> counts_;
};

}  // namespace pathstat
