#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace pathstat::desk {

/// A file that is written beside its place, as NAME.part, and gone unless it is given its name.
class PartFile {
 public:
  explicit PartFile(std::filesystem::path path);
  ~PartFile();
  PartFile(const PartFile&) = delete;
  PartFile& operator=(const PartFile&) = delete;

  /// Makes the file, empty, for whoever writes it to open. @return what went wrong, or nothing
  std::string make() const;
  const std::filesystem::path& path() const { return path_; }
  const std::filesystem::path& part() const { return part_; }
  /// Gives the file its name, in the place of one that has it. @return what went wrong, or nothing
  std::string keep() const;

 private:
  std::string trouble(std::string_view cause) const;

  std::filesystem::path path_, part_;
};

}  // namespace pathstat::desk
