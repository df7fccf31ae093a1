#include "desk/link/listener.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "corelink/socket_setup.h"
#include "desk/link/folder_content.h"

namespace pathstat::desk {
namespace {

constexpr const char* loopback = "127.0.0.1";

std::string failure(const char* what) { return fmt::format("cannot {}: {}", what, std::strerror(errno)); }

/// An address as the kernel's table of connections writes it: the address as stored, and the port.
std::string table_form(const sockaddr_in& address) {
  return fmt::format("{:08X}:{:04X}", address.sin_addr.s_addr, ntohs(address.sin_port));
}

/// The inode of the socket that is bound to `near` and connected to `far`; empty if the kernel knows none.
std::string socket_inode(const sockaddr_in& near, const sockaddr_in& far) {
  const auto wanted_near = table_form(near), wanted_far = table_form(far);
  std::ifstream table("/proc/net/tcp");
  std::string line;
  std::getline(table, line);
  while (std::getline(table, line)) {
    std::istringstream fields(line);
    std::string number, from, to, state, queues, timer, retransmits, user, timeout, inode;
    fields >> number >> from >> to >> state >> queues >> timer >> retransmits >> user >> timeout >> inode;
    if (from == wanted_near && to == wanted_far) return inode;
  }
  return {};
}

bool holds_socket(pid_t process, const std::string& inode) {
  const auto wanted = fmt::format("socket:[{}]", inode);
  const std::filesystem::path open_files = fmt::format("/proc/{}/fd", process);
  std::error_code error;
  for (const auto& name : names_in(open_files, error)) {
    std::error_code gone;
    if (std::filesystem::read_symlink(open_files / name, gone) == wanted) return true;
  }
  return false;
}

}  // namespace

Listener::Listener(Protocol protocol, const std::filesystem::path& directory, std::string& error)
    : protocol_(protocol) {
  server_.protocol = protocol_name(protocol);
  server_.machine = loopback;
  error = protocol == Protocol::tcp ? listen_on_loopback() : listen_on_path(directory / "core");
}

std::string Listener::listen_on_path(const std::filesystem::path& path) {
  server_.server = path;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (server_.server.size() >= sizeof address.sun_path)
    return "the path of the socket is too long (--protocol tcp needs none): " + server_.server;
  std::memcpy(address.sun_path, server_.server.c_str(), server_.server.size() + 1);
  server_.socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (server_.socket < 0) return failure("make a socket");
  if (::bind(server_.socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(server_.socket, 1) != 0) {
    return failure("listen on a socket");
  }
  return {};
}

std::string Listener::listen_on_loopback() {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  ::inet_pton(AF_INET, loopback, &address.sin_addr);
  socklen_t size = sizeof address;
  server_.socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (server_.socket < 0) return failure("make a socket");
  PNC_tcp_nodelay(server_.socket);
  if (::bind(server_.socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(server_.socket, 1) != 0 ||
      ::getsockname(server_.socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    return failure("listen on a loopback port");
  }
  server_.server = std::to_string(ntohs(address.sin_port));
  return {};
}

bool is_peer(const Connection& connection, Protocol protocol, pid_t process) {
  if (protocol == Protocol::unix_socket) {
    ucred credentials{};
    socklen_t size = sizeof credentials;
    return ::getsockopt(connection.socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size) == 0 &&
           credentials.pid == process;
  }
  sockaddr_in near{}, far{};
  socklen_t near_size = sizeof near, far_size = sizeof far;
  if (::getsockname(connection.socket, reinterpret_cast<sockaddr*>(&near), &near_size) != 0 ||
      ::getpeername(connection.socket, reinterpret_cast<sockaddr*>(&far), &far_size) != 0) {
    return false;
  }
  const auto inode = socket_inode(far, near);
  return !inode.empty() && holds_socket(process, inode);
}

bool Listener::accept_from(pid_t process, Connection& connection, const std::function<bool()>& go_on) {
  while (go_on()) {
    pollfd waiting{server_.socket, POLLIN, 0};
    if (::poll(&waiting, 1, 100) <= 0) continue;
    PNC_accept_client(connection, server_, 1);
    if (!is_connected(connection)) continue;
    if (is_peer(connection, protocol_, process)) return true;
    PNC_close(connection);
  }
  return false;
}

void Listener::close() {
  if (server_.socket < 0) return;
  ::close(server_.socket);
  server_.socket = -1;
  // Without memory, which a path of the library would take.
  if (protocol_ == Protocol::unix_socket) ::unlink(server_.server.c_str());
}

}  // namespace pathstat::desk
