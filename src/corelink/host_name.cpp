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
#include <string_view>

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

const char* COM_gethostaddr() {
  static std::string kept;
  if (!kept.empty()) return kept.c_str();
  const char* name = COM_gethostname();
  const char* address = name != nullptr ? COM_inet_n2a(name) : nullptr;
  if (address == nullptr) {
    std::fprintf(stderr, "COM_gethostaddr: %s\n",
                 name == nullptr ? PLE_get_error() : "cannot define the IP address of the local host");
    return nullptr;
  }
  kept = address;
  return kept.c_str();
}

std::int32_t COM_its_local(const char* machine) {
  if (machine == nullptr) return 0;
  const std::string_view wanted = machine;
  if (wanted == "localhost") return 1;
  const char* name = COM_gethostname();
  if (name != nullptr && wanted == name) return 1;
  const char* address = COM_gethostaddr();
  return address != nullptr && wanted == address ? 1 : 0;
}

}  // namespace pathstat
