#include "desk/cli/typed_line.h"

#include <fmt/format.h>

#include <utility>

#include "desk/advice/word_table.h"
#include "desk/cli/command_help.h"

namespace pathstat::desk {
namespace {

/// True for the name of a setting alone: who types it wants to see what it is.
bool shows_value(const std::vector<std::string>& words) {
  const auto* row = words.size() == 1 ? find_command_help(words[0]) : nullptr;
  return row && is_setting(*row);
}

}  // namespace

TypedLine read_typed_line(std::string_view text, int number, const AtomGroups& groups) {
  TypedLine typed;
  const auto words = words_of(text);
  if (!words.empty() && words[0] == "help") {
    typed.help = help_text(words.size() > 1 ? words[1] : std::string_view{});
    typed.help.pop_back();
    return typed;
  }
  typed.ends = words.size() == 1 && (words[0] == "quit" || words[0] == "exit");
  if (typed.ends) return typed;
  auto script =
      read_script(shows_value(words) ? fmt::format("@request {}", words[0]) : std::string(text), number, groups);
  for (const auto& problem : script.problems) {
    typed.problem += (typed.problem.empty() ? "" : "\n") + problem.substr(problem.find(' ') + 1);
  }
  if (typed.problem.empty() && !script.lines.empty()) typed.line = std::move(script.lines[0]);
  return typed;
}

}  // namespace pathstat::desk
