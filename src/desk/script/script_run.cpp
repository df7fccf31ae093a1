#include "desk/script/script_run.h"

#include <fmt/format.h>
#include <unistd.h>

#include <new>

#include "desk/advice/trajectory_advice.h"
#include "desk/link/work_directory.h"
#include "desk/messages/visible_text.h"
#include "desk/script/file_content.h"
#include "desk/script/interrupts.h"
#include "desk/script/script.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

int complain(const std::string& problem) {
  fmt::print(stderr, "pathdesk: {}\n", visible(problem));
  return exit_code::not_run;
}

/// Why a file is no script; empty for one that may be.
std::string why_no_script(const fs::path& path) {
  const auto name = path.string();
  switch (kind_of_file(path)) {
    case FileKind::missing:
      return fmt::format("there is no script {}", name);
    case FileKind::folder:
      return fmt::format("{} is a folder, not a script", name);
    case FileKind::trajectory:
      return fmt::format(
          "{0} is a trajectory, not a script; try pathdesk analyse {0}, pathdesk info {0}, or a script that begins "
          "with TRAJECTORY {0}",
          name);
    case FileKind::model:
      return fmt::format("{0} is a model, not a script; try pathdesk info {0}", name);
    case FileKind::binary:
      return fmt::format("{0} is not a text, and so not a script; if it is a trajectory: pathdesk analyse TOPOLOGY {0}",
                         name);
    case FileKind::text:
      return {};
  }
  return {};
}

std::string read_file(const fs::path& path, std::string& text) {
  if (auto problem = why_no_script(path); !problem.empty()) return problem;
  const auto why = read_script_text(path, text);
  return why.empty() ? why : fmt::format("the script {} cannot be read: {}", path.string(), why);
}

/// The program of the process: the one asked for, else the one beside this program.
std::string find_program(fs::path& program) {
  std::error_code error;
  const bool asked = !program.empty();
  if (!asked) program = fs::read_symlink("/proc/self/exe", error).parent_path() / "pathstat";
  program = fs::absolute(program);
  if (fs::is_regular_file(program, error) && ::access(program.c_str(), X_OK) == 0) return {};
  return asked ? fmt::format("{} is not a program that can be run", program.string())
               : fmt::format("pathstat is not beside this program, at {}: build it, or tell where it is with --program",
                             program.string());
}

std::string take_folder(const fs::path& folder, FolderLock& lock) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (!fs::is_directory(folder)) {
    return fmt::format("the folder {} cannot be made: {}", folder.string(),
                       error ? error.message() : "there is a file of this name");
  }
  return lock.take(folder);
}

int run_all(LineRunner& runner, const Script& script) {
  int code = exit_code::success;
  for (const auto& line : script.lines) {
    switch (runner.run(line)) {
      case LineEnd::done:
        if (runner.told_error()) code = exit_code::command_failed;
        break;
      case LineEnd::stopped:
        return code;
      case LineEnd::interrupted:
        runner.end_with("Interrupted by the user.");
        runner.console().complain("pathdesk: interrupted; what is done is kept");
        return exit_code::interrupted;
      case LineEnd::lost:
        runner.end_with(runner.loss());
        return exit_code::process_lost;
      case LineEnd::failed:
        code = exit_code::command_failed;
        if (!runner.stops_on_error()) break;
        runner.end_with("Ended by a failed line.");
        return code;
    }
  }
  return code;
}

}  // namespace

int with_runner(const RunOptions& options, const LineSource& source, const std::function<int(LineRunner&)>& body) {
  RunPlace place{.program = options.program,
                 .work = {},
                 .private_folder = {},
                 .output = options.output,
                 .imports = fs::absolute(options.work_directory.empty() ? options.output : options.work_directory),
                 .formats = options.formats,
                 .protocol = options.protocol,
                 .verbose = options.verbose};
  std::string error;
  watch_interrupts();  // ahead of the first thing that has to be removed in the end
  FolderLock output_lock, work_lock;
  if (error = find_program(place.program); !error.empty()) return complain(error);
  if (error = take_folder(place.output, output_lock); !error.empty()) return complain(error);
  const PrivateDirectory private_folder(error);
  if (!error.empty()) return complain(error);
  place.private_folder = private_folder.path();
  place.work = options.work_directory.empty() ? place.private_folder / "work" : fs::absolute(options.work_directory);
  std::error_code differ;
  if (!fs::equivalent(place.work, place.output, differ)) error = take_folder(place.work, work_lock);
  if (!error.empty()) return complain(error);

  if (error = full_disk(place.private_folder); !error.empty()) return complain(error);

  LineRunner runner(source, place);
  if (error = runner.start(); !error.empty()) {
    runner.console().complain("pathdesk: " + error);
    return interrupts() > 0 ? exit_code::interrupted : exit_code::process_lost;
  }
  int code = exit_code::command_failed;
  try {
    code = body(runner);
  } catch (const std::bad_alloc&) {
    runner.console().complain("pathdesk: there is not enough memory to go on; what is done is kept");
  }
  const bool written = runner.finish();
  return code == exit_code::success && !written ? exit_code::command_failed : code;
}

int run_lines(const RunOptions& options, const LineSource& source, std::string_view text) {
  const Script script = read_script(text);
  for (const auto& problem : script.problems)
    fmt::print(stderr, "{}\n", visible_lines(fmt::format("{}:{}", visible(source.place), problem)));
  if (!script.problems.empty()) return exit_code::not_run;
  return with_runner(options, source, [&](LineRunner& runner) { return run_all(runner, script); });
}

int run_script(const RunOptions& options, const fs::path& path) {
  std::string text;
  if (const auto error = read_file(path, text); !error.empty()) return complain(error);
  const LineSource source{.name = path.filename(), .place = path.string(), .folder = fs::absolute(path).parent_path()};
  return run_lines(options, source, text);
}

}  // namespace pathstat::desk
