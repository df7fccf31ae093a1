#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "reports/result_series.h"
#include "reports/table_output.h"
#include "state/statistics_settings.h"

namespace pathstat {

/// The table file of one report, where the user wants one, and what becomes of the report where it cannot be had.
class ReportTable {
 public:
  ReportTable(std::int32_t mode, const TrjStats& settings);

  /// Begins the table. Without it, PATHSTAT_ERROR_65 tells that the report goes on; PATHSTAT_ERROR_64 and false that
  /// nothing else is wanted. PATHSTAT_WARN_16 names measures that will not be in the table.
  bool open();
  /// Adds a result, unless it is a series of measures of models. A table that cannot be written is given up.
  /// @param model_ids  of the rows; for kind_models
  void add(const ResultSeries& result, std::span<const std::int32_t> model_ids);
  void finish();
  /// 0; that of inittableoutput_, or of the first failure to write.
  std::int32_t status() const { return status_; }

 private:
  std::int32_t expected_properties() const;
  void keep_models(const ResultSeries& result, std::span<const std::int32_t> model_ids);

  std::int32_t mode_;
  bool is_wanted_;
  bool has_other_outputs_;
  std::string source_;
  std::string file_;
  std::optional<TableScope> scope_;  // while the table is on
  std::int32_t status_ = 0;
  std::vector<ModelName> model_names_;  // of the rows of the first property
  std::vector<std::int32_t> model_ids_;
};

}  // namespace pathstat
