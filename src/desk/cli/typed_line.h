#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "desk/script/script.h"

namespace pathstat::desk {

/// What a line means that somebody has typed. At most one member says something.
struct TypedLine {
  bool ends = false;               ///< quit or exit
  std::string help;                ///< what to show, without a line end behind it
  std::string problem;             ///< what is wrong with the line
  std::optional<ScriptLine> line;  ///< to run
};

/// Reads a line as the shell and the panel take it: as a script has it, or help, quit and exit, or the name of a
/// setting alone, which shows its value.
/// @param groups  groups of atoms that it may name
TypedLine read_typed_line(std::string_view text, int number, const AtomGroups& groups = {});

}  // namespace pathstat::desk
