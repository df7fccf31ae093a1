#pragma once

#include <filesystem>
#include <functional>
#include <string_view>

#include "desk/link/listener.h"
#include "desk/report/run_output.h"
#include "desk/script/line_runner.h"

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
  std::filesystem::path output = "out";
  std::filesystem::path work_directory;  ///< empty: one of its own, removed at the end
  std::filesystem::path program;         ///< empty: pathstat beside this program
  OutputFormats formats;
  Protocol protocol = Protocol::unix_socket;
  bool verbose = false;  ///< shows what is of use to find faults
};

/// Makes what a run needs, starts the process, has the body run lines, and writes what came of them. What goes wrong is
/// told on standard error.
/// @return an exit code
int with_runner(const RunOptions& options, const LineSource& source, const std::function<int(LineRunner&)>& body);

/// Runs the lines of a text to their end; a text with a line that cannot be read is not run at all.
int run_lines(const RunOptions& options, const LineSource& source, std::string_view text);

/// Runs the lines of a file.
int run_script(const RunOptions& options, const std::filesystem::path& path);

}  // namespace pathstat::desk
