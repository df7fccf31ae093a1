#include "correlation/dipole_autocorrelation.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <span>
#include <string>
#include <vector>

#include "catalogue/catalogue.h"
#include "catalogue/catalogue_rows.h"
#include "coreapi/interrupt.h"
#include "coreapi/messages.h"
#include "coreapi/operations.h"
#include "correlation/column_plots.h"
#include "correlation/dipole_pairs.h"
#include "extraction/dipole.h"
#include "extraction/scratch_file.h"
#include "plots/graph.h"
#include "services/file_names.h"
#include "state/analysis_settings.h"
#include "support/named_memory.h"

namespace pathstat {
namespace {

constexpr std::int32_t dipole_vector = 302;
constexpr std::int64_t origins_between_polls = 10;
constexpr std::int64_t reports_in_a_run = 50;
/// Pairs that are summed without a break, some hundredths of a second.
constexpr std::int64_t pairs_at_once = std::int64_t{1} << 25;

constexpr ColumnTexts names{"DAC component XX", "DAC component YY", "DAC component ZZ",       "DAC component XY",
                            "DAC component XZ", "DAC component YZ", "Dipole Auto Correlation"};
constexpr std::array<double, correlation_columns> factors{1, 1, 1, 0.5, 0.5, 0.5, 1};

/// The dipoles of the frames, read back from their file.
struct DipoleFrames {
  NamedBlock<double> vectors;
  NamedBlock<double> times;
  NamedBlock<std::int32_t> numbers;

  void read(const std::string& file, std::int32_t& status) {
    std::int32_t kind = 0, points = 0, width = 0, extras = 0;
    scratchfileinfo_(kind, file, points, width, extras, status);
    if (status != 0) return;
    if (kind != kind_frames || width != 3 || extras != 0 || points < 1) {
      status = refuse("PATHSTAT_MSG_4");
      return;
    }
    vectors = NamedBlock<double>("DAC/DipoleData", std::int64_t{3} * points, status);
    if (status == 0) times = NamedBlock<double>("DAC/FTime", points, status);
    if (status == 0) numbers = NamedBlock<std::int32_t>("DAC/FNumint", points, status);
    if (status != 0) return;
    readscratchfile_(kind, file, numbers.span(), times.span(), vectors.span(), points, width, {}, {}, {}, {}, extras,
                     status);
  }

  /// Times since the first frame.
  void make_times_relative() const {
    const double first = times.span()[0];
    for (double& time : times.span()) time -= first;
  }
};

/// The sums by lag, and their means with their graphs.
class Table {
 public:
  Table(const DipoleFrames& frames, std::int32_t intervals, bool anisotropic, std::int32_t& status)
      : first_(first_column(anisotropic)),
        times_(frames.times.span().first(std::min(frames.times.size(), static_cast<std::size_t>(intervals) + 1))),
        numbers_(frames.numbers.span()),
        sums_("DAC/DAC", std::ssize(times_) * static_cast<std::int64_t>(correlation_columns), status) {
    if (status == 0) points_ = NamedBlock<float>("DAC/PlotData", 2 * std::ssize(times_), status);
    if (status != 0) return;
    for (std::size_t k = 0; k < lags(); ++k) points_.span()[2 * k] = static_cast<float>(times_[k]);
  }

  std::size_t lags() const { return times_.size(); }
  bool anisotropic() const { return first_ == 0; }
  std::span<double> sums() const { return sums_.span(); }

  void make_plots() {
    for (std::size_t column = first_; column < correlation_columns; ++column) {
      const auto plot = make_column_plot(column, names[column], " ");
      if (!plot) continue;
      const bool total = column == total_column;
      lay_out(plot->graph, std::span(&plot->data_set, 1),
              {.title = total ? "Total DAC" : names[column],
               .x_label = total ? " Time/ps" : "Time/ps",
               .y_label = " ",
               .text_code = 7});
      plots_.push_back(*plot);
    }
    viewer_ = hand_to_viewer(plots_, true);
  }

  /// Draws the means over the pairs that the first so many origins take part in.
  void draw(const DipolePairs& pairs, std::int64_t origins) {
    for (const ColumnPlot& plot : plots_) {
      for (std::size_t lag = 0; lag < lags(); ++lag) {
        points_.span()[2 * lag + 1] = static_cast<float>(mean(pairs, origins, lag, plot.column));
      }
      write_points(plot.data_set, points_.span());
    }
    redraw(viewer_);
  }

  /// Puts the means over all pairs in the place of the sums.
  void normalise(const DipolePairs& pairs) const {
    for (std::size_t lag = 0; lag < lags(); ++lag) {
      for (std::size_t column = first_; column < correlation_columns; ++column) {
        sums()[lag * correlation_columns + column] = mean(pairs, pairs.origins(), lag, column);
      }
    }
  }

  void save(std::int32_t& status) const {
    writescratchfile_(kind_frames, dipole_correlation_file, numbers_.first(lags()), times_, sums(),
                      static_cast<std::int32_t>(correlation_columns - first_), correlation_columns,
                      static_cast<std::int32_t>(first_) + 1, {}, {}, {}, status);
  }

 private:
  double mean(const DipolePairs& pairs, std::int64_t origins, std::size_t lag, std::size_t column) const {
    const auto count = static_cast<double>(pairs.pairs(static_cast<std::int64_t>(lag), origins));
    return sums()[lag * correlation_columns + column] * factors[column] / count;
  }

  std::size_t first_;
  std::span<const double> times_;
  std::span<const std::int32_t> numbers_;
  NamedBlock<double> sums_;
  NamedBlock<float> points_;
  std::vector<ColumnPlot> plots_;
  std::int32_t viewer_ = 0;
};

void trace(const DipolePairs& pairs, std::int64_t lags, std::int64_t origin_step, bool by_transforms) {
  std::fprintf(stderr, "correlation: %s, dipoles, %" PRId64 " frames, %" PRId64 " lags, origin step %" PRId64 "\n",
               by_transforms ? "transforms" : "pairs of frames", pairs.frames(), lags, origin_step);
}

/// Goes over the origins in order, from one report or question to the next. @return false if the user interrupts
bool sum_pairs(const DipolePairs& pairs, bool monitor, std::int64_t origin_step, Table& table) {
  const std::int64_t whole_steps = std::max<std::int64_t>(pairs.frames() / origin_step, 1);
  const std::int64_t report_interval = std::max<std::int64_t>(whole_steps / reports_in_a_run, 1);
  const auto lags = static_cast<std::int64_t>(table.lags());
  const std::int64_t at_once = std::max(pairs_at_once / lags, origins_between_polls);
  // A curve that nobody watches does not have to grow origin by origin.
  const bool at_a_stroke = !monitor && pairs.transforms_pay(lags, table.anisotropic());
  if (std::getenv("PATHSTAT_TRACE") != nullptr) trace(pairs, lags, origin_step, at_a_stroke);
  const bool summed = at_a_stroke && pairs.sum_all(table.anisotropic(), table.sums());
  for (std::int64_t done = 0; done < pairs.origins();) {
    const std::int64_t next_report = (done / report_interval + 1) * report_interval;
    const std::int64_t end = std::min({next_report, done + at_once, pairs.origins()});
    const bool poll = done / origins_between_polls != end / origins_between_polls;
    if (poll && kvu_int_requestinterrupt_() == 1) return false;
    if (!summed) pairs.add(done, end, table.anisotropic(), table.sums());
    done = end;
    if (done != next_report) continue;
    tell_progress(static_cast<float>(done) / static_cast<float>(whole_steps));
    if (monitor) table.draw(pairs, done);
  }
  return true;
}

void correlate(const std::string& file, std::int32_t intervals, bool monitor, std::int32_t origin_step,
               bool anisotropic, std::int32_t& status) {
  DipoleFrames frames;
  frames.read(file, status);
  if (status != 0) return;
  if (!trj_gui_l_.dipole_data_ready) {
    status = refuse("PATHSTAT_ERROR_63");
    return;
  }
  frames.make_times_relative();
  const DipolePairs pairs(frames.vectors.span(), origin_step, status);
  if (status != 0) return;
  Table table(frames, intervals, anisotropic, status);
  if (status != 0) return;
  table.make_plots();
  tell_progress(0.0F);
  if (!sum_pairs(pairs, monitor, origin_step, table)) {
    status = 1;
    return;
  }
  table.draw(pairs, pairs.origins());
  table.normalise(pairs);
  table.save(status);
  if (status == 0) trj_gui_l_.trj_gui_l_3 = true;
}

}  // namespace

void rundac_(std::string_view trajectory, std::string_view atoms, std::int32_t intervals, bool monitor,
             std::int32_t origin_step, bool anisotropic, std::int32_t& status) try {
  status = 0;
  trj_gui_l_.trj_gui_l_3 = false;
  const auto row = property_row_of(dipole_vector);
  if (!property_table().on_disk[row]) {
    show_message("PATHSTAT_MSG_37");
    dipole_(trajectory, from_trajectory, atoms, trj_gui_c_.dipole_using, status);
    if (status != 0) return;
  }
  const std::string file = property_file(property_table().extensions[row]);
  if (!kvs_fil_exists_(file)) {
    status = 1;
    return;
  }
  correlate(file, std::max(intervals, 0), monitor, std::max(origin_step, 1), anisotropic, status);
} catch (const std::bad_alloc&) {
  status = 1;
}

}  // namespace pathstat
