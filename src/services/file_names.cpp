#include "services/file_names.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>

#include "corelink/environment.h"
#include "services/file_host.h"

namespace pathstat {
namespace {

/// Items of a path variable may begin with a prefix themselves; so deep and no deeper.
constexpr int deepest_path_variable = 8;

bool exists_expanded(std::string_view name, int depth);

std::string environment_value(std::string_view name) {
  const char* value = getenv_of_field(name);
  return value == nullptr ? std::string() : std::string(value);
}

std::string current_directory() {
  std::array<char, 1024> path;
  return ::getcwd(path.data(), path.size()) == nullptr ? std::string() : std::string(path.data());
}

std::string home_of(std::string_view user) {
  const passwd* entry = ::getpwnam(std::string(user).c_str());
  return entry == nullptr ? std::string() : std::string(entry->pw_dir);
}

/// The first item of the Core's path variable under which `rest` exists.
std::optional<std::string> found_on_path(std::string_view variable, std::int32_t items, std::string_view rest,
                                         int depth) {
  for (std::int32_t k = 1; k <= items; ++k) {
    std::string candidate = file_host().path_item(variable, k).append("/").append(rest);
    if (exists_expanded(candidate, depth + 1)) return candidate;
  }
  return std::nullopt;
}

std::string expand(std::string_view source, int depth) {
  std::string target;
  while (target.empty() && !source.empty()) {
    const std::string_view word = source.substr(0, source.find('/'));
    if (word == ".") {
      target = current_directory();
    } else if (word == "~") {
      target = environment_value("HOME");
    } else if (word.starts_with('~')) {
      target = home_of(word.substr(1));
    } else if (word.starts_with('$')) {
      const auto colon = word.find(':');
      const std::string_view variable = word.substr(1, colon == word.npos ? colon : colon - 1);
      const bool on_path = colon != word.npos && depth < deepest_path_variable;
      const std::int32_t items = on_path ? file_host().path_items(variable) : 0;
      if (items > 0) {
        source.remove_prefix(colon + 1);
        if (auto found = found_on_path(variable, items, source, depth)) return *found;
        continue;
      }
      target = environment_value(word.substr(1));
    } else {
      break;
    }
    source.remove_prefix(word.size());
  }
  return target.append(source);
}

bool exists_expanded(std::string_view name, int depth) {
  struct stat info {};
  return ::stat(expand(name, depth).c_str(), &info) == 0;
}

/// Writes the text to a terminated target of fixed size.
void fill(std::span<char> target, std::string_view text) {
  if (target.empty()) return;
  const auto used = std::min(text.size(), target.size() - 1);
  std::copy_n(text.begin(), used, target.begin());
  target[used] = '\0';
}

std::string without_directory(std::string_view path) { return std::string(path.substr(path.rfind('/') + 1)); }

/// Opens a file for use as a stream; a directory is none.
std::FILE* open_stream(const std::string& path, const char* mode) {
  std::FILE* stream = std::fopen(path.c_str(), mode);
  if (stream == nullptr) return nullptr;
  struct stat info {};
  if (::fstat(::fileno(stream), &info) == 0 && !S_ISDIR(info.st_mode)) return stream;
  std::fclose(stream);
  return nullptr;
}

/// Tries `rest` in each directory of the variable's list, in order.
std::FILE* search(const std::string& variable, const std::string& rest, const char* mode, std::string& path) {
  const std::string list = environment_value(variable);
  for (std::size_t from = 0; from < list.size();) {
    const auto to = std::min(list.find(':', from), list.size());
    path = list.substr(from, to - from) + "/" + rest;
    if (std::FILE* stream = open_stream(path, mode)) return stream;
    from = to + 1;
  }
  return nullptr;
}

std::FILE* open_search(std::string_view name, const char* mode, std::string& path) {
  if (name.empty()) return nullptr;
  const auto colon = name.find(':');
  if (colon == name.npos) {
    path = name;
    return open_stream(path, mode);
  }
  const std::string variable(name.substr(0, colon));
  const std::string rest(name.substr(colon + 1));
  if (std::FILE* stream = search(variable, rest, mode, path)) return stream;
  for (const char* resources : {"res/", "Varlane-Resources/"}) {
    if (std::FILE* stream = search("VLDIR", resources + variable + "/" + rest, mode, path)) return stream;
  }
  return nullptr;
}

}  // namespace

std::string expanded_name(std::string_view source) { return expand(source, 0); }

std::string with_extension(std::string_view path, std::string_view extension) {
  const auto dot = path.rfind('.');
  const auto slash = path.rfind('/');
  const bool has_extension = dot != path.npos && (slash == path.npos || slash < dot);
  std::string result(has_extension ? path.substr(0, dot) : path);
  if (!extension.empty() && !extension.starts_with('.')) result += '.';
  return result.append(extension);
}

void kvS_FIL_ExpandName(std::string_view source, std::span<char> target) { fill(target, expanded_name(source)); }
void kvs_fil_expandname_(std::string_view source, TextField target) { target.set(expanded_name(trimmed(source))); }

bool kvS_FIL_Exists(std::string_view name) { return exists_expanded(name, 0); }
bool kvs_fil_exists_(std::string_view name) { return kvS_FIL_Exists(trimmed(name)); }

void kvS_FIL_Delete(std::string_view name, std::int32_t& error) {
  error = 0;
  if (std::remove(expanded_name(name).c_str()) != 0)
    error = errno == EACCES ? removal_error::refused : removal_error::failed;
  file_host().report(error);
}
void kvs_fil_delete_(std::string_view name, std::int32_t& error) { kvS_FIL_Delete(trimmed(name), error); }

void kvS_FIL_ExtractName(std::string& text) { text = without_directory(text); }
void kvs_fil_extractname_(TextField text) { text.set(without_directory(trimmed(text))); }

void kvS_FIL_ReplaceExt(std::string_view path, std::string_view extension, std::span<char> target) {
  if (path.data() == nullptr || extension.data() == nullptr || target.empty()) return;
  fill(target, with_extension(path.substr(0, target.size() - 1), extension));
}
void kvs_fil_replaceext_(std::string_view path, std::string_view extension, TextField target) {
  target.set(with_extension(trimmed(path).substr(0, target.width()), trimmed(extension)));
}

std::FILE* kvS_FIL_OpenSearch(std::string_view name, const char* mode, std::span<char> path) {
  std::string found;
  std::FILE* stream = open_search(name, mode, found);
  if (stream != nullptr) fill(path, found);
  return stream;
}
std::FILE* kvs_fil_opensearch_(std::string_view name, std::string_view mode, TextField path) {
  std::string found;
  std::FILE* stream = open_search(trimmed(name), std::string(trimmed(mode)).c_str(), found);
  if (stream != nullptr) path.set(found);
  return stream;
}

}  // namespace pathstat
