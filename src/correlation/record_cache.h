#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "correlation/frame_file.h"
#include "correlation/frame_sink.h"
#include "services/file_units.h"
#include "support/named_memory.h"

namespace pathstat {

/// Labels of the named blocks of x, y and z.
using AxisLabels = std::array<std::string_view, 3>;

/// Values of an axis from one frame to the next where frames stand in memory: each axis begins on a line of the
/// processor's cache.
constexpr std::size_t frame_stride(std::size_t atoms) { return (atoms + 7) / 8 * 8; }
/// Bytes of a frame there.
constexpr std::int64_t frame_bytes(std::size_t atoms) { return 24 * static_cast<std::int64_t>(frame_stride(atoms)); }

/// Room for frames one behind the other.
class FrameBlocks {
 public:
  FrameBlocks() = default;
  /// No block is touched for no frames: others may use the labels then.
  /// @param status  0, or that of an allocation
  FrameBlocks(const AxisLabels& labels, std::int64_t frames, std::size_t atoms, std::int32_t& status);

  AxesOut axes() const;

 private:
  std::array<NamedBlock<double>, 3> blocks_;
};

/// The frames of a correlation by records, from 1: all of them in memory, or in a file.
struct FrameRecords {
  FrameRecords(const FrameFile& in) : file(in) {}
  FrameRecords(const AxesOut& all, std::int64_t frames) : memory(all), frames_in_memory(frames) {}

  FrameFile file{-1, 1};
  AxesOut memory{};  ///< record k at the place k modulo their number
  std::int64_t frames_in_memory = 0;
};

/// Keeps frames as records: in memory if they fit there, else in the cache file.
class RecordCache : public FrameSink {
 public:
  /// @param file    of the cache, made only if it is needed
  /// @param memory  bytes that may be taken
  /// @param labels  of the blocks in memory
  RecordCache(std::string_view file, std::int64_t memory, const AxisLabels& labels)
      : file_(file), memory_(memory), labels_(labels) {}

  std::int32_t open(std::int32_t atoms, std::int32_t frames) override;
  bool write(std::int32_t record, const Axes& frame) override;

  bool in_memory() const { return !unit_; }
  FrameRecords frames() const;

 private:
  std::string_view file_;
  std::int64_t memory_;
  AxisLabels labels_;
  std::int64_t atoms_ = 0;
  std::int64_t frames_ = 0;
  FrameBlocks blocks_;
  FileUnit unit_;
};

}  // namespace pathstat
