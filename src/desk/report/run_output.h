#pragma once

#include <cstdint>
#include <filesystem>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "desk/graphs/graph_store.h"
#include "desk/model/surface.h"
#include "desk/report/result_folder.h"
#include "desk/report/run_record.h"

namespace pathstat::desk {

/// What a run writes.
struct OutputFormats {
  bool svg = true;
  bool png = true;
  bool tsv = true;
  bool html = true;
  bool pdf = false;
};

struct OutputPlan {
  std::filesystem::path folder;
  OutputFormats formats;
  std::filesystem::path scratch;  ///< private; pictures are drawn there
};

/// When the files were written that count as results of a run.
struct WrittenBetween {
  std::filesystem::file_time_type first;
  std::filesystem::file_time_type last = std::filesystem::file_time_type::max();
  bool contains(std::filesystem::file_time_type time) const { return first <= time && time <= last; }
};

/// The files that the process leaves as results in its working folder, if they were written in time, and those of the
/// tables that exist.
/// @param problem  set if the folder cannot be read
std::vector<std::filesystem::path> result_files(const std::filesystem::path& work, WrittenBetween times,
                                                const std::set<std::filesystem::path>& tables, std::string& problem);

/// Writes what comes of a run, each graph again only when it has changed. Where something goes wrong, everything else
/// is written all the same.
class RunOutput {
 public:
  explicit RunOutput(OutputPlan plan)
      : results_(std::move(plan.folder)), scratch_(std::move(plan.scratch)), formats_(plan.formats) {}

  /// Writes the pictures and points of the graphs that have changed since they were last written.
  /// @return for each graph that was written, its files with blanks between
  std::vector<std::string> write_graphs(const GraphStore& store);

  /// Writes the surfaces that have come since the last time: a picture, and the formats of programs that show them.
  /// @return for each surface that was written, its files with blanks between
  std::vector<std::string> write_surfaces(const std::vector<Surface>& surfaces);

  /// Lets graphs and surfaces of which not all could be written come once more.
  void forget_failed();

  /// Copies result files, those of the process under their own names, and writes the summary and the report. The graphs
  /// must have been written.
  /// @return the lines of the summary
  std::vector<std::string> write_report(const RunRecord& record, const GraphStore& store,
                                        const std::vector<std::filesystem::path>& results);

  /// What went wrong since this was last asked.
  std::vector<std::string> take_problems();

 private:
  static constexpr std::size_t no_surface = std::numeric_limits<std::size_t>::max();

  ResultFolder results_;
  std::filesystem::path scratch_;
  OutputFormats formats_;
  std::vector<std::string> undrawn_;
  std::map<std::int32_t, std::uint64_t> written_;  ///< revisions by graph
  std::size_t surfaces_written_ = 0;
  std::set<std::int32_t> failed_;            ///< graphs, by handle
  std::size_t failed_surface_ = no_surface;  ///< the first one
};

}  // namespace pathstat::desk
