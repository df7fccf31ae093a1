#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "desk/advice/word_table.h"

namespace pathstat::desk {

/// Command words that belong together.
struct WordGroup {
  std::string_view name;
  std::string_view about;  ///< what else people call it, for whoever looks for a word
  std::vector<const CommandHelp*> words;
};

/// All words by what they are for; each stands in one group.
std::span<const WordGroup> word_groups();

}  // namespace pathstat::desk
