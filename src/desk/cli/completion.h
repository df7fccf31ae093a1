#pragma once

#include <filesystem>
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
  std::function<std::vector<std::string>()> groups = [] { return std::vector<std::string>{}; };  ///< of atoms
};

/// What may stand at one place of a line.
struct Completion {
  std::vector<std::string> candidates;                        ///< texts without quotes
  bool files = false;                                         ///< the name of a file stands there ...
  bool (*fits)(const std::filesystem::path& file) = nullptr;  ///< ... of those that fit; of any without it
};

/// How the word that is being typed can go on.
///
/// @param before  the words in front of it
/// @param begun   what there is of it, in upper or lower case
Completion completion_of(const std::vector<std::string>& before, std::string_view begun,
                         const CompletionSources& sources);

}  // namespace pathstat::desk
