#include "reports/ranking.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <numeric>
#include <span>
#include <string>

#include "catalogue/catalogue.h"
#include "catalogue/measure_families.h"
#include "extraction/scratch_file.h"
#include "plots/labels.h"
#include "reports/column_names.h"
#include "reports/printed_line.h"
#include "reports/result_series.h"
#include "state/analysis_settings.h"
#include "state/trajectory_frames.h"
#include "support/named_memory.h"
#include "support/sorting.h"

namespace pathstat {
namespace {

constexpr ComponentNames stress_titles{{"Stress XX", "Stress YY", "Stress ZZ", "Stress YZ", "Stress XZ", "Stress XY"},
                                       {"Stress YY", "Stress ZZ", "Stress YZ"},
                                       "Stress ZZ"};
constexpr ComponentNames cell_titles{
    {"Cell Length A", "Cell Length B", "Cell Length C", "Cell angle Alpha", "Cell angle Beta", "Cell angle Gamma"},
    {"Cell Length U", "Cell Length V", "Cell angle Theta"},
    "Cell Length Z"};

/// What is ranked, as it stands when the command begins.
struct RankedProperty {
  std::int32_t id;
  std::string name;
  std::string file;
  bool highest;
  std::int32_t most = trj_gui_i_.extrema_number;
  bool has_time_axis = trj_gui_l_.has_time_axis;
  TrjFrames frames = trj_frames_;

  std::string_view end() const { return highest ? "HIGHEST" : "LOWEST"; }
};

/// A property's series, whole, in named blocks.
struct RankedSeries {
  std::int32_t kind = 0;
  std::int32_t rows = 0;
  std::int32_t values = 0;
  NamedBlock<double> x;
  NamedBlock<std::int32_t> numbers;
  NamedBlock<std::int32_t> index;
  NamedBlock<double> table;
  NamedBlock<double> keys;
  NamedBlock<char> names;
  NamedBlock<std::int32_t> model_ids;
  NamedBlock<std::int32_t> row_sizes;

  void allocate(std::int32_t& status) {
    take(x, "pathstat/CRank/DataTime", 1, status);
    take(numbers, "pathstat/CRank/FrameNumber", 1, status);
    take(index, "pathstat/CRank/SortIndex", 1, status);
    take(table, "pathstat/CRank/DataVals", values, status);
    take(keys, "pathstat/CRank/SortData", 1, status);
    take(names, "pathstat/CRank/ModelNames", model_name_width, status);
    take(model_ids, "pathstat/CRank/ModelIds", 1, status);
    take(row_sizes, "pathstat/CRank/PtDataSize", 1, status);
  }
  /// Reads the file; false if it cannot be read.
  bool read(const std::string& file, std::int32_t& status) {
    std::int32_t extra_count = 0;
    scratchfileinfo_(kind, file, rows, values, extra_count, status);
    if (status == 0) allocate(status);
    NamedBlock<double> extras;
    if (status == 0) extras = NamedBlock<double>("pathstat/CRank/ExtraData", extra_count, status);
    if (status != 0) return false;
    readscratchfile_(kind, file, numbers.span(), x.span(), table.span(), rows, values, model_ids.span(), model_names(),
                     row_sizes.span(), extras.span(), extra_count, status);
    return status == 0;
  }
  std::span<ModelName> model_names() const {
    return {reinterpret_cast<ModelName*>(names.span().data()), static_cast<std::size_t>(rows)};
  }
  double value(std::size_t row, std::size_t column) const {
    return table.span()[row * static_cast<std::size_t>(values) + column];
  }

 private:
  template <class T>
  void take(NamedBlock<T>& block, std::string_view label, std::int64_t width, std::int32_t& status) const {
    if (status == 0) block = NamedBlock<T>(label, rows * width, status);
  }
};

/// Sorts the keys and walks from the wanted end: visit(rank, place), rank from 1 and place from 0.
template <class Visit>
void each_ranked(const RankedProperty& property, std::span<const double> keys, std::span<std::int32_t> index,
                 std::int32_t count, Visit visit) {
  dsortidx_(keys, index);
  for (std::int32_t rank = 1; rank <= count; ++rank) {
    const auto step = static_cast<std::size_t>(rank);
    const std::int32_t place = property.highest ? index[keys.size() - step] : index[step - 1];
    visit(rank, static_cast<std::size_t>(place - 1));
  }
}

void print_model(const RankedSeries& series, std::int32_t rank, std::size_t row, double value) {
  print_line("PATHSTAT_MSG_65", rank, series.model_names()[row], static_cast<float>(value));
}

void print_frame(const RankedProperty& property, const RankedSeries& series, std::int32_t rank, std::size_t row,
                 double value) {
  const std::int32_t frame = series.numbers.span()[row];
  const std::int64_t first = property.frames.first_frame;
  const std::int64_t step = std::max(property.frames.frame_step, 1);
  const double x = series.x.span()[row];
  push(rank);
  push(static_cast<std::int32_t>((frame - first) / step + 1));
  push(frame);
  if (property.has_time_axis) {
    print_line("PATHSTAT_MSG_26", static_cast<float>(x), static_cast<float>(value));
  } else {
    print_line("PATHSTAT_MSG_27", whole_number(x), static_cast<float>(value));
  }
}

/// All values of all models in one list.
void rank_pooled(const RankedProperty& property, RankedSeries& series, std::int32_t& status) {
  const auto sizes = series.row_sizes.span();
  const auto total = std::accumulate(sizes.begin(), sizes.end(), std::int64_t{0});
  if (total > std::numeric_limits<std::int32_t>::max()) {
    status = scratch_file_damaged;
    return;
  }
  series.index.resize(total, status);
  if (status == 0) series.keys.resize(total, status);
  NamedBlock<std::int32_t> rows;
  if (status == 0) rows = NamedBlock<std::int32_t>("pathstat/CRank/ModelIndex", total, status);
  if (status != 0) return;
  std::size_t place = 0;
  for (std::size_t row = 0; row < sizes.size(); ++row) {
    for (std::size_t column = 0; column < static_cast<std::size_t>(sizes[row]); ++column, ++place) {
      series.keys.span()[place] = series.value(row, column);
      rows.span()[place] = static_cast<std::int32_t>(row);
    }
  }
  const std::int32_t count = std::min(property.most, static_cast<std::int32_t>(total));
  print_line("PATHSTAT_MSG_28", count, property.end());
  print_line("PATHSTAT_MSG_64", property.name);
  each_ranked(property, series.keys.span(), series.index.span(), count, [&](std::int32_t rank, std::size_t at) {
    print_model(series, rank, static_cast<std::size_t>(rows.span()[at]), series.keys.span()[at]);
  });
}

std::string column_title(const RankedProperty& property, std::int32_t values, std::int32_t column) {
  if (property.id == property_id::stress) return std::string(stress_titles.name(values, column));
  if (property.id == property_id::cell_parameters) return std::string(cell_titles.name(values, column));
  const std::string label = data_label(property.id, profile_mode, column);
  return is_measure(property.id) ? property.name + ' ' + label : label;
}

void rank_column(const RankedProperty& property, const RankedSeries& series, std::int32_t column) {
  const bool of_models = series.kind == kind_models;
  const auto keys = series.keys.span();
  for (std::size_t row = 0; row < keys.size(); ++row) keys[row] = series.value(row, static_cast<std::size_t>(column));
  const std::int32_t count = std::min(property.most, series.rows);
  print_line(of_models ? "PATHSTAT_MSG_28" : "PATHSTAT_MSG_29", count, property.end());
  const std::string_view frames_key = property.has_time_axis ? "PATHSTAT_MSG_24" : "PATHSTAT_MSG_25";
  print_line(of_models ? "PATHSTAT_MSG_64" : frames_key, column_title(property, series.values, column));
  each_ranked(property, keys, series.index.span(), count, [&](std::int32_t rank, std::size_t row) {
    if (of_models) return print_model(series, rank, row, keys[row]);
    print_frame(property, series, rank, row, keys[row]);
  });
}

}  // namespace

void calcrank_(std::int32_t index, std::int32_t direction, std::int32_t& status) {
  status = 1;
  const CatalogueTable table = property_table();
  if (index < 1 || static_cast<std::size_t>(index) > table.size()) return;
  const auto row = static_cast<std::size_t>(index - 1);
  const RankedProperty property{table.ids[row], table.names[row].str(), property_file(table.extensions[row]),
                                direction == 1};
  RankedSeries series;
  if (!series.read(property.file, status)) return;
  if (is_measure(property.id) && series.kind == kind_models) return rank_pooled(property, series, status);
  for (std::int32_t column = 0; column < series.values; ++column) rank_column(property, series, column);
}

}  // namespace pathstat
