#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "correlation/batch_store.h"
#include "correlation/correlation_kernels.h"
#include "correlation/frame_window.h"

namespace pathstat {

/// Displacements summed over blocks of time origins, for a few lags, beside the sums over all origins: from the scatter
/// of the blocks the Core tells the error of what it fits. Only a Core that names a file for them in the environment
/// variable PATHSTAT_ORIGIN_BLOCKS gets them.
///
/// The lags are the powers of four up to an eighth of the run, and that eighth or the longest lag of the analysis. The
/// origins that reach all of them fall into up to 24 blocks of the same length; a few at the end may be left out. Of
/// the origins of a block a long lag takes those that are an eighth of it apart: more know hardly more of it.
class OriginBlocks {
 public:
  /// @param columns  sums of a pair of frames
  /// @param workers  that may call sum() at the same time
  OriginBlocks(const OriginSeries& series, std::size_t columns, std::size_t workers);

  /// The file that the environment asks for.
  static std::optional<std::string> wanted_file();

  /// Adds the pairs of an origin, from 0.
  /// @param of_lag  yields the sums of the origin and the frame a lag behind it
  template <class OfLag>
  void add(std::int64_t origin, OfLag of_lag) {
    if (origin >= block_count_ * origins_) return;
    for (std::size_t k = 0; k < lags_.size(); ++k) {
      if (origin % origins_ % stride(k) != 0) continue;
      const auto sums = of_lag(lags_[k]);
      const auto kept = at(total_, k, origin / origins_);
      for (std::size_t column = 0; column < columns_; ++column) kept[column] += sums[column];
    }
  }

  /// Sums all pairs of a batch of atoms.
  void sum(const AtomBatch& batch, PairKernel kernel, std::size_t worker);
  /// Adds the sums of a worker to those of all batches. One call at a time.
  void join(std::size_t worker);

  /// Writes a text: a line of the spacing (ps), the frames that take part, the lags of the analysis, the frames from
  /// origin to origin, the origins of a block, and how many blocks, columns and lags follow; then for each lag (frames)
  /// a line with the means over atoms and origins (Å²), block by block. A file that cannot be written is left out.
  void save(const std::string& file, double spacing_ps, std::int64_t atoms) const;

 private:
  /// From one origin of a block to the next that a lag takes.
  std::int64_t stride(std::size_t lag) const { return std::max<std::int64_t>(1, lags_[lag] / (8 * series_.step)); }
  std::span<double> at(std::vector<double>& sums, std::size_t lag, std::int64_t block) const {
    const auto row = lag * static_cast<std::size_t>(block_count_) + static_cast<std::size_t>(block);
    return std::span(sums).subspan(row * columns_, columns_);
  }

  OriginSeries series_;
  std::size_t columns_;
  std::vector<std::int64_t> lags_;
  std::int64_t block_count_ = 0;
  std::int64_t origins_ = 1;  ///< of a block
  std::vector<double> total_;
  std::vector<std::vector<double>> workers_;
};

}  // namespace pathstat
