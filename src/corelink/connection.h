#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace pathstat {

/// Values of Connection::state.
namespace connection_state {
constexpr std::int32_t closed = 0;
constexpr std::int32_t accepted = 11;
constexpr std::int32_t connecting = 20;
constexpr std::int32_t client = 21;
}  // namespace connection_state

/// One byte stream to a peer. A default-made record is the closed one: state 0, no texts, no buffers.
/// Empty texts stand for missing ones. The socket stays open until PNC_close.
struct Connection {
  std::string protocol;  ///< "tcp" or "unix"
  std::string machine;   ///< machine of the server
  std::string server;    ///< decimal port, or socket path
  std::unique_ptr<std::byte[]> read_buffer;
  std::int32_t read_buffer_size = 0;
  std::int32_t next_unread_char = 0;
  std::int32_t read_buffer_end = 0;
  std::unique_ptr<std::byte[]> write_buffer;
  std::int32_t write_buffer_size = 0;
  std::int32_t next_unwritten_char = 0;
  std::int32_t socket = 0;
  std::int64_t received_count = 0;  ///< bytes read from the socket; the counters are wide, so that they never wrap
  std::int64_t sent_count = 0;
  std::int64_t received_total = 0;  ///< "Got so far" of the log
  std::int64_t sent_total = 0;      ///< "Sent so far" of the log
  std::string peer;                 ///< machine at the other end
  std::int32_t state = connection_state::closed;
  std::int32_t connected = 0;
};

/// A listening socket.
struct ListeningServer {
  std::string protocol;
  std::string machine;
  std::string server;
  std::int32_t socket = -1;
};

/// Seconds that a read waits for its first byte, but for reads that wait for an input code or for a reply.
inline std::int32_t PNC_Timeout = 60;

/// A time limit that never runs out.
constexpr std::int32_t no_time_limit = -1;

/// Connects to `server` on `machine`. A null protocol means "tcp", a null machine the local host.
/// On failure the record is the closed one, and PLE_get_error() tells why.
void PNC_create_client(Connection& record, const char* machine, const char* server, const char* protocol);

/// Listens on `name`, or on any free port or socket path if it is null. Null on failure, with the error text set.
std::unique_ptr<ListeningServer> PNC_create_server(const char* name, const char* protocol);

/// Waits at most `timeout` seconds for one client. On failure the record is the closed one, with the error text set.
void PNC_accept_client(Connection& record, const ListeningServer& server, std::int32_t timeout);

/// @return 1 on failure, else 0. The path of a Unix socket is removed.
std::int32_t PNC_close_server(std::unique_ptr<ListeningServer> server);

/// Flushes, closes the socket and leaves the closed record. @return 1 on failure, else 0
std::int32_t PNC_close(Connection& record);

/// Sends or buffers the bytes. @return 1 on success, 0 on failure, -1 if the record is not connected
std::int32_t PNC_send(Connection& record, std::span<const std::byte> bytes);

/// Writes what waits in the output buffer. @return 1 on success, 0 on failure
std::int32_t PNC_flush(Connection& record);

/// Flushes the output buffer and reads bytes.size() bytes. The limit holds for the first byte only.
/// @return number of bytes delivered, fewer than asked for on end of file or timeout; -1 on an error
std::int64_t PNC_receive(Connection& record, std::span<std::byte> bytes, std::int32_t timeout);

/// Gives the record a buffer of `size` bytes, or none if `size` is below 1 or memory is out.
void PNC_init_read_buffer(Connection& record, std::int32_t size);
void PNC_init_write_buffer(Connection& record, std::int32_t size);

const std::string& PNC_server_machine(const ListeningServer& server);
const std::string& PNC_server_name(const ListeningServer& server);
const std::string& PNC_server_protocol(const ListeningServer& server);

/// True in the states in which bytes can pass.
inline bool is_connected(const Connection& record) {
  return record.state == connection_state::accepted || record.state == connection_state::client;
}

}  // namespace pathstat
