#include "desk/model/part_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "support/record_file.h"

namespace pathstat::desk {

namespace fs = std::filesystem;

PartFile::PartFile(fs::path path) : path_(std::move(path)), part_(fs::path(path_).concat(".part")) {}

PartFile::~PartFile() {
  std::error_code ignored;
  fs::remove(part_, ignored);
}

std::string PartFile::make() const {
  return create_new(part_).is_open() ? std::string{} : trouble(std::strerror(errno));
}

std::string PartFile::keep() const {
  std::error_code status;
  fs::rename(part_, path_, status);
  return status ? trouble(status.message()) : std::string{};
}

std::string PartFile::trouble(std::string_view cause) const {
  return fmt::format("{} cannot be written: {}", path_.string(), cause);
}

}  // namespace pathstat::desk
