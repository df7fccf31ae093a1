#pragma once

#include <cstdint>
#include <optional>

#include "corelink/connection.h"
#include "corelink/socket_address.h"

namespace pathstat {

/// Turns TCP_NODELAY on, unless PNC_DELAY is set. @return 0, or -1 or -2 with a line on standard error
std::int32_t PNC_tcp_nodelay(std::int32_t socket);

/// Sets the socket's buffers to the size that PNC_SOCKBUF asks for, if it is set. @return as PNC_tcp_sockbuf
std::int32_t PNC_tcp_condbuf(std::int32_t socket);

/// Sets the receive and the send buffer. @return 0; -1 if the receive buffer, -2 if the send buffer was refused
std::int32_t PNC_tcp_sockbuf(std::int32_t socket, std::int32_t size);

/// Has a write to a dead peer fail with an error code instead of ending the process.
void install_broken_pipe_handler();

/// The socket domain of a protocol; nothing, with the error text set, if it is neither "tcp" nor "unix".
std::optional<int> socket_domain(const char* protocol);

/// What every creation starts with: the log and PNC_Timeout.
void prepare_creation();

/// Shows a socket address in a verbose log.
void log_address(const SocketAddress& address);

/// The last steps of a made connection: buffers as the environment asks, the peer, the state.
void finish_connection(Connection& record, std::string peer, std::int32_t state);

}  // namespace pathstat
