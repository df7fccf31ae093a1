#pragma once

#include <filesystem>
#include <string>

namespace pathstat::desk {

/// A directory that only this user can read, removed with all it holds when its owner ends.
class PrivateDirectory {
 public:
  /// Makes a fresh directory for temporary files. On failure path() is empty and `error` says why.
  explicit PrivateDirectory(std::string& error);
  ~PrivateDirectory();
  PrivateDirectory(const PrivateDirectory&) = delete;
  PrivateDirectory& operator=(const PrivateDirectory&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace pathstat::desk
