#include "correlation/correlation_run.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <span>
#include <vector>

#include "coreapi/interrupt.h"
#include "coreapi/operations.h"
#include "correlation/correlation_cache.h"
#include "correlation/origin_groups.h"
#include "extraction/scratch_file.h"
#include "plots/graph.h"
#include "services/file_units.h"
#include "support/named_memory.h"

namespace pathstat {
namespace {

constexpr std::int64_t reports_in_a_run = 50;

void show(std::string_view message) {
  std::int32_t error = 0;
  kvu_msg_display_(2, message, error);
}

/// The growing result: sums by lag and column, and how many origins have fed each lag.
class CorrelationTable {
 public:
  CorrelationTable(const CorrelationKind& kind, std::int32_t intervals, bool anisotropic, std::int64_t atoms,
                   double spacing_ps, std::int32_t& status)
      : first_(first_column(anisotropic)) {
    if (status == 0) table_ = NamedBlock<double>(kind.table_label, std::int64_t{7} * intervals, status);
    if (status == 0) counts_ = NamedBlock<double>(kind.count_label, intervals, status);
    if (status == 0) lags_ = NamedBlock<double>(kind.lag_label, intervals, status);
    if (status == 0) numbers_ = NamedBlock<std::int32_t>(kind.number_label, intervals, status);
    if (status != 0) return;
    factors_.fill(1.0 / static_cast<double>(atoms));
    for (std::size_t column = 3; column < total_column; ++column) factors_[column] *= kind.cross_factor;
    for (std::size_t i = 0; i < lags_.size(); ++i) lags_.span()[i] = static_cast<double>(i) * spacing_ps;
  }

  std::size_t first() const { return first_; }
  std::size_t columns() const { return correlation_columns - first_; }
  std::size_t intervals() const { return lags_.size(); }

  /// Adds the sums of one pair, columns() of them.
  void add(std::size_t lag, std::span<const double> sums) {
    for (std::size_t k = 0; k < sums.size(); ++k) at(lag, first_ + k) += sums[k];
    counts_.span()[lag] += 1.0;
  }

  /// Over atoms and origins; 0 where no pair has come in.
  double mean(std::size_t lag, std::size_t column) const {
    const double pairs = counts_.span()[lag];
    return pairs > 0.0 ? at(lag, column) * factors_[column] / pairs : 0.0;
  }

  /// Puts the means in the place of the sums.
  void normalise() {
    for (std::size_t lag = 0; lag < intervals(); ++lag) {
      for (std::size_t column = first_; column < correlation_columns; ++column) at(lag, column) = mean(lag, column);
    }
  }

  void save(std::string_view file, std::int32_t& status) const {
    writescratchfile_(kind_frames, file, numbers_.span(), lags_.span(), table_.span(),
                      static_cast<std::int32_t>(columns()), correlation_columns, static_cast<std::int32_t>(first_) + 1,
                      {}, {}, {}, status);
  }

 private:
  double& at(std::size_t lag, std::size_t column) const { return table_.span()[lag * correlation_columns + column]; }

  std::size_t first_;
  NamedBlock<double> table_;
  NamedBlock<double> counts_;
  NamedBlock<double> lags_;
  NamedBlock<std::int32_t> numbers_;
  std::array<double, correlation_columns> factors_{};
};

/// The graphs of the table and their points.
class TablePlots {
 public:
  TablePlots(const CorrelationKind& kind, const CorrelationTable& table, double spacing_ps, std::span<float> points)
      : table_(table), points_(points) {
    for (std::size_t column = table.first(); column < correlation_columns; ++column) {
      const auto plot = make_column_plot(column, kind.titles[column], " ");
      if (!plot) continue;
      lay_out(plot->graph, std::span(&plot->data_set, 1),
              {.title = kind.titles[column], .x_label = "Time/ps", .y_label = kind.y_label, .text_code = 7});
      plots_.push_back(*plot);
    }
    viewer_ = hand_to_viewer(plots_, kind.wide_graphs);
    const double unit = spacing_ps > 0.0 ? spacing_ps : 1.0;
    for (std::size_t i = 0; i < table.intervals(); ++i)
      points_[2 * i] = static_cast<float>(static_cast<double>(i) * unit);
  }

  void draw() {
    for (const ColumnPlot& plot : plots_) {
      for (std::size_t i = 0; i < table_.intervals(); ++i) {
        points_[2 * i + 1] = static_cast<float>(table_.mean(i, plot.column));
      }
      write_points(plot.data_set, points_);
    }
    redraw(viewer_);
  }

 private:
  const CorrelationTable& table_;
  std::vector<ColumnPlot> plots_;
  std::span<float> points_;
  std::int32_t viewer_ = 0;
};

/// Goes over the origins in order. @return false if the cache can't be read
bool add_origins(const OriginSeries& series, bool monitor, OriginGroups& groups, CorrelationTable& table,
                 TablePlots& plots) {
  const std::int64_t whole_steps = std::max<std::int64_t>((series.frames - 1) / series.step, 1);
  const std::int64_t report_interval = std::max<std::int64_t>(whole_steps / reports_in_a_run, 1);
  for (std::int64_t first = 0; first < series.count(); first += groups.origins_together()) {
    const std::int64_t count = std::min(groups.origins_together(), series.count() - first);
    if (!groups.sum(first, count)) return false;
    for (std::int64_t place = 0; place < count; ++place) {
      const std::int64_t lags = series.end(first + place) - series.record(first + place);
      for (std::int64_t lag = 0; lag < lags; ++lag) table.add(static_cast<std::size_t>(lag), groups.sums(place, lag));
      const std::int64_t done = first + place + 1;
      const bool stop = done % origins_between_polls == 0 && kvu_int_requestinterrupt_() == 1;
      if (done % report_interval == 0) {
        kvu_int_reportprogress_(static_cast<float>(done) / static_cast<float>(whole_steps));
        if (monitor) plots.draw();
      }
      if (stop) return true;
    }
  }
  return true;
}

void correlate(const CorrelationKind& kind, const CorrelationRequest& request, bool& available, std::int32_t& status) {
  std::int32_t unit = 0, cached_frames = 0, atoms = 0;
  bool velocities_present = false;
  double spacing_ps = 0.0;
  setupcorrl_(unit, "./CorrelCache", request.trajectory, request.model, cached_frames, atoms, velocities_present,
              spacing_ps, kind.of_velocities, request.first, request.last, request.step, request.atoms, status);
  const FileUnit cache(unit);
  if (status != 0) {
    const auto place = static_cast<std::size_t>(status) - 1;
    if (place < kind.cache_messages.size()) show(kind.cache_messages[place]);
    return;
  }
  const OriginSeries series{std::min(request.frames, cached_frames), std::max(request.origin_step, 1),
                            std::max(request.intervals, 0)};
  const auto refuse = [&](std::size_t group) {
    show(kind.memory_message);
    status = kind.memory_statuses[group];
  };
  const PairSums sums = request.anisotropic ? PairSums{kind.products, correlation_columns} : PairSums{kind.total, 1};
  OriginGroups groups(series, sums, FrameFile(unit, atoms), atoms, frame_memory(), kind.frame_labels, status);
  if (status != 0) return refuse(0);
  CorrelationTable table(kind, request.intervals, request.anisotropic, atoms, spacing_ps, status);
  if (status != 0) return refuse(1);
  const NamedBlock<float> points(kind.plot_label, std::int64_t{2} * request.intervals, status);
  if (status != 0) return refuse(2);

  TablePlots plots(kind, table, spacing_ps, points.span());
  kvu_int_reportprogress_(0.0F);
  if (!add_origins(series, request.monitor, groups, table, plots)) {
    status = cache_status::not_written;
    return show(kind.cache_messages[4]);
  }
  plots.draw();
  table.normalise();
  table.save(kind.file, status);
  available = status == 0;
}

}  // namespace

void run_correlation(const CorrelationKind& kind, const CorrelationRequest& request, bool& available,
                     std::int32_t& status) try {
  available = false;
  correlate(kind, request, available, status);
} catch (const std::bad_alloc&) {
  show(kind.memory_message);
  status = kind.memory_statuses[0];
}

}  // namespace pathstat
