#pragma once

#include <string>
#include <string_view>

namespace pathstat::desk {

/// What a request tells of where it comes from. Texts are empty where it has no such line.
struct RequestFacts {
  std::string_view method;
  std::string_view target;
  std::string_view host;
  std::string_view origin;
  std::string_view cookie;
  bool upgrade = false;  ///< it wants to become a web socket
};

enum class Access {
  allowed,
  hands_over_token,  ///< allowed, and the answer is to set the cookie
  wrong_method,
  wrong_host,
  wrong_origin,
  wrong_token,
};

/// What a request may do that reaches the server under its port.
///
/// The host must be this machine's loopback by name or number, so that no name that resolves to it leads here. A page
/// of another origin is refused; a web socket must name its origin. The token comes in the address of the first page,
/// and in the cookie from then on.
Access access_of(const RequestFacts& facts, unsigned short port, std::string_view token);

/// The name of the cookie: cookies are not kept apart by port, so the port is part of it.
std::string cookie_name(unsigned short port);

/// The path of a target, without what stands behind its question mark.
std::string_view path_of(std::string_view target);
/// The value of a name behind the question mark, its escapes resolved; empty if there is none.
std::string query_value(std::string_view target, std::string_view name);

/// A new token: 64 hexadecimal digits of randomness. Empty if the system has none to give.
std::string new_token();

}  // namespace pathstat::desk
