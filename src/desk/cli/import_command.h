#pragma once

#include <string>

#include "desk/import/import_run.h"

namespace CLI {
class App;
}

namespace pathstat::desk {

/// What the options of `import` are given as words.
struct ImportWords {
  ImportOptions options;
  std::string ensemble;
};

/// Adds the options that say which frames and atoms come in, and how.
void add_import_options(CLI::App& app, ImportOptions& options);

/// Adds `import` with its options.
CLI::App* add_import_command(CLI::App& app, ImportWords& words);

/// Brings a run in. @return an exit code
int run_import(ImportWords words);

}  // namespace pathstat::desk
