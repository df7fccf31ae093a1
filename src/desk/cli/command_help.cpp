#include "desk/cli/command_help.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <vector>

#include "desk/advice/nearest.h"
#include "desk/advice/word_groups.h"
#include "desk/script/script.h"

namespace pathstat::desk {
namespace {

constexpr std::size_t width_of_words = 32;
constexpr std::size_t words_in_a_row = 3;

std::string folded(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
  return lower;
}

std::string desk_line(const DeskLineHelp& row) { return fmt::format("{}\n    {}\n", row.usage, row.meaning); }

/// The words of a group in columns, read down.
std::string in_columns(const std::vector<const CommandHelp*>& rows) {
  std::string text;
  const auto lines = (rows.size() + words_in_a_row - 1) / words_in_a_row;
  for (std::size_t line = 0; line < lines; ++line) {
    std::string words = " ";
    for (auto k = line; k < rows.size(); k += lines) words += fmt::format(" {:<{}}", rows[k]->word, width_of_words);
    text += words.substr(0, words.find_last_not_of(' ') + 1) + "\n";
  }
  return text;
}

std::string all_in_short() {
  std::string text = "Command words (help WORD tells more, help TEXT looks for words that are about TEXT):\n";
  for (const auto& group : word_groups()) text += fmt::format("\n{}\n{}", group.name, in_columns(group.words));
  return text + "\nLines for pathdesk itself:\n" + desk_lines_help();
}

std::string help_of(const CommandHelp& row) {
  auto text = fmt::format("{}\n  {}\n  Arguments: {}\n", row.word, row.meaning, row.arguments);
  if (!row.needs.empty()) text += fmt::format("  Needs: {}\n", row.needs);
  return text;
}

std::string nothing_about(std::string_view topic) {
  std::vector<std::string> words;
  for (const auto& row : command_helps()) words.emplace_back(row.word);
  for (const auto& group : word_groups()) {
    for (auto& word : words_of(group.about)) words.push_back(std::move(word));
  }
  const auto meant = did_you_mean(topic, words);
  return fmt::format("There is no word about {}{}; help lists all words.\n", topic, meant.empty() ? "" : ": " + meant);
}

bool holds(std::string_view text, const std::string& folded_part) {
  return folded(text).find(folded_part) != std::string::npos;
}

/// The words that are about a topic, by their groups: all of a group that is about it, else those that name it.
std::string matching(std::string_view topic) {
  const auto wanted = folded(topic);
  std::string text;
  for (const auto& group : word_groups()) {
    const bool all = holds(group.name, wanted) || holds(group.about, wanted);
    std::string words;
    for (const auto* row : group.words) {
      if (!all && !holds(row->word, wanted) && !holds(row->meaning, wanted)) continue;
      words += fmt::format("  {:<{}} {}\n", row->word, width_of_words, row->meaning);
    }
    if (!words.empty()) text += fmt::format("{}{}\n{}", text.empty() ? "" : "\n", group.name, words);
  }
  return text.empty() ? nothing_about(topic) : text;
}

}  // namespace

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
  return row ? help_of(*row) : matching(topic);
}

}  // namespace pathstat::desk
