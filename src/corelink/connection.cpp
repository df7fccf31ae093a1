#include "corelink/connection.h"

#include <unistd.h>

#include <new>
#include <span>

#include "corelink/byte_dump.h"
#include "corelink/last_error.h"
#include "corelink/time_stamp.h"
#include "corelink/transport_log.h"

namespace pathstat {
namespace {

/// Allocates a buffer and tells its size, which is 0 if there is none.
std::int32_t make_buffer(std::unique_ptr<std::byte[]>& buffer, std::int32_t size) {
  buffer.reset(size < 1 ? nullptr : new (std::nothrow) std::byte[static_cast<std::size_t>(size)]);
  return buffer != nullptr ? size : 0;
}

}  // namespace

void PNC_init_read_buffer(Connection& record, std::int32_t size) {
  record.read_buffer_size = make_buffer(record.read_buffer, size);
  record.next_unread_char = 0;
  record.read_buffer_end = 0;
}

void PNC_init_write_buffer(Connection& record, std::int32_t size) {
  record.write_buffer_size = make_buffer(record.write_buffer, size);
  record.next_unwritten_char = 0;
}

std::int32_t PNC_close(Connection& record) {
  if (!is_connected(record)) {
    PLE_error("Connection broken");
    return 1;
  }
  bool good = PNC_flush(record) == 1;
  if (pnc_debug >= 1) {
    PNC_debug("closed %s@%s <-> %s at %s\n", record.server.c_str(), record.machine.c_str(), record.peer.c_str(),
              COM_timestamp());
  }
  if (verbose_log()) COM_cdump("PNC before closing", std::as_bytes(std::span(&record, 1)), log_stream());
  if (::close(record.socket) != 0) {
    PLE_error("Error while closing - tcp server is %s@%s%s", record.server.c_str(), record.machine.c_str(),
              PLE_system_error());
    good = false;
  }
  record = {};
  return good ? 0 : 1;
}

}  // namespace pathstat
