#include "correlation/record_cache.h"

#include <algorithm>
#include <limits>

namespace pathstat {
namespace {

constexpr std::int64_t values_per_line = 8;

}  // namespace

FrameBlocks::FrameBlocks(const AxisLabels& labels, std::int64_t frames, std::size_t atoms, std::int32_t& status) {
  const std::int64_t values = frames * static_cast<std::int64_t>(frame_stride(atoms));
  for (std::size_t axis = 0; axis < blocks_.size() && values > 0 && status == 0; ++axis) {
    blocks_[axis] = NamedBlock<double>(labels[axis], values + values_per_line, status, NotCleared{});
  }
}

AxesOut FrameBlocks::axes() const {
  const auto from_line = [](const NamedBlock<double>& block) {
    const auto behind = block.address() / static_cast<std::int64_t>(sizeof(double)) % values_per_line;
    const auto skipped = block.size() == 0 ? 0 : (values_per_line - behind) % values_per_line;
    return block.span().subspan(static_cast<std::size_t>(skipped));
  };
  return {from_line(blocks_[0]), from_line(blocks_[1]), from_line(blocks_[2])};
}

std::int32_t RecordCache::open(std::int32_t atoms, std::int32_t frames) {
  constexpr std::int32_t words_per_atom = 6;
  atoms_ = atoms;
  frames_ = std::max(frames, 1);
  std::int32_t status = 0;
  const auto size = frame_bytes(static_cast<std::size_t>(atoms));
  if (size > 0 && frames_ <= memory_ / size) {
    blocks_ = FrameBlocks(labels_, frames_, static_cast<std::size_t>(atoms), status);
    if (status == 0) return 0;
    blocks_ = {};
  }
  if (atoms > std::numeric_limits<std::int32_t>::max() / words_per_atom) return cache_status::not_written;
  unit_ = open_cache(file_, words_per_atom * atoms, status);
  return status;
}

bool RecordCache::write(std::int32_t record, const Axes& frame) {
  if (!in_memory()) return FrameFile(unit_.number(), atoms_).write(record, frame);
  const auto place = static_cast<std::size_t>(record % frames_) * frame_stride(frame.x.size());
  const AxesOut room = blocks_.axes().part(place, frame.x.size());
  std::ranges::copy(frame.x, room.x.begin());
  std::ranges::copy(frame.y, room.y.begin());
  std::ranges::copy(frame.z, room.z.begin());
  return true;
}

FrameRecords RecordCache::frames() const {
  if (in_memory()) return {blocks_.axes(), frames_};
  return FrameFile(unit_.number(), atoms_);
}

}  // namespace pathstat
