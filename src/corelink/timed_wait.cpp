#include "corelink/timed_wait.h"

#include <sys/select.h>

#include <cerrno>
#include <span>
#include <string>

#include "corelink/byte_dump.h"
#include "corelink/last_error.h"
#include "corelink/product.h"
#include "corelink/transport_log.h"

namespace pathstat {
namespace {

std::string mask_text(const fd_set& mask, std::int32_t socket) {
  return COM_scdump(std::as_bytes(std::span(&mask, 1)).first(static_cast<std::size_t>(socket) / 8 + 1));
}

}  // namespace

WaitResult timed_wait(std::int32_t socket, WaitDirection direction, std::int32_t seconds) {
  const bool reading = direction == WaitDirection::read;
  const char* mask_name = reading ? "readmask" : "writemask";
  int ready = -1;
  errno = EBADF;
  while (socket >= 0 && socket < FD_SETSIZE) {  // a mask has no room for any other socket
    fd_set mask;
    FD_ZERO(&mask);
    FD_SET(socket, &mask);
    timeval limit{seconds, 0};
    if (verbose_log()) {
      PNC_debug("%s: %s before select() for socket %d: %s\n", PRODUCT_EXE, mask_name, socket,
                mask_text(mask, socket).c_str());
    }
    ready = ::select(socket + 1, reading ? &mask : nullptr, reading ? nullptr : &mask, nullptr, &limit);
    const int failure = errno;
    if (verbose_log()) {
      PNC_debug("%s %s after select() (%d): %s\n", PRODUCT_EXE, mask_name, ready, mask_text(mask, socket).c_str());
    }
    errno = failure;
    if (ready >= 0 || failure != EINTR) break;
  }
  if (ready > 0) return WaitResult::ready;
  if (ready == 0) return WaitResult::timed_out;
  PLE_error("Unknown system error checking timeout%s", PLE_system_error());
  return WaitResult::error;
}

}  // namespace pathstat
