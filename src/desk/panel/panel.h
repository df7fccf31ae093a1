#pragma once

#include <filesystem>

#include "desk/script/script_run.h"

namespace pathstat::desk {

struct PanelOptions {
  std::filesystem::path file;  ///< a script to run or a trajectory to load first; empty for neither
  bool open_browser = true;
};

/// Serves the panel until somebody ends it.
/// @return an exit code
int run_panel(const RunOptions& options, const PanelOptions& panel);

}  // namespace pathstat::desk
