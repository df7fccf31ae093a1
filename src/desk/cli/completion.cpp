#include "desk/cli/completion.h"

#include <strings.h>

#include <algorithm>
#include <array>

#include "desk/advice/word_table.h"
#include "desk/messages/message.h"
#include "desk/script/script.h"
#include "desk/selection/selection.h"

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
      {{"@select", "atoms"}, [](const CompletionSources&) { return selection_words(); }, false},
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

Words all_candidates(const Words& before, const CompletionSources& sources) {
  if (before.empty()) return with(all_topics(), {"help", "quit"});
  for (const auto& row : followers()) {
    const auto& first = row.first_words;
    const bool begins = before.size() >= first.size() && std::equal(first.begin(), first.end(), before.begin());
    if (begins && (row.repeats || before.size() == first.size())) return row.words(sources);
  }
  return before[0].front() == '@' ? desk_words(before) : values_of(before[0], sources);
}

}  // namespace

Completion completion_of(const Words& before, std::string_view begun, const CompletionSources& sources) {
  if (before.size() == 1 && before[0] == "TRAJECTORY") return {.candidates = {}, .files = true};
  auto words = all_candidates(before, sources);
  std::erase_if(words, [&](const std::string& word) {
    return word.size() < begun.size() || ::strncasecmp(word.c_str(), begun.data(), begun.size()) != 0;
  });
  std::sort(words.begin(), words.end());
  words.erase(std::unique(words.begin(), words.end()), words.end());
  return {.candidates = std::move(words), .files = false};
}

}  // namespace pathstat::desk
