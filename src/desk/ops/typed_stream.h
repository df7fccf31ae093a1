#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "support/big_endian.h"

namespace pathstat::desk {

/// Bytes to and from the process; a socket in a run, a block of memory in a test.
class ByteStream {
 public:
  virtual ~ByteStream() = default;
  /// Fills the whole span; false at the end of the stream or on a failure.
  virtual bool read(std::span<std::byte> bytes) = 0;
  /// Takes all the bytes, perhaps holding them back until flush(); false on a failure.
  virtual bool write(std::span<const std::byte> bytes) = 0;
  virtual bool flush() = 0;
};

/// The longest text that a 16-bit length with its terminator can carry.
constexpr std::size_t longest_text = 32766;

template <class T>
bool read_value(ByteStream& stream, T& value) {
  std::array<std::byte, sizeof(T)> bytes;
  if (!stream.read(bytes)) return false;
  value = load_big_endian<T>(bytes.data());
  return true;
}

template <class T>
bool write_value(ByteStream& stream, T value) {
  std::array<std::byte, sizeof(T)> bytes;
  store_big_endian(value, bytes.data());
  return stream.write(bytes);
}

/// Reads `count` values. Memory grows only with what has come, so that a count that lies costs nothing.
template <class T>
bool read_array(ByteStream& stream, std::size_t count, std::vector<T>& values) {
  constexpr std::size_t step = 65536 / sizeof(T);
  std::vector<std::byte> bytes(std::min(count, step) * sizeof(T));
  values.clear();
  while (values.size() < count) {
    const auto first = values.size();
    const auto now = std::min(step, count - first);
    if (!stream.read(std::span(bytes).first(now * sizeof(T)))) return false;
    values.resize(first + now);
    load_big_endian(bytes.data(), std::span(values).subspan(first));
  }
  return true;
}

/// Writes `count` values: those given, cut at `count`, and zeros behind them.
template <class T>
bool write_array(ByteStream& stream, std::span<const T> values, std::size_t count) {
  constexpr std::size_t step = 65536 / sizeof(T);
  std::vector<std::byte> bytes(std::min(count, step) * sizeof(T));
  for (std::size_t done = 0; done < count;) {
    const auto now = std::min(step, count - done);
    const auto given = done < values.size() ? std::min(now, values.size() - done) : 0;
    std::fill(bytes.begin(), bytes.end(), std::byte{0});
    store_big_endian(values.subspan(std::min(done, values.size()), given), bytes.data());
    if (!stream.write(std::span(bytes).first(now * sizeof(T)))) return false;
    done += now;
  }
  return true;
}

/// A text with a 16-bit length that counts its terminator; a length below 1 is refused.
bool read_text(ByteStream& stream, std::string& text);

/// A text with a 32-bit length; one below 1 or above `most` is refused.
bool read_long_text(ByteStream& stream, std::size_t most, std::string& text);

/// Writes a text, cut at the longest that the wire can carry and at its first NUL.
bool write_text(ByteStream& stream, std::string_view text);

}  // namespace pathstat::desk
