#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "corelink/connection.h"

namespace pathstat {

/// Longest text, without its terminator, whose length fits the 16 bits of a string.
constexpr std::size_t longest_string = 32766;

// Typed values on a connection, big-endian, without tags. Every result is 0 on success.

/// Hand the values to PNC_send, which may keep them in the output buffer. @return 1 if the write failed
std::int32_t PD_send0_char(Connection& record, std::span<const char> values);
std::int32_t PD_send0_short(Connection& record, std::span<const std::int16_t> values);
std::int32_t PD_send0_int(Connection& record, std::span<const std::int32_t> values);
std::int32_t PD_send0_float(Connection& record, std::span<const float> values);
std::int32_t PD_send0_double(Connection& record, std::span<const double> values);

/// The same with a flush behind it, whose result is not told.
std::int32_t PD_send_char(Connection& record, std::span<const char> values);
std::int32_t PD_send_short(Connection& record, std::span<const std::int16_t> values);
std::int32_t PD_send_int(Connection& record, std::span<const std::int32_t> values);
std::int32_t PD_send_float(Connection& record, std::span<const float> values);
std::int32_t PD_send_double(Connection& record, std::span<const double> values);

/// Fill the span; `timeout` in seconds, -1 for none.
/// @return 1 on a short read or an error, 2 if nothing came before the end of file or the limit
std::int32_t PD_receive_char(Connection& record, std::span<char> values, std::int32_t timeout);
std::int32_t PD_receive_short(Connection& record, std::span<std::int16_t> values, std::int32_t timeout);
std::int32_t PD_receive_int(Connection& record, std::span<std::int32_t> values, std::int32_t timeout);
std::int32_t PD_receive_float(Connection& record, std::span<float> values, std::int32_t timeout);
std::int32_t PD_receive_double(Connection& record, std::span<double> values, std::int32_t timeout);

/// One value.
inline std::int32_t PD_send0_int(Connection& record, std::int32_t value) {
  return PD_send0_int(record, std::span<const std::int32_t>(&value, 1));
}
inline std::int32_t PD_send_int(Connection& record, std::int32_t value) {
  return PD_send_int(record, std::span<const std::int32_t>(&value, 1));
}
inline std::int32_t PD_receive_int(Connection& record, std::int32_t& value, std::int32_t timeout) {
  return PD_receive_int(record, std::span<std::int32_t>(&value, 1), timeout);
}

/// A text up to its first NUL: its length with the terminator (16 bits, or 32 for a long string), the characters, a
/// NUL. A text of more than longest_string characters is refused as a string, with the result 1 and nothing sent.
std::int32_t PD_send0_string(Connection& record, std::string_view text);
std::int32_t PD_send0_longstring(Connection& record, std::string_view text);
/// As PD_send0_string with a flush; one write even on a record without an output buffer.
std::int32_t PD_send_string(Connection& record, std::string_view text);

/// Read a text; `text` gets the characters ahead of the first NUL. Memory grows as bytes arrive, so that
/// the peer's length alone allocates nothing.
std::int32_t PD_receive_string(Connection& record, std::string& text, std::int32_t timeout);
std::int32_t PD_receive_longstring(Connection& record, std::string& text, std::int32_t timeout);

/// Formats a text of at most 1023 characters and sends it with PD_send_string.
[[gnu::format(printf, 2, 3)]] std::int32_t PD_send_request(Connection& record, const char* format, ...);

/// @return 0 if all came, 2 if nothing came, 1 otherwise
constexpr std::int32_t pd_interpret_nreceived(std::int64_t got, std::int64_t expected) {
  if (got == expected) return 0;
  return got == 0 ? 2 : 1;
}

}  // namespace pathstat
