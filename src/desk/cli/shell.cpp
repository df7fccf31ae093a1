#include "desk/cli/shell.h"

#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <optional>
#include <string>

#include "desk/advice/nearest.h"
#include "desk/cli/line_editor.h"
#include "desk/cli/typed_line.h"
#include "desk/script/file_content.h"
#include "desk/script/interrupts.h"

namespace pathstat::desk {
namespace {

constexpr const char* prompt = "pathdesk> ";
constexpr std::string_view welcome =
    "Commands run as they are typed; help lists them, the tab key completes them, Ctrl-C interrupts one, Ctrl-D ends.";

/// Takes a line for an answer, without editing and history. @return none at the end of the input, and when the
/// interrupt key is hit
std::optional<std::string> read_answer() {
  std::string line;
  for (;;) {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    const int ready = ::poll(&input, 1, -1);
    if (interrupts() > 0) return std::nullopt;
    if (ready < 0) continue;
    char c = 0;
    if (::read(STDIN_FILENO, &c, 1) != 1) return std::nullopt;
    if (c == '\n' || c == '\r') return line;
    line += c;
  }
}

/// The choice that an answer names by its number or by how it begins; 0 if it names none.
std::int32_t choice_named(const std::string& answer, const Question& question) {
  const auto count = static_cast<std::int32_t>(question.choices.size());
  std::int32_t number = 0, found = 0;
  const auto [end, status] = std::from_chars(answer.data(), answer.data() + answer.size(), number);
  if (status == std::errc{} && end == answer.data() + answer.size()) return number <= count ? std::max(number, 0) : 0;
  for (std::int32_t k = count; k >= 1; --k) {
    const auto& name = question.choices[static_cast<std::size_t>(k) - 1];
    if (same_in_any_case(std::string_view(name).substr(0, answer.size()), answer)) found = k;
  }
  return found;
}

/// Asks a question of the process. Who turns away from it takes the last choice, which changes the least.
std::optional<std::int32_t> ask(Console& console, const Question& question) {
  const auto count = static_cast<std::int32_t>(question.choices.size());
  if (count == 0) return std::nullopt;
  const auto usual = question.unsettled < 1 ? count : question.unsettled;
  std::string text = question.text;
  for (std::int32_t k = 1; k <= count; ++k) {
    text += fmt::format("\n  {}  {}", k, question.choices[static_cast<std::size_t>(k) - 1]);
  }
  console.print(text);
  for (;;) {
    fmt::print("Choice [{}]: ", usual);
    std::fflush(stdout);
    const auto answer = read_answer();
    if (!answer) {
      console.print("");
      return count;
    }
    if (answer->empty()) return usual;
    if (const auto choice = choice_named(*answer, question); choice > 0) return choice;
    console.complain(fmt::format("type a number from 1 to {}, or how a choice begins", count));
  }
}

/// Lines that are typed, one after the other.
class Shell {
 public:
  explicit Shell(LineRunner& runner) : runner_(runner) {}

  int run() {
    runner_.console().print(welcome);
    runner_.answer_with([this](const Question& question) { return ask(runner_.console(), question); });
    LineEditor editor(
        prompt, [this](const auto& before, auto begun) { return completion_of(before, begun, sources()); },
        history_path());
    while (!ended_) {
      const auto line = editor.read();
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
            .models = [this] { return runner_.model_names(); },
            .groups = [this] { return group_names(runner_.groups()); }};
  }

  void take(const std::string& text) {
    const auto typed = read_typed_line(text, ++number_, runner_.groups());
    ended_ = typed.ends;
    if (!typed.help.empty()) runner_.console().print(typed.help);
    if (!typed.problem.empty()) runner_.console().complain(typed.problem);
    if (typed.line) follow(runner_.run(*typed.line));
  }

  /// Goes on with another process where this one was lost. @return false if there is none to be had
  bool goes_on() {
    runner_.console().complain("pathstat was lost: another one is started");
    const auto problem = runner_.start_again();
    if (problem.empty()) return true;
    runner_.console().complain("pathdesk: no other pathstat: " + problem);
    return false;
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
        if (interrupts() < 2 && !runner_.lost()) {
          runner_.console().complain("interrupted; what is done is kept");
          return forget_interrupts();
        }
        code_ = exit_code::interrupted;
        break;
      case LineEnd::lost:
        if (goes_on()) return;
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
    std::string text;
    const auto why = read_script_text(STDIN_FILENO, text);
    if (why.empty()) return run_lines(options, source, text);
    fmt::print(stderr, "pathdesk: the standard input cannot be read: {}\n", why);
    return exit_code::not_run;
  }
  source.place.clear();
  source.stop_on_error = false;
  return with_runner(options, source, [](LineRunner& runner) { return Shell(runner).run(); });
}

}  // namespace pathstat::desk
