#include "desk/script/file_content.h"

#include <fstream>
#include <iterator>

namespace pathstat::desk {

bool read_content(const std::filesystem::path& path, std::string& content) {
  std::ifstream file(path, std::ios::binary);
  content.assign(std::istreambuf_iterator<char>(file), {});
  return static_cast<bool>(file);
}

}  // namespace pathstat::desk
