#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "corelink/connection.h"
#include "corelink/last_error.h"
#include "corelink/product.h"
#include "corelink/timed_wait.h"
#include "corelink/transport_log.h"

namespace pathstat {
namespace {

constexpr int most_interrupts = 6001;  // of one read

int logged(std::int64_t count) { return static_cast<int>(count); }
int logged(std::size_t count) { return static_cast<int>(count); }

bool refuse_unconnected(const Connection& record) {
  if (is_connected(record)) return false;
  PLE_error("Connection broken");
  return true;
}

bool fail_send(const Connection& record, ssize_t result) {
  if (errno == EPIPE) {
    PLE_error("Network connection broken for tcp server %s@%s", record.server.c_str(), record.machine.c_str());
  } else {
    PLE_error("Error while sending - tcp server is %s@%s%s", record.server.c_str(), record.machine.c_str(),
              PLE_system_error());
  }
  if (pnc_debug >= 1) PNC_debug("PNC_send failed (n=%d)\t%s\n", logged(result), PLE_get_error());
  // What was sent may end inside a value: nothing can follow it, and neither side may wait for the rest.
  ::shutdown(record.socket, SHUT_RDWR);
  return false;
}

bool write_directly(Connection& record, std::span<const std::byte> bytes) {
  if (record.server.empty() || record.machine.empty() || record.peer.empty()) {
    std::fputs("PNC_send: Control structure is broken\n", stderr);
    return false;
  }
  if (pnc_debug >= 2) {
    PNC_debug("PNC_send (%s):\t%d bytes -> %s (%s) (Sent so far: %d)\n", PRODUCT_EXE, logged(bytes.size()),
              record.peer.c_str(), record.server.c_str(), logged(record.sent_total));
  }
  // One write takes the whole block; only a signal handler that runs in its middle makes another one needed.
  for (auto rest = bytes; !rest.empty();) {
    const ssize_t written = ::write(record.socket, rest.data(), rest.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return fail_send(record, written);
    rest = rest.subspan(static_cast<std::size_t>(written));
  }
  record.sent_count += static_cast<std::int64_t>(bytes.size());
  record.sent_total += static_cast<std::int64_t>(bytes.size());
  return true;
}

void hold(Connection& record, std::span<const std::byte> bytes) {
  if (bytes.empty()) return;
  std::memcpy(record.write_buffer.get() + record.next_unwritten_char, bytes.data(), bytes.size());
  record.next_unwritten_char += static_cast<std::int32_t>(bytes.size());
  if (verbose_log()) {
    PNC_debug("PNC_send: buffered %d bytes; next_unwritten_char=%d\n", logged(bytes.size()),
              record.next_unwritten_char);
  }
}

bool send_through_buffer(Connection& record, std::span<const std::byte> bytes) {
  const auto size = static_cast<std::size_t>(record.write_buffer_size);
  const auto free = size - static_cast<std::size_t>(record.next_unwritten_char);
  if (bytes.size() < free) {
    hold(record, bytes);
    return true;
  }
  if (bytes.size() < size + free) {
    hold(record, bytes.first(free));
    if (PNC_flush(record) != 1) return false;
    hold(record, bytes.subspan(free));
    return true;
  }
  return PNC_flush(record) == 1 && write_directly(record, bytes);
}

std::int64_t fail_receive(const Connection& record, int interrupts) {
  PLE_error("Error while receiving - tcp server is %s@%s%s", record.server.c_str(), record.machine.c_str(),
            PLE_system_error());
  if (pnc_debug >= 1) {
    PNC_debug("PNC (%s) recv: Error while receiving from %s@%s. Interrupts: %d%s", PRODUCT_EXE, record.server.c_str(),
              record.machine.c_str(), interrupts, PLE_system_error());
  }
  return -1;
}

/// True if the first byte is there within the limit; false with `got` set to what the read then answers.
bool await_first_byte(const Connection& record, std::int32_t timeout, std::int64_t& got) {
  if (timeout == no_time_limit) return true;
  const auto result = timed_wait(record.socket, WaitDirection::read, timeout);
  if (result == WaitResult::ready) return true;
  got = result == WaitResult::error ? -1 : 0;
  if (result == WaitResult::timed_out) {
    PLE_error("Timed out while receiving - tcp server is %s@%s", record.server.c_str(), record.machine.c_str());
  }
  return false;
}

/// One read, repeated while signals interrupt it.
ssize_t read_once(Connection& record, std::span<std::byte> target, int& interrupts) {
  ssize_t count = ::read(record.socket, target.data(), target.size());
  for (interrupts = 0; count < 0 && errno == EINTR && interrupts < most_interrupts; ++interrupts) {
    count = ::read(record.socket, target.data(), target.size());
  }
  if (pnc_debug >= 2 && count >= 0) {
    PNC_debug("PNC (%s) recv %s <- %s (%s) %d b.  0x%s\n", PRODUCT_EXE, logged_host(), record.peer.c_str(),
              record.server.c_str(), logged(count),
              leading_bytes(target.first(static_cast<std::size_t>(count))).c_str());
  }
  return count;
}

/// Reads until `needed` bytes have come, taking more if they are there and `target` has room.
/// @return number of bytes got; -1 on an error
std::int64_t read_at_least(Connection& record, std::span<std::byte> target, std::size_t needed, std::int32_t timeout) {
  if (pnc_debug >= 2) {
    PNC_debug("PNC (%s) recv: need %d <- %s (%s), timeout=%d (Got so far %d)\n", PRODUCT_EXE, logged(needed),
              record.peer.c_str(), record.server.c_str(), timeout, logged(record.received_total));
  }
  std::int64_t answer = 0;
  if (!await_first_byte(record, timeout, answer)) return answer;
  std::size_t got = 0;
  while (got < needed) {
    int interrupts = 0;
    const ssize_t count = read_once(record, target.subspan(got), interrupts);
    if (count < 0) {
      answer = fail_receive(record, interrupts);
      break;
    }
    if (count == 0) {
      PLE_error("End of file while receiving - tcp server is %s@%s", record.server.c_str(), record.machine.c_str());
      if (pnc_debug >= 1) {
        PNC_debug("PNC (%s) recv: End of file while receiving from %s@%s\n", PRODUCT_EXE, record.server.c_str(),
                  record.machine.c_str());
      }
      break;
    }
    got += static_cast<std::size_t>(count);
  }
  record.received_count += static_cast<std::int64_t>(got);
  record.received_total += static_cast<std::int64_t>(got);
  return answer < 0 ? answer : static_cast<std::int64_t>(got);
}

/// Hands out what the input buffer holds, as far as it is asked for. @return number of bytes
std::size_t take_held(Connection& record, std::span<std::byte> bytes) {
  const auto held = static_cast<std::size_t>(record.read_buffer_end - record.next_unread_char);
  const auto count = std::min(held, bytes.size());
  if (count == 0) return 0;
  std::memcpy(bytes.data(), record.read_buffer.get() + record.next_unread_char, count);
  record.next_unread_char += static_cast<std::int32_t>(count);
  if (verbose_log()) {
    PNC_debug("PNC_receive: gave buffered %d bytes; next_unread_char=%d\n", logged(count), record.next_unread_char);
  }
  return count;
}

/// Refills the empty input buffer with at least the bytes asked for, and whatever else is there.
std::int64_t read_through_buffer(Connection& record, std::span<std::byte> bytes, std::int32_t timeout) {
  const std::span buffer(record.read_buffer.get(), static_cast<std::size_t>(record.read_buffer_size));
  const std::int64_t got = read_at_least(record, buffer, bytes.size(), timeout);
  record.next_unread_char = 0;
  record.read_buffer_end = static_cast<std::int32_t>(std::max<std::int64_t>(got, 0));
  return got < 0 ? got : static_cast<std::int64_t>(take_held(record, bytes));
}

std::int64_t read_bytes(Connection& record, std::span<std::byte> bytes, std::int32_t timeout) {
  const std::size_t held = take_held(record, bytes);
  const auto rest = bytes.subspan(held);
  if (rest.empty()) return static_cast<std::int64_t>(held);
  const bool fits = rest.size() < static_cast<std::size_t>(record.read_buffer_size);
  const std::int64_t got =
      fits ? read_through_buffer(record, rest, timeout) : read_at_least(record, rest, rest.size(), timeout);
  return got < 0 ? got : static_cast<std::int64_t>(held) + got;
}

}  // namespace

std::int32_t PNC_flush(Connection& record) {
  if (verbose_log()) {
    PNC_debug("PNC_flush socket=%d, next_unwritten_char=%d\n", record.socket, record.next_unwritten_char);
  }
  if (record.next_unwritten_char == 0) return 1;
  // What a failed write leaves behind is dropped: the peer must not see a part of it twice.
  const auto waiting = static_cast<std::size_t>(record.next_unwritten_char);
  record.next_unwritten_char = 0;
  return write_directly(record, {record.write_buffer.get(), waiting}) ? 1 : 0;
}

std::int32_t PNC_send(Connection& record, std::span<const std::byte> bytes) {
  if (refuse_unconnected(record)) return -1;
  if (bytes.empty()) return 1;
  if (pnc_debug < 1) return send_through_buffer(record, bytes) ? 1 : 0;
  const timeval start = logged_time("PNC_send-1");
  const bool good = send_through_buffer(record, bytes);
  log_transfer("send", "->", record, bytes, start, logged_time("PNC_send-2"));
  return good ? 1 : 0;
}

std::int64_t PNC_receive(Connection& record, std::span<std::byte> bytes, std::int32_t timeout) {
  if (refuse_unconnected(record)) return -1;
  if (record.next_unwritten_char > 0 && PNC_flush(record) != 1) return -1;
  if (pnc_debug < 1) return read_bytes(record, bytes, timeout);
  const timeval start = logged_time("PNC_receive-1");
  const std::int64_t got = read_bytes(record, bytes, timeout);
  const auto delivered = bytes.first(static_cast<std::size_t>(std::max<std::int64_t>(got, 0)));
  log_transfer("recv", "<-", record, delivered, start, logged_time("PNC_receive-2"));
  return got;
}

}  // namespace pathstat
