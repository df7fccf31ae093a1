#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace pathstat::desk {

/// Writes files of a folder as a whole or not at all: each beside its place, then renamed to its name. A link that
/// stands there is replaced, not followed, and a file that is written protected is left alone. One run at a time.
class ResultFolder {
 public:
  explicit ResultFolder(std::filesystem::path folder) : folder_(std::move(folder)) {}

  const std::filesystem::path& path() const { return folder_; }

  /// @return false if it could not be written
  bool write(const std::string& name, std::string_view content);
  bool copy(const std::filesystem::path& from, const std::string& name);

  /// What could not be written since this was last asked, a sentence for each reason.
  std::vector<std::string> take_problems();

 private:
  /// Gives a descriptor its content. @return 0 or an error number
  using Fill = std::function<int(int descriptor)>;
  bool put(const std::string& name, const Fill& fill);

  std::filesystem::path folder_;
  std::map<std::string, std::vector<std::string>> failed_;  ///< names by reason
};

}  // namespace pathstat::desk
