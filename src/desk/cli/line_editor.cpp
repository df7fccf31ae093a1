#include "desk/cli/line_editor.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <utility>

#include <readline/history.h>
#include <readline/readline.h>

#include "desk/script/interrupts.h"
#include "desk/script/script.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

constexpr int most_lines_kept = 2000;

// Readline calls back through plain functions, so what they need lives here.
LineEditor::Completer completer;
std::optional<std::string> typed;
bool line_ended = false;

void take_line(char* line) {
  line_ended = true;
  if (line) {
    typed = line;
    std::free(line);
  }
  rl_callback_handler_remove();
}

char* copied(const std::string& text) { return ::strdup(text.c_str()); }

std::size_t shared_start(const std::string& a, const std::string& b) {
  return static_cast<std::size_t>(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin());
}

/// The candidates as readline takes them: first what they all begin with, last a null.
char** as_matches(const std::vector<std::string>& candidates) {
  auto** matches = static_cast<char**>(std::calloc(candidates.size() + 2, sizeof(char*)));
  if (!matches) return nullptr;
  std::string start = candidates.front();
  for (std::size_t k = 0; k < candidates.size(); ++k) {
    start.resize(shared_start(start, candidates[k]));
    matches[k + 1] = copied(candidates[k]);
  }
  matches[0] = copied(start);
  if (candidates.size() == 1) {
    std::free(matches[1]);
    matches[1] = nullptr;
  }
  return matches;
}

char** complete(const char* begun, int start, int) {
  const auto before = words_of(std::string_view(rl_line_buffer, static_cast<std::size_t>(start)));
  // In a quoted text, the quote that opens it stands in front of the place and makes no word of its own.
  const bool in_quotes = start > 0 && std::strchr(rl_completer_quote_characters, rl_line_buffer[start - 1]);
  const auto words =
      in_quotes ? words_of(std::string_view(rl_line_buffer, static_cast<std::size_t>(start - 1))) : before;
  auto completion = completer(words, begun);
  if (completion.files) return nullptr;
  rl_attempted_completion_over = 1;
  auto& candidates = completion.candidates;
  if (candidates.empty()) return nullptr;
  const bool quotes = std::any_of(candidates.begin(), candidates.end(),
                                  [](const std::string& word) { return word.find(' ') != std::string::npos; });
  if (quotes && !in_quotes) {
    for (auto& candidate : candidates) candidate.insert(0, 1, '"').push_back('"');
  }
  return as_matches(candidates);
}

}  // namespace

fs::path history_path() {
  const char* state = std::getenv("XDG_STATE_HOME");
  const char* home = std::getenv("HOME");
  if (state && *state == '/') return fs::path(state) / "pathdesk" / "history";
  return home && *home == '/' ? fs::path(home) / ".local/state/pathdesk/history" : fs::path{};
}

LineEditor::LineEditor(Completer the_completer, fs::path history) : history_(std::move(history)) {
  completer = std::move(the_completer);
  rl_readline_name = "pathdesk";
  rl_catch_signals = 0;
  rl_attempted_completion_function = complete;
  rl_basic_word_break_characters = " \t";
  rl_completer_quote_characters = "\"'";
  rl_filename_quote_characters = " ";
  using_history();
  stifle_history(most_lines_kept);
  if (!history_.empty()) read_history(history_.c_str());
}

LineEditor::~LineEditor() {
  completer = {};
  if (history_.empty()) return;
  // A history that cannot be kept is no reason to trouble the user.
  std::error_code ignored;
  fs::create_directories(history_.parent_path(), ignored);
  if (write_history(history_.c_str()) == 0) {
    fs::permissions(history_, fs::perms::owner_read | fs::perms::owner_write, ignored);
  }
}

std::optional<std::string> LineEditor::read(const char* prompt) {
  typed.reset();
  line_ended = false;
  rl_callback_handler_install(prompt, take_line);
  while (!line_ended) {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    const int ready = ::poll(&input, 1, -1);
    if (interrupts() >= 2) {
      rl_callback_handler_remove();
      break;
    }
    if (interrupts() == 1) {
      forget_interrupts();
      rl_callback_sigcleanup();
      rl_replace_line("", 0);
      std::fputs("^C\n", rl_outstream);
      rl_on_new_line();
      rl_redisplay();
    }
    if (ready > 0) rl_callback_read_char();
  }
  if (typed && typed->find_first_not_of(" \t") != std::string::npos) {
    const auto* last = history_length > 0 ? history_get(history_base + history_length - 1) : nullptr;
    if (!last || *typed != last->line) add_history(typed->c_str());
  }
  return std::exchange(typed, std::nullopt);
}

}  // namespace pathstat::desk
