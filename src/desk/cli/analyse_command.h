#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "desk/import/import_run.h"
#include "desk/script/script_run.h"

namespace CLI {
class App;
}

namespace pathstat::desk {

struct AnalyseWords {
  std::vector<std::filesystem::path> files;  ///< a .trj with its model beside it, or a topology and its trajectories
  ImportOptions import;
  std::vector<std::string> import_words;  ///< the options given that are of an import alone
};

/// Adds `analyse` with the options of its own; those of a run are added by the caller.
CLI::App* add_analyse_command(CLI::App& app, AnalyseWords& words);

/// Brings the files in where they are those of another program, writes a script of all that they have the values for
/// into the folder of results, and runs it. @return an exit code
int run_analyse(const RunOptions& options, AnalyseWords words);

}  // namespace pathstat::desk
