#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace pathstat::desk {

/// What a user is told of one command word.
struct CommandHelp {
  std::string_view word;
  std::string_view arguments;  ///< "none", "yes or no", "one of A, B", or in words
  std::string_view meaning;
  std::string_view needs;        ///< what must hold before it runs; empty where nothing must
  std::string_view application;  ///< the key of the application that has the word
};

/// All command words of the process, in the order of its own table.
std::span<const CommandHelp> command_helps();

/// Null for a word that there is not.
const CommandHelp* find_command_help(std::string_view word);

/// The application that has a word; that of the analysis for a word that there is not.
std::string_view application_of(std::string_view word);

/// What the argument of a word looks like.
enum class ArgumentForm { none, flag, choice, integer, number, path, text, names };

struct ArgumentShape {
  ArgumentForm form = ArgumentForm::text;
  std::size_t most = 1;  ///< of arguments
};

/// The shape of a word's arguments, from how the table tells them in words.
ArgumentShape argument_shape(const CommandHelp& row);

/// The values that the help of a word lists: those of "yes or no" and of "one of A, B".
std::vector<std::string> listed_values(std::string_view arguments);

/// True for a word whose value is a time.
bool takes_time(const CommandHelp& row);

/// True for a word that keeps what it is given, which a new process has to be given again.
bool is_setting(const CommandHelp& row);

}  // namespace pathstat::desk
