#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace pathstat::desk {

/// What only a running desk can tell of what may be typed.
struct CompletionSources {
  std::function<std::vector<std::string>(const std::string& word)> allowed_values;  ///< of a command word
  std::function<std::vector<std::string>()> graphs;
  std::function<std::vector<std::string>()> models;
};

/// What may stand at one place of a line.
struct Completion {
  std::vector<std::string> candidates;  ///< texts without quotes
  bool files = false;                   ///< the name of a file stands there
};

/// How the word that is being typed can go on.
///
/// @param before  the words in front of it
/// @param begun   what there is of it, in upper or lower case
Completion completion_of(const std::vector<std::string>& before, std::string_view begun,
                         const CompletionSources& sources);

}  // namespace pathstat::desk
