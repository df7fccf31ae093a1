#include "desk/report/result_folder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "support/record_file.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

constexpr const char* part_name = ".pathdesk.part";
constexpr std::size_t most_names = 3;

int write_all(int descriptor, std::string_view content) {
  while (!content.empty()) {
    const auto done = ::write(descriptor, content.data(), content.size());
    if (done < 0 && errno != EINTR) return errno;
    if (done > 0) content.remove_prefix(static_cast<std::size_t>(done));
  }
  return 0;
}

int copy_all(int descriptor, int from) {
  std::array<char, 65536> block;
  while (true) {
    const auto got = ::read(from, block.data(), block.size());
    if (got == 0) return 0;
    if (got < 0 && errno != EINTR) return errno;
    const int failure = got > 0 ? write_all(descriptor, {block.data(), static_cast<std::size_t>(got)}) : 0;
    if (failure != 0) return failure;
  }
}

bool is_protected(const fs::path& path) {
  struct stat facts {};
  return ::lstat(path.c_str(), &facts) == 0 && S_ISREG(facts.st_mode) && ::access(path.c_str(), W_OK) != 0;
}

}  // namespace

bool ResultFolder::put(const std::string& name, const Fill& fill) {
  const auto path = folder_ / name, part = folder_ / part_name;
  int failure = is_protected(path) ? errno : 0;
  if (failure == 0) {
    auto file = create_new(part);
    const bool made = file.is_open();
    failure = made ? fill(file.get()) : errno;
    if (made && !file.close() && failure == 0) failure = errno;
    if (failure == 0 && ::rename(part.c_str(), path.c_str()) != 0) failure = errno;
    if (failure != 0 && made) ::unlink(part.c_str());
  }
  if (failure != 0) failed_[std::strerror(failure)].push_back(path.string());
  return failure == 0;
}

bool ResultFolder::write(const std::string& name, std::string_view content) {
  return put(name, [&](int descriptor) { return write_all(descriptor, content); });
}

bool ResultFolder::copy(const fs::path& from, const std::string& name) {
  std::error_code unknown;
  if (fs::equivalent(from, folder_ / name, unknown) && !fs::is_symlink(folder_ / name, unknown)) return true;
  const FileDescriptor source(::open(from.c_str(), O_RDONLY | O_CLOEXEC));
  if (!source.is_open()) {
    failed_[fmt::format("{}: {}", from.string(), std::strerror(errno))].push_back((folder_ / name).string());
    return false;
  }
  return put(name, [&](int descriptor) { return copy_all(descriptor, source.get()); });
}

std::vector<std::string> ResultFolder::take_problems() {
  std::vector<std::string> problems;
  for (const auto& [reason, names] : std::exchange(failed_, {})) {
    std::string listed;
    for (std::size_t k = 0; k < names.size() && k < most_names; ++k) listed += (k == 0 ? "" : ", ") + names[k];
    if (names.size() > most_names) listed += fmt::format(" and {} more", names.size() - most_names);
    problems.push_back(fmt::format("cannot write {}: {}", listed, reason));
  }
  return problems;
}

}  // namespace pathstat::desk
