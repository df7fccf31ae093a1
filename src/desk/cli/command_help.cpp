#include "desk/cli/command_help.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <vector>

#include "desk/script/script.h"

namespace pathstat::desk {
namespace {

/// One line a word: word, arguments and meaning with tabs between.
constexpr std::string_view list =
#include <command_help.inc>
    ;

constexpr std::size_t width_of_words = 32;
constexpr std::size_t words_in_a_row = 3;

std::string_view take_to(std::string_view& text, char mark) {
  const auto end = std::min(text.find(mark), text.size());
  const auto taken = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return taken;
}

std::vector<CommandHelp> read_list() {
  std::vector<CommandHelp> rows;
  for (auto rest = list; !rest.empty();) {
    auto line = take_to(rest, '\n');
    CommandHelp row;
    row.word = take_to(line, '\t');
    row.arguments = take_to(line, '\t');
    row.meaning = line;
    rows.push_back(row);
  }
  return rows;
}

std::string folded(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
  return lower;
}

std::string desk_line(const DeskLineHelp& row) { return fmt::format("{}\n    {}\n", row.usage, row.meaning); }

std::string all_in_short() {
  std::string text = "Command words (help WORD tells more, help TEXT looks for words that are about TEXT):\n";
  const auto rows = command_helps();
  const auto lines = (rows.size() + words_in_a_row - 1) / words_in_a_row;
  for (std::size_t line = 0; line < lines; ++line) {
    std::string words = " ";
    for (auto k = line; k < rows.size(); k += lines) words += fmt::format(" {:<{}}", rows[k].word, width_of_words);
    text += words.substr(0, words.find_last_not_of(' ') + 1) + "\n";
  }
  return text + "\nLines for pathdesk itself:\n" + desk_lines_help();
}

std::string matching(std::string_view topic) {
  const auto wanted = folded(topic);
  std::string text;
  for (const auto& row : command_helps()) {
    if (folded(fmt::format("{} {}", row.word, row.meaning)).find(wanted) == std::string::npos) continue;
    text += fmt::format("  {:<{}} {}\n", row.word, width_of_words, row.meaning);
  }
  return text.empty() ? fmt::format("There is no word about {}; help lists all words.\n", topic) : text;
}

}  // namespace

std::span<const CommandHelp> command_helps() {
  static const auto rows = read_list();
  return rows;
}

const CommandHelp* find_command_help(std::string_view word) {
  const auto rows = command_helps();
  const auto row = std::find_if(rows.begin(), rows.end(), [&](const CommandHelp& each) { return each.word == word; });
  return row == rows.end() ? nullptr : &*row;
}

std::string help_text(std::string_view topic) {
  if (topic.empty()) return all_in_short();
  std::string text;
  for (const auto& row : desk_line_helps()) {
    if (row.name == topic || row.name.starts_with(fmt::format("{} ", topic))) text += desk_line(row);
  }
  if (!text.empty()) return text;
  std::string word(topic);
  std::transform(word.begin(), word.end(), word.begin(), [](unsigned char c) { return std::toupper(c); });
  const auto* row = find_command_help(word);
  return row ? fmt::format("{}\n  {}\n  Arguments: {}\n", row->word, row->meaning, row->arguments) : matching(topic);
}

}  // namespace pathstat::desk
