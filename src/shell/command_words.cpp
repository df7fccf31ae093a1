#include "shell/command_words.h"

namespace pathstat {

const CommandWord* find_command_word(std::span<const CommandWord> words, std::string_view word) {
  const auto name = word.substr(0, word.find(' '));
  const auto found = std::ranges::lower_bound(words, name, {}, &CommandWord::word);
  return found != words.end() && found->word == name ? &*found : nullptr;
}

}  // namespace pathstat
