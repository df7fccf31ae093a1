#include "desk/panel/start_folder.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>

#include "desk/advice/trajectory_advice.h"
#include "desk/advice/word_table.h"
#include "desk/import/import_line.h"
#include "desk/link/folder_content.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

bool names_path(const std::string& word) {
  if (takes_path(word)) return true;
  const auto* row = find_command_help(word);
  return row && argument_shape(*row).form == ArgumentForm::path;
}

/// The name up to its last dot, which is what files that belong together share.
std::string bare_name(const std::string& name) { return name.substr(0, name.rfind('.')); }

std::string kind_name(const fs::path& path) {
  if (path.extension() == ".script") return "script";
  switch (kind_of_file(path)) {
    case FileKind::folder:
      return "folder";
    case FileKind::trajectory:
      return "trajectory";
    case FileKind::model:
      return "model";
    default:
      return "file";
  }
}

}  // namespace

StartFolder::StartFolder(const fs::path& folder) {
  std::error_code error;
  folder_ = fs::canonical(folder, error);
  if (error) folder_ = fs::absolute(folder).lexically_normal();
}

std::optional<fs::path> StartFolder::inside(const fs::path& path) const {
  std::error_code error;
  auto real = fs::weakly_canonical(folder_ / path, error);
  if (error) return std::nullopt;
  const auto [rest, unused] = std::mismatch(folder_.begin(), folder_.end(), real.begin(), real.end());
  if (rest != folder_.end()) return std::nullopt;
  // What does not exist stands there as it was written: a link in it was not resolved, or leads nowhere yet.
  for (auto part = real; part.has_relative_path(); part = part.parent_path()) {
    if (fs::is_symlink(part, error)) return std::nullopt;
  }
  return real;
}

std::string StartFolder::refusal_of_inputs(const ImportOptions& options) const {
  auto inputs = options.trajectories;
  inputs.push_back(options.topology);
  if (!options.energies.empty()) inputs.push_back(options.energies);
  for (const auto& path : inputs) {
    if (!inside(path)) {
      return fmt::format("{} is outside of {}, where this panel was started", path.string(), folder_.string());
    }
  }
  return {};
}

std::string StartFolder::refusal(const ScriptLine& line) const {
  if (line.kind == LineKind::import) return refusal_of_inputs(read_import_line(line.words, folder_).options);
  if (line.kind != LineKind::command || !names_path(line.word)) return {};
  const auto words = words_of(line.arguments);
  if (words.empty() || words[0].empty()) return {};
  // The path is judged as pathstat is given it. One that is not absolute then begins with a variable or the home
  // folder.
  const fs::path path = words_of(with_resolved_path(line.word, line.arguments, folder_)).at(0);
  if (!path.is_absolute() || !inside(path)) {
    return fmt::format("{} is outside of {}, where this panel was started", words[0], folder_.string());
  }
  std::error_code error;
  const auto name = path.filename().string();
  for (const auto& beside : names_in(path.parent_path(), error)) {
    const bool belongs = bare_name(beside) == bare_name(name) || bare_name(beside) == name;
    if (belongs && !inside(path.parent_path() / beside)) {
      return fmt::format("{}, which belongs to it, leads outside of {}", beside, folder_.string());
    }
  }
  return {};
}

std::optional<std::vector<StartFolder::Entry>> StartFolder::list(std::string_view folder) const {
  const auto path = inside(folder);
  std::error_code error;
  if (!path || !fs::is_directory(*path, error)) return std::nullopt;
  std::vector<Entry> entries;
  for (const auto& name : names_in(*path, error)) {
    const auto real = inside(*path / name);
    if (name.starts_with('.') || !real) continue;
    std::error_code unreadable;
    const bool folder_entry = fs::is_directory(*real, unreadable);
    if (!folder_entry && !fs::is_regular_file(*real, unreadable)) continue;
    const auto bytes = folder_entry ? 0 : fs::file_size(*real, unreadable);
    entries.push_back({name, folder_entry ? "folder" : kind_name(*real), unreadable ? 0 : bytes});
    if (entries.size() == most_entries) break;
  }
  std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
    return std::make_tuple(a.kind != "folder", std::cref(a.name)) <
           std::make_tuple(b.kind != "folder", std::cref(b.name));
  });
  return entries;
}

}  // namespace pathstat::desk
