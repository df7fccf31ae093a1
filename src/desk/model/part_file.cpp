#include "desk/model/part_file.h"

#include <fmt/format.h>

#include <system_error>
#include <utility>

namespace pathstat::desk {

namespace fs = std::filesystem;

PartFile::PartFile(fs::path path) : path_(std::move(path)), part_(fs::path(path_).concat(".part")) {}

PartFile::~PartFile() {
  std::error_code ignored;
  fs::remove(part_, ignored);
}

std::string PartFile::keep() const {
  std::error_code status;
  fs::rename(part_, path_, status);
  return status ? fmt::format("{} cannot be written: {}", path_.string(), status.message()) : std::string{};
}

}  // namespace pathstat::desk
