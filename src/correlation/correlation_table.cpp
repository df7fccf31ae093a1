#include "correlation/correlation_table.h"

#include <algorithm>

#include "extraction/scratch_file.h"
#include "plots/graph.h"

namespace pathstat {

CorrelationTable::CorrelationTable(const CorrelationKind& kind, std::int32_t intervals, bool anisotropic,
                                   std::int64_t atoms, double spacing_ps, std::int32_t& status)
    : first_(first_column(anisotropic)), cross_factor_(kind.cross_factor) {
  if (status == 0) table_ = NamedBlock<double>(kind.table_label, std::int64_t{7} * intervals, status);
  if (status == 0) counts_ = NamedBlock<double>(kind.count_label, intervals, status);
  if (status == 0) lags_ = NamedBlock<double>(kind.lag_label, intervals, status);
  if (status == 0) numbers_ = NamedBlock<std::int32_t>(kind.number_label, intervals, status);
  if (status != 0) return;
  set_atoms(atoms);
  for (std::size_t i = 0; i < lags_.size(); ++i) lags_.span()[i] = static_cast<double>(i) * spacing_ps;
}

void CorrelationTable::set_atoms(std::int64_t atoms) {
  factors_.fill(1.0 / static_cast<double>(atoms));
  for (std::size_t column = 3; column < total_column; ++column) factors_[column] *= cross_factor_;
}

void CorrelationTable::add(std::size_t lag, std::span<const double> sums) {
  for (std::size_t k = 0; k < sums.size(); ++k) at(lag, first_ + k) += sums[k];
  counts_.span()[lag] += 1.0;
}

void CorrelationTable::put(std::size_t lag, std::span<const double> sums, std::int64_t pairs) {
  for (std::size_t k = 0; k < sums.size(); ++k) at(lag, first_ + k) = sums[k];
  counts_.span()[lag] = static_cast<double>(pairs);
}

double CorrelationTable::mean(std::size_t lag, std::size_t column) const {
  const double pairs = counts_.span()[lag];
  return pairs > 0.0 ? at(lag, column) * factors_[column] / pairs : 0.0;
}

void CorrelationTable::normalise() {
  for (std::size_t lag = 0; lag < intervals(); ++lag) {
    for (std::size_t column = first_; column < correlation_columns; ++column) at(lag, column) = mean(lag, column);
  }
}

void CorrelationTable::save(std::string_view file, std::int32_t& status) const {
  writescratchfile_(kind_frames, file, numbers_.span(), lags_.span(), table_.span(),
                    static_cast<std::int32_t>(columns()), correlation_columns, static_cast<std::int32_t>(first_) + 1,
                    {}, {}, {}, status);
}

TablePlots::TablePlots(const CorrelationKind& kind, const CorrelationTable& table, double spacing_ps,
                       std::span<float> points)
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
  for (std::size_t i = 0; i < table.intervals(); ++i) {
    points_[2 * i] = static_cast<float>(static_cast<double>(i) * unit);
  }
}

void TablePlots::draw() {
  for (const ColumnPlot& plot : plots_) {
    for (std::size_t i = 0; i < table_.intervals(); ++i) {
      points_[2 * i + 1] = static_cast<float>(table_.mean(i, plot.column));
    }
    write_points(plot.data_set, points_);
  }
  redraw(viewer_);
}

}  // namespace pathstat
