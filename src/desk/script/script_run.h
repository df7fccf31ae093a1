#pragma once

#include <filesystem>

#include "desk/link/listener.h"
#include "desk/report/run_output.h"

namespace pathstat::desk {

/// Exit codes of a run.
namespace exit_code {
constexpr int success = 0;
constexpr int command_failed = 1;
constexpr int not_run = 2;       ///< the script, a folder or the program is not as it should be
constexpr int process_lost = 3;  ///< the process ended ahead of the script
constexpr int interrupted = 130;
}  // namespace exit_code

struct RunOptions {
  std::filesystem::path script;
  std::filesystem::path output = "out";
  std::filesystem::path work_directory;  ///< empty: one of its own, removed at the end
  std::filesystem::path program;         ///< empty: pathstat beside this program
  OutputFormats formats;
  Protocol protocol = Protocol::unix_socket;
};

/// Runs a script to its end and writes what came of it. What goes wrong is told on standard error.
/// @return an exit code
int run_script(const RunOptions& options);

}  // namespace pathstat::desk
