#include "services/detaching.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string_view>

#include "corelink/last_error.h"
#include "corelink/typed_values.h"
#include "support/record_file.h"

namespace pathstat {
namespace {

using Clock = std::chrono::steady_clock;

bool cannot_open(const std::string& path) {
  PLE_error("Cannot open %s to create a reconnection file: %s", path.c_str(), std::strerror(errno));
  return false;
}

/// Writes the file, which must not be there: a link to another file is never followed, and a file of another user, who
/// could read what is written into it, never written.
bool write_reconnection_file(const std::string& path, const ListeningServer& server) {
  struct stat left {};
  if (::lstat(path.c_str(), &left) == 0) {
    if (left.st_uid != ::geteuid()) errno = EEXIST;
    if (left.st_uid != ::geteuid() || ::unlink(path.c_str()) != 0) return cannot_open(path);
  }
  const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!file.is_open()) return cannot_open(path);
  const std::string text = PNC_server_name(server) + "\ntcp\n";
  // A mask of the user takes nothing from the one who may read.
  if (::fchmod(file.get(), 0600) == 0 &&
      ::write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size())) {
    return true;
  }
  cannot_open(path);
  ::unlink(path.c_str());
  return false;
}

std::string in_table(const sockaddr_in& address) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%08X:%04X", address.sin_addr.s_addr, ntohs(address.sin_port));
  return text.data();
}

/// True if the socket at the other end is this user's, by the system's table of connections, or there is no table. One
/// that has been closed again is nobody's: whose it was cannot be told any more.
bool is_own_socket(const sockaddr_in& far, const sockaddr_in& near) {
  constexpr std::string_view established = "01";
  const auto wanted_far = in_table(far), wanted_near = in_table(near);
  std::ifstream table("/proc/net/tcp");
  std::string line;
  if (!std::getline(table, line)) return true;
  while (std::getline(table, line)) {
    std::istringstream fields(line);
    std::string number, from, to, state, queues, timer, retransmits;
    uid_t user = 0;
    fields >> number >> from >> to >> state >> queues >> timer >> retransmits >> user;
    if (fields && from == wanted_far && to == wanted_near) return state == established && user == ::geteuid();
  }
  return false;
}

/// True for a connection that comes from a process of this user on this machine.
bool is_own(const Connection& record) {
  sockaddr_in far{}, near{};
  socklen_t far_size = sizeof far, near_size = sizeof near;
  if (::getpeername(record.socket, reinterpret_cast<sockaddr*>(&far), &far_size) != 0 ||
      ::getsockname(record.socket, reinterpret_cast<sockaddr*>(&near), &near_size) != 0) {
    return false;
  }
  return far.sin_addr.s_addr == near.sin_addr.s_addr && is_own_socket(far, near);
}

/// Accepts the first client that may come. A wait that runs out has set the error text.
void accept(Connection& record, const ListeningServer& server, std::int32_t seconds, bool only_own) {
  const auto end = Clock::now() + std::chrono::seconds(seconds);
  for (std::int32_t left = seconds; left >= 0;) {
    PNC_accept_client(record, server, left);
    if (record.state != connection_state::accepted || !only_own || is_own(record)) return;
    PNC_close(record);
    left = static_cast<std::int32_t>(std::chrono::ceil<std::chrono::seconds>(end - Clock::now()).count());
  }
}

bool wait_for_core(Connection& record, std::int32_t seconds, const DetachNotifier& notifier, const std::string& path) {
  auto server = PNC_create_server(nullptr, "tcp");
  if (server == nullptr) return false;
  bool attached = false;
  if (write_reconnection_file(path, *server)) {
    if (notifier) notifier(*server);
    accept(record, *server, seconds, !notifier);
    attached = record.state == connection_state::accepted;
    const std::string why = attached ? "" : PLE_get_error();
    if (::unlink(path.c_str()) != 0) {
      std::printf("RJ_detached: cannot delete %s: %s\n", path.c_str(), std::strerror(errno));
    }
    if (!attached) PLE_error("%s", why.c_str());
  }
  PNC_close_server(std::move(server));
  return attached;
}

}  // namespace

std::string reconnection_file(std::int32_t process) { return "/tmp/reconnect." + std::to_string(process); }

std::int32_t RJ_detachedX(Connection& record, std::int32_t seconds, const DetachNotifier& notifier) {
  record = {};
  PLE_reset_error();
  if (wait_for_core(record, seconds, notifier, reconnection_file(::getpid()))) return 0;
  std::printf("RJ_detached failed: %s\n", PLE_get_error());
  return 1;
}

std::int32_t RJ_detached(Connection& record, std::int32_t seconds) { return RJ_detachedX(record, seconds, {}); }

void send_attach(const std::string& core_machine, const std::string& public_port, const std::string& process_name,
                 const ListeningServer& server) {
  const std::string command = "attach " + process_name + " " + PNC_server_machine(server) + " " +
                              std::to_string(::getpid()) + " " + PNC_server_name(server);
  Connection core;
  PNC_create_client(core, core_machine.c_str(), public_port.c_str(), "tcp");
  const bool sent = is_connected(core) && PD_send_char(core, command) == 0;
  if (!sent) std::fprintf(stderr, "Cannot send command '%s' to Varlane:\n\t%s\n", command.c_str(), PLE_get_error());
  if (is_connected(core)) PNC_close(core);
}

}  // namespace pathstat
