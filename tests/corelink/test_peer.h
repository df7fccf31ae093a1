#pragma once

#include <sys/socket.h>
#include <unistd.h>

#include <bit>

#include "corelink/connection.h"
#include "support/big_endian.h"
#include "surroundings.h"
#include "testing.h"

namespace pathstat {

/// A connection whose far end the test holds.
class TestPeer {
 public:
  /// @param kind  SOCK_STREAM, or SOCK_SEQPACKET to see each write as one packet
  explicit TestPeer(int kind = SOCK_STREAM) {
    std::array<int, 2> sockets{};
    EXPECT_EQ(::socketpair(AF_UNIX, kind, 0, sockets.data()), 0);
    connection.socket = sockets[0];
    far_ = sockets[1];
    connection.protocol = "tcp";
    connection.machine = "here";
    connection.server = "4711";
    connection.peer = "core";
    connection.connected = 1;
    connection.state = connection_state::client;
  }
  ~TestPeer() {
    close();
    if (is_connected(connection)) PNC_close(connection);
  }
  TestPeer(const TestPeer&) = delete;
  TestPeer& operator=(const TestPeer&) = delete;

  void write(std::string_view bytes) const {
    if (bytes.empty()) return;
    ASSERT_EQ(::send(far_, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
  }
  void write_int(std::int32_t value) const { write(bytes_of(value)); }
  void write_ints(std::initializer_list<std::int32_t> values) const {
    for (const auto value : values) write_int(value);
  }

  /// What one read gives without waiting; empty if nothing is there.
  std::string read() const {
    std::string bytes(1 << 18, '\0');
    const auto count = ::recv(far_, bytes.data(), bytes.size(), MSG_DONTWAIT);
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
  }
  /// All packets that have arrived.
  std::vector<std::string> packets() const {
    std::vector<std::string> all;
    for (std::string packet = read(); !packet.empty(); packet = read()) all.push_back(packet);
    return all;
  }

  void close() {
    if (far_ >= 0) ::close(far_);
    far_ = -1;
  }
  void close_for_writing() const { ::shutdown(far_, SHUT_WR); }
  int far_socket() const { return far_; }

  template <class T>
  static std::string bytes_of(T value) {
    std::string bytes(sizeof value, '\0');
    store_big_endian(value, reinterpret_cast<std::byte*>(bytes.data()));
    return bytes;
  }

  Connection connection;

 private:
  int far_ = -1;
};

inline std::string ints(std::initializer_list<std::int32_t> values) {
  std::string bytes;
  for (const auto value : values) bytes += TestPeer::bytes_of(value);
  return bytes;
}

inline std::span<const std::byte> bytes_of(std::string_view text) { return std::as_bytes(std::span(text)); }

}  // namespace pathstat
