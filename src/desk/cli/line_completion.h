#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "desk/cli/completion.h"

namespace pathstat::desk {

using Completer = std::function<Completion(const std::vector<std::string>& before, std::string_view begun)>;

/// What the completion key does to a line.
struct LineCompletion {
  std::size_t from;                  ///< what stands behind this place is replaced ...
  std::string text;                  ///< ... by this, with the marks that it needs
  std::vector<std::string> choices;  ///< how the word can go on, when there is more than one way
};

/// @param line  up to the place that is being typed at
LineCompletion complete_line(std::string_view line, const Completer& completer);

/// The paths that begin as this text does, sorted; a folder ends in a slash. A leading ~ is the home folder, and hidden
/// names are for those who type their dot.
/// @param fits  which files are meant, folders aside; null for all
std::vector<std::string> paths_beginning(std::string_view begun,
                                         bool (*fits)(const std::filesystem::path& file) = nullptr);

}  // namespace pathstat::desk
