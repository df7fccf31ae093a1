#include "correlation/correlation_run.h"

#include <algorithm>
#include <cinttypes>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <optional>

#include "coreapi/interrupt.h"
#include "coreapi/messages.h"
#include "coreapi/operations.h"
#include "correlation/correlation_cache.h"
#include "correlation/correlation_table.h"
#include "correlation/origin_blocks.h"
#include "correlation/origin_groups.h"
#include "correlation/record_cache.h"
#include "correlation/spectral_run.h"
#include "services/file_names.h"
#include "support/named_memory.h"
#include "support/parallel.h"

namespace pathstat {
namespace {

constexpr std::int64_t reports_in_a_run = 50;
/// Origins between two questions to the Core whether to stop.
constexpr std::int64_t origins_between_polls = 10;

/// The frames of a run on their way to whichever sums cost less.
class RoutedCache : public FrameSink {
 public:
  RoutedCache(const CorrelationKind& kind, const CorrelationRequest& request)
      : kind_(kind),
        request_(request),
        records_(cache_file, frame_memory(), {kind.frame_labels[3], kind.frame_labels[4], kind.frame_labels[5]}),
        batches_(cache_file, frame_memory()) {
    std::int32_t status = 0;
    if (kvs_fil_exists_(cache_file)) kvs_fil_delete_(cache_file, status);  // left by a process that was killed
  }

  std::int32_t open(std::int32_t atoms, std::int32_t frames) override {
    shape_ = SpectralShape{
        {std::min(request_.frames, frames), std::max(request_.origin_step, 1), std::max(request_.intervals, 0)},
        kind_.of_velocities,
        request_.anisotropic};
    by_transforms_ = transforms_pay(shape_, atoms);
    if (by_transforms_) {
      workers_ = SpectralSums::workers_in(frame_memory() / 4 * 3, shape_, thread_count());  // the rest is for frames
      batches_.spare(SpectralSums::bytes(shape_, workers_));
    }
    const std::int32_t status = sink().open(atoms, frames);
    if (status == 0 && std::getenv("PATHSTAT_TRACE") != nullptr) trace(atoms);
    return status;
  }
  bool write(std::int32_t record, const Axes& frame) override { return sink().write(record, frame); }
  bool finish() override { return sink().finish(); }

  bool by_transforms() const { return by_transforms_; }
  std::size_t workers() const { return workers_; }
  const SpectralShape& shape() const { return shape_; }
  FrameRecords records() const { return records_.frames(); }
  BatchStore& batches() { return batches_; }

 private:
  static constexpr std::string_view cache_file = "./CorrelCache";

  FrameSink& sink() { return by_transforms_ ? static_cast<FrameSink&>(batches_) : records_; }

  void trace(std::int32_t atoms) const {
    std::fprintf(stderr,
                 "correlation: %s, %d atoms, %" PRId64 " frames, %" PRId64 " lags, origin step %" PRId64 ", %s\n",
                 by_transforms_ ? "transforms" : "pairs of frames", atoms, shape_.series.frames,
                 shape_.series.intervals, shape_.series.step,
                 (by_transforms_ ? batches_.in_memory() : records_.in_memory()) ? "in memory" : "cache file");
  }

  const CorrelationKind& kind_;
  const CorrelationRequest& request_;
  RecordCache records_;
  BatchStore batches_;
  SpectralShape shape_{};
  bool by_transforms_ = false;
  std::size_t workers_ = 1;  ///< of transforms
};

/// Goes over the origins in order. @param blocks  take the sums of each as well; may be null. @param plots  drawn while
/// the table grows; may be null. @return false if the cache can't be read
bool add_origins(const OriginSeries& series, OriginGroups& groups, CorrelationTable& table, OriginBlocks* blocks,
                 TablePlots* plots) {
  const std::int64_t whole_steps = std::max<std::int64_t>((series.frames - 1) / series.step, 1);
  const std::int64_t report_interval = std::max<std::int64_t>(whole_steps / reports_in_a_run, 1);
  for (std::int64_t first = 0; first < series.count(); first += groups.origins_together()) {
    const std::int64_t count = std::min(groups.origins_together(), series.count() - first);
    if (!groups.sum(first, count)) return false;
    for (std::int64_t place = 0; place < count; ++place) {
      const std::int64_t lags = series.end(first + place) - series.record(first + place);
      for (std::int64_t lag = 0; lag < lags; ++lag) table.add(static_cast<std::size_t>(lag), groups.sums(place, lag));
      if (blocks != nullptr) blocks->add(first + place, [&](std::int64_t lag) { return groups.sums(place, lag); });
      const std::int64_t done = first + place + 1;
      const bool stop = done % origins_between_polls == 0 && kvu_int_requestinterrupt_() == 1;
      if (done % report_interval == 0) {
        tell_progress(static_cast<float>(done) / static_cast<float>(whole_steps));
        if (plots != nullptr) plots->draw();
      }
      if (stop) return true;
    }
  }
  return true;
}

void correlate(const CorrelationKind& kind, const CorrelationRequest& request, bool& available, std::int32_t& status) {
  std::int32_t cached_frames = 0, atoms = 0;
  bool velocities_present = false;
  double spacing_ps = 0.0;
  RoutedCache cache(kind, request);
  setupcorrl_(cache, request.trajectory, request.model, cached_frames, atoms, velocities_present, spacing_ps,
              kind.of_velocities, request.first, request.last, request.step, request.atoms, status);
  if (status != 0) {
    const auto place = static_cast<std::size_t>(status) - 1;
    if (place < kind.cache_messages.size()) show_message(kind.cache_messages[place]);
    return;
  }
  const auto refuse = [&](std::size_t group) {
    show_message(kind.memory_message);
    status = kind.memory_statuses[group];
  };
  const PairSums sums =
      request.anisotropic ? PairSums{kind.products, correlation_columns} : PairSums{kind.total, 1, kind.totals};
  std::optional<OriginGroups> groups;
  if (!cache.by_transforms()) {
    groups.emplace(cache.shape().series, sums, cache.records(), atoms, frame_memory(), kind.frame_labels, status);
  }
  if (status != 0) return refuse(0);
  CorrelationTable table(kind, request.intervals, request.anisotropic, atoms, spacing_ps, status);
  if (status != 0) return refuse(1);
  const NamedBlock<float> points(kind.plot_label, std::int64_t{2} * request.intervals, status);
  if (status != 0) return refuse(2);

  TablePlots plots(kind, table, spacing_ps, points.span());
  TablePlots* const watched = request.monitor ? &plots : nullptr;
  const auto blocks_file = kind.of_velocities ? std::nullopt : OriginBlocks::wanted_file();
  std::optional<OriginBlocks> blocks;
  if (blocks_file) blocks.emplace(cache.shape().series, table.columns(), cache.workers());
  OriginBlocks* const beside = blocks ? &*blocks : nullptr;
  tell_progress(0.0F);
  const bool read = groups ? add_origins(cache.shape().series, *groups, table, beside, watched)
                           : sum_by_transforms(cache.batches(), cache.shape(), cache.workers(), sums.kernel, atoms,
                                               table, beside, watched);
  if (!read) {
    status = cache_status::not_written;
    return show_message(kind.cache_messages[4]);
  }
  plots.draw();
  table.normalise();
  table.save(kind.file, status);
  if (blocks) blocks->save(*blocks_file, spacing_ps, atoms);
  available = status == 0;
}

}  // namespace

void run_correlation(const CorrelationKind& kind, const CorrelationRequest& request, bool& available,
                     std::int32_t& status) try {
  available = false;
  correlate(kind, request, available, status);
} catch (const std::bad_alloc&) {
  show_message(kind.memory_message);
  status = kind.memory_statuses[0];
}

}  // namespace pathstat
