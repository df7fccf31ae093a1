#include "desk/import/input_files.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <vector>

#include "desk/advice/nearest.h"
#include "desk/link/folder_content.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> files_in(const fs::path& folder) {
  std::error_code error, kind;
  auto names = names_in(folder, error);
  std::erase_if(names, [&](const std::string& name) { return fs::is_directory(folder / name, kind); });
  std::ranges::sort(names);
  return names;
}

std::string about_input(const fs::path& path) {
  std::error_code error;
  if (fs::is_directory(path, error)) return fmt::format("{} is a folder, and no file to import", path.string());
  if (fs::exists(path, error)) return {};
  const auto folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
  if (!fs::is_directory(folder, error)) {
    return fmt::format("{} does not exist: there is no folder {}", path.string(), folder.string());
  }
  const auto meant = did_you_mean(path.filename().string(), files_in(folder));
  return fmt::format("{} does not exist{}{}", path.string(), meant.empty() ? "" : "; ", meant);
}

}  // namespace

std::string about_inputs(const ImportOptions& options) {
  auto problem = about_input(options.topology);
  for (const auto& path : options.trajectories) {
    if (problem.empty()) problem = about_input(path);
  }
  if (problem.empty() && !options.energies.empty()) problem = about_input(options.energies);
  return problem;
}

}  // namespace pathstat::desk
