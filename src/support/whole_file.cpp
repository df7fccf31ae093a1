#include "support/whole_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "support/within_memory.h"

namespace pathstat {
namespace {

constexpr const char* part_name = ".pathstat.part";

/// A file that may not be written is not to be replaced either.
bool is_protected(const std::string& path) { return ::access(path.c_str(), W_OK) != 0 && errno != ENOENT; }

}  // namespace

RecordStatus write_whole_file(const std::string& path, const std::function<RecordStatus(RecordWriter&)>& fill) {
  if (is_protected(path)) return RecordStatus::failed;
  const auto part = path.substr(0, path.rfind('/') + 1) + part_name;
  RecordWriter file;
  auto status = file.create_new(part);
  if (status != RecordStatus::ok) return status;
  if (!within_memory([&] { status = fill(file); })) status = RecordStatus::failed;
  if (status == RecordStatus::ok) status = file.close();
  if (status == RecordStatus::ok && std::rename(part.c_str(), path.c_str()) != 0) status = RecordStatus::failed;
  if (status != RecordStatus::ok) ::unlink(part.c_str());
  return status;
}

}  // namespace pathstat
