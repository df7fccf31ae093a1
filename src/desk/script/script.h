#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "desk/selection/selection.h"

namespace pathstat::desk {

/// What a line of a script does.
enum class LineKind {
  command,
  import,
  select_atoms,
  group,
  select_models,
  answer,
  request,
  show_model,
  step,
  pick,
  overlay,
  measure,
  list_measures,
  remove_measures,
  stop_on_error,
  detach,
  attach
};

struct ScriptLine {
  int number = 0;  ///< in the file, from 1
  LineKind kind = LineKind::command;
  std::string text;                ///< as it stands, without its comment
  std::string word;                ///< of a command
  std::string arguments;           ///< of a command, as they stand
  std::vector<std::string> words;  ///< of a line for the desk, behind what names it
  SelectionPointer selection{};    ///< of a line that holds one
};

struct Script {
  std::vector<ScriptLine> lines;
  std::vector<std::string> problems;  ///< sentences that begin with the line number; a script with any is not run
  AtomGroups groups;                  ///< those that lines may name behind the last one
};

/// Reads a script: one command or one line for the desk (@) a line, empty lines, and comments that begin with a #
/// outside quotes at the start or behind a blank.
/// @param first_number  the number of the first line of the text
/// @param groups        groups of atoms that lines in front of it have named
Script read_script(std::string_view text, int first_number = 1, AtomGroups groups = {});

/// The words of a text: separated by blanks, a word with blanks between quotes.
std::vector<std::string> words_of(std::string_view text);

/// The word that is being typed at the end of a text.
struct LastWord {
  std::vector<std::string> before;  ///< the words in front of it
  std::string begun;                ///< what there is of it, empty behind a blank
  std::size_t from;                 ///< where it begins in the text, with the mark that opens it
  char mark;                        ///< that opens it, or 0
};
LastWord last_word(std::string_view text);

/// The mark of a text that opens one in quotes or braces and does not close it; 0 if all are closed.
inline char open_mark(std::string_view text) { return last_word(text).mark; }

/// A text as one word of a line, between quotes that do not occur in it; in braces where both kinds do.
std::string in_quotes(std::string_view text);

/// The arguments of a command with a path in them, a relative one taken as relative to `folder`. Other commands, and
/// names that begin with a variable or the home folder, keep their arguments.
std::string with_resolved_path(std::string_view word, std::string_view arguments, const std::filesystem::path& folder);

/// True for a command whose first argument is a path.
bool takes_path(std::string_view word);

/// What a user is told of one kind of line that begins with @.
struct DeskLineHelp {
  std::string_view name;  ///< its first words
  std::string_view usage;
  std::string_view meaning;
};
std::span<const DeskLineHelp> desk_line_helps();

/// Two lines of help for each kind of line that begins with @.
std::string desk_lines_help();

}  // namespace pathstat::desk
