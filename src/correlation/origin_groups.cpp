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
  first_origin_ = first_origin;
  group_ = std::span(origins_).first(static_cast<std::size_t>(count));
  const std::int64_t start = series_.record(first_origin);
  const std::int64_t end = series_.end(first_origin + count - 1);
  for (std::int64_t record = start; record < end; record += plan_.window_frames) {
    const std::int64_t stop = std::min(record + plan_.window_frames, end);
    if (!window_.load(record, stop)) return false;
    if (record == start && !find_origins()) return false;
    add_pairs(record, stop);
  }
  return true;
}

/// In the window if that stays in place while the group is worked on, else beside it.
bool OriginGroups::find_origins() {
  for (std::size_t place = 0; place < group_.size(); ++place) {
    const std::int64_t record = series_.record(first_origin_ + static_cast<std::int64_t>(place));
    if (plan_.origins_beside == 0) {
      group_[place] = window_.frame(record);
      continue;
    }
    const AxesOut room = beside_.axes().part(place * frame_stride(atoms_), atoms_);
    if (!file_.read(record, 1, room, frame_stride(atoms_))) return false;
    group_[place] = room;
  }
  return true;
}

/// Shared among the threads by ranges of later frames, which have sums of their own.
void OriginGroups::add_pairs(std::int64_t first, std::int64_t end) {
  for_blocks((end - first + records_together - 1) / records_together, [&](std::int64_t block, std::size_t) {
    const std::int64_t from = first + block * records_together;
    add_pairs_of(from, std::min(from + records_together, end));
  });
}

void OriginGroups::add_pairs_of(std::int64_t first, std::int64_t end) {
  PairTile vectors;
  for (std::size_t atom = 0; atom < atoms_; atom += atoms_together) {
    const std::size_t atoms = std::min(atoms_together, atoms_ - atom);
    for (std::int64_t record = first; record < end; record += PairTile::frames_together) {
      // Behind the last frame and the last origin these stand again; what they give is left out.
      for (std::size_t k = 0; k < vectors.later.size(); ++k) {
        vectors.later[k] = window_.frame(std::min(record + static_cast<std::int64_t>(k), end - 1)).part(atom, atoms);
      }
      for (std::size_t place = 0; place < group_.size(); place += PairTile::origins_together) {
        const Tile tile{place, record, end};
        if (!has_pairs(tile)) continue;
        for (std::size_t k = 0; k < vectors.origins.size(); ++k) {
          vectors.origins[k] = group_[std::min(place + k, group_.size() - 1)].part(atom, atoms);
        }
        add(tile, vectors);
      }
    }
  }
}

std::int64_t OriginGroups::lag(std::size_t place, std::int64_t record) const {
  return record - series_.record(first_origin_ + static_cast<std::int64_t>(place));
}

bool OriginGroups::has_pairs(const Tile& tile) const {
  const std::size_t last = std::min(tile.place + PairTile::origins_together, group_.size()) - 1;
  const std::int64_t behind = std::min<std::int64_t>(tile.record + PairTile::frames_together, tile.end);
  return lag(tile.place, behind) > 0 && lag(last, tile.record) < series_.intervals;
}

std::span<double> OriginGroups::pair(const Tile& tile, std::size_t origin, std::size_t frame) const {
  const std::size_t place = tile.place + origin;
  const std::int64_t record = tile.record + static_cast<std::int64_t>(frame);
  if (place >= group_.size() || record >= tile.end) return {};
  const std::int64_t between = lag(place, record);
  if (between < 0 || between >= series_.intervals) return {};
  return sums(static_cast<std::int64_t>(place), between);
}

void OriginGroups::add(const Tile& tile, const PairTile& vectors) const {
  TileSums totals{};
  if (kind_.tile != nullptr) kind_.tile(vectors, totals);
  for (std::size_t origin = 0; origin < vectors.origins.size(); ++origin) {
    for (std::size_t frame = 0; frame < vectors.later.size(); ++frame) {
      const auto sums = pair(tile, origin, frame);
      if (sums.empty()) continue;
      if (kind_.tile != nullptr) {
        sums[0] += totals[origin][frame];
      } else {
        kind_.kernel(vectors.origins[origin], vectors.later[frame], sums);
      }
    }
  }
}

}  // namespace pathstat
