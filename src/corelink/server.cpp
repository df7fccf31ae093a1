#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <utility>

#include "corelink/connection.h"
#include "corelink/host_name.h"
#include "corelink/last_error.h"
#include "corelink/socket_setup.h"
#include "corelink/timed_wait.h"
#include "corelink/transport_log.h"

namespace pathstat {
namespace {

constexpr int backlog = 5;

std::string local_name() {
  const char* name = COM_gethostname();
  return name != nullptr ? name : "localhost";
}

void prepare_tcp_socket(int socket) {
  PNC_tcp_nodelay(socket);
  PNC_tcp_condbuf(socket);
  const int on = 1;
  if (::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0) {
    std::fprintf(stderr, "PNC warning: setsockopt-SO_REUSEADDR failed: %s\n", std::strerror(errno));
  }
}

std::optional<SocketAddress> listening_address(const std::string& name, bool is_tcp) {
  if (!is_tcp) return SocketAddress::of_path(name);
  const auto port = port_number(name);
  if (!port) {
    PLE_error("Illegal server %s (not a tcp port number)", name.c_str());
    return std::nullopt;
  }
  return SocketAddress::of_port(in_addr{INADDR_ANY}, *port);
}

/// Binds the socket and listens. @return 0, or the error number of a failed bind, or -1 for any other failure
int bind_and_listen(int socket, const std::string& name, bool is_tcp) {
  const auto address = listening_address(name, is_tcp);
  if (!address) return -1;
  log_address(*address);
  if (::bind(socket, address->get(), address->size()) != 0) {
    const int failure = errno;
    PLE_error("Cannot create tcp server %s - %s", name.c_str(), PLE_system_error());
    return failure;
  }
  if (::listen(socket, backlog) != 0) {
    PLE_error("Cannot create tcp server %s%s", name.c_str(), PLE_system_error());
    if (!is_tcp) ::unlink(name.c_str());
    return -1;
  }
  return 0;
}

/// A server on exactly this name; null on failure. `name_in_use` tells whether another name could do.
std::unique_ptr<ListeningServer> listen_on(const std::string& name, const char* protocol, bool& name_in_use) {
  name_in_use = false;
  const auto domain = socket_domain(protocol);
  if (!domain) return nullptr;
  const bool is_tcp = *domain == AF_INET;
  const int socket = ::socket(*domain, SOCK_STREAM, 0);
  if (socket < 0) {
    if (errno == EMFILE) {
      PLE_error("Cannot create server %s - too many open files", name.c_str());
    } else {
      PLE_error("Cannot create server %s%s", name.c_str(), PLE_system_error());
    }
    return nullptr;
  }
  if (is_tcp) prepare_tcp_socket(socket);
  const int failure = bind_and_listen(socket, name, is_tcp);
  name_in_use = failure == EADDRINUSE;
  if (failure != 0) {
    ::close(socket);
    return nullptr;
  }
  install_broken_pipe_handler();
  return std::make_unique<ListeningServer>(ListeningServer{protocol, local_name(), name, socket});
}

std::unique_ptr<ListeningServer> listen_on_any_port() {
  bool in_use = false;
  auto server = listen_on("0", "tcp", in_use);
  if (server == nullptr) return nullptr;
  sockaddr_in address{};
  socklen_t size = sizeof address;
  if (::getsockname(server->socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    PLE_error("Unknown system error getting socket name %s", PLE_system_error());
    ::close(server->socket);
    return nullptr;
  }
  server->server = std::to_string(port_of(address));
  return server;
}

std::unique_ptr<ListeningServer> listen_on_any_path() {
  static int counter = 1000;
  constexpr int tries = 1000;
  for (int k = 0; k < tries; ++k) {
    bool in_use = false;
    auto server = listen_on("/tmp/sok" + std::to_string(++counter), "unix", in_use);
    if (server != nullptr || !in_use) return server;
  }
  PLE_error("/tmp directory full of files! Try 'rm /tmp/sok*'");
  return nullptr;
}

std::string peer_name(const sockaddr_storage& address) {
  if (address.ss_family != AF_INET) return local_name();
  sockaddr_in internet_address;
  std::memcpy(&internet_address, &address, sizeof internet_address);
  return machine_name(internet_address.sin_addr);
}

}  // namespace

std::unique_ptr<ListeningServer> PNC_create_server(const char* name, const char* protocol) {
  prepare_creation();
  if (verbose_log()) {
    PNC_debug("Creating PNC server %s, PNC_Timeout=%d, protocol=%s\n", or_null(name), PNC_Timeout, or_null(protocol));
  }
  if (protocol == nullptr) protocol = "tcp";
  const auto domain = socket_domain(protocol);
  if (!domain) return nullptr;
  if (name == nullptr) return *domain == AF_INET ? listen_on_any_port() : listen_on_any_path();
  bool in_use = false;
  return listen_on(name, protocol, in_use);
}

void PNC_accept_client(Connection& record, const ListeningServer& server, std::int32_t timeout) {
  record = {};
  if (verbose_log()) {
    PNC_debug("accepting client for %s@%s, timeout=%d\n", server.server.c_str(), server.machine.c_str(), timeout);
  }
  if (timeout != no_time_limit) {
    const auto result = timed_wait(server.socket, WaitDirection::read, timeout);
    if (result == WaitResult::timed_out) {
      PLE_error("timed out waiting for client for tcp server %s@%s", server.server.c_str(), server.machine.c_str());
    }
    if (result != WaitResult::ready) return;
  }
  sockaddr_storage address{};
  int socket = -1;
  do {
    socklen_t size = sizeof address;
    socket = ::accept(server.socket, reinterpret_cast<sockaddr*>(&address), &size);
  } while (socket < 0 && errno == EINTR);
  if (socket < 0) {
    PLE_error("Cannot accept client for server %s@%s%s", server.server.c_str(), server.machine.c_str(),
              PLE_system_error());
    return;
  }
  record.socket = socket;
  record.protocol = server.protocol;
  record.machine = server.machine;
  record.server = server.server;
  finish_connection(record, peer_name(address), connection_state::accepted);
}

std::int32_t PNC_close_server(std::unique_ptr<ListeningServer> server) {
  if (server == nullptr) return 1;
  if (server->protocol == "unix") ::unlink(server->server.c_str());
  return ::close(server->socket) == 0 ? 0 : 1;
}

const std::string& PNC_server_machine(const ListeningServer& server) { return server.machine; }
const std::string& PNC_server_name(const ListeningServer& server) { return server.server; }
const std::string& PNC_server_protocol(const ListeningServer& server) { return server.protocol; }

}  // namespace pathstat
