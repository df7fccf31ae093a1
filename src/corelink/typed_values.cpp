#include "corelink/typed_values.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <new>
#include <vector>

#include "corelink/last_error.h"
#include "corelink/typed_log.h"
#include "support/big_endian.h"

namespace pathstat {
namespace {

/// Arrays up to so many bytes are turned on the stack.
constexpr std::size_t small_array_bytes = 4096;

bool sent(Connection& record, std::span<const std::byte> bytes) { return PNC_send(record, bytes) != 0; }

/// Turns an array to the wire's byte order and sends it as one block.
template <class T>
std::int32_t send_turned(Connection& record, std::span<const T> values, std::span<std::byte> room) {
  store_big_endian(values, room.data());
  return sent(record, room.first(values.size_bytes())) ? 0 : 1;
}

/// Sends an array as one block; characters go as they stand.
template <class T>
std::int32_t send_buffered(Connection& record, std::span<const T> values) {
  if (typed_log_on()) log_sent(record, values);
  if (values.empty()) return 0;
  if constexpr (sizeof(T) == 1) return sent(record, std::as_bytes(values)) ? 0 : 1;
  std::array<std::byte, small_array_bytes> small;
  if (values.size_bytes() <= small.size()) return send_turned(record, values, small);
  const std::unique_ptr<std::byte[]> large(new (std::nothrow) std::byte[values.size_bytes()]);
  if (large == nullptr) {
    PLE_error("PD_send: no memory for %zu bytes", values.size_bytes());
    return 1;
  }
  return send_turned(record, values, std::span(large.get(), values.size_bytes()));
}

template <class T>
std::int32_t send_flushed(Connection& record, std::span<const T> values) {
  if (send_buffered(record, values) != 0) return 1;
  PNC_flush(record);
  return 0;
}

template <class T>
std::int32_t receive_values(Connection& record, std::span<T> values, std::int32_t timeout) {
  if (values.empty()) return 0;
  const auto bytes = std::as_writable_bytes(values);
  const std::int64_t got = PNC_receive(record, bytes, timeout);
  if constexpr (sizeof(T) > 1) load_big_endian(bytes.data(), values);
  if (typed_log_on()) log_received(record, std::span<const T>(values), got);
  return pd_interpret_nreceived(got, static_cast<std::int64_t>(bytes.size()));
}

std::string_view up_to_nul(std::string_view text) { return text.substr(0, text.find('\0')); }

/// Refuses a text whose length with the terminator does not fit the length field.
template <class Length>
bool fits(std::string_view text) {
  if (text.size() < static_cast<std::size_t>(std::numeric_limits<Length>::max())) return true;
  PLE_error("PD_send_string: a text of %zu characters is too long", text.size());
  return false;
}

template <class Length>
std::int32_t send_text(Connection& record, std::string_view text) {
  text = up_to_nul(text);
  if (!fits<Length>(text)) return 1;
  const std::string terminated(text);  // ahead of what is sent: without memory nothing is
  const Length length = static_cast<Length>(text.size() + 1);
  if (send_buffered(record, std::span(&length, 1)) != 0) return 1;
  return send_buffered(record, std::span(terminated.c_str(), terminated.size() + 1));
}

/// Reads `length` bytes into `text`, which grows as they come; 0 or what a failed read gives.
std::int32_t receive_block(Connection& record, std::string& text, std::size_t length, std::int32_t timeout) {
  constexpr std::size_t step = std::size_t{1} << 16;
  try {
    for (text.clear(); text.size() < length;) {
      const std::size_t before = text.size();
      text.resize(before + std::min(step, length - before));
      const std::int32_t result = receive_values(record, std::span<char>(text).subspan(before), timeout);
      if (result != 0) return before == 0 ? result : 1;
    }
  } catch (const std::bad_alloc&) {
    PLE_error("PD_receive_string: no memory for %zu bytes", length + 1);
    return 1;
  }
  return 0;
}

template <class Length>
std::int32_t receive_text(Connection& record, std::string& text, std::int32_t timeout) {
  text.clear();
  Length length = 0;
  const std::int32_t result = receive_values(record, std::span(&length, 1), timeout);
  if (result != 0) return result;
  if (length <= 0) {
    PLE_error("PD_receive_string: string size %d is non-positive. %s", static_cast<int>(length),
              "Possible protocol error");
    return 1;
  }
  const std::int32_t body = receive_block(record, text, static_cast<std::size_t>(length), timeout);
  if (typed_log_on(2)) {
    PD_debug("PD_receive_string: address=%x *address=%x size=%d\n",
             static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(&text)),
             static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(text.data())), static_cast<int>(length));
  }
  text.resize(body == 0 ? up_to_nul(text).size() : 0);
  return body;
}

}  // namespace

std::int32_t PD_send0_char(Connection& record, std::span<const char> values) { return send_buffered(record, values); }
std::int32_t PD_send0_short(Connection& record, std::span<const std::int16_t> values) {
  return send_buffered(record, values);
}
std::int32_t PD_send0_int(Connection& record, std::span<const std::int32_t> values) {
  return send_buffered(record, values);
}
std::int32_t PD_send0_float(Connection& record, std::span<const float> values) { return send_buffered(record, values); }
std::int32_t PD_send0_double(Connection& record, std::span<const double> values) {
  return send_buffered(record, values);
}

std::int32_t PD_send_char(Connection& record, std::span<const char> values) { return send_flushed(record, values); }
std::int32_t PD_send_short(Connection& record, std::span<const std::int16_t> values) {
  return send_flushed(record, values);
}
std::int32_t PD_send_int(Connection& record, std::span<const std::int32_t> values) {
  return send_flushed(record, values);
}
std::int32_t PD_send_float(Connection& record, std::span<const float> values) { return send_flushed(record, values); }
std::int32_t PD_send_double(Connection& record, std::span<const double> values) { return send_flushed(record, values); }

std::int32_t PD_receive_char(Connection& record, std::span<char> values, std::int32_t timeout) {
  return receive_values(record, values, timeout);
}
std::int32_t PD_receive_short(Connection& record, std::span<std::int16_t> values, std::int32_t timeout) {
  return receive_values(record, values, timeout);
}
std::int32_t PD_receive_int(Connection& record, std::span<std::int32_t> values, std::int32_t timeout) {
  return receive_values(record, values, timeout);
}
std::int32_t PD_receive_float(Connection& record, std::span<float> values, std::int32_t timeout) {
  return receive_values(record, values, timeout);
}
std::int32_t PD_receive_double(Connection& record, std::span<double> values, std::int32_t timeout) {
  return receive_values(record, values, timeout);
}

std::int32_t PD_send0_string(Connection& record, std::string_view text) {
  return send_text<std::int16_t>(record, text);
}
std::int32_t PD_send0_longstring(Connection& record, std::string_view text) {
  return send_text<std::int32_t>(record, text);
}

std::int32_t PD_send_string(Connection& record, std::string_view text) {
  text = up_to_nul(text);
  if (record.write_buffer_size > 0 || !fits<std::int16_t>(text)) {
    const std::int32_t result = PD_send0_string(record, text);
    if (result == 0) PNC_flush(record);
    return result;
  }
  std::vector<char> block(sizeof(std::int16_t) + text.size() + 1);
  store_big_endian(static_cast<std::int16_t>(text.size() + 1), std::as_writable_bytes(std::span(block)).data());
  std::copy(text.begin(), text.end(), block.begin() + sizeof(std::int16_t));
  return send_flushed(record, std::span<const char>(block));
}

std::int32_t PD_receive_string(Connection& record, std::string& text, std::int32_t timeout) {
  return receive_text<std::int16_t>(record, text, timeout);
}
std::int32_t PD_receive_longstring(Connection& record, std::string& text, std::int32_t timeout) {
  return receive_text<std::int32_t>(record, text, timeout);
}

std::int32_t PD_send_request(Connection& record, const char* format, ...) {
  std::array<char, 1024> text;
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  return PD_send_string(record, text.data());
}

}  // namespace pathstat
