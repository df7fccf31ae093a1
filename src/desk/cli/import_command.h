#pragma once

#include "desk/import/import_run.h"

namespace CLI {
class App;
}

namespace pathstat::desk {

/// Adds `import` with its options.
CLI::App* add_import_command(CLI::App& app, ImportOptions& options);

/// Brings a run in. @return an exit code
int run_import(ImportOptions options);

}  // namespace pathstat::desk
