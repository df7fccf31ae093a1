#include "corelink/socket_address.h"

#include <arpa/inet.h>
#include <netdb.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <cstring>

#include "corelink/terminated_text.h"
#include "corelink/transport_log.h"
#include "support/big_endian.h"

namespace pathstat {
namespace {

unsigned int shown(in_addr address) {
  return load_big_endian<std::uint32_t>(reinterpret_cast<const std::byte*>(&address.s_addr));
}

std::optional<in_addr> dotted_address(const char* text) {
  in_addr address{};
  if (::inet_pton(AF_INET, text, &address) != 1) return std::nullopt;
  return address;
}

/// What the variable NAME_ADDR says, NAME being `name` in upper case.
std::optional<in_addr> address_variable(std::string name) {
  COM_toupper(name.data());
  name += "_ADDR";
  const char* value = std::getenv(name.c_str());
  if (value == nullptr) {
    if (verbose_log()) PNC_debug("Variable %s not defined\n", name.c_str());
    return std::nullopt;
  }
  const auto address = dotted_address(value);
  if (verbose_log()) PNC_debug("trying %s=%s (addr=%X)\n", name.c_str(), value, shown(address.value_or(in_addr{})));
  return address;
}

}  // namespace

SocketAddress SocketAddress::of_path(std::string_view path) {
  sockaddr_un unix_address{};
  unix_address.sun_family = AF_UNIX;
  path.copy(unix_address.sun_path, sizeof unix_address.sun_path - 1);
  SocketAddress address;
  std::memcpy(&address.storage_, &unix_address, sizeof unix_address);
  address.size_ = sizeof unix_address;
  return address;
}

SocketAddress SocketAddress::of_port(in_addr host, std::uint16_t port) {
  sockaddr_in internet_address{};
  internet_address.sin_family = AF_INET;
  internet_address.sin_addr = host;
  store_big_endian(port, reinterpret_cast<std::byte*>(&internet_address.sin_port));
  SocketAddress address;
  std::memcpy(&address.storage_, &internet_address, sizeof internet_address);
  address.size_ = sizeof internet_address;
  return address;
}

std::uint16_t port_of(const sockaddr_in& address) {
  return load_big_endian<std::uint16_t>(reinterpret_cast<const std::byte*>(&address.sin_port));
}

std::optional<std::uint16_t> port_number(std::string_view text) {
  std::uint16_t port = 0;
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), port);
  if (failure != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return port;
}

std::optional<in_addr> host_address(const char* name) {
  addrinfo wanted{};
  wanted.ai_family = AF_INET;
  wanted.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (::getaddrinfo(name, nullptr, &wanted, &found) != 0) return std::nullopt;
  sockaddr_in address;
  std::memcpy(&address, found->ai_addr, sizeof address);
  ::freeaddrinfo(found);
  return address.sin_addr;
}

std::optional<in_addr> machine_address(const std::string& machine) {
  auto address = address_variable(machine);
  const auto point = machine.find('.');
  if (!address && point != std::string::npos) address = address_variable(machine.substr(0, point));
  if (!address) {
    address = dotted_address(machine.c_str());
    if (verbose_log() && address) PNC_debug("trying %s (addr=%X)\n", machine.c_str(), shown(*address));
  }
  if (address) {
    if (verbose_log()) PNC_debug("remote host address=%X\n", shown(*address));
    return address;
  }
  if (verbose_log()) PNC_debug("machine=%s is not a valid network address\n", machine.c_str());
  address = host_address(machine.c_str());
  if (verbose_log() && address) {
    PNC_debug("remote host address=%X, its length=%d\n", shown(*address), static_cast<int>(sizeof *address));
  }
  return address;
}

std::string machine_name(in_addr address) {
  const SocketAddress socket_address = SocketAddress::of_port(address, 0);
  std::array<char, NI_MAXHOST> name{};
  if (::getnameinfo(socket_address.get(), socket_address.size(), name.data(), name.size(), nullptr, 0, NI_NAMEREQD) ==
      0) {
    return name.data();
  }
  if (::inet_ntop(AF_INET, &address, name.data(), name.size()) != nullptr) return name.data();
  return "unknown";
}

}  // namespace pathstat
