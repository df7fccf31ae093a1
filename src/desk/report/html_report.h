#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "desk/graphs/figure.h"
#include "desk/report/run_record.h"
#include "desk/summary/run_summary.h"

namespace pathstat::desk {

/// What a report is made of.
struct ReportParts {
  const RunRecord& record;
  std::span<const Figure> figures;
  std::filesystem::path pictures;              ///< folder with NAME.svg of each figure that has points
  std::vector<std::filesystem::path> results;  ///< result files; the tables among them are shown
  bool links_points = false;                   ///< NAME.tsv stands beside the report
  std::span<const SummaryTable> summary = {};
};

/// One page that shows a whole run: what its numbers say, its commands with their statuses and durations, messages,
/// tables and graphs. It needs nothing but itself.
std::string html_report(const ReportParts& parts);

/// The rows of a tab-separated file as a table of HTML, numbers shortened to what a reader needs; empty for a file that
/// is not such a table.
std::string html_table(std::string_view tab_separated);

}  // namespace pathstat::desk
