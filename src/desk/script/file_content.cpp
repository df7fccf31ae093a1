#include "desk/script/file_content.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <limits>

#include "support/record_file.h"

namespace pathstat::desk {
namespace {

/// What comes through a pipe or from a device may have no end.
constexpr std::size_t longest_script = std::size_t{16} * 1024 * 1024;

FileDescriptor opened(const std::filesystem::path& path) {
  return FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
}

/// @param most  where there are more bytes, reading fails
bool read_all(int descriptor, std::string& content, std::size_t most) {
  content.clear();
  std::array<char, 65536> block;
  for (;;) {
    const auto got = ::read(descriptor, block.data(), block.size());
    if (got == 0) return true;
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return false;
    content.append(block.data(), static_cast<std::size_t>(got));
    if (content.size() <= most) continue;
    errno = EFBIG;
    return false;
  }
}

}  // namespace

bool read_content(const std::filesystem::path& path, std::string& content) {
  content.clear();
  const auto file = opened(path);
  return file.is_open() && read_all(file.get(), content, std::numeric_limits<std::size_t>::max());
}

std::string read_script_text(int descriptor, std::string& text) {
  if (read_all(descriptor, text, longest_script)) return {};
  if (errno == EFBIG) return fmt::format("it has more than {} bytes", longest_script);
  return std::strerror(errno);
}

std::string read_script_text(const std::filesystem::path& path, std::string& text) {
  const auto file = opened(path);
  return file.is_open() ? read_script_text(file.get(), text) : std::strerror(errno);
}

}  // namespace pathstat::desk
