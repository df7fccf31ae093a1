#pragma once

#include <filesystem>
#include <string>

#include "support/record_file.h"

namespace pathstat::desk {

/// The folder in which folders for temporary files are made: `TMPDIR`, else /tmp.
std::filesystem::path base_of_temporary_folders();

/// True for a folder, not a link to one, that belongs to this user alone.
bool is_own_folder(const std::filesystem::path& path);

/// A directory that only this user can read, removed with all it holds when its owner ends. Those that killed runs of
/// this user left behind are removed when the next one is made; a lock tells them from those in use.
class PrivateDirectory {
 public:
  /// Makes a fresh directory in the folder for temporary files. On failure path() is empty and `error` says why.
  explicit PrivateDirectory(std::string& error);
  ~PrivateDirectory();
  PrivateDirectory(const PrivateDirectory&) = delete;
  PrivateDirectory& operator=(const PrivateDirectory&) = delete;

  const std::filesystem::path& path() const { return path_; }

  /// Removes the directories of a program that ends past their owners.
  static void remove_all() noexcept;

 private:
  static inline PrivateDirectory* latest_ = nullptr;
  PrivateDirectory* earlier_ = nullptr;  ///< that is there too
  std::filesystem::path path_;
  FileDescriptor lock_;  ///< given up when it is closed
};

/// @return empty while the disk of a folder has room for the files of a small run, else that it is full
std::string full_disk(const std::filesystem::path& folder);

/// Keeps a folder for one run: a lock file in it, which the kernel unlocks when its run ends in whatever way.
class FolderLock {
 public:
  FolderLock() = default;
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

  /// @return empty, or who has the folder, or why it cannot be written
  std::string take(const std::filesystem::path& folder);

 private:
  std::filesystem::path file_;
  FileDescriptor lock_;  ///< given up when it is closed
};

}  // namespace pathstat::desk
