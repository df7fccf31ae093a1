#include "reports/profile.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "catalogue/catalogue.h"
#include "catalogue/measure_families.h"
#include "extraction/scratch_file.h"
#include "plots/graph.h"
#include "plots/labels.h"
#include "reports/averages.h"
#include "reports/catalogue_row.h"
#include "reports/column_names.h"
#include "reports/printed_line.h"
#include "reports/profile_plots.h"
#include "reports/report_table.h"
#include "reports/result_series.h"
#include "reports/statistics.h"
#include "reports/text_report.h"
#include "state/analysis_settings.h"
#include "state/statistics_settings.h"
#include "support/named_memory.h"

namespace pathstat {
namespace {

/// What the user asked for, as it stands when the command begins; a nested command may change the settings.
struct ReportOrder {
  std::int32_t mode;
  TrjStats settings = trj_stats_;
  bool has_time_axis = trj_gui_l_.has_time_axis;
  bool of_selected_models = trj_gui_c_.input_source == from_selected_models;
  bool calculate_histogram = trj_gui_l_.calculate_histogram;
};

/// The named blocks of the report. They grow and shrink with the property at hand.
struct ReportBlocks {
  explicit ReportBlocks(std::int32_t& status) {
    take(xy, "pathstat/PP/GrXY", 2, status);
    take(frame_numbers, "pathstat/PP/FNum", 1, status);
    take(row_sizes, "pathstat/PP/PtDataSize", 1, status);
    take(model_ids, "pathstat/PP/ModelIds", 1, status);
    take(model_names, "pathstat/PP/ModelNames", model_name_width, status);
    take(x, "pathstat/PP/XData", 1, status);
    take(table, "pathstat/PP/YData", 1, status);
    take(work, "pathstat/PP/AvgWork", 1, status);
    take(bin_data, "pathstat/PP/BinData", 3, status);
    take(extras, "pathstat/PP/ExtraData", 1, status);
  }

  /// Room for `rows` rows of `values` numbers.
  void resize(std::int64_t rows, std::int64_t values, std::int64_t extra_count, std::int32_t& status) {
    refit(xy, 2 * rows, status);
    refit(frame_numbers, rows, status);
    refit(row_sizes, rows, status);
    refit(model_ids, rows, status);
    refit(model_names, static_cast<std::int64_t>(model_name_width) * rows, status);
    refit(x, rows, status);
    refit(table, rows * values, status);
    refit(extras, extra_count, status);
  }

  template <class T>
  static void refit(NamedBlock<T>& block, std::int64_t count, std::int32_t& status) {
    if (status == 0) block.resize(count, status);
  }

  std::span<ModelName> names() const {
    return {reinterpret_cast<ModelName*>(model_names.span().data()), frame_numbers.size()};
  }

  NamedBlock<float> xy;
  NamedBlock<std::int32_t> frame_numbers;
  NamedBlock<std::int32_t> row_sizes;
  NamedBlock<std::int32_t> model_ids;
  NamedBlock<std::int32_t> model_names;
  NamedBlock<double> x;
  NamedBlock<double> table;
  NamedBlock<double> work;
  NamedBlock<double> bin_data;
  NamedBlock<double> extras;

 private:
  template <class T>
  static void take(NamedBlock<T>& block, std::string_view label, std::int64_t count, std::int32_t& status) {
    if (status == 0) block = NamedBlock<T>(label, count, status);
  }
};

/// One property's series, read from its file and turned into what the report shows.
struct ReportedSeries {
  std::int32_t kind = 0;
  std::int32_t frames = 0;
  std::int32_t values = 0;
  std::int32_t points = 0;  ///< rows of the result
};

/// True if the whole file of the row is in the blocks.
bool read_series(const CatalogueRow& row, const ReportOrder& order, ReportBlocks& blocks, ReportedSeries& series,
                 std::int32_t& status) {
  const std::string file = property_file(row.extension);
  std::int32_t extra_count = 0;
  std::int32_t failed = 0;
  scratchfileinfo_(series.kind, file, series.frames, series.values, extra_count, failed);
  if (failed != 0) return false;
  const std::int32_t rows =
      order.mode == distribution_mode ? std::max(order.settings.number_of_bins, series.frames) : series.frames;
  blocks.resize(rows, series.values, extra_count, status);
  if (status != 0) return false;
  readscratchfile_(series.kind, file, blocks.frame_numbers.span(), blocks.x.span(), blocks.table.span(), series.frames,
                   series.values, blocks.model_ids.span(), blocks.names(), blocks.row_sizes.span(),
                   blocks.extras.span(), extra_count, failed);
  if (failed != 0) return false;
  if (series.kind == kind_frames) std::ranges::fill(blocks.row_sizes.span(), series.values);
  series.points = series.frames;
  return true;
}

/// Means of blocks, and the x of each block's start beside them.
void average_blocks(const ReportOrder& order, ReportBlocks& blocks, ReportedSeries& series, std::int32_t& status) {
  const std::int32_t interval = order.settings.block_interval;
  const std::int32_t width = order.settings.block_width;
  ReportBlocks::refit(blocks.work, series.frames, status);
  if (status != 0) return;
  blockaverage_(series.values, series.frames, blocks.table.span(), blocks.work.span(), width, interval, width / 2,
                status);
  if (status == 0) series.points = keep_block_starts(blocks.x.span(), series.frames, interval);
}

void count_bins(const ReportOrder& order, const CatalogueRow& row, ReportBlocks& blocks, ReportedSeries& series,
                std::int32_t& status) {
  const std::int32_t bins = order.settings.number_of_bins;
  ReportBlocks::refit(blocks.work, std::max(bins, series.frames), status);
  ReportBlocks::refit(blocks.bin_data, std::int64_t{3} * series.values, status);
  if (status != 0) return;
  histogram_(series.values, series.frames, blocks.row_sizes.span(), blocks.table.span(), blocks.work.span(), bins,
             is_measure(row.id), row.id == property_id::distance_vector ? 3 : 1, blocks.bin_data.span(), status);
  if (status == no_spread) {
    status = 0;
    print_line("PATHSTAT_WARN_1");
  }
  series.points = bins;
}

/// Turns the series in the blocks into what the mode asks for.
void reduce(const ReportOrder& order, const CatalogueRow& row, ReportBlocks& blocks, ReportedSeries& series,
            std::int32_t& status) {
  switch (order.mode) {
    case running_average_mode:
      return runningaverage_(series.values, series.frames, blocks.table.span(), status);
    case block_average_mode:
      return average_blocks(order, blocks, series, status);
    case distribution_mode:
      return count_bins(order, row, blocks, series, status);
    default:
      return;
  }
}

void plot(const ReportOrder& order, const CatalogueRow& row, ReportBlocks& blocks, const ReportedSeries& series,
          std::int32_t& status) {
  const PlottedSeries plotted{row.id,     row.name,      row.short_name, row.units,
                              row.colour, series.values, series.points,  blocks.table.span()};
  const auto xy = blocks.xy.span();
  std::int32_t& graph_count = trj_gui_i_.plot_graph_count;
  if (order.mode == distribution_mode) {
    return plothistogram_(plotted, xy, blocks.bin_data.span(), graph_count, trj_gui_i_.plot_graph_list, status);
  }
  for (std::size_t k = 0; k < static_cast<std::size_t>(series.points); ++k) {
    xy[2 * k] = static_cast<float>(blocks.x.span()[k]);
  }
  plotprofile_(plotted, xy, order.has_time_axis, order.mode, graph_count, trj_gui_i_.plot_graph_list, series.kind,
               order.mode == profile_mode, status);
}

ResultSeries result_of(const ReportOrder& order, const CatalogueRow& row, const ReportBlocks& blocks,
                       const ReportedSeries& series) {
  return {row.id,
          row.name,
          order.mode,
          series.kind,
          order.has_time_axis,
          series.values,
          series.points,
          blocks.table.span(),
          blocks.x.span(),
          blocks.names(),
          blocks.bin_data.span()};
}

void report_row(const ReportOrder& order, const CatalogueRow& row, ReportBlocks& blocks, ReportTable& table,
                std::int32_t& status) {
  if (order.mode == profile_mode && is_measure(row.id) && order.of_selected_models) {
    return print_line("PATHSTAT_ERROR_80", row.name);
  }
  ReportedSeries series;
  if (!read_series(row, order, blocks, series, status)) return;
  if (order.mode == distribution_mode) {
    calcstatistics_(row.id, row.name, blocks.table.span(), series.frames, series.values, blocks.row_sizes.span(),
                    status);
    if (!order.calculate_histogram) return;
  }
  if (series.frames < 1) return;
  reduce(order, row, blocks, series, status);
  if (status == 0 && order.settings.stats_plot) plot(order, row, blocks, series, status);
  if (status != 0) return;
  const ResultSeries result = result_of(order, row, blocks, series);
  if (order.settings.stats_text) writeprofile_(result, status);
  table.add(result, blocks.model_ids.span());
  close_full_list();
}

void report_rows(const ReportOrder& order, ReportBlocks& blocks, ReportTable& table, std::int32_t& status) {
  for (std::size_t row = 0; row < property_table().size() && status == 0; ++row) {
    const CatalogueTable catalogue = property_table();
    if (!catalogue.selected[row] || !catalogue.on_disk[row]) continue;
    report_row(order, CatalogueRow(catalogue, row), blocks, table, status);
  }
}

}  // namespace

void pprofile_(std::int32_t mode, std::int32_t& status) {
  status = 0;
  const ReportOrder order{mode};
  ReportBlocks blocks(status);
  ReportTable table(mode, order.settings);
  {
    const PlotTransaction transaction;
    const std::int32_t viewer = take_viewer();
    trj_gui_i_.plot_graph_count = 0;
    if (status == 0 && table.open()) report_rows(order, blocks, table, status);
    const auto shown = std::min(static_cast<std::size_t>(trj_gui_i_.plot_graph_count), most_plot_graphs);
    if (shown > 0) show_graphs(viewer, std::span(trj_gui_i_.plot_graph_list).first(shown));
  }
  table.finish();
  if (status == 0) status = table.status();
}

}  // namespace pathstat
