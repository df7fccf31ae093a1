#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "correlation/correlation_kernels.h"
#include "correlation/frame_file.h"
#include "correlation/frame_window.h"
#include "support/named_memory.h"

namespace pathstat {

/// A kernel and the number of sums that it adds to.
struct PairSums {
  PairKernel kernel;
  std::int64_t columns;
  TileKernel tile = nullptr;  ///< of the total, where that is the one column
};

/// Sums the pairs of frames of a cache, group by group of origins. Atoms are gone through in blocks: the pairs of all
/// origins of the group are summed while a block's vectors are in the processor's cache.
class OriginGroups {
 public:
  /// @param memory  bytes that frames of a file may take; two frames are held at least
  /// @param labels  of the named blocks: x, y, z of origins held beside the window, x, y, z of the window
  /// @param status  0, or that of an allocation
  OriginGroups(const OriginSeries& series, PairSums sums, const FrameRecords& records, std::int64_t atoms,
               std::int64_t memory, const std::array<std::string_view, 6>& labels, std::int32_t& status);

  /// Origins of a group; the last group may have fewer.
  std::int64_t origins_together() const { return plan_.origins_together; }

  /// Sums all pairs of `count` origins from number `first_origin`, from 0, on. False if the cache can't be read.
  bool sum(std::int64_t first_origin, std::int64_t count);

  /// The sums, one per column, of the group's origin `place`, from 0, and the frame `lag` records later.
  std::span<double> sums(std::int64_t place, std::int64_t lag) const;

 private:
  bool find_origins();
  void add_pairs(std::int64_t first, std::int64_t end);
  void add_pairs_of(std::int64_t first, std::int64_t end);

  /// Pairs of a few origins of the group from `place` on with a few frames from `record` on.
  struct Tile {
    std::size_t place;
    std::int64_t record;
    std::int64_t end;  ///< of the frames that there are
  };
  std::int64_t lag(std::size_t place, std::int64_t record) const;
  bool has_pairs(const Tile& tile) const;
  /// Empty if the origin and the frame are no pair.
  std::span<double> pair(const Tile& tile, std::size_t origin, std::size_t frame) const;
  /// @param vectors  those of a block of atoms
  void add(const Tile& tile, const PairTile& vectors) const;

  OriginSeries series_;
  PairSums kind_;
  FrameFile file_;
  std::size_t atoms_;
  WindowPlan plan_;
  FrameBlocks beside_;
  FrameBlocks frames_;
  FrameWindow window_;
  NamedBlock<double> sums_;
  std::vector<Axes> origins_;
  std::int64_t first_origin_ = 0;
  std::span<Axes> group_;
};

}  // namespace pathstat
