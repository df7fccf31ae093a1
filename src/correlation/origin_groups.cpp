#include "correlation/origin_groups.h"

#include <algorithm>

#include "support/parallel.h"

namespace pathstat {
namespace {

/// Atoms of a block: ten origins and a later frame stay well within the second cache.
constexpr std::size_t atoms_together = 256;
/// Later frames of a piece of work for one thread.
constexpr std::int64_t records_together = 16;
constexpr std::int64_t bytes_per_atom = 24;
constexpr std::size_t values_per_line = 8;
/// Sums of a group at most, to bound the memory of very long correlations.
constexpr std::int64_t most_sums = std::int64_t{1} << 22;

WindowPlan plan(const OriginSeries& series, std::int64_t columns, std::int64_t frames_in_memory) {
  const std::int64_t sums_of_origin = std::max<std::int64_t>(series.intervals * columns, 1);
  const auto together = std::clamp<std::int64_t>(most_sums / sums_of_origin, 1, origins_between_polls);
  return WindowPlan::make(series, frames_in_memory, together);
}

}  // namespace

OriginGroups::FrameBlocks::FrameBlocks(std::span<const std::string_view, 3> labels, std::int64_t values,
                                       std::int32_t& status) {
  const std::int64_t wanted = values == 0 ? 0 : values + std::int64_t{values_per_line};
  for (std::size_t axis = 0; axis < blocks.size() && status == 0; ++axis) {
    blocks[axis] = NamedBlock<double>(labels[axis], wanted, status);
  }
}

AxesOut OriginGroups::FrameBlocks::axes() const {
  const auto from_line = [](const NamedBlock<double>& block) {
    const auto values = static_cast<std::size_t>(block.address()) / sizeof(double);
    return block.span().subspan(block.size() == 0 ? 0 : (values_per_line - values % values_per_line) % values_per_line);
  };
  return {from_line(blocks[0]), from_line(blocks[1]), from_line(blocks[2])};
}

OriginGroups::OriginGroups(const OriginSeries& series, PairSums sums, const FrameFile& file, std::int64_t atoms,
                           std::int64_t memory, const std::array<std::string_view, 6>& labels, std::int32_t& status)
    : series_(series),
      kind_(sums),
      file_(file),
      atoms_(static_cast<std::size_t>(atoms)),
      stride_((atoms_ + values_per_line - 1) / values_per_line * values_per_line),
      plan_(plan(series, sums.columns, memory / (bytes_per_atom * static_cast<std::int64_t>(stride_)))),
      beside_(std::span(labels).first<3>(), plan_.origins_beside * static_cast<std::int64_t>(stride_), status),
      frames_(std::span(labels).last<3>(), plan_.window_frames * static_cast<std::int64_t>(stride_), status),
      window_(file, frames_.axes(), plan_.window_frames, atoms_, stride_) {
  const std::int64_t count = plan_.origins_together * series.intervals * sums.columns;
  if (status == 0) sums_ = NamedBlock<double>("PathStat/Corr/Sums", count, status);
}

std::span<double> OriginGroups::sums(std::int64_t place, std::int64_t lag) const {
  const std::int64_t at = (place * series_.intervals + lag) * kind_.columns;
  return sums_.span().subspan(static_cast<std::size_t>(at), static_cast<std::size_t>(kind_.columns));
}

bool OriginGroups::sum(std::int64_t first_origin, std::int64_t count) {
  std::ranges::fill(sums_.span(), 0.0);
  const std::int64_t end = series_.end(first_origin + count - 1);
  for (std::int64_t record = series_.record(first_origin); record < end; record += plan_.window_frames) {
    const std::int64_t stop = std::min(record + plan_.window_frames, end);
    if (!window_.load(record, stop)) return false;
    const bool first_round = record == series_.record(first_origin);
    if (first_round && !find_origins(first_origin, count)) return false;
    add_pairs(first_origin, std::span(origins_).first(static_cast<std::size_t>(count)), record, stop);
  }
  return true;
}

/// In the window if that stays in place while the group is worked on, else beside it.
bool OriginGroups::find_origins(std::int64_t first_origin, std::int64_t count) {
  for (std::int64_t place = 0; place < count; ++place) {
    Axes& origin = origins_[static_cast<std::size_t>(place)];
    const std::int64_t record = series_.record(first_origin + place);
    if (plan_.origins_beside == 0) {
      origin = window_.frame(record);
      continue;
    }
    const AxesOut room = beside_.axes().part(static_cast<std::size_t>(place) * stride_, atoms_);
    if (!file_.read(record, 1, room, stride_)) return false;
    origin = room;
  }
  return true;
}

/// Shared among the threads by ranges of later frames, which have sums of their own.
void OriginGroups::add_pairs(std::int64_t first_origin, std::span<const Axes> origins, std::int64_t first,
                             std::int64_t end) {
  for_blocks((end - first + records_together - 1) / records_together, [&](std::int64_t block, std::size_t) {
    const std::int64_t from = first + block * records_together;
    add_pairs_of(first_origin, origins, from, std::min(from + records_together, end));
  });
}

void OriginGroups::add_pairs_of(std::int64_t first_origin, std::span<const Axes> origins, std::int64_t first,
                                std::int64_t end) {
  for (std::size_t atom = 0; atom < atoms_; atom += atoms_together) {
    const std::size_t block = std::min(atoms_together, atoms_ - atom);
    for (std::int64_t record = first; record < end; ++record) {
      const Axes later = window_.frame(record).part(atom, block);
      for (std::size_t k = 0; k < origins.size(); ++k) {
        const auto place = static_cast<std::int64_t>(k);
        const std::int64_t lag = record - series_.record(first_origin + place);
        if (lag < 0) break;
        if (lag < series_.intervals) kind_.kernel(origins[k].part(atom, block), later, sums(place, lag));
      }
    }
  }
}

}  // namespace pathstat
