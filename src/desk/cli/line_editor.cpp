#include "desk/cli/line_editor.h"

#include <fmt/format.h>
#include <histedit.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <fstream>
#include <system_error>
#include <utility>

#include "desk/messages/visible_text.h"
#include "desk/script/interrupts.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

constexpr int most_lines_kept = 2000;
constexpr int end_of_input = 0, no_character = -1, one_character = 1;

int terminal_columns() {
  winsize size{};
  return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

/// Waits for a letter of one or more bytes; an interrupt ends the wait.
int read_character(EditLine*, wchar_t* character) {
  std::mbstate_t state{};
  while (true) {
    // The wait ends by itself now and then, for an interrupt that came just before it.
    pollfd input{STDIN_FILENO, POLLIN, 0};
    const int ready = ::poll(&input, 1, 500);
    if (interrupts() > 0) return no_character;
    if (ready <= 0) continue;
    char byte = 0;
    if (::read(STDIN_FILENO, &byte, 1) != 1) return end_of_input;
    const auto used = std::mbrtowc(character, &byte, 1, &state);
    if (used <= 1) return one_character;
    if (used == static_cast<std::size_t>(-1)) state = {};  // not a letter of this terminal
  }
}

void show_choices(std::vector<std::string> choices) {
  std::size_t widest = 0;
  for (auto& choice : choices) choice = visible(choice);
  for (const auto& choice : choices) widest = std::max(widest, choice.size() + 2);
  const auto in_a_row = std::max<std::size_t>(1, static_cast<std::size_t>(terminal_columns()) / widest);
  std::string text = "\n";
  for (std::size_t k = 0; k < choices.size(); ++k) {
    const bool ends_row = (k + 1) % in_a_row == 0 || k + 1 == choices.size();
    text += ends_row ? choices[k] + "\n" : fmt::format("{:<{}}", choices[k], widest);
  }
  std::fputs(text.c_str(), stdout);
  std::fflush(stdout);
}

}  // namespace

struct LineEditor::Parts {
  Parts(std::string the_prompt, Completer the_completer, fs::path the_history)
      : prompt(std::move(the_prompt)), completer(std::move(the_completer)), history_file(std::move(the_history)) {
    std::setlocale(LC_CTYPE, "");  // the letters that the terminal sends
    el_set(edit, EL_CLIENTDATA, this);
    el_set(
        edit, EL_PROMPT, +[](EditLine* line) { return of(line).prompt.data(); });
    el_set(edit, EL_GETCFN, read_character);
    el_set(edit, EL_EDITOR, "emacs");
    el_set(edit, EL_HIST, history, lines);
    // The function for narrow characters would keep copies of the two texts for ever.
    el_wset(
        edit, EL_ADDFN, L"complete", L"completes the word",
        +[](EditLine* line, wint_t) { return of(line).complete(); });
    for (const auto& [key, meaning] : keys) el_set(edit, EL_BIND, key, meaning, nullptr);
    el_source(edit, nullptr);  // what the user has bound otherwise
    HistEvent event;
    history(lines, &event, H_SETSIZE, most_lines_kept);
    history(lines, &event, H_SETUNIQUE, 1);
    std::ifstream kept(history_file);
    for (std::string line; std::getline(kept, line);) history(lines, &event, H_ENTER, line.c_str());
  }

  ~Parts() {
    el_end(edit);
    if (!history_file.empty()) keep_history();
    history_end(lines);
  }

  static Parts& of(EditLine* line) {
    void* parts = nullptr;
    el_get(line, EL_CLIENTDATA, &parts);
    return *static_cast<Parts*>(parts);
  }

  /// A history that cannot be kept is no reason to trouble the user.
  void keep_history() const {
    std::error_code ignored;
    fs::create_directories(history_file.parent_path(), ignored);
    const auto beside = fs::path(history_file) += ".new";
    std::ofstream file(beside);
    fs::permissions(beside, fs::perms::owner_read | fs::perms::owner_write, ignored);
    HistEvent event;
    for (int more = history(lines, &event, H_LAST); more == 0; more = history(lines, &event, H_PREV)) {
      file << event.str << '\n';
    }
    file.close();
    if (file) fs::rename(beside, history_file, ignored);
    fs::remove(beside, ignored);
  }

  unsigned char complete() const {
    const auto* line = el_line(edit);
    const std::string_view typed(line->buffer, static_cast<std::size_t>(line->cursor - line->buffer));
    const auto completion = complete_line(typed, completer);
    const auto old = std::string(typed.substr(completion.from));
    const auto letters = std::mbstowcs(nullptr, old.c_str(), 0);
    if (letters == static_cast<std::size_t>(-1)) return CC_ERROR;
    if (completion.text != old) {
      el_deletestr(edit, static_cast<int>(letters));
      return el_insertstr(edit, completion.text.c_str()) == 0 ? CC_REFRESH : CC_ERROR;
    }
    if (completion.choices.empty()) return CC_ERROR;
    show_choices(completion.choices);
    return CC_REDISPLAY;
  }

  /// Keys beyond those that the editor binds by itself.
  struct Key {
    const char *key, *meaning;
  };
  static constexpr std::array<Key, 8> keys{{{"^I", "complete"},
                                            {"^R", "em-inc-search-prev"},
                                            {"\033[1~", "ed-move-to-beg"},
                                            {"\033[4~", "ed-move-to-end"},
                                            {"\033[3~", "ed-delete-next-char"},
                                            {"\033[1;5C", "em-next-word"},
                                            {"\033[1;5D", "ed-prev-word"},
                                            {"^W", "ed-delete-prev-word"}}};

  std::string prompt;
  Completer completer;
  fs::path history_file;
  EditLine* edit = el_init("pathdesk", stdin, stdout, stderr);
  History* lines = history_init();
};

fs::path history_path() {
  const char* state = std::getenv("XDG_STATE_HOME");
  const char* home = std::getenv("HOME");
  if (state && *state == '/') return fs::path(state) / "pathdesk" / "history";
  return home && *home == '/' ? fs::path(home) / ".local/state/pathdesk/history" : fs::path{};
}

LineEditor::LineEditor(std::string prompt, Completer completer, fs::path history)
    : parts_(std::make_unique<Parts>(std::move(prompt), std::move(completer), std::move(history))) {}

LineEditor::~LineEditor() = default;

std::optional<std::string> LineEditor::read() {
  while (true) {
    el_resize(parts_->edit);
    // The editor would show the prompt first: what is typed in between would be taken for a line of a plain terminal,
    // where the key that ends the input is lost.
    el_set(parts_->edit, EL_PREP_TERM, 1);
    int count = 0;
    const char* typed = el_gets(parts_->edit, &count);
    if (interrupts() == 1) {
      forget_interrupts();
      std::fputs("^C\n", stdout);
      continue;
    }
    if (interrupts() > 1 || !typed || count <= 0) return std::nullopt;
    std::string line(typed, static_cast<std::size_t>(count));
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
    HistEvent event;
    if (line.find_first_not_of(" \t") != std::string::npos) history(parts_->lines, &event, H_ENTER, line.c_str());
    return line;
  }
}

}  // namespace pathstat::desk
