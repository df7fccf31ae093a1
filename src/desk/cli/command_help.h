#pragma once

#include <span>
#include <string>
#include <string_view>

namespace pathstat::desk {

/// What a user is told of one command word.
struct CommandHelp {
  std::string_view word;
  std::string_view arguments;  ///< "none", "yes or no", "one of A, B", or in words
  std::string_view meaning;
};

/// All command words of the process, in the order of its own table.
std::span<const CommandHelp> command_helps();

/// Null for a word that there is not.
const CommandHelp* find_command_help(std::string_view word);

/// What there is to say of a topic: a command word or the first word of a line that begins with @; for another text the
/// words that have it in their name or meaning, in upper or lower case; for an empty one all words in short.
std::string help_text(std::string_view topic);

}  // namespace pathstat::desk
