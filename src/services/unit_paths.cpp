#include "services/unit_paths.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "corelink/environment.h"
#include "services/file_host.h"

namespace pathstat {
namespace {

std::string variable_directory(std::string_view name) {
  const char* value = getenv_of_field(name);
  const std::string_view known = trimmed(value == nullptr ? "" : value);
  std::string directory(known.empty() ? "." : known);
  if (directory.back() != '/') directory += '/';
  return directory;
}

/// True for a path that no field of a unit can hold: cut short, it would name another file.
bool is_too_long(const std::string& path) { return path.size() > longest_unit_path; }

bool exists_as_it_stands(const std::string& path) {
  struct stat info;
  return !path.empty() && !is_too_long(path) && ::stat(path.c_str(), &info) == 0;
}

}  // namespace

std::string unit_path(std::string_view source) {
  source = trimmed(source);
  if (!source.starts_with('$')) return std::string(source);
  const auto separator = source.find_first_of("/:");
  std::string path = variable_directory(source.substr(1, separator == source.npos ? separator : separator - 1));
  if (separator != source.npos) path += source.substr(separator + 1);
  return path;
}

void interpenv_(std::string_view source, TextField target) { target.set(unit_path(source)); }

void envar_(std::string_view name, TextField value) { value.set(variable_directory(trimmed(name))); }

bool exists_(std::string_view path) { return exists_as_it_stands(unit_path(path)); }

void checkaccess_(std::string_view path, std::int32_t mode, std::int32_t& error) {
  error = 0;
  const std::string file = unit_path(path);
  if (!exists_as_it_stands(file)) return;
  const char* refusal = nullptr;
  if (mode != 1 && ::access(file.c_str(), R_OK | W_OK) != 0) {
    refusal = "read/write";
  } else if (::access(file.c_str(), R_OK) != 0) {
    refusal = "read";
  }
  if (refusal == nullptr) return;
  file_host().alert();
  std::printf("File %s is not %s enabled\n", file.c_str(), refusal);
  error = 1;
}

}  // namespace pathstat
