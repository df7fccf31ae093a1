#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "desk/graphs/graph_store.h"
#include "desk/report/run_record.h"

namespace pathstat::desk {

/// What a run writes.
struct OutputFormats {
  bool svg = true;
  bool png = true;
  bool tsv = true;
  bool html = true;
};

struct OutputPlan {
  std::filesystem::path folder;
  OutputFormats formats;
  std::vector<std::filesystem::path> results;  ///< files of the process, copied under their own names
  std::filesystem::path scratch;               ///< for files that are of no more use at the end
};

/// The files that the process leaves as results in its working folder, written no earlier than `since`, and those of
/// the tables that exist.
std::vector<std::filesystem::path> result_files(const std::filesystem::path& work,
                                                std::filesystem::file_time_type since,
                                                const std::set<std::filesystem::path>& tables);

/// Writes pictures and points of the graphs, the result files and the report. @return what went wrong, sentence by
/// sentence; everything else is written all the same
std::vector<std::string> write_output(const RunRecord& record, const GraphStore& store, const OutputPlan& plan);

}  // namespace pathstat::desk
