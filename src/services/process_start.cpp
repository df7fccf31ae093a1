#include "services/process_start.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "corelink/last_error.h"
#include "services/file_search.h"
#include "support/text_field.h"

extern char** environ;

namespace pathstat {
namespace {

constexpr std::int32_t not_started = 0, manual = 1;

bool is_set(const char* variable) { return std::getenv(variable) != nullptr; }

bool ends_with_null(const char* const* list, std::int32_t count, const char* name) {
  if (list != nullptr && count >= 0 && list[count] == nullptr) return true;
  PLE_error("COM_exec error: %s array is not null-terminated", name);
  return false;
}

void print_manual(const char* const* argv, const char* const* envp) {
  std::puts("=== MANUAL EXECUTION === environment: ===");
  for (auto* entry = envp; *entry != nullptr; ++entry) std::puts(*entry);
  std::fputs("=== command:", stdout);
  for (auto* argument = argv; *argument != nullptr; ++argument) std::printf(" %s", *argument);
  std::fputs("\n", stdout);
}

/// The numbers of a text with blanks between; what is no number is passed over.
std::vector<int> numbers_of(const char* text) {
  std::vector<int> numbers;
  std::string_view rest = text == nullptr ? "" : text;
  while (!rest.empty()) {
    const auto word = rest.substr(0, rest.find(' '));
    int number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error == std::errc{} && end == word.data() + word.size() && number >= 0) numbers.push_back(number);
    rest.remove_prefix(std::min(word.size() + 1, rest.size()));
  }
  return numbers;
}

void list_descriptors() {
  constexpr int listed = 10;
  for (int descriptor = 0; descriptor < listed; ++descriptor) {
    struct stat facts {};
    if (::fstat(descriptor, &facts) != 0) continue;
    ::dprintf(STDOUT_FILENO, "descriptor %d: type %o size %lld\n", descriptor,
              static_cast<unsigned>(facts.st_mode & S_IFMT), static_cast<long long>(facts.st_size));
  }
}

/// Runs in the child, where only what the system does itself is safe: other threads may have held any lock.
[[noreturn]] void become(const char* path, const char* const* argv, const char* const* envp, bool close_input,
                         bool traced, const std::vector<int>& unwanted) {
  if (close_input) ::close(STDIN_FILENO);
  if (traced) list_descriptors();
  for (const int descriptor : unwanted) {
    if (::fcntl(descriptor, F_GETFD) != -1) ::close(descriptor);
  }
  ::execve(path, const_cast<char* const*>(argv), const_cast<char* const*>(envp));
  ::dprintf(STDERR_FILENO, "could not exec %s%s\n", path, PLE_system_error());
  ::_exit(1);
}

}  // namespace

std::int32_t COM_exec0(const char* executable, std::int32_t argc, const char* const* argv, std::int32_t envc,
                       const char* const* envp) {
  const char* found = FILE_path(executable);
  if (found == nullptr) return not_started;
  const std::string path = found;
  if (!ends_with_null(argv, argc, "argv") || !ends_with_null(envp, envc, "environment")) return not_started;
  const char* type = std::getenv("EXEC_TYPE");
  if (type != nullptr && std::string_view(type) == "MANUAL") {
    print_manual(argv, envp);
    return manual;
  }
  const bool traced = is_set("EXEC_DEBUG"), close_input = is_set("COM_PARENT_IN");
  const auto unwanted = numbers_of(std::getenv("COM_CloseMe"));
  std::fflush(nullptr);
  const pid_t child = ::fork();
  if (child == 0) become(path.c_str(), argv, envp, close_input, traced, unwanted);
  if (child < 0) {
    PLE_error("Could not fork while execing %s%s", path.c_str(), PLE_system_error());
    return not_started;
  }
  if (traced) std::printf("COM_exec0: %s is process %d\n", path.c_str(), child);
  return child;
}

std::int32_t COM_exec1(const char* executable, std::int32_t argc, const char* const* argv) {
  std::int32_t count = 0;
  while (environ[count] != nullptr) ++count;
  return COM_exec0(executable, argc, argv, count, environ);
}

const char* COM_exec(const char* executable, std::int32_t argc, const char* const* argv, std::int32_t envc,
                     const char* const* envp) {
  static std::array<char, 16> text;
  const std::int32_t process = COM_exec0(executable, argc, argv, envc, envp);
  if (process == not_started) return nullptr;
  std::snprintf(text.data(), text.size(), "%d", process);
  return text.data();
}

void com_exec_fortran_(std::string_view executable, std::string_view arguments, std::int32_t& process) {
  constexpr std::size_t most = 255;
  const std::string program(trimmed(executable));
  std::vector<std::string> words{program};
  for (std::size_t from = arguments.find_first_not_of(' '); from != std::string_view::npos;) {
    const auto end = std::min(arguments.find(' ', from), arguments.size());
    words.emplace_back(arguments.substr(from, end - from));
    from = arguments.find_first_not_of(' ', end);
  }
  process = not_started;
  if (words.size() > most + 1) {
    std::fprintf(stderr, "com_exec: %zu arguments, and %zu are the most\n", words.size() - 1, most);
    return;
  }
  std::vector<const char*> argv;
  argv.reserve(words.size() + 1);
  for (const auto& word : words) argv.push_back(word.c_str());
  argv.push_back(nullptr);
  process = COM_exec1(program.c_str(), static_cast<std::int32_t>(words.size()), argv.data());
}

}  // namespace pathstat
