#include "reports/fluctuations.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "catalogue/catalogue.h"
#include "extraction/scratch_file.h"
#include "plots/graph.h"
#include "plots/labels.h"
#include "reports/averages.h"
#include "reports/catalogue_row.h"
#include "reports/frame_means.h"
#include "reports/printed_line.h"
#include "reports/profile_plots.h"
#include "reports/report_table.h"
#include "reports/response.h"
#include "reports/result_series.h"
#include "reports/text_report.h"
#include "services/file_units.h"
#include "state/analysis_settings.h"
#include "state/statistics_settings.h"
#include "support/named_memory.h"
#include "support/record_file.h"

namespace pathstat {
namespace {

constexpr std::int32_t blocks_too_narrow = 1;

/// What the user asked for, as it stands when the command begins; a nested command may change the settings.
struct FluctuationOrder {
  std::int32_t mode;
  TrjStats settings = trj_stats_;
  bool has_time_axis = trj_gui_l_.has_time_axis;
  SimulatedSystem system{trj_gui_i_.ensemble, trj_gui_i_.total_atoms, trj_gui_d_.model_mass,
                         trj_gui_d_.degrees_of_freedom};

  explicit FluctuationOrder(std::int32_t wanted) : mode(wanted) {
    if (is_one_number()) settings.stats_file = false;
  }
  bool is_one_number() const { return mode == whole_run_mode; }
  std::int32_t half_width() const { return settings.block_width / 2; }
};

/// The named blocks of the report.
struct FluctuationBlocks {
  explicit FluctuationBlocks(std::int32_t& status) {
    take(xy, "pathstat/FL/GrXY", status);
    take(frame_numbers, "pathstat/FL/FrameNumber", status);
    take(columns, "pathstat/FL/InData", status);
    take(results, "pathstat/FL/OutData", status);
    take(x, "pathstat/FL/XData", status);
    for (std::size_t k = 0; k < moments.size(); ++k) take(moments[k], moment_labels[k], status);
    take(temperature, "pathstat/FL/TArr", status);
    take(volume, "pathstat/FL/VArr", status);
    take(pressure, "pathstat/FL/PArr", status);
  }

  template <class T>
  static void refit(NamedBlock<T>& block, std::int64_t count, std::int32_t& status) {
    if (status == 0) block.resize(count, status);
  }
  /// Room for the means of so many results.
  void refit_means(std::int32_t entries, std::int32_t& status) {
    for (auto& moment : moments) refit(moment, entries, status);
    refit(temperature, entries, status);
    refit(volume, entries, status);
    refit(pressure, entries, status);
  }

  static constexpr std::array<std::string_view, most_moments> moment_labels{"pathstat/FL/Wrk1", "pathstat/FL/Wrk2",
                                                                            "pathstat/FL/Wrk3", "pathstat/FL/Wrk4",
                                                                            "pathstat/FL/Wrk5", "pathstat/FL/Wrk6"};

  NamedBlock<float> xy;
  NamedBlock<std::int32_t> frame_numbers;
  NamedBlock<double> columns;
  NamedBlock<double> results;
  NamedBlock<double> x;
  std::array<NamedBlock<double>, most_moments> moments;
  NamedBlock<double> temperature;
  NamedBlock<double> volume;
  NamedBlock<double> pressure;

 private:
  template <class T>
  static void take(NamedBlock<T>& block, std::string_view label, std::int32_t& status) {
    if (status == 0) block = NamedBlock<T>(label, 1, status);
  }
};

/// The columns of one file, and their means for each result.
class FluctuationColumns {
 public:
  FluctuationColumns(const FluctuationOrder& order, FluctuationBlocks& blocks) : order_(order), blocks_(blocks) {}

  /// Reads the row's file and makes its means, unless they are those at hand.
  void provide(const CatalogueRow& row, std::int32_t& status) {
    if (row.extension == extension_) return;
    extension_.clear();
    const auto& moments = moments_of(row.id, order_.system.ensemble);
    read(fluctuation_file(row.extension), moments, status);
    if (status == 0 && order_.mode == block_average_mode && order_.settings.block_width < 2) {
      print_line("PATHSTAT_MSG_35");
      status = blocks_too_narrow;
    }
    if (status != 0) return;
    tell_single_frame();
    average(moments, status);
    if (status == 0) extension_ = row.extension;
  }

  std::int32_t frames() const { return frames_; }
  std::int32_t entries() const { return entries_; }
  double first_volume() const { return frames_ > 0 ? blocks_.columns.span()[volume_column - 1] : 0.0; }
  EntryMeans means(std::size_t entry) const {
    EntryMeans means{blocks_.pressure.span()[entry], blocks_.volume.span()[entry], blocks_.temperature.span()[entry]};
    for (std::size_t k = 0; k < most_moments; ++k) means.moments[k] = blocks_.moments[k].span()[entry];
    return means;
  }

 private:
  static constexpr std::int32_t pressure_column = 1, volume_column = 2, temperature_column = 3;

  /// The last column that the formulas take from a file.
  static std::int32_t columns_needed(std::span<const Moment> moments) {
    std::int32_t last = temperature_column;
    for (const Moment& moment : moments) {
      last = std::max({last, moment.first + (moment.of_vectors ? 2 : 0), moment.second});
    }
    return last;
  }

  void read(const std::string& path, std::span<const Moment> moments, std::int32_t& status) {
    RecordReader file;
    if (file.open(path) != RecordStatus::ok) {
      status = unit_error::open_failed;
      return;
    }
    ScratchHead head;
    RecordStatus found = read_scratch_head(file, head);
    if (found == RecordStatus::ok && (head.kind != kind_frames || head.values < columns_needed(moments))) {
      found = RecordStatus::wrong_length;
    }
    if (found == RecordStatus::ok) {
      make_room(head, status);
      if (status != 0) return;
      head.extras = 0;  // nothing here needs them
      found = read_scratch_points(file, head,
                                  {.numbers = blocks_.frame_numbers.span(),
                                   .x = blocks_.x.span(),
                                   .values = blocks_.columns.span(),
                                   .models = {},
                                   .sizes = {},
                                   .extras = {}});
    }
    if (found != RecordStatus::ok) {
      print_line("PATHSTAT_MSG_4");
      status = scratch_file_damaged;
    }
  }

  void make_room(const ScratchHead& head, std::int32_t& status) {
    frames_ = head.points;
    values_ = head.values;
    FluctuationBlocks::refit(blocks_.frame_numbers, frames_, status);
    FluctuationBlocks::refit(blocks_.x, frames_, status);
    FluctuationBlocks::refit(blocks_.xy, std::int64_t{2} * frames_, status);
    FluctuationBlocks::refit(blocks_.columns, std::int64_t{frames_} * values_, status);
  }

  void tell_single_frame() {
    if (frames_ != 1 || told_) return;
    told_ = true;
    std::puts("Fluctuations: the range has one frame, so that every variance is 0");
  }

  void average(std::span<const Moment> moments, std::int32_t& status) {
    entries_ = frames_;
    const auto x = blocks_.x.span();
    if (order_.mode == block_average_mode) entries_ = keep_block_starts(x, frames_, order_.settings.block_interval);
    if (order_.is_one_number()) entries_ = std::min(frames_, 1);
    for (std::size_t k = 0; k < static_cast<std::size_t>(entries_); ++k) {
      blocks_.xy.span()[2 * k] = static_cast<float>(x[k]);
    }
    blocks_.refit_means(entries_, status);
    if (entries_ == 0) return;
    average({pressure_column}, blocks_.pressure.span(), status);
    average({volume_column}, blocks_.volume.span(), status);
    average({temperature_column}, blocks_.temperature.span(), status);
    for (std::size_t k = 0; k < moments.size(); ++k) average(moments[k], blocks_.moments[k].span(), status);
  }

  void average(const Moment& moment, std::span<double> means, std::int32_t& status) const {
    if (status != 0 || moment.first == 0) return;
    switch (order_.mode) {
      case running_average_mode:
        return average_by(cumavgval_, cumavgval2_, cumavgvecsqr_, cumavgvec2_, moment, means, status);
      case block_average_mode:
        return average_by(blkavgval_, blkavgval2_, blkavgvecsqr_, blkavgvec2_, moment, order_.settings.block_width,
                          order_.settings.block_interval, order_.half_width(), means, status);
      default:
        return average_by(avgval_, avgval2_, avgvecsqr_, avgvec2_, moment, means[0], status);
    }
  }

  /// Calls that of four functions which takes such a moment.
  template <class OfOne, class OfTwo>
  void average_by(OfOne of_column, OfTwo of_product, OfOne of_mean_vector, OfTwo of_vectors, const Moment& moment,
                  auto&&... rest) const {
    const std::span<const double> table = blocks_.columns.span();
    const auto [a, b, is_vector] = moment;
    if (b == 0) return (is_vector ? of_mean_vector : of_column)(values_, frames_, table, a, rest...);
    (is_vector ? of_vectors : of_product)(values_, frames_, table, a, b, rest...);
  }

  const FluctuationOrder& order_;
  FluctuationBlocks& blocks_;
  std::string extension_;  // of the file at hand
  bool told_ = false;
  std::int32_t frames_ = 0;
  std::int32_t values_ = 0;
  std::int32_t entries_ = 0;
};

/// One command: its order, its outputs, and the columns that its rows share.
class FluctuationReport {
 public:
  FluctuationReport(std::int32_t mode, std::int32_t& status)
      : order_(mode), blocks_(status), columns_(order_, blocks_), table_(mode, order_.settings) {}

  void run(std::int32_t& status) {
    {
      std::optional<PlotTransaction> transaction;
      if (!order_.is_one_number()) {
        transaction.emplace();
        viewer_ = take_viewer();
        trj_gui_i_.plot_graph_count = 0;
      }
      if (status == 0 && table_.open()) report_rows(status);
    }
    table_.finish();
    if (status == 0) status = table_.status();
  }

 private:
  void report_rows(std::int32_t& status) {
    for (std::size_t row = 0; row < fluctuation_table().size() && status == 0; ++row) {
      const CatalogueTable catalogue = fluctuation_table();
      // What could not be extracted now may have left an old file.
      if (!catalogue.is_wanted(row) || !catalogue.on_disk[row]) continue;
      report(CatalogueRow(catalogue, row), status);
    }
  }

  void report(const CatalogueRow& row, std::int32_t& status) {
    columns_.provide(row, status);
    if (status == 0) compute(row, status);
    if (status != 0 || columns_.entries() == 0) return;
    if (order_.is_one_number()) return print(row);
    if (order_.settings.stats_plot) plot(row, status);
    if (status != 0) return;
    const ResultSeries result{.id = row.id,
                              .name = row.name,
                              .mode = order_.mode,
                              .has_time_axis = order_.has_time_axis,
                              .values = values_,
                              .points = columns_.entries(),
                              .table = blocks_.results.span(),
                              .x = blocks_.x.span()};
    if (order_.settings.stats_text) writeprofile_(result, status);
    table_.add(result, {});
  }

  void compute(const CatalogueRow& row, std::int32_t& status) {
    SimulatedSystem system = order_.system;
    system.first_volume = columns_.first_volume();
    values_ = response_count(row.id, system.ensemble);
    const auto entries = static_cast<std::size_t>(columns_.entries()), values = static_cast<std::size_t>(values_);
    FluctuationBlocks::refit(blocks_.results, std::int64_t{columns_.entries()} * values_, status);
    if (status != 0) return;
    const auto results = blocks_.results.span();
    for (std::size_t k = 0; k < entries; ++k) {
      const auto found = response(row.id, system, columns_.means(k));
      std::copy_n(found.begin(), values, &results[k * values]);
    }
    // One frame has no fluctuation to start from.
    if (order_.mode == running_average_mode && entries > 0) std::ranges::fill(results.first(values), 0.0);
  }

  void print(const CatalogueRow& row) const {
    const std::string_view name = trimmed(row.name), units = trimmed(row.units);
    const auto results = blocks_.results.span();
    if (values_ == 1) return print_line("PATHSTAT_MSG_32", name, results[0], units);
    const auto labels = response_labels(row.id, order_.system.ensemble);
    print_line("PATHSTAT_MSG_33", name, results[0], units, labels[0], name, results[1], units, labels[1]);
  }

  /// Curves appear quantity by quantity.
  void plot(const CatalogueRow& row, std::int32_t& status) const {
    std::int32_t& graph_count = trj_gui_i_.plot_graph_count;
    plotprofile_(
        {row.id, row.name, row.short_name, row.units, row.colour, values_, columns_.entries(), blocks_.results.span()},
        blocks_.xy.span(), order_.has_time_axis, order_.mode, graph_count, trj_gui_i_.plot_graph_list, kind_frames,
        false, status);
    if (status != 0 || graph_count > static_cast<std::int32_t>(most_plot_graphs)) return;
    show_graphs(viewer_, std::span(trj_gui_i_.plot_graph_list).first(static_cast<std::size_t>(graph_count)));
    close_full_list();
  }

  const FluctuationOrder order_;
  FluctuationBlocks blocks_;
  FluctuationColumns columns_;
  ReportTable table_;
  std::int32_t viewer_ = 0;
  std::int32_t values_ = 0;  // per entry of the present row
};

}  // namespace

void fluctuations_(std::int32_t mode, std::int32_t& status) {
  status = 0;
  FluctuationReport(mode, status).run(status);
}

}  // namespace pathstat
