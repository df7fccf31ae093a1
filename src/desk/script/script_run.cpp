#include "desk/script/script_run.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <fstream>
#include <set>
#include <sstream>

#include "desk/graphs/plot_operations.h"
#include "desk/link/core_session.h"
#include "desk/link/work_directory.h"
#include "desk/ops/model_operations.h"
#include "desk/ops/user_interface.h"
#include "desk/script/console.h"
#include "desk/script/interrupts.h"
#include "desk/script/script.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

double seconds_since(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

std::string indented(std::string_view text) {
  std::string all = "    ";
  for (const char c : text) all += c == '\n' ? std::string("\n    ") : std::string(1, c);
  return all;
}

/// A message as the list of a failed command's messages shows it.
std::string in_full(const Message& message) {
  std::string line = message.key.empty() ? message.text : fmt::format("{}: {}", message.key, message.text);
  std::string arguments;
  for (const auto& argument : message.arguments) arguments += (arguments.empty() ? "" : ", ") + shown(argument);
  return arguments.empty() ? line : fmt::format("{} ({})", line, arguments);
}

/// More items of an answer than this stand on a line each.
constexpr std::size_t most_on_a_line = 6;

/// The items of all values of an answer: a value is a list with commas between and "\," for a comma in an item.
std::vector<std::string> items_of(const std::vector<std::string>& values) {
  std::vector<std::string> items;
  for (const auto& value : values) {
    items.emplace_back();
    for (std::size_t k = 0; k < value.size(); ++k) {
      if (value[k] == ',') {
        items.emplace_back();
      } else {
        if (value[k] == '\\' && k + 1 < value.size() && value[k + 1] == ',') ++k;
        items.back() += value[k];
      }
    }
  }
  for (auto& item : items) item.erase(item.find_last_not_of(' ') + 1);
  std::erase(items, std::string{});
  return items;
}

/// A few items on one line; many on a line each, set in as they come.
std::string spelled(const std::vector<std::string>& values) {
  const auto items = items_of(values);
  if (items.empty()) return "(nothing)";
  std::string all;
  for (const auto& item : items) {
    if (items.size() > most_on_a_line)
      all += "\n    " + item;
    else
      all += (all.empty() ? "" : ", ") + item.substr(item.find_first_not_of(' '));
  }
  return all;
}

/// One run: the desk's parts, wired together.
class ScriptRun {
 public:
  ScriptRun(const RunOptions& options, const Script& script, const fs::path& work, const fs::path& private_folder)
      : options_(options),
        script_(script),
        work_(work),
        private_folder_(private_folder),
        folder_(fs::absolute(options.script).parent_path()),
        interface_(events()),
        session_(
            server_, [this](std::string_view line) { take_line(line); }, [] { return interrupts() >= 2; }) {
    record_.script = options.script.filename();
    record_.program = options.program;
    record_.started = fmt::format("{:%Y-%m-%d %H:%M:%S}", fmt::localtime(std::time(nullptr)));
    model_.set_folder(work);
    model_.set_problem_sink([this](const std::string& text) { take_problem(text); });
    register_data_model_operations(server_, model_);
    register_analysis_operations(server_, model_);
    register_interface_operations(server_, interface_);
    register_plot_operations(server_, store_);
  }

  int run() {
    const auto start = Clock::now();
    const auto error = session_.start({options_.program, work_, private_folder_, options_.protocol});
    if (!error.empty()) {
      console_.complain("pathdesk: " + error);
      return interrupts() > 0 ? exit_code::interrupted : exit_code::process_lost;
    }
    for (const auto& line : script_.lines) {
      if (!run_line(line)) break;
    }
    console_.clear();
    record_.seconds = seconds_since(start);
    const auto problems = write_output(record_, store_,
                                       {.folder = options_.output,
                                        .formats = options_.formats,
                                        .results = result_files(work_, work_started_, tables_),
                                        .scratch = private_folder_});
    session_.finish();
    for (const auto& problem : problems) console_.complain("pathdesk: " + problem);
    if (exit_ == exit_code::success && !problems.empty()) exit_ = exit_code::command_failed;
    console_.print(fmt::format("Results are in {}", options_.output.string()));
    return exit_;
  }

 private:
  InterfaceEvents events() {
    return {.message = [this](const Message& message) { take_message(message); },
            .progress = [this](double fraction) { console_.show_progress(fraction); },
            .status = [this](const std::string& text) { console_.show_status(text); },
            .returned = [this](const std::string& text) { take_returned(text); },
            .interrupted = [] { return interrupts() > 0; }};
  }

  void take_message(const Message& message) {
    record_.note(message);
    const bool held = message.kind == MessageKind::error || message.kind == MessageKind::warning;
    if (held)
      held_.push_back(message);
    else
      console_.print(message.text);
  }

  void take_problem(const std::string& text) { take_message({MessageKind::error, 2, {}, {}, text}); }

  void take_line(std::string_view line) {
    record_.note(PrintedLine{std::string(line)});
    console_.print(line);
  }

  void take_returned(const std::string& text) {
    record_.note(ReturnedText{text});
    console_.print(text);
  }

  /// Runs one line. @return false if the run ends here
  bool run_line(const ScriptLine& line) {
    record_.steps.push_back({.line = line.number, .text = line.text, .status = {}, .notes = {}, .graphs = {}});
    held_.clear();
    console_.set_activity(line.text);
    const auto start = Clock::now();
    const auto problem = line.kind == LineKind::command ? run_command(line) : run_desk_line(line);
    console_.clear();
    auto& step = record_.steps.back();
    step.seconds = seconds_since(start);
    step.failed = !problem.empty();
    for (const auto graph : store_.shown_graphs()) {
      if (seen_graphs_.insert(graph).second) step.graphs.push_back(graph);
    }
    if (step.failed) {
      report_failure(line, problem);
    } else {
      for (const auto& message : held_) {
        console_.complain((message.kind == MessageKind::error ? "error: " : "warning: ") + message.text);
      }
    }
    return goes_on(step.failed);
  }

  void report_failure(const ScriptLine& line, const std::string& problem) {
    if (exit_ == exit_code::success) exit_ = exit_code::command_failed;
    console_.complain(fmt::format("{}:{}: {}", options_.script.string(), line.number, problem));
    for (const auto& note : record_.steps.back().notes) {
      const auto* message = std::get_if<Message>(&note);
      if (message && message->kind != MessageKind::table) console_.complain(indented(in_full(*message)));
    }
  }

  bool goes_on(bool failed) {
    if (interrupts() > 0) {
      exit_ = exit_code::interrupted;
      record_.ending = "Interrupted by the user.";
      console_.complain("pathdesk: interrupted; what is done is kept");
    } else if (session_.lost()) {
      if (stopped_) return false;
      exit_ = exit_code::process_lost;
      record_.ending = session_.loss();
    } else if (failed && stop_on_error_) {
      record_.ending = "Ended by a failed line.";
    } else {
      return true;
    }
    return false;
  }

  std::string run_command(const ScriptLine& line) {
    const auto arguments = with_resolved_path(line.word, line.arguments, folder_);
    if (line.word.size() > longest_text || arguments.size() > longest_text) return "this line is too long";
    const auto status = session_.command(line.word, arguments);
    if (!status) {
      stopped_ = line.word == "STOP" && session_.ended_well();
      return stopped_ ? std::string{} : fmt::format("{} did not end: {}", line.word, session_.loss());
    }
    record_.steps.back().status = *status;
    if (line.word == "STATISTICS_FILENAME" && *status == 0) note_table_name();
    if (*status == 0) return {};
    std::string hint;
    if (std::any_of(line.word.begin(), line.word.end(), [](unsigned char c) { return std::islower(c); })) {
      hint = "; command words are written in capitals";
    }
    return fmt::format("{} failed with status {}{}", line.word, *status, hint);
  }

  /// The process completes the name of its table file; the file is to be found under the name that it tells.
  void note_table_name() {
    const std::string word = "STATISTICS_FILENAME";
    const auto answers = session_.request(std::span(&word, 1));
    if (!answers || answers->front().values.empty()) return;
    const auto& name = answers->front().values.front();
    tables_.insert(work_ / name.substr(0, name.find_last_not_of(' ') + 1));
  }

  std::string run_desk_line(const ScriptLine& line) {
    switch (line.kind) {
      case LineKind::select_atoms:
        return select_atoms(line.words);
      case LineKind::select_models:
        return model_.select_models(line.words);
      case LineKind::answer:
        return settle_answer(line.words);
      case LineKind::stop_on_error:
        stop_on_error_ = line.words[0] == "yes";
        return {};
      case LineKind::request:
        return request(line.words);
      case LineKind::command:
        break;
    }
    return {};
  }

  std::string settle_answer(const std::vector<std::string>& words) {
    const auto* row = find_message(words[0]);
    if (row && row->kind == MessageKind::dialog) {
      interface_.settle_answer(words[0], std::stoi(words[1]));
      return {};
    }
    std::string known;
    for (const auto& each : message_rows()) {
      const bool asks = each.kind == MessageKind::dialog && each.text.find('|') == std::string_view::npos;
      const std::vector<MessageArgument> names(each.arguments.size(), std::string("..."));
      if (asks) known += fmt::format("\n    {}: {}", each.key, filled(each.text, names));
    }
    return fmt::format("no dialog has the key {}; these have:{}", words[0], known);
  }

  std::string select_atoms(const std::vector<std::string>& words) {
    std::vector<std::string> values;
    for (std::size_t k = 1; k < words.size(); ++k) {
      std::istringstream parts(words[k]);
      for (std::string part; std::getline(parts, part, ',');) {
        if (!part.empty()) values.push_back(part);
      }
    }
    auto problem = model_.select_atoms(words[0] == "ids" ? "id" : words[0], values);
    if (problem.empty()) take_returned(fmt::format("{} atoms are selected", model_.selected_atoms()));
    return problem;
  }

  std::string request(const std::vector<std::string>& words) {
    const auto answers = session_.request(words);
    if (!answers) return "the request was not answered: " + session_.loss();
    for (std::size_t k = 0; k < words.size(); ++k) {
      const auto& answer = (*answers)[k];
      auto text = fmt::format("{} = {}", words[k], spelled(answer.values));
      if (!answer.ranges.empty()) text += fmt::format("\n  of: {}", spelled(answer.ranges));
      take_returned(text);
    }
    return {};
  }

  const RunOptions& options_;
  const Script& script_;
  fs::path work_, private_folder_, folder_;
  fs::file_time_type work_started_ = fs::file_time_type::clock::now() - std::chrono::seconds(1);
  Console console_;
  RunRecord record_;
  DataModel model_;
  GraphStore store_;
  OperationServer server_;
  UserInterface interface_;
  CoreSession session_;
  std::vector<Message> held_;  ///< errors and warnings of the line that runs
  std::set<std::int32_t> seen_graphs_;
  std::set<fs::path> tables_;
  bool stop_on_error_ = true;
  bool stopped_ = false;
  int exit_ = exit_code::success;
};

int complain(const std::string& problem) {
  fmt::print(stderr, "pathdesk: {}\n", problem);
  return exit_code::not_run;
}

std::string read_file(const fs::path& path, std::string& text) {
  std::error_code error;
  if (!fs::exists(path, error)) return fmt::format("there is no script {}", path.string());
  if (fs::is_directory(path, error)) return fmt::format("{} is a folder, not a script", path.string());
  std::ifstream file(path, std::ios::binary);
  text.assign(std::istreambuf_iterator<char>(file), {});
  return file ? std::string{} : fmt::format("the script {} cannot be read", path.string());
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

std::string make_writable(const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (!fs::is_directory(folder))
    return fmt::format("the folder {} cannot be made: {}", folder.string(), error.message());
  return ::access(folder.c_str(), W_OK | X_OK) == 0 ? std::string{}
                                                    : fmt::format("the folder {} cannot be written", folder.string());
}

}  // namespace

int run_script(const RunOptions& given) {
  RunOptions options = given;
  std::string text, error;
  if (error = read_file(options.script, text); !error.empty()) return complain(error);
  const Script script = read_script(text);
  for (const auto& problem : script.problems) fmt::print(stderr, "{}:{}\n", options.script.string(), problem);
  if (!script.problems.empty()) return exit_code::not_run;
  if (error = find_program(options.program); !error.empty()) return complain(error);
  if (error = make_writable(options.output); !error.empty()) return complain(error);

  const PrivateDirectory private_folder(error);
  if (!error.empty()) return complain(error);
  const auto work =
      options.work_directory.empty() ? private_folder.path() / "work" : fs::absolute(options.work_directory);
  if (error = make_writable(work); !error.empty()) return complain(error);

  watch_interrupts();
  return ScriptRun(options, script, work, private_folder.path()).run();
}

}  // namespace pathstat::desk
