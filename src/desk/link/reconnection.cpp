#include "desk/link/reconnection.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

#include "corelink/last_error.h"
#include "corelink/socket_address.h"
#include "desk/link/listener.h"
#include "support/record_file.h"

namespace pathstat::desk {

std::uint64_t start_of_process(pid_t process) {
  const auto folder = fmt::format("/proc/{}", process);
  struct stat facts {};
  if (::stat(folder.c_str(), &facts) != 0 || facts.st_uid != ::geteuid()) return 0;
  std::ifstream file(folder + "/stat");
  std::string text(std::istreambuf_iterator<char>(file), {});
  // The name in parentheses may hold anything; the start is the 20th field behind it.
  std::istringstream fields(text.substr(std::min(text.rfind(')') + 1, text.size())));
  std::string state, field;
  fields >> state;
  if (state == "Z" || state == "X") return 0;
  for (int k = 2; k < 20; ++k) fields >> field;
  std::uint64_t start = 0;
  return fields >> start ? start : 0;
}

std::string read_reconnection_file(const std::string& path, std::string& port) {
  port.clear();
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!file.is_open()) {
    if (errno == ENOENT) return {};
    return fmt::format("{} can't be read: {}", path, errno == ELOOP ? "it is a link" : std::strerror(errno));
  }
  struct stat facts {};
  if (::fstat(file.get(), &facts) != 0 || !S_ISREG(facts.st_mode)) return fmt::format("{} is not a file", path);
  if (facts.st_uid != ::geteuid()) return fmt::format("{} belongs to somebody else", path);
  if ((facts.st_mode & (S_IRWXG | S_IRWXO)) != 0) return fmt::format("{} is open to other users", path);
  std::array<char, 64> block{};
  const auto length = ::read(file.get(), block.data(), block.size());
  const std::string_view text(block.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
  if (text.empty()) return {};  // it is being written
  const auto line = text.find('\n');
  if (line == text.npos || text.substr(line) != "\ntcp\n" || !port_number(text.substr(0, line))) {
    return fmt::format("{} does not say where a process waits", path);
  }
  port = text.substr(0, line);
  return {};
}

std::string connect_to_waiting(pid_t process, const std::string& port, Connection& connection) {
  PNC_create_client(connection, "127.0.0.1", port.c_str(), "tcp");
  if (!is_connected(connection)) return fmt::format("process {} can't be reached: {}", process, PLE_get_error());
  // The system counts the connection as the process's own once that has accepted it.
  for (int tries = 0; tries < 500; ++tries) {
    if (is_peer(connection, Protocol::tcp, process)) return {};
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  PNC_close(connection);
  return fmt::format("another process than {} answers at its port", process);
}

}  // namespace pathstat::desk
