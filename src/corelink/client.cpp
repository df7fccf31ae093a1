#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <utility>

#include "corelink/connection.h"
#include "corelink/host_name.h"
#include "corelink/last_error.h"
#include "corelink/socket_setup.h"
#include "corelink/transport_log.h"

namespace pathstat {
namespace {

std::optional<SocketAddress> server_address(const Connection& record) {
  if (record.protocol == "unix") return SocketAddress::of_path(record.server);
  const auto port = port_number(record.server);
  if (!port) {
    PLE_error("Cannot create client for %s@%s (not a tcp port number)", or_null(record.server), record.machine.c_str());
    return std::nullopt;
  }
  const auto host = machine_address(record.machine);
  if (!host) {
    PLE_error("Cannot create tcp client for %s@%s - unknown machine", record.server.c_str(), record.machine.c_str());
    return std::nullopt;
  }
  return SocketAddress::of_port(*host, *port);
}

bool open_socket(Connection& record, int domain) {
  record.socket = ::socket(domain, SOCK_STREAM, 0);
  if (record.socket >= 0) return true;
  if (errno == EMFILE) {
    PLE_error("Cannot create tcp client for %s@%s - too many open files", or_null(record.server),
              record.machine.c_str());
  } else {
    PLE_error("Cannot create tcp client for %s@%s:\n\t%s", or_null(record.server), record.machine.c_str(),
              PLE_system_error());
  }
  return false;
}

bool connect_socket(const Connection& record) {
  if (record.protocol == "tcp") {
    PNC_tcp_nodelay(record.socket);
    PNC_tcp_condbuf(record.socket);
  }
  const auto address = server_address(record);
  if (!address) return false;
  log_address(*address);
  if (::connect(record.socket, address->get(), address->size()) == 0) return true;
  if (errno == ECONNREFUSED) {
    PLE_error("Cannot connect to %s@%s - tcp server does not exist", or_null(record.server), record.machine.c_str());
  } else {
    PLE_error("Cannot contact server%s", PLE_system_error());
  }
  return false;
}

}  // namespace

void PNC_create_client(Connection& record, const char* machine, const char* server, const char* protocol) {
  record = {};
  prepare_creation();
  if (verbose_log()) {
    PNC_debug("%s machine=%s, port=%s, protocol=%s, PNC_Timeout=%d\n", "PNC_create_client started:", or_null(machine),
              or_null(server), or_null(protocol), PNC_Timeout);
  }
  if (protocol == nullptr) protocol = "tcp";
  if (machine == nullptr) machine = COM_gethostname();
  if (machine == nullptr) return;
  const auto domain = socket_domain(protocol);
  if (!domain) return;

  Connection working;
  working.state = connection_state::connecting;
  working.protocol = protocol;
  working.machine = machine;
  if (server != nullptr) working.server = server;
  if (!open_socket(working, *domain)) return;
  if (!connect_socket(working)) {
    ::close(working.socket);
    return;
  }
  install_broken_pipe_handler();
  finish_connection(working, working.machine, connection_state::client);
  record = std::move(working);
}

}  // namespace pathstat
