#include "correlation/origin_groups.h"

#include <algorithm>

#include "support/parallel.h"

namespace pathstat {
namespace {

/// Atoms of a block: the origins of a group and a later frame stay well within the second cache.
constexpr std::size_t atoms_together = 256;
/// Origins of a group, as far as memory goes: each later frame is fetched once for all of them.
constexpr std::int64_t few_origins = 10;
constexpr std::int64_t many_origins = 40;
/// Vectors of a group of more than a few origins at most: then the Core is asked again in a tenth of a second or so.
constexpr std::int64_t most_vectors = std::int64_t{1} << 28;
/// Later frames of a piece of work for one thread.
constexpr std::int64_t records_together = 16;
/// Sums of a group at most, to bound the memory of very long correlations.
constexpr std::int64_t most_sums = std::int64_t{1} << 22;

WindowPlan plan(const OriginSeries& series, std::int64_t columns, std::int64_t atoms, std::int64_t frames_in_memory) {
  const std::int64_t lags = std::max<std::int64_t>(series.intervals, 1);
  const auto quick = std::clamp<std::int64_t>(most_vectors / lags / atoms, few_origins, many_origins);
  const auto together = std::clamp<std::int64_t>(most_sums / lags / columns, 1, quick);
  return WindowPlan::make(series, frames_in_memory, together);
}

}  // namespace

OriginGroups::OriginGroups(const OriginSeries& series, PairSums sums, const FrameRecords& records, std::int64_t atoms,
                           std::int64_t memory, const std::array<std::string_view, 6>& labels, std::int32_t& status)
    : series_(series),
      kind_(sums),
      file_(records.file),
      atoms_(static_cast<std::size_t>(atoms)),
      plan_(plan(series, sums.columns, atoms,
                 std::max(records.frames_in_memory, memory / frame_bytes(static_cast<std::size_t>(atoms))))),
      beside_({labels[0], labels[1], labels[2]}, plan_.origins_beside, atoms_, status),
      frames_({labels[3], labels[4], labels[5]}, records.frames_in_memory > 0 ? 0 : plan_.window_frames, atoms_,
              status),
      window_(records, frames_.axes(), plan_.window_frames, atoms_),
      origins_(static_cast<std::size_t>(plan_.origins_together)) {
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
    const AxesOut room = beside_.axes().part(static_cast<std::size_t>(place) * frame_stride(atoms_), atoms_);
    if (!file_.read(record, 1, room, frame_stride(atoms_))) return false;
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
