#include "support/read_failure.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace pathstat {

void tell_failed_read(int descriptor) {
  const char* cause = std::strerror(errno);
  std::array<char, 40> link;
  std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", descriptor);
  std::array<char, 1024> name{};
  const bool known = ::readlink(link.data(), name.data(), name.size() - 1) > 0;
  std::fprintf(stderr, "Cannot read %s: %s\n", known ? name.data() : "a file", cause);
}

void tell_failed_open(const char* path) { std::fprintf(stderr, "Cannot open %s: %s\n", path, std::strerror(errno)); }

}  // namespace pathstat
