#include "corelink/socket_setup.h"

#include <netdb.h>
#include <netinet/tcp.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string_view>
#include <utility>

#include "corelink/byte_dump.h"
#include "corelink/environment.h"
#include "corelink/last_error.h"
#include "corelink/transport_log.h"

namespace pathstat {
namespace {

void on_broken_pipe(int) {
  const int failure = errno;  // the write that the signal stands for tells its own error
  std::signal(SIGPIPE, on_broken_pipe);
  if (verbose_log()) PNC_debug("caught signal of broken socket\n");
  errno = failure;
}

}  // namespace

std::int32_t PNC_tcp_nodelay(std::int32_t socket) {
  if (std::getenv("PNC_DELAY") != nullptr) return 0;
  const protoent* tcp = ::getprotobyname("tcp");
  if (tcp == nullptr) {
    std::fputs("PNC_tcp_nodelay: getprotobyname failed\n", stderr);
    return -1;
  }
  const int on = 1;
  if (::setsockopt(socket, tcp->p_proto, TCP_NODELAY, &on, sizeof on) != 0) {
    std::fputs("PNC_tcp_nodelay: setsockopt failed\n", stderr);
    return -2;
  }
  return 0;
}

std::int32_t PNC_tcp_condbuf(std::int32_t socket) {
  constexpr std::int32_t least = 4096;
  constexpr std::int32_t instead = 32768;
  const char* value = std::getenv("PNC_SOCKBUF");
  if (value == nullptr) return 0;
  std::int32_t size = 0;
  std::sscanf(value, "%d", &size);
  return PNC_tcp_sockbuf(socket, size < least ? instead : size);
}

std::int32_t PNC_tcp_sockbuf(std::int32_t socket, std::int32_t size) {
  if (::setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &size, sizeof size) != 0) {
    std::fprintf(stderr, "PNC_tcp_sockbuf failed for the receive-buffer %d bytes:%s\n", size, PLE_system_error());
    return -1;
  }
  if (::setsockopt(socket, SOL_SOCKET, SO_SNDBUF, &size, sizeof size) != 0) {
    std::fprintf(stderr, "PNC_tcp_sockbuf failed for the send-buffer %d bytes:%s\n", size, PLE_system_error());
    return -2;
  }
  return 0;
}

void install_broken_pipe_handler() { std::signal(SIGPIPE, on_broken_pipe); }

std::optional<int> socket_domain(const char* protocol) {
  const std::string_view name(protocol);
  if (name == "unix") return AF_UNIX;
  if (name == "tcp") return AF_INET;
  PLE_error("Unknown protocol %s for network connection", protocol);
  return std::nullopt;
}

void prepare_creation() {
  constexpr std::int32_t default_timeout_s = 60;
  PNC_InitDebug();
  PNC_Timeout = COM_getnumenv("PNC_TIMEOUT", default_timeout_s);
}

void log_address(const SocketAddress& address) {
  if (verbose_log()) COM_cdump("PNC Socket", std::as_bytes(std::span(address.get(), 1)), log_stream());
}

void finish_connection(Connection& record, std::string peer, std::int32_t state) {
  PNC_init_read_buffer(record, COM_getnumenv("READ_BUFFER", 0));
  PNC_init_write_buffer(record, COM_getnumenv("WRITE_BUFFER", 0));
  record.received_count = 0;
  record.sent_count = 0;
  record.peer = std::move(peer);
  record.connected = 1;
  record.state = state;
}

}  // namespace pathstat
