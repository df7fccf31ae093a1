#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "reports/result_series.h"

namespace pathstat {

// The results of all properties of a command in one text file: a line of column names, then one line per row, with a
// tab between two cells. The table grows by one pass per property over two work files of length-framed records, one
// record of 64-bit floats per row, so that a single row is in memory at a time.

/// Status of inittableoutput_ when the user keeps the file that is there.
constexpr std::int32_t table_file_kept = 2;
/// Status of a work file that is missing, damaged or cannot be written, and of a table file that is not whole.
constexpr std::int32_t table_failed = 1;

/// Makes way for the table file, asking before one that is there is replaced, and begins an empty table.
///
/// @param file    expanded as expanded_name; a relative name is relative to the working directory
/// @param status  0: the table is on; table_file_kept after PATHSTAT_WARN_8; the error of the deletion after
///                PATHSTAT_ERROR_56; that of an allocation
void inittableoutput_(std::string_view file, std::int32_t& status);

/// Adds the columns of a property: of a series one per number of a row, and for the first property x ahead of them; of
/// a distribution a pair of centre and frequency each. Rows that the table has beyond those of the property are carried
/// over, and rows that it lacks are added; finishtableoutput_ leaves the missing cells blank.
///
/// @param source  "TRAJECTORY": x is kept as it is; else it is the number of the row, which stands for a model
/// @param file    the table file; the work files have ".bn1" and ".bn2" for its last four characters
/// @param status  0; table_failed or that of an allocation, with the table as it was before
void tableprofile_(const ResultSeries& series, std::string_view source, std::string_view file, std::int32_t& status);

/// Writes the table file, frees the table and removes the work file. An empty table writes nothing.
///
/// @param model_names  of the rows that stand for models
/// @param status       0; table_failed; that of the file service. A file that could not be written whole is removed.
void finishtableoutput_(std::string_view file, std::span<const ModelName> model_names, std::int32_t& status);

/// Owns a table that is on: whatever is left of its blocks and work files goes with the scope.
class TableScope {
 public:
  explicit TableScope(std::string_view file);
  ~TableScope();
  TableScope(const TableScope&) = delete;
  TableScope& operator=(const TableScope&) = delete;

 private:
  std::array<std::string, 2> work_files_;  ///< their names, for an end without memory
};

}  // namespace pathstat
