#include "corelink/host_name.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "corelink/last_error.h"
#include "corelink/socket_address.h"

namespace pathstat {
namespace {

/// HOSTNAME_PREFER if it can serve, otherwise the empty text.
std::string preferred_name() {
  const char* name = std::getenv("HOSTNAME_PREFER");
  if (name == nullptr) return {};
  if (*name != '\0' && COM_inet_n2a(name) != nullptr) return name;
  std::fprintf(stderr, "COM_gethostname ERROR: HOSTNAME_PREFER is set to '%s',\n", name);
  std::fprintf(stderr, "but IP address of '%s' cannot be defined. %s\n", name, "HOSTNAME_PREFER is ignored");
  return {};
}

std::string system_name() {
  std::array<char, 256> name{};
  if (::gethostname(name.data(), name.size() - 1) != 0) {
    PLE_error("Cannot get host name%s", PLE_system_error());
    return {};
  }
  if (!host_address(name.data())) {
    PLE_error("Host name %s is not in host database (/etc/hosts)", name.data());
    return {};
  }
  return name.data();
}

}  // namespace

const char* COM_gethostname() {
  static std::string kept;
  if (kept.empty()) kept = preferred_name();
  if (kept.empty()) kept = system_name();
  return kept.empty() ? nullptr : kept.c_str();
}

const char* COM_inet_n2a(const char* name) {
  static std::array<char, INET_ADDRSTRLEN> text;
  const auto address = host_address(name);
  if (!address) return nullptr;
  return ::inet_ntop(AF_INET, &*address, text.data(), text.size());
}

}  // namespace pathstat
