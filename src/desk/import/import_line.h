#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "desk/import/import_run.h"

namespace CLI {
class App;
}

namespace pathstat::desk {

/// Adds the options that say which frames and atoms come in, and how.
void add_import_options(CLI::App& app, ImportOptions& options);

/// A line that brings a run in: a name, a topology, trajectories, and options as the command `import` has them.
struct ImportLine {
  std::string name;  ///< of the files, without folder and extension
  ImportOptions options;
  std::string problem;  ///< what is wrong with the line, or nothing
};

/// @param folder  where relative paths begin
ImportLine read_import_line(const std::vector<std::string>& words, const std::filesystem::path& folder = {});

/// Brings a run in, unless its files lie there from the same words and no input is newer than that. The words stand
/// beside the files, as `output`.import; the time of that file is that of the beginning of the import.
///
/// @param[out] kept  true if nothing was to be done
ImportResult keep_import(const ImportOptions& options, const std::vector<std::string>& words,
                         const ImportEvents& events, bool& kept);

}  // namespace pathstat::desk
