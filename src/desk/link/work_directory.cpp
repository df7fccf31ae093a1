#include "desk/link/work_directory.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace pathstat::desk {

PrivateDirectory::PrivateDirectory(std::string& error) {
  std::error_code failure;
  auto base = std::filesystem::temp_directory_path(failure);
  if (failure) base = "/tmp";
  std::string name = base / "pathdesk-XXXXXX";
  if (::mkdtemp(name.data())) {
    path_ = name;
  } else {
    error = fmt::format("cannot make a directory for temporary files in {}: {}", base.string(), std::strerror(errno));
  }
}

PrivateDirectory::~PrivateDirectory() {
  std::error_code ignored;
  if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
}

}  // namespace pathstat::desk
