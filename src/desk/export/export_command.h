#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace pathstat::desk {

/// What is exported, and where to.
struct ExportOptions {
  std::filesystem::path file;         ///< a trajectory or a model
  std::filesystem::path model;        ///< of a trajectory; empty: the one beside it
  std::filesystem::path output;       ///< empty: the name of the file, as .pdb, in the present folder
  std::optional<std::int32_t> frame;  ///< this one alone
  std::int32_t first = 1, step = 1;   ///< frames from the first on
  std::optional<std::int32_t> last;   ///< none: to the end of the file
  std::string selection = "all";      ///< is made in the first frame that is exported and holds for all
};

/// Writes a part of a model or a trajectory in a format that other programs read, by the extension of the output. What
/// was written, and what the format does not hold, is told on standard output, trouble on standard error.
/// @return an exit code
int run_export(const ExportOptions& options);

}  // namespace pathstat::desk
