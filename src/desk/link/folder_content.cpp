#include "desk/link/folder_content.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string_view>

namespace pathstat::desk {
namespace {

struct Close {
  void operator()(DIR* folder) const { ::closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, Close>;

/// The next entry but the folder itself and the one above it; null at the end.
const dirent* next_entry(DIR* folder) {
  errno = 0;
  const auto* entry = ::readdir(folder);
  while (entry && (std::string_view(entry->d_name) == "." || std::string_view(entry->d_name) == "..")) {
    entry = ::readdir(folder);
  }
  return entry;
}

OpenFolder open_at(int at, const char* name) {
  const int descriptor = ::openat(at, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  OpenFolder folder(descriptor < 0 ? nullptr : ::fdopendir(descriptor));
  if (!folder && descriptor >= 0) ::close(descriptor);
  return folder;
}

bool remove_at(int at, const char* name) {
  if (::unlinkat(at, name, 0) == 0 || errno == ENOENT) return true;
  if (const auto folder = open_at(at, name)) {
    while (const auto* entry = next_entry(folder.get())) remove_at(::dirfd(folder.get()), entry->d_name);
  }
  return ::unlinkat(at, name, AT_REMOVEDIR) == 0;
}

}  // namespace

std::vector<std::string> names_in(const std::filesystem::path& folder, std::error_code& failure) {
  std::vector<std::string> names;
  const OpenFolder open(::opendir(folder.c_str()));
  if (open) {
    while (const auto* entry = next_entry(open.get())) names.emplace_back(entry->d_name);
  }
  failure = std::error_code(errno, std::generic_category());
  if (failure) names.clear();
  return names;
}

bool remove_tree(const std::filesystem::path& path) noexcept { return remove_at(AT_FDCWD, path.c_str()); }

}  // namespace pathstat::desk
