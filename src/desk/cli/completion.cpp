#include "desk/cli/completion.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <optional>
#include <span>

#include "desk/advice/trajectory_advice.h"
#include "desk/advice/word_table.h"
#include "desk/messages/message.h"
#include "desk/script/script.h"
#include "desk/selection/selection.h"
#include "desk/selection/selection_parts.h"
#include "desk/selection/selection_words.h"

namespace pathstat::desk {
namespace {

using Words = std::vector<std::string>;

Words command_words() {
  Words words;
  for (const auto& row : command_helps()) words.emplace_back(row.word);
  return words;
}

/// The next words of the lines for the desk that begin as this one does.
Words desk_words(const Words& before) {
  Words words;
  for (const auto& row : desk_line_helps()) {
    const auto name = words_of(row.name);
    if (before.size() < name.size() && std::equal(before.begin(), before.end(), name.begin())) {
      words.push_back(name[before.size()]);
    }
  }
  return words;
}

Words dialog_keys() {
  Words keys;
  for (const auto& row : message_rows()) {
    const bool asks = row.kind == MessageKind::dialog && row.text.find('|') == std::string_view::npos;
    if (asks) keys.emplace_back(row.key);
  }
  return keys;
}

Words all_topics() {
  auto words = command_words();
  for (const auto& word : desk_words({})) words.push_back(word);
  return words;
}

Words with(Words words, std::initializer_list<const char*> more) {
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

/// What stands behind the first words of a line that is not a command.
struct Followers {
  std::vector<std::string> first_words;
  Words (*words)(const CompletionSources& sources);
  bool repeats;  ///< may stand there more than once
};

const std::array<Followers, 11>& followers() {
  static const std::array<Followers, 11> rows{{
      {{"help"}, [](const CompletionSources&) { return all_topics(); }, false},
      {{"@request"}, [](const CompletionSources&) { return command_words(); }, true},
      {{"@answer"}, [](const CompletionSources&) { return dialog_keys(); }, false},
      {{"@step"},
       [](const CompletionSources&) {
         return Words{"forwards", "backwards"};
       },
       false},
      {{"@stop-on-error"},
       [](const CompletionSources&) {
         return Words{"yes", "no"};
       },
       false},
      {{"@measure"},
       [](const CompletionSources&) {
         return Words{"distance", "angle", "torsion", "plane", "inversion", "list", "remove"};
       },
       false},
      {{"@measure", "inversion"},
       [](const CompletionSources&) {
         return Words{"ijkl", "jilk", "umbrella"};
       },
       false},
      {{"@measure", "remove"}, [](const CompletionSources&) { return Words{"all"}; }, false},
      {{"@pick"}, [](const CompletionSources& sources) { return sources.graphs(); }, false},
      {{"@overlay"}, [](const CompletionSources& sources) { return sources.graphs(); }, true},
      {{"@select", "models"},
       [](const CompletionSources& sources) {
         return with(sources.models(), {"all", "none"});
       },
       true},
  }};
  return rows;
}

Words values_of(const std::string& word, const CompletionSources& sources) {
  const auto* help = find_command_help(word);
  if (!help || help->arguments == "none" || takes_path(word)) return {};
  auto values = sources.allowed_values(word);
  return values.empty() ? listed_values(help->arguments) : values;
}

/// How a selection goes on behind its words so far: with a new part, or behind one.
Words selection_goes_on(std::span<const std::string> behind, const CompletionSources& sources) {
  const auto* last = behind.empty() ? nullptr : &behind.back();
  if (last && *last == "same") {
    Words kinds;
    for (const auto& row : same_words()) kinds.emplace_back(row.word);
    return kinds;
  }
  if (last && *last == "bonded") return {"to"};
  if (behind.size() > 1 && behind[behind.size() - 2] == "within") return {"of"};
  if (behind.size() > 1 && behind[behind.size() - 2] == "same") return {"as"};
  if (last && !last->ends_with('(') && !stands_before_selection(*last)) return {"and", "or"};
  auto words = selection_words();
  for (auto& group : sources.groups()) words.push_back(std::move(group));
  return words;
}

/// The words of the selection in a line so far; nothing in a line that holds none there.
std::optional<std::span<const std::string>> selection_in(const Words& before) {
  if (before.size() >= 2 && before[0] == "@select" && before[1] == "atoms") return std::span(before).subspan(2);
  if (before.size() >= 3 && before[0] == "@group") return std::span(before).subspan(3);
  return std::nullopt;
}

Words all_candidates(const Words& before, const CompletionSources& sources) {
  if (before.empty()) return with(all_topics(), {"help", "quit"});
  if (const auto behind = selection_in(before)) return selection_goes_on(*behind, sources);
  for (const auto& row : followers()) {
    const auto& first = row.first_words;
    const bool begins = before.size() >= first.size() && std::equal(first.begin(), first.end(), before.begin());
    if (begins && (row.repeats || before.size() == first.size())) return row.words(sources);
  }
  return before[0].front() == '@' ? desk_words(before) : values_of(before[0], sources);
}

}  // namespace

Completion completion_of(const Words& before, std::string_view begun, const CompletionSources& sources) {
  const auto* help = before.size() == 1 ? find_command_help(before[0]) : nullptr;
  if (help && argument_shape(*help).form == ArgumentForm::path) {
    return {.candidates = {}, .files = true, .fits = help->word == "TRAJECTORY" ? is_trajectory_name : nullptr};
  }
  if (before.size() > 1 && before[0] == "@import") return {.candidates = {}, .files = true, .fits = nullptr};
  auto words = all_candidates(before, sources);
  std::erase_if(words, [&](const std::string& word) {
    return word.size() < begun.size() || ::strncasecmp(word.c_str(), begun.data(), begun.size()) != 0;
  });
  std::sort(words.begin(), words.end());
  words.erase(std::unique(words.begin(), words.end()), words.end());
  return {.candidates = std::move(words)};
}

}  // namespace pathstat::desk
