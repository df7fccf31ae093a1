#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <string>

#include "corelink/connection.h"

namespace pathstat::desk {

enum class Protocol { unix_socket, tcp };

/// The name by which the environment of the process tells the protocol.
constexpr const char* protocol_name(Protocol protocol) { return protocol == Protocol::tcp ? "tcp" : "unix"; }

/// Listens where only this machine can connect: on a socket in a private directory, or on a free loopback port.
class Listener {
 public:
  /// @param directory  where the socket goes; nobody else may enter it
  Listener(Protocol protocol, const std::filesystem::path& directory, std::string& error);
  ~Listener() { close(); }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  const std::string& machine() const { return server_.machine; }
  const std::string& name() const { return server_.server; }

  /// Takes the connection of one process and turns all others away. Who connects is known from the credentials of a
  /// Unix socket; of a loopback connection, from the owner of the socket at its other end.
  ///
  /// @param go_on  asked a few times a second; false gives up
  /// @return true if the process has connected
  bool accept_from(pid_t process, Connection& connection, const std::function<bool()>& go_on);

  void close();

 private:
  std::string listen_on_path(const std::filesystem::path& path);
  std::string listen_on_loopback();

  Protocol protocol_;
  ListeningServer server_;
};

/// True if the socket's other end is held by the process.
bool is_peer(const Connection& connection, Protocol protocol, pid_t process);

}  // namespace pathstat::desk
