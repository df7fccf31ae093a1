#include "correlation/frame_window.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdlib>
#include <cstring>

#include "support/parallel.h"

namespace pathstat {
namespace {

/// Records that a thread reads at once.
constexpr std::size_t records_together = 8;

}  // namespace

std::int64_t frame_memory() {
  constexpr std::int64_t most = std::int64_t{1} << 30;  // MiB
  const char* text = std::getenv("PATHSTAT_CACHE_MIB");
  if (text == nullptr) return default_frame_memory;
  std::int64_t mebibytes = 0;
  const char* const end = text + std::strlen(text);
  const auto [stop, failure] = std::from_chars(text, end, mebibytes);
  const bool sound = failure == std::errc{} && stop == end && mebibytes > 0 && mebibytes <= most;
  return sound ? mebibytes << 20 : default_frame_memory;
}

WindowPlan WindowPlan::make(const OriginSeries& series, std::int64_t frames_in_memory, std::int64_t most_together) {
  // Windows of origins that are farther apart than the longest lag have no frame in common.
  const std::int64_t useful = series.step >= series.intervals ? 1 : most_together;
  const std::int64_t together = std::clamp<std::int64_t>(series.count(), 1, useful);
  for (std::int64_t group = together; group >= 1; --group) {
    const auto needed = std::clamp<std::int64_t>((group - 1) * series.step + series.intervals, 1, series.frames);
    if (needed <= frames_in_memory) return {group, needed, 0};
  }
  const auto beside = std::clamp<std::int64_t>(frames_in_memory / 2, 1, together);
  return {beside, std::max<std::int64_t>(frames_in_memory - beside, 1), beside};
}

FrameWindow::FrameWindow(const FrameRecords& records, const AxesOut& room, std::int64_t count, std::size_t atoms)
    : file_(records.file),
      frames_(records.frames_in_memory > 0 ? records.memory : room),
      room_(records.frames_in_memory > 0 ? records.frames_in_memory : count),
      atoms_(atoms),
      stride_(frame_stride(atoms)),
      end_(1 + records.frames_in_memory) {}

bool FrameWindow::load(std::int64_t first, std::int64_t end) {
  if (first < first_ || first > end_) end_ = first;
  first_ = first;
  while (end_ < end) {
    const std::int64_t slot = end_ % room_;
    const std::int64_t records = std::min(end - end_, room_ - slot);
    if (!read(slot, static_cast<std::size_t>(records))) return false;
    end_ += records;
  }
  return true;
}

/// The records behind those that it holds, to slots one behind the other.
bool FrameWindow::read(std::int64_t slot, std::size_t records) const {
  std::atomic<bool> whole = true;
  for_pieces(records, records_together, [&](std::size_t first, std::size_t end) {
    const auto at = static_cast<std::size_t>(slot) + first;
    const auto room = frames_.part(at * stride_, (end - first) * stride_);
    const auto from = end_ + static_cast<std::int64_t>(first);
    if (!file_.read(from, static_cast<std::int64_t>(end - first), room, stride_)) whole = false;
  });
  return whole;
}

Axes FrameWindow::frame(std::int64_t record) const {
  return frames_.part(static_cast<std::size_t>(record % room_) * stride_, atoms_);
}

}  // namespace pathstat
