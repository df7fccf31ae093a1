#include "desk/link/work_directory.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "desk/link/folder_content.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view private_prefix = "pathdesk-tmp.";  ///< that nobody gives a folder of their own
constexpr std::size_t chosen_letters = 6;                     ///< that the system puts in the place of as many X
constexpr const char* lock_name = ".pathdesk.lock";
constexpr std::uintmax_t least_room = 65536;

/// True if the descriptor is of what stands at the path now.
bool is_at(int descriptor, const char* path) {
  struct stat held {
  }, there{};
  return ::fstat(descriptor, &held) == 0 && ::lstat(path, &there) == 0 && held.st_dev == there.st_dev &&
         held.st_ino == there.st_ino;
}

bool lock(int descriptor) { return ::flock(descriptor, LOCK_EX | LOCK_NB) == 0; }

int open_folder(const char* path) { return ::open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); }

/// Removes a folder with all it holds. Once more where it fails: a descriptor may have been wanting, or a file may have
/// been put there meanwhile. What stays all the same is cleared by the next run.
void remove_folder(const fs::path& folder) {
  constexpr int tries = 3;
  for (int k = 0; k < tries && !remove_tree(folder); ++k) continue;
}

/// Removes the private folders of this user that nobody holds.
void clear_dead_folders(const fs::path& base) {
  std::error_code trouble;
  for (const auto& name : names_in(base, trouble)) {
    if (!name.starts_with(private_prefix) || name.size() != private_prefix.size() + chosen_letters) continue;
    const auto path = base / name;
    const FileDescriptor folder(open_folder(path.c_str()));
    if (is_own_folder(path) && lock(folder.get())) remove_folder(path);
  }
}

std::string cannot_make(const fs::path& base, const char* why) {
  return fmt::format("cannot make a folder for temporary files in {}: {}", base.string(), why);
}

}  // namespace

fs::path base_of_temporary_folders() {
  const char* asked = std::getenv("TMPDIR");
  std::error_code failure;
  return fs::absolute(asked && *asked ? asked : "/tmp", failure);
}

bool is_own_folder(const fs::path& path) {
  struct stat facts {};
  return ::lstat(path.c_str(), &facts) == 0 && S_ISDIR(facts.st_mode) && facts.st_uid == ::geteuid() &&
         (facts.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

PrivateDirectory::PrivateDirectory(std::string& error) {
  const auto base = base_of_temporary_folders();
  clear_dead_folders(base);
  // Between the making and the lock another run may take the folder for a dead one; then a new one is made.
  for (int tries = 0; path_.empty() && tries < 10; ++tries) {
    std::string name = base / std::string(private_prefix).append(chosen_letters, 'X');
    if (!::mkdtemp(name.data())) {
      error = cannot_make(base, std::strerror(errno));
      return;
    }
    lock_ = FileDescriptor(open_folder(name.c_str()));
    if (!lock_.is_open() && errno != ENOENT) {
      const int failure_number = errno;
      ::rmdir(name.c_str());
      error = cannot_make(base, std::strerror(failure_number));
      return;
    }
    ::flock(lock_.get(), LOCK_EX);
    try {
      if (is_at(lock_.get(), name.c_str())) path_ = name;
    } catch (const std::bad_alloc&) {
      ::rmdir(name.c_str());
      throw;
    }
  }
  if (path_.empty()) error = cannot_make(base, "another program removes it");
  earlier_ = std::exchange(latest_, this);
}

PrivateDirectory::~PrivateDirectory() {
  auto** known = &latest_;
  while (*known && *known != this) known = &(*known)->earlier_;
  if (*known) *known = earlier_;
  if (!path_.empty()) remove_folder(path_);
}

void PrivateDirectory::remove_all() noexcept try {
  for (const auto* each = latest_; each; each = each->earlier_) {
    if (!each->path_.empty()) remove_folder(each->path_);
  }
} catch (const std::exception&) {  // the next run clears it
}

std::string full_disk(const fs::path& folder) {
  std::error_code unknown;
  const auto room = fs::space(folder, unknown);
  if (unknown || room.available >= least_room) return {};
  return fmt::format("the disk of {} is full: {}", folder.string(), std::strerror(ENOSPC));
}

std::string FolderLock::take(const fs::path& folder) {
  auto path = folder / lock_name;
  while (true) {
    lock_ = FileDescriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0666));
    if (!lock_.is_open()) {
      return fmt::format("the folder {} cannot be written: {}", folder.string(), std::strerror(errno));
    }
    std::array<char, 20> other{};
    if (!lock(lock_.get()) && errno == EWOULDBLOCK) {
      const auto length = ::read(lock_.get(), other.data(), other.size() - 1);
      return fmt::format("another run{} writes into the folder {}; wait for its end or choose another folder",
                         length > 0 ? fmt::format(" (process {})", std::atoi(other.data())) : std::string{},
                         folder.string());
    }
    // The run that held the file may have removed it meanwhile. A file system without locks has none to wait for.
    if (is_at(lock_.get(), path.c_str())) break;
  }
  file_ = std::move(path);
  const auto holder = std::to_string(::getpid());
  // Whom to tell of is a help only; a full disk is met, and told, by the results.
  if (::ftruncate(lock_.get(), 0) == 0) {
    [[maybe_unused]] const auto written = ::write(lock_.get(), holder.data(), holder.size());
  }
  return {};
}

FolderLock::~FolderLock() {
  if (!file_.empty()) ::unlink(file_.c_str());
}

}  // namespace pathstat::desk
