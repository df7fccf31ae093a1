#include "desk/cli/shell.h"

#include <fmt/format.h>
#include <unistd.h>

#include <iostream>
#include <iterator>
#include <string>

#include "desk/cli/command_help.h"
#include "desk/cli/line_editor.h"
#include "desk/script/interrupts.h"

namespace pathstat::desk {
namespace {

constexpr const char* prompt = "pathdesk> ";
constexpr std::string_view welcome =
    "Commands run as they are typed; help lists them, the tab key completes them, Ctrl-C interrupts one, Ctrl-D ends.";

/// Lines that are typed, one after the other.
class Shell {
 public:
  explicit Shell(LineRunner& runner) : runner_(runner) {}

  int run() {
    runner_.console().print(welcome);
    LineEditor editor([this](const auto& before, auto begun) { return completion_of(before, begun, sources()); },
                      history_path());
    while (!ended_) {
      const auto line = editor.read(prompt);
      if (!line) {
        if (interrupts() < 2) runner_.console().print("");
        break;
      }
      take(*line);
    }
    return code_;
  }

 private:
  CompletionSources sources() {
    return {.allowed_values = [this](const std::string& word) { return runner_.allowed_values(word); },
            .graphs = [this] { return runner_.graph_names(); },
            .models = [this] { return runner_.model_names(); }};
  }

  void take(const std::string& text) {
    ++number_;
    const auto words = words_of(text);
    if (!words.empty() && words[0] == "help") {
      const auto help = help_text(words.size() > 1 ? words[1] : std::string_view{});
      runner_.console().print(std::string_view(help).substr(0, help.size() - 1));
    } else if (words.size() == 1 && (words[0] == "quit" || words[0] == "exit")) {
      ended_ = true;
    } else {
      const auto script = read_script(text, number_);
      for (const auto& problem : script.problems) {
        runner_.console().complain(problem.substr(problem.find(' ') + 1));
      }
      if (script.problems.empty() && !script.lines.empty()) follow(runner_.run(script.lines[0]));
    }
  }

  void follow(LineEnd end) {
    switch (end) {
      case LineEnd::done:
        return;
      case LineEnd::failed:
        if (!runner_.stops_on_error()) return;
        code_ = exit_code::command_failed;
        break;
      case LineEnd::interrupted:
        if (interrupts() < 2) {
          runner_.console().complain("interrupted; what is done is kept");
          return forget_interrupts();
        }
        code_ = exit_code::interrupted;
        break;
      case LineEnd::lost:
        code_ = exit_code::process_lost;
        runner_.end_with(runner_.loss());
        break;
      case LineEnd::stopped:
        break;
    }
    ended_ = true;
  }

  LineRunner& runner_;
  int number_ = 0;
  int code_ = exit_code::success;
  bool ended_ = false;
};

}  // namespace

int run_shell(const RunOptions& options) {
  LineSource source{.name = "shell",
                    .place = "standard input",
                    .folder = std::filesystem::current_path(),
                    .stop_on_error = true,
                    .pictures_at_once = true};
  if (::isatty(STDIN_FILENO) == 0) {
    const std::string text(std::istreambuf_iterator<char>(std::cin), {});
    return run_lines(options, source, text);
  }
  source.place.clear();
  source.stop_on_error = false;
  return with_runner(options, source, [](LineRunner& runner) { return Shell(runner).run(); });
}

}  // namespace pathstat::desk
