#pragma once

#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace pathstat {

/// A socket address of either domain, in the form that the system's calls take.
class SocketAddress {
 public:
  /// The path is cut to the 107 characters that the structure holds.
  static SocketAddress of_path(std::string_view path);
  static SocketAddress of_port(in_addr address, std::uint16_t port);

  const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&storage_); }
  socklen_t size() const { return size_; }

 private:
  sockaddr_storage storage_{};
  socklen_t size_ = 0;
};

/// The port number of an address.
std::uint16_t port_of(const sockaddr_in& address);

/// A decimal port number; nothing if the text is anything else.
std::optional<std::uint16_t> port_number(std::string_view text);

/// The address of a host name by the system's name service, numbers included.
std::optional<in_addr> host_address(const char* name);

/// The address of a machine: what its _ADDR variable says (for the whole name in upper case, then for the part ahead
/// of the first point), then the name as a dotted address, then the name service.
std::optional<in_addr> machine_address(const std::string& machine);

/// The name of the host at an address, else the dotted address.
std::string machine_name(in_addr address);

}  // namespace pathstat
