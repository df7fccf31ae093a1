#include "services/file_search.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>

#include "corelink/environment.h"
#include "corelink/fixed_text.h"
#include "corelink/last_error.h"
#include "support/text_field.h"

namespace pathstat {
namespace {

constexpr std::size_t path_block = 1024;  ///< bytes of a path and its terminator

const char* text_of(const char* text) { return text == nullptr ? "" : text; }

bool is_part_of_name(char letter) { return std::isalnum(static_cast<unsigned char>(letter)) != 0 || letter == '_'; }

/// Takes the name in front of `rest` and gives the variable's value; null if it is unset.
const char* take_variable(std::string_view& rest) {
  std::size_t length = 0;
  while (length < rest.size() && is_part_of_name(rest[length])) ++length;
  const std::string name(rest.substr(0, length));
  rest.remove_prefix(length);
  const char* value = std::getenv(name.c_str());
  if (value == nullptr) PLE_error("Environment variable '%s' is not defined", name.c_str());
  return value;
}

std::optional<std::string> translated(std::string_view rest) {
  std::string result;
  while (!rest.empty()) {
    const char letter = rest.front();
    rest.remove_prefix(1);
    const bool home = letter == '~' && (rest.empty() || rest.front() == '/');
    if (letter == '$' || home) {
      std::string_view home_name = "HOME";
      const char* value = take_variable(home ? home_name : rest);
      if (value == nullptr) return std::nullopt;
      result += value;
    } else {
      result += letter == ':' ? '/' : letter;
    }
  }
  return result;
}

bool exists(const std::string& path, struct stat& facts) { return ::stat(path.c_str(), &facts) == 0; }

/// The block that paths which were found are given in.
const char* keep(std::string path) {
  static std::string kept;
  kept = std::move(path);
  return kept.c_str();
}

constexpr const char* search_name = "FILE_dirpath_search";

/// A path of the search; nothing for one that is too long.
std::optional<std::string> path_in(std::string_view directory, const std::string& name) {
  std::string path(directory);
  if (!name.empty()) path.append("/").append(name);
  if (path.size() < path_block) return path;
  PLE_error("%s: too long directory in the path '%s'", search_name, path.c_str());
  return std::nullopt;
}

const char* found_in(std::string_view directories, const char* variable, const std::string& name) {
  const bool traced = std::getenv("FILE_DEBUG") != nullptr;
  for (std::string_view rest = directories;;) {
    const auto end = rest.find(':');
    struct stat facts {};
    const auto path = path_in(rest.substr(0, end), name);
    const bool found = path && exists(*path, facts);
    if (traced && path) std::printf("%s: %s%s\n", search_name, path->c_str(), found ? " found" : "");
    if (found && name.empty() && S_ISDIR(facts.st_mode)) {
      PLE_error("%s cannot be used: it is a directory", path->c_str());
      return nullptr;
    }
    if (found) return keep(*path);
    if (end == std::string_view::npos) break;
    rest.remove_prefix(end + 1);
  }
  PLE_error("File '%s' does not exist in %s=%s", name.c_str(), variable, std::string(directories).c_str());
  return nullptr;
}

}  // namespace

std::int32_t FILE_exists(const char* path) {
  struct stat facts {};
  return exists(text_of(path), facts) ? 1 : 0;
}

std::int64_t FILE_size(const char* path) {
  struct stat facts {};
  return exists(text_of(path), facts) ? static_cast<std::int64_t>(facts.st_size) : -1;
}

std::int32_t FILE_rename(const char* old_path, const char* new_path) {
  if (std::rename(text_of(old_path), text_of(new_path)) == 0) return 1;
  PLE_error("Cannot rename %s to %s%s", text_of(old_path), text_of(new_path), PLE_system_error());
  return 0;
}

std::int32_t FILE_delete(const char* path) { return ::unlink(text_of(path)) == 0 ? 1 : 0; }

const char* FILE_dirpath_search(const char* variable, const char* name) {
  variable = text_of(variable);
  name = text_of(name);
  if (*name == '\0' && *variable == '\0') {
    PLE_error("%s: both file name and path variable are empty\n", search_name);
    std::fprintf(stderr, "%s: both file name and path variable are empty\n", search_name);
    return nullptr;
  }
  const char* real_name = FILNAM_xlate(name);
  if (real_name == nullptr) return nullptr;
  const std::string wanted = real_name;
  if (wanted.starts_with('/')) {
    struct stat facts {};
    if (exists(wanted, facts)) return keep(wanted);
    PLE_error("file '%s' does not exist", wanted.c_str());
    return nullptr;
  }
  const char* value = *variable == '\0' ? nullptr : std::getenv(variable);
  return found_in(value == nullptr || *value == '\0' ? "." : value, variable, wanted);
}

const char* FILE_path(const char* name) {
  const char* path = FILE_dirpath_search("PATH", name);
  if (path == nullptr) return nullptr;
  struct stat facts {};
  if (exists(path, facts) && (facts.st_mode & S_IXUSR) != 0) return path;
  PLE_error("File '%s' is not an executable", path);
  return nullptr;
}

const char* FILNAM_xlate(const char* name) {
  static std::array<char, path_block> block;
  const auto result = translated(text_of(name));
  if (!result) return nullptr;
  if (result->size() >= block.size()) {
    PLE_error("FILNAM_xlate: the result '%s'... ran out of space", result->substr(0, 900).c_str());
    return nullptr;
  }
  std::memcpy(block.data(), result->c_str(), result->size() + 1);
  if (is_switched_on("FN_XLATE_DEBUG")) std::printf("FILNAM_xlate: %s is %s\n", text_of(name), block.data());
  return block.data();
}

void filnam_xlate_f_(std::string_view name, std::span<char> result) {
  const std::string source(trimmed(name));
  const char* found = FILNAM_xlate(source.c_str());
  const std::string_view text = found == nullptr ? "" : found;
  if (std::getenv("EXPNAM_DEBUG") != nullptr) std::printf("filnam_xlate: %s is %s\n", source.c_str(), text.data());
  const bool fits = text.size() <= result.size();
  kvS_STR_CopyC2F(result, fits ? text : "");
  if (fits) return;
  std::fprintf(stderr, "filnam_xlate: the name of %s has %zu characters, and the field %zu\n", source.c_str(),
               text.size(), result.size());
}

const char* FILNAM_strip_directory(const char* path) {
  const char* slash = std::strrchr(text_of(path), '/');
  return slash == nullptr ? text_of(path) : slash + 1;
}

std::unique_ptr<char[], FreeBlock> FILNAM_append_file_to_dir(const char* directory, const char* file) {
  const std::size_t size = std::strlen(text_of(directory)) + std::strlen(text_of(file)) + 2;
  std::unique_ptr<char[], FreeBlock> block(static_cast<char*>(std::malloc(size)));
  if (block == nullptr) {
    PLE_error("FILNAM: cannot allocate %d bytes to construct the file name\n", static_cast<int>(size));
    return block;
  }
  std::snprintf(block.get(), size, "%s/%s", text_of(directory), text_of(file));
  return block;
}

}  // namespace pathstat
