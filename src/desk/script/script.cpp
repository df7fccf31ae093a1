#include "desk/script/script.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>

#include "desk/advice/nearest.h"
#include "desk/import/import_line.h"
#include "desk/messages/visible_text.h"
#include "desk/model/marked_measure.h"

namespace pathstat::desk {
namespace {

using Words = std::vector<std::string>;

constexpr std::string_view byte_order_mark = "\xef\xbb\xbf";
constexpr std::string_view blanks = " \t\r\f\v";

std::string_view stripped(std::string_view text) {
  const auto first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool is_blank(char c) { return blanks.find(c) != std::string_view::npos; }

/// The mark that ends what this one opens; 0 for a character that opens nothing.
char closing_mark(char c) { return c == '"' || c == '\'' ? c : c == '{' ? '}' : '\0'; }

std::string_view without_comment(std::string_view line) {
  char inside = '\0';
  for (std::size_t k = 0; k < line.size(); ++k) {
    const bool begins_word = k == 0 || is_blank(line[k - 1]);
    if (inside != '\0') {
      if (line[k] == inside) inside = '\0';
    } else if (begins_word && line[k] == '#') {
      return line.substr(0, k);
    } else if (begins_word) {
      inside = closing_mark(line[k]);
    }
  }
  return line;
}

std::string joined(const Words& words, std::string_view between) {
  std::string text;
  for (const auto& word : words) text.append(text.empty() ? "" : between).append(word);
  return text;
}

template <class T>
std::optional<T> number_of(const std::string& word) {
  T number{};
  const auto [end, status] = std::from_chars(word.data(), word.data() + word.size(), number);
  return status == std::errc{} && end == word.data() + word.size() ? std::optional(number) : std::nullopt;
}

bool is_count(const std::string& word) { return number_of<int>(word).value_or(0) >= 1; }
bool is_coordinate(const std::string& word) { return std::isfinite(number_of<double>(word).value_or(NAN)); }

bool fits_step(const Words& words) {
  const bool has_count = words.size() == 2 && is_count(words[1]);
  return (words.size() == 1 || has_count) && (words[0] == "forwards" || words[0] == "backwards");
}

bool fits_pick(const Words& words) {
  return (words.size() == 2 || words.size() == 3) && std::all_of(words.begin() + 1, words.end(), is_coordinate);
}

struct Token {
  std::size_t first = 0, end = 0;  ///< what lies between the marks, if it has any
  std::size_t next = 0;            ///< behind the closing mark
  char mark = '\0';                ///< that opens it; 0 for a word without
};

std::optional<Token> next_token(std::string_view text, std::size_t from) {
  while (from < text.size() && is_blank(text[from])) ++from;
  if (from >= text.size()) return std::nullopt;
  if (const char closing = closing_mark(text[from])) {
    const auto end = std::min(text.find(closing, from + 1), text.size());
    return Token{from + 1, end, std::min(end + 1, text.size()), text[from]};
  }
  const auto end = std::min(text.find_first_of(blanks, from), text.size());
  return Token{from, end, end};
}

/// One kind of line for the desk.
struct DeskLine {
  DeskLineHelp help;
  LineKind kind;
  bool (*fits)(const Words& words);
};

constexpr std::array desk_lines{
    DeskLine{
        {"@import", "@import NAME TOPOLOGY TRAJECTORY ... [OPTION ...]",
         "brings the files of another program in as NAME.trj and NAME.qfx, unless they are there and newer, and loads "
         "them; takes --energies LOG and the other options of pathdesk import"},
        LineKind::import,
        [](const Words& words) { return words.size() > 1; }},
    DeskLine{{"@select atoms", "@select atoms SELECTION",
              "which atoms are selected: element O and not within 3 of name NA, resname WAT, ids 1,2-5 and more"},
             LineKind::select_atoms,
             [](const Words& words) { return !words.empty(); }},
    DeskLine{
        {"@group", "@group NAME = SELECTION", "gives a selection a name, for selections and measures on later lines"},
        LineKind::group,
        [](const Words& words) { return words.size() > 2 && words[1] == "="; }},
    DeskLine{{"@select models", "@select models all | none | NAME ...", "which models are selected"},
             LineKind::select_models,
             [](const Words& words) { return !words.empty(); }},
    DeskLine{{"@answer", "@answer KEY CHOICE", "what to answer to the dialog with that key; choices count from 1"},
             LineKind::answer,
             [](const Words& words) { return words.size() == 2 && is_count(words[1]); }},
    DeskLine{{"@request", "@request WORD ...", "prints the values of words and what they may be"},
             LineKind::request,
             [](const Words& words) { return !words.empty(); }},
    DeskLine{{"@show model", "@show model", "prints the current model, as the shown frame has it"},
             LineKind::show_model,
             [](const Words& words) { return words.empty(); }},
    DeskLine{{"@step", "@step forwards | backwards [N]",
              "steps through the frames as a held button does: N steps, or fewer where stepping ends"},
             LineKind::step,
             fits_step},
    DeskLine{{"@pick", "@pick GRAPH X [Y]", "shows the frame of the point at X of a graph, as a click on it does"},
             LineKind::pick,
             fits_pick},
    DeskLine{{"@overlay", "@overlay NAME GRAPH GRAPH ...",
              "one picture of the curves of several graphs, named as the report shows them"},
             LineKind::overlay,
             [](const Words& words) { return words.size() > 2; }},
    DeskLine{{"@measure list", "@measure list", "lists the measures of the current model with their present values"},
             LineKind::list_measures,
             [](const Words& words) { return words.empty(); }},
    DeskLine{{"@measure remove", "@measure remove N | all", "removes the measure with that number in the list, or all"},
             LineKind::remove_measures,
             [](const Words& words) { return words.size() == 1 && (words[0] == "all" || is_count(words[0])); }},
    DeskLine{
        {"@measure",
         "@measure distance ID ID | angle ID ID ID | torsion ID ID ID ID | plane ID ID ID ID ID ID | "
         "inversion ijkl|jilk|umbrella ID ID ID ID",
         "marks a measure in the current model; an ID is an atom's number or NAME:RESIDUE, +a-b behind it names an "
         "image; a group stands for its atoms"},
        LineKind::measure,
        [](const Words& words) { return may_be_measure(words); }},
    DeskLine{{"@detach", "@detach [WORD ARGUMENTS]",
              "ends this run and leaves pathstat behind, which works on the command or waits for the next"},
             LineKind::detach,
             [](const Words& words) { return words.empty() || words[0].front() != '@'; }},
    DeskLine{{"@attach", "@attach [PROCESS]",
              "takes over a pathstat that was left behind, with its models and what it is doing; comes first in a run"},
             LineKind::attach,
             [](const Words& words) { return words.empty() || (words.size() == 1 && is_count(words[0])); }},
    DeskLine{{"@stop-on-error", "@stop-on-error yes | no",
              "whether a failed line ends the run; yes at the start, but no where lines are typed"},
             LineKind::stop_on_error,
             [](const Words& words) { return words.size() == 1 && (words[0] == "yes" || words[0] == "no"); }},
};

constexpr auto helps = [] {
  std::array<DeskLineHelp, desk_lines.size()> all{};
  for (std::size_t k = 0; k < all.size(); ++k) all[k] = desk_lines[k].help;
  return all;
}();

/// The line whose name is nearest to how these words begin; the end of a name may be missing.
const DeskLineHelp& nearest(const Words& words) {
  const auto away = [&](const DeskLineHelp& row) {
    const auto count = std::min(words.size(), words_of(row.name).size());
    auto begun = joined(Words(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(count)), " ");
    begun.resize(std::min(begun.size(), 2 * row.name.size()));  // the rest of a long word brings it no nearer
    return distance(begun, row.name.substr(0, begun.size()));
  };
  std::array<std::size_t, helps.size()> distances{};
  std::transform(helps.begin(), helps.end(), distances.begin(), away);
  return helps.at(static_cast<std::size_t>(std::min_element(distances.begin(), distances.end()) - distances.begin()));
}

/// What stands behind the first words of a line, as it stands.
std::string_view behind_words(std::string_view text, std::size_t count) {
  std::size_t at = 0;
  for (; count > 0; --count) at = next_token(text, at)->next;
  return stripped(text.substr(at));
}

/// Reads the selection in a line. @return what is wrong with it, or nothing
std::string read_chosen_atoms(ScriptLine& line, std::size_t words_of_name, AtomGroups& groups) {
  const bool named = line.kind == LineKind::group;
  if (named) {
    if (auto problem = why_no_group_name(line.words[0]); !problem.empty()) return problem;
  }
  auto [selection, problem] = read_selection(behind_words(line.text, words_of_name + (named ? 2 : 0)), groups);
  line.selection = std::move(selection);
  if (named && problem.empty()) groups.insert_or_assign(line.words[0], line.selection);
  return problem;
}

/// Reads a line that begins with @. @return what is wrong with it, or nothing
std::string read_desk_line(ScriptLine& line, AtomGroups& groups) {
  const auto words = words_of(line.text);
  for (const auto& row : desk_lines) {
    const auto name = words_of(row.help.name);
    if (words.size() < name.size() || !std::equal(name.begin(), name.end(), words.begin())) continue;
    line.kind = row.kind;
    line.words.assign(words.begin() + static_cast<std::ptrdiff_t>(name.size()), words.end());
    if (!row.fits(line.words)) return fmt::format("this line is written {}", row.help.usage);
    if (line.kind == LineKind::import) return read_import_line(line.words).problem;
    const bool chooses = line.kind == LineKind::select_atoms || line.kind == LineKind::group;
    return chooses ? read_chosen_atoms(line, name.size(), groups) : std::string{};
  }
  return fmt::format("there is no line {}; did you mean {}?", shortened(joined(words, " "), 60), nearest(words).usage);
}

void read_command(ScriptLine& line) {
  const auto end = std::min(line.text.find_first_of(blanks), line.text.size());
  line.word = line.text.substr(0, end);
  line.arguments = stripped(std::string_view(line.text).substr(end));
}

constexpr std::array path_commands{std::string_view("TRAJECTORY"),       std::string_view("STATISTICS_FILENAME"),
                                   std::string_view("VOLUME"),           std::string_view("TABLE"),
                                   std::string_view("IMPORT_STRUCTURE"), std::string_view("EXPORT_STRUCTURE")};

}  // namespace

std::vector<std::string> words_of(std::string_view text) {
  Words words;
  for (auto token = next_token(text, 0); token; token = next_token(text, token->next)) {
    words.emplace_back(text.substr(token->first, token->end - token->first));
  }
  return words;
}

LastWord last_word(std::string_view text) {
  LastWord last{.before = {}, .begun = {}, .from = text.size(), .mark = '\0'};
  for (auto token = next_token(text, 0); token; token = next_token(text, token->next)) {
    auto word = std::string(text.substr(token->first, token->end - token->first));
    if (token->end < text.size()) {
      last.before.push_back(std::move(word));
      continue;
    }
    last.begun = std::move(word);
    last.mark = token->mark;
    last.from = token->first - (token->mark != '\0' ? 1 : 0);
  }
  return last;
}

Script read_script(std::string_view text, int first_number, AtomGroups groups) {
  Script script;
  script.groups = std::move(groups);
  if (text.starts_with(byte_order_mark)) text.remove_prefix(byte_order_mark.size());
  for (int number = first_number; !text.empty(); ++number) {
    const auto end = std::min(text.find('\n'), text.size());
    const auto content = stripped(without_comment(text.substr(0, end)));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (content.empty()) continue;
    ScriptLine line{number, LineKind::command, std::string(content), {}, {}, {}};
    std::string problem;
    if (content.find('\0') != std::string_view::npos) {
      problem = "this is not a line of text";
    } else if (content.front() == '@') {
      problem = read_desk_line(line, script.groups);
    } else {
      read_command(line);
    }
    if (!problem.empty()) script.problems.push_back(fmt::format("{}: {}", number, problem));
    script.lines.push_back(std::move(line));
  }
  return script;
}

bool takes_path(std::string_view word) {
  return std::find(path_commands.begin(), path_commands.end(), word) != path_commands.end();
}

std::string in_quotes(std::string_view text) {
  const auto holds = [&](char mark) { return text.find(mark) != std::string_view::npos; };
  const char mark = !holds('"') ? '"' : !holds('\'') ? '\'' : '{';
  return fmt::format("{}{}{}", mark, text, closing_mark(mark));
}

std::string with_resolved_path(std::string_view word, std::string_view arguments, const std::filesystem::path& folder) {
  if (!takes_path(word)) return std::string(arguments);
  const auto token = next_token(arguments, 0);
  if (!token || token->first == token->end) return std::string(arguments);
  const auto name = arguments.substr(token->first, token->end - token->first);
  if (name.front() == '$' || name.front() == '~') return std::string(arguments);
  const auto path = (folder / name).lexically_normal().string();
  return in_quotes(path) + std::string(arguments.substr(token->next));
}

std::span<const DeskLineHelp> desk_line_helps() { return helps; }

std::string desk_lines_help() {
  std::string help;
  for (const auto& row : helps) help += fmt::format("  {}\n      {}\n", row.usage, row.meaning);
  return help;
}

}  // namespace pathstat::desk
