#include "reports/report_table.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>

#include "catalogue/catalogue.h"
#include "catalogue/measure_families.h"
#include "plots/labels.h"
#include "reports/printed_line.h"
#include "state/analysis_settings.h"

namespace pathstat {

ReportTable::ReportTable(std::int32_t mode, const TrjStats& settings)
    : mode_(mode),
      is_wanted_(settings.stats_file),
      has_other_outputs_(settings.stats_plot || settings.stats_text),
      source_(trj_gui_c_.input_source.str()),
      file_(trj_stats_c_.stats_filename.str()) {}

/// Measures of models have no rows in common with one another: only their distributions go into a table.
std::int32_t ReportTable::expected_properties() const {
  if (source_ != from_selected_models || mode_ == distribution_mode) return 1;
  constexpr std::int32_t distance = 501;
  std::int32_t count = 0;
  for (std::size_t row = 0; row < property_table().size(); ++row) {
    const CatalogueTable table = property_table();
    if (!table.selected[row]) continue;
    if (!is_measure(table.ids[row])) {
      ++count;
    } else if (table.ids[row] != distance) {
      print_line("PATHSTAT_WARN_16", table.names[row]);
    }
  }
  return count;
}

bool ReportTable::open() {
  if (!is_wanted_) return true;
  if (expected_properties() > 0) {
    inittableoutput_(file_, status_);
    if (status_ == 0) scope_.emplace(file_);
  }
  if (scope_) return true;
  print_line(has_other_outputs_ ? "PATHSTAT_ERROR_65" : "PATHSTAT_ERROR_64");
  return has_other_outputs_;
}

/// The model of a row is named by the first property of the table. One that passes over other models shifts its rows
/// against those names, which the reader is told.
void ReportTable::keep_models(const ResultSeries& result, std::span<const std::int32_t> model_ids) {
  const auto rows = static_cast<std::size_t>(result.points);
  const auto ids = model_ids.first(rows);
  if (model_ids_.empty()) {
    model_ids_.assign(ids.begin(), ids.end());
    model_names_.assign(result.model_names.begin(), result.model_names.begin() + result.points);
  } else if (rows > model_ids_.size() || !std::equal(ids.begin(), ids.end(), model_ids_.begin())) {
    std::printf("STATISTICS_FILE: the rows of %s are not those of the models named in the first column\n",
                std::string(result.name).c_str());
  }
}

void ReportTable::add(const ResultSeries& result, std::span<const std::int32_t> model_ids) {
  if (!scope_) return;
  if (is_measure(result.id) && mode_ != distribution_mode && result.kind != kind_frames) return;
  if (result.kind == kind_models && mode_ != distribution_mode) keep_models(result, model_ids);
  std::int32_t failed = 0;
  tableprofile_(result, source_, file_, failed);
  if (failed == 0) return;
  status_ = failed;
  scope_.reset();
  print_line("PATHSTAT_ERROR_65");
}

void ReportTable::finish() {
  if (!scope_) return;
  finishtableoutput_(file_, model_names_, status_);
  scope_.reset();
  if (status_ != 0) print_line("PATHSTAT_ERROR_65");
}

}  // namespace pathstat
