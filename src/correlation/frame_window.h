#pragma once

#include <cstdint>

#include "correlation/correlation_kernels.h"
#include "correlation/record_cache.h"

// Which frames of a cache stand in memory while their pairs are summed. Records count from 1.
namespace pathstat {

/// Bytes of frames that a correlation holds in memory unless the environment variable PATHSTAT_CACHE_MIB names another
/// number of MiB.
constexpr std::int64_t default_frame_memory = std::int64_t{256} << 20;
std::int64_t frame_memory();

/// The origins of an analysis and the pairs that they take part in.
struct OriginSeries {
  std::int64_t frames;     ///< N; the last one takes part in no pair
  std::int64_t step;       ///< from origin to origin, from 1
  std::int64_t intervals;  ///< longest lag + 1

  std::int64_t count() const { return frames < 2 ? 0 : (frames + step - 2) / step; }
  std::int64_t record(std::int64_t origin) const { return 1 + origin * step; }
  /// Origins that have a record this lag behind them.
  std::int64_t pairs(std::int64_t lag) const { return lag > frames - 2 ? 0 : (frames - 2 - lag) / step + 1; }
  /// The record behind the last one that this origin is paired with.
  std::int64_t end(std::int64_t origin) const {
    return record(origin) + intervals < frames ? record(origin) + intervals : frames;
  }
};

/// How an analysis goes over its frames: in groups of origins, each with a window of later frames. The window moves
/// over the file once if all frames that a group needs fit into memory; otherwise it runs over them once for each
/// group, and the group's origins are held beside it.
struct WindowPlan {
  std::int64_t origins_together;
  std::int64_t window_frames;
  std::int64_t origins_beside;  ///< frames held beside the window: 0, or the origins of a group

  /// @param frames_in_memory   frames that the memory holds
  /// @param most_together      origins that may be worked on together
  static WindowPlan make(const OriginSeries& series, std::int64_t frames_in_memory, std::int64_t most_together);
};

/// Consecutive records in memory; loading moves it on and keeps what it holds already. Of records that all stand in
/// memory nothing is loaded.
class FrameWindow {
 public:
  /// @param room  for `count` frames of `atoms` atoms; not used where the records stand in memory
  FrameWindow(const FrameRecords& records, const AxesOut& room, std::int64_t count, std::size_t atoms);

  /// Makes the records first ... end-1, as many as there is room for at most, the contents. False if they can't be
  /// read.
  bool load(std::int64_t first, std::int64_t end);
  bool holds(std::int64_t record) const { return record >= first_ && record < end_; }
  /// A record that it holds.
  Axes frame(std::int64_t record) const;

 private:
  bool read(std::int64_t slot, std::size_t records) const;

  FrameFile file_;
  AxesOut frames_;
  std::int64_t room_;
  std::size_t atoms_;
  std::size_t stride_;
  std::int64_t first_ = 1;
  std::int64_t end_;
};

}  // namespace pathstat
