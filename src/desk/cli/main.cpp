#include <fmt/format.h>
#include <fmt/ranges.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <limits>
#include <map>
#include <new>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "desk/advice/nearest.h"
#include "desk/advice/trajectory_advice.h"
#include "desk/cli/analyse_command.h"
#include "desk/cli/command_help.h"
#include "desk/cli/converse.h"
#include "desk/cli/file_info.h"
#include "desk/cli/import_command.h"
#include "desk/cli/manual_page.h"
#include "desk/cli/shell.h"
#include "desk/export/export_command.h"
#include "desk/export/export_writer.h"
#include "desk/link/work_directory.h"
#include "desk/messages/visible_text.h"
#include "desk/panel/panel.h"
#include "desk/script/script.h"
#include "desk/script/script_run.h"
#include "support/memory_watch.h"
#include "support/parallel.h"
#include "support/standard_streams.h"

namespace pathstat::desk {
namespace {

constexpr const char* about =
    "Runs the analysis of molecular dynamics trajectories and shows what comes of it.\n"
    "pathdesk run takes a command script, pathdesk shell takes commands as they are typed,\n"
    "pathdesk panel shows plots and the structure in a browser,\n"
    "pathdesk info tells what a trajectory or a model file holds, pathdesk words what the command words mean,\n"
    "pathdesk analyse makes a whole analysis of the files of a run,\n"
    "pathdesk import brings in runs of other programs, pathdesk export writes frames and atoms in their formats.";

std::string script_help() {
  return "A script has one command a line in pathstat's own words (TRAJECTORY argon.trj, PROFILE), comments behind #,\n"
         "and lines for pathdesk itself:\n" +
         desk_lines_help() +
         "Relative paths in a script are relative to its folder.\n\n"
         "The first Ctrl-C ends the running analysis and keeps what is done, the second gives the run up.\n"
         "Exit code: 0 all went well, 1 a command failed, 2 the run could not begin, 3 pathstat was lost,\n"
         "130 interrupted.";
}

/// The words of --format.
const std::map<std::string, bool OutputFormats::*> format_words{{"svg", &OutputFormats::svg},
                                                                {"png", &OutputFormats::png},
                                                                {"tsv", &OutputFormats::tsv},
                                                                {"html", &OutputFormats::html},
                                                                {"pdf", &OutputFormats::pdf}};

const std::map<std::string, Protocol> protocol_words{{"unix", Protocol::unix_socket}, {"tcp", Protocol::tcp}};

OutputFormats formats_of(const std::vector<std::string>& words) {
  OutputFormats formats{false, false, false, false};
  for (const auto& word : words) formats.*format_words.at(word) = true;
  return formats;
}

/// What the options of `run` are given as words.
struct RunWords {
  std::vector<std::string> formats{"svg", "png", "tsv", "html"};
  std::string protocol = "unix";
  int threads = 0;  ///< 0: as pathstat has it by itself
};

/// The options of every run.
void add_run_options(CLI::App* run, RunOptions& options, RunWords& words) {
  run->add_option("--out", options.output, "Folder for pictures, tables and the report; out without it")
      ->option_text("DIR");
  run->add_option("--format", words.formats,
                  "What to write: any of svg, png, pdf, tsv and html; all but pdf without it")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->check(CLI::IsMember(format_words))
      ->option_text("svg,png,pdf,tsv,html");
  run->add_option("--protocol", words.protocol, "How pathstat connects: by a private socket, or by a loopback port")
      ->check(CLI::IsMember(protocol_words))
      ->option_text("unix|tcp");
  run->add_option("--threads", words.threads, "Processors that an analysis uses; all without it")
      ->check(CLI::Range(1, 256))
      ->option_text("N");
  run->add_option("--workdir", options.work_directory,
                  "Folder where pathstat works, kept after the run; without it one is made and removed")
      ->option_text("DIR");
  run->add_option("--program", options.program, "The pathstat program; the one beside pathdesk without it")
      ->option_text("PATH");
  run->add_flag("--verbose", options.verbose,
                "Shows the keys and arguments of messages too, and where pathstat starts and ends");
  run->footer(script_help());
}

/// The words of `export`.
CLI::App* add_export(CLI::App& app, ExportOptions& options) {
  auto* part = app.add_subcommand("export", "Writes frames and atoms of a trajectory or a model for other programs");
  part->add_option("FILE", options.file, "A trajectory with its model beside it, or a model")
      ->required()
      ->option_text(" ");
  part->add_option("-o,--output", options.output,
                   "File to write, its format by the extension: " + export_formats() + "; FILE as .pdb without it")
      ->option_text("OUT");
  part->add_option("--model", options.model, "The model of the trajectory; the one beside it without it")
      ->option_text("FILE");
  const auto count = CLI::Range(1, std::numeric_limits<std::int32_t>::max());
  auto* frame = part->add_option("--frame", options.frame, "This frame alone; all frames without it");
  frame->check(count)->option_text("N");
  part->add_option("--first", options.first, "The first frame")->check(count)->option_text("N")->excludes(frame);
  part->add_option("--last", options.last, "The last frame")->check(count)->option_text("N")->excludes(frame);
  part->add_option("--step", options.step, "Every Nth frame")->check(count)->option_text("N")->excludes(frame);
  part->add_option("--select", options.selection, "The atoms, as behind @select atoms; all without it")
      ->option_text("SELECTION");
  return part;
}

/// What the installation asks for, hidden from the help: texts made of the description of the program.
void add_made_texts(CLI::App& app) {
  const auto add = [&](const char* name, std::string (*make)(const CLI::App& app)) {
    const auto print = [&app, make] {
      fmt::print("{}", make(app));
      throw CLI::Success();
    };
    app.add_flag_callback(name, print)->group("");
  };
  add("--manual-page", [](const CLI::App& described) { return manual_page(described, PATHSTAT_VERSION); });
  add("--bash-completion", bash_completion);
}

/// The names of the options of a program and its parts.
std::vector<std::string> option_names(const CLI::App& app) {
  std::vector<std::string> names;
  for (const auto* option : app.get_options()) {
    for (const auto& name : option->get_lnames()) names.push_back("--" + name);
  }
  for (const auto* part : app.get_subcommands(nullptr)) {
    for (auto& name : option_names(*part)) names.push_back(std::move(name));
  }
  return names;
}

/// What was probably meant by arguments that could not be read: a file without the word that says what to do with it,
/// or a word or an option with a wrong letter. Empty if nothing comes near.
std::string meant_by(const CLI::App& app, std::span<char* const> arguments) {
  if (arguments.empty()) return {};
  const std::string first = arguments[0];
  std::vector<std::string> parts;
  for (const auto* part : app.get_subcommands(nullptr)) parts.push_back(part->get_name());
  if (!first.starts_with('-') && std::find(parts.begin(), parts.end(), first) == parts.end()) {
    if (auto meant = did_you_mean(first, parts); !meant.empty()) return fmt::format("there is no {}; {}", first, meant);
    switch (kind_of_file(first)) {
      case FileKind::text:
        return fmt::format("to run a script: pathdesk run {}", first);
      case FileKind::trajectory:
      case FileKind::model:
        return fmt::format("to see what a file holds: pathdesk info {}", first);
      default:
        return fmt::format("{} is neither a file nor any of {}", first, fmt::join(parts, ", "));
    }
  }
  const auto known = option_names(app);
  for (const std::string argument : arguments) {
    const auto name = argument.substr(0, argument.find('='));
    if (!name.starts_with("--") || std::find(known.begin(), known.end(), name) != known.end()) continue;
    if (auto meant = did_you_mean(name, known); !meant.empty()) {
      return fmt::format("there is no option {}; {}", name, meant);
    }
  }
  return {};
}

int main_of(int argc, char** argv) {
  CLI::App app(about, "pathdesk");
  app.set_version_flag("--version", "pathdesk " PATHSTAT_VERSION);
  app.require_subcommand(1);

  RunOptions options;
  RunWords words;
  std::string file, topic;
  auto* run = app.add_subcommand("run", "Runs a command script");
  run->add_option("SCRIPT", file, "The command script")->required()->option_text(" ");
  add_run_options(run, options, words);
  auto* shell = app.add_subcommand("shell", "Runs commands as they are typed, or a script from the standard input");
  add_run_options(shell, options, words);

  auto* panel = app.add_subcommand("panel", "Opens a page in the browser: the structure, the plots, and all commands");
  PanelOptions panel_options;
  bool no_open = false;
  panel->add_option("FILE", panel_options.file, "A script to run or a trajectory to load first")->option_text(" ");
  panel->add_flag("--no-open", no_open, "Only prints the address of the page");
  add_run_options(panel, options, words);

  auto* converse = app.add_subcommand("converse", "Runs lines for another program: JSON in, JSON out");
  add_run_options(converse, options, words);

  ExportOptions part;
  auto* exported = add_export(app, part);
  auto* help = app.add_subcommand("words", "Tells what the command words mean");
  help->add_option("WORD", topic, "A command word, or a text to look for")->option_text(" ");
  auto* info = app.add_subcommand("info", "Tells what a trajectory (.trj) or a model file (.qfx) holds");
  info->add_option("FILE", file, "The file")->required()->option_text(" ");
  ImportOptions import_options;
  auto* import = add_import_command(app, import_options);
  AnalyseWords analyse_words;
  auto* analyse = add_analyse_command(app, analyse_words);
  add_run_options(analyse, options, words);

  add_made_texts(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const bool wrong = error.get_exit_code() != 0;
    const auto meant = wrong ? meant_by(app, std::span(argv + 1, static_cast<std::size_t>(argc) - 1)) : std::string{};
    std::ostringstream asked, wrong_words;
    app.exit(error, asked, wrong_words);
    fmt::print("{}", asked.str());
    fmt::print(stderr, "{}", visible_lines(meant.empty() ? wrong_words.str() : "pathdesk: " + meant + '\n'));
    return wrong ? exit_code::not_run : exit_code::success;
  }
  options.formats = formats_of(words.formats);
  options.protocol = protocol_words.at(words.protocol);
  if (words.threads > 0) {
    set_thread_count(words.threads);
    ::setenv("MP_SET_NUMTHREADS", std::to_string(words.threads).c_str(), 1);  // pathstat inherits it
  }
  if (run->parsed()) return run_script(options, file);
  if (shell->parsed()) return run_shell(options);
  panel_options.open_browser = !no_open;
  if (panel->parsed()) return run_panel(options, panel_options);
  if (converse->parsed()) return run_converse(options);
  if (exported->parsed()) return run_export(part);
  if (info->parsed()) return print_file_info(file);
  if (import->parsed()) return run_import(std::move(import_options));
  if (analyse->parsed()) return run_analyse(options, std::move(analyse_words));
  fmt::print("{}", visible_lines(help_text(topic)));
  return exit_code::success;
}

/// Says it on the standard error stream; one that takes nothing ends nothing.
void tell(std::string_view words) { std::fputs(fmt::format("pathdesk: {}\n", visible_lines(words)).c_str(), stderr); }

/// The code of a run whose output got to where it was sent.
int with_output_sent(int code) {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return code;
  tell(std::string("the output cannot be written: ") + std::strerror(errno));
  return code == exit_code::success ? exit_code::not_run : code;
}

void tell_shortage() { std::fputs("pathdesk: there is not enough memory\n", stderr); }

/// Destructors of the JSON library want memory: where there is none, the program ends past all handlers, but with a
/// word, and without its folders.
[[noreturn]] void end_past_handlers() {
  try {
    if (std::current_exception()) throw;
  } catch (const std::bad_alloc&) {
    tell_shortage();
    PrivateDirectory::remove_all();
    std::_Exit(exit_code::not_run);
  } catch (...) {
    __gnu_cxx::__verbose_terminate_handler();
  }
  std::abort();
}

}  // namespace
}  // namespace pathstat::desk

int main(int argc, char** argv) {
  pathstat::open_standard_streams();
  pathstat::watch_memory();
  std::set_terminate(pathstat::desk::end_past_handlers);
  try {
    return pathstat::desk::with_output_sent(pathstat::desk::main_of(argc, argv));
  } catch (const std::bad_alloc&) {
    pathstat::desk::tell_shortage();
    return pathstat::desk::exit_code::not_run;
  } catch (const std::exception& error) {
    pathstat::desk::tell(error.what());
    return pathstat::desk::exit_code::not_run;
  }
}
