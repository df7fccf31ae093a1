#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace pathstat {

/// All bytes of a file; empty without one.
inline std::string content_of(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// A folder that is gone when the test is over.
class ScratchFolder {
 public:
  explicit ScratchFolder(const std::filesystem::path& in = std::filesystem::temp_directory_path()) {
    std::string name = (in / "pathstat-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for the test");
    path_ = std::filesystem::canonical(name);
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::string file(const std::string& name) const { return (path_ / name).string(); }
  std::string write(const std::string& name, std::string_view text) const {
    std::ofstream(file(name), std::ios::binary) << text;
    return file(name);
  }
  std::string read(const std::string& name) const { return content_of(file(name)); }

 private:
  std::filesystem::path path_;
};

}  // namespace pathstat
