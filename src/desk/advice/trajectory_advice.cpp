#include "desk/advice/trajectory_advice.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <vector>

#include "desk/advice/nearest.h"
#include "desk/link/folder_content.h"
#include "support/record_file.h"
#include "trajectory/binary_header.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

constexpr std::array trajectory_extensions{".trj", ".qtrj", ".atrj", ".arc", ".his"};
constexpr std::array binary_extensions{".trj", ".qtrj", ".atrj"};
constexpr std::string_view called = "trajectories are called .trj, .qtrj, .atrj, .arc or .his";

template <class Extensions>
bool has_extension(const fs::path& path, const Extensions& extensions) {
  const auto extension = path.extension().string();
  return std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
}

bool holds_zero_bytes(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::array<char, 4096> start{};
  file.read(start.data(), start.size());
  const char* end = start.data() + file.gcount();
  return std::find<const char*>(start.data(), end, '\0') != end;
}

/// The names of the trajectories in a folder, as a user writes them: without an extension if the wanted one has none.
std::vector<std::string> trajectories_in(const fs::path& folder, bool with_extensions) {
  std::vector<std::string> names;
  std::error_code error;
  for (const fs::path path : names_in(folder, error)) {
    if (is_trajectory_name(path)) names.push_back((with_extensions ? path.filename() : path.stem()).string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string about_missing(const fs::path& path) {
  constexpr std::size_t most_names = 8;
  const auto folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
  std::error_code error;
  if (!fs::is_directory(folder, error)) return fmt::format("there is no folder {}", folder.string());
  if (fs::is_symlink(path, error)) return fmt::format("{} is a link that leads to no file", path.string());
  const auto names = trajectories_in(folder, path.has_extension());
  if (auto meant = did_you_mean(path.filename().string(), names); !meant.empty()) return meant;
  if (names.empty()) return fmt::format("no trajectory lies in {}; {}", folder.string(), called);
  std::string list;
  for (std::size_t k = 0; k < std::min(names.size(), most_names); ++k) list += (k ? ", " : "") + names[k];
  return fmt::format("{} holds {}{}", folder.string(), list, names.size() > most_names ? " and more" : "");
}

std::string about_binary(const fs::path& path, std::size_t model_atoms) {
  const auto name = path.filename().string();
  RecordReader file;
  BinaryHeader head;
  if (file.open(path.string()) != RecordStatus::ok || !read_binary_header(file, head)) {
    return fmt::format("{} is no trajectory: {}", name,
                       holds_zero_bytes(path) ? "its head is damaged, or cut off" : "it holds text");
  }
  const auto atoms = static_cast<std::size_t>(std::max({head.movable, head.total, 0}));
  if (model_atoms != 0 && atoms != model_atoms) {
    return fmt::format("the trajectory is of {} atoms, and the model has {}", atoms, model_atoms);
  }
  return {};
}

/// The file that a path or a stem means: itself, or the one that an extension makes of it.
fs::path file_meant(const fs::path& path) {
  std::error_code error;
  if (is_trajectory_name(path)) return path;
  for (const auto* extension : trajectory_extensions) {
    if (auto file = fs::path(path.string() + extension); fs::exists(file, error)) return file;
  }
  return path;
}

}  // namespace

bool is_trajectory_name(const fs::path& path) { return has_extension(path, trajectory_extensions); }

FileKind kind_of_file(const fs::path& path) {
  std::error_code error;
  if (!fs::exists(path, error)) return FileKind::missing;
  if (fs::is_directory(path, error)) return FileKind::folder;
  if (is_trajectory_name(path)) return FileKind::trajectory;
  if (has_extension(path, model_extensions)) return FileKind::model;
  if (!fs::is_regular_file(path, error)) return FileKind::text;  // what a pipe holds can be read only once
  return holds_zero_bytes(path) ? FileKind::binary : FileKind::text;
}

std::string why_not_loaded(const fs::path& given, std::size_t model_atoms) {
  const auto path = file_meant(given);
  const auto name = path.filename().string();
  std::error_code error;
  switch (kind_of_file(path)) {
    case FileKind::missing:
      if (!fs::exists(path, error) && !error) return about_missing(path);
      return fmt::format("{} {}", name, why_unreadable(path));
    case FileKind::folder:
      return fmt::format("{} is a folder, not a trajectory", name);
    case FileKind::trajectory:
      if (const auto why = why_unreadable(path); !why.empty()) return fmt::format("{} {}", name, why);
      if (fs::file_size(path, error) == 0) return fmt::format("{} is an empty file", name);
      return has_extension(path, binary_extensions) ? about_binary(path, model_atoms) : std::string{};
    case FileKind::model:
      return fmt::format("{} holds a model; {}", name, called);
    case FileKind::text:
    case FileKind::binary:
      return fmt::format("{} is there, but not of a kind that can be loaded; {}", name, called);
  }
  return {};
}

}  // namespace pathstat::desk
