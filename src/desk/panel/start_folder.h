#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "desk/import/import_run.h"
#include "desk/script/script.h"

namespace pathstat::desk {

/// The folder in which the panel was started: pages reach no file outside of it.
class StartFolder {
 public:
  explicit StartFolder(const std::filesystem::path& folder);

  const std::filesystem::path& path() const { return folder_; }

  /// Where a path leads, its links resolved; the last parts of it need not exist. None if that is outside of the
  /// folder, or hangs on a link that leads to nothing.
  ///
  /// @param path  absolute, or relative to the folder
  std::optional<std::filesystem::path> inside(const std::filesystem::path& path) const;

  /// Why a line may not come from a page: a path in it leads outside. Empty if it may. Of a trajectory the files beside
  /// it that differ in what stands behind the last dot are read too, so they have to be inside as well.
  std::string refusal(const ScriptLine& line) const;

  struct Entry {
    std::string name;
    std::string kind;  ///< folder, trajectory, model, script or file
    std::uintmax_t bytes = 0;
  };
  /// What lies in a folder: folders first, then by name, hidden ones and those whose links lead outside left out; at
  /// most `most_entries`. None for a place outside, or that is no folder.
  std::optional<std::vector<Entry>> list(std::string_view folder) const;

  static constexpr std::size_t most_entries = 2000;

 private:
  std::string refusal_of_inputs(const ImportOptions& options) const;

  std::filesystem::path folder_;
};

}  // namespace pathstat::desk
