#include "desk/script/file_content.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "support/record_file.h"

namespace pathstat::desk {

bool read_content(const std::filesystem::path& path, std::string& content) {
  content.clear();
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  std::array<char, 65536> block;
  while (file.is_open()) {
    const auto got = ::read(file.get(), block.data(), block.size());
    if (got == 0) return true;
    if (got < 0 && errno != EINTR) break;
    if (got > 0) content.append(block.data(), static_cast<std::size_t>(got));
  }
  return false;
}

}  // namespace pathstat::desk
