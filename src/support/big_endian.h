#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace pathstat {

namespace big_endian_detail {
template <std::size_t Bytes>
struct Carrier;
template <>
struct Carrier<1> {
  using type = std::uint8_t;
};
template <>
struct Carrier<2> {
  using type = std::uint16_t;
};
template <>
struct Carrier<4> {
  using type = std::uint32_t;
};
template <>
struct Carrier<8> {
  using type = std::uint64_t;
};

constexpr std::uint8_t turned(std::uint8_t v) { return v; }
constexpr std::uint16_t turned(std::uint16_t v) { return __builtin_bswap16(v); }
constexpr std::uint32_t turned(std::uint32_t v) { return __builtin_bswap32(v); }
constexpr std::uint64_t turned(std::uint64_t v) { return __builtin_bswap64(v); }
}  // namespace big_endian_detail

/// The one place that knows the machine's byte order: files and the wire are big-endian.
template <class T>
requires std::is_arithmetic_v<T>
inline T load_big_endian(const std::byte* at) {
  using Bits = typename big_endian_detail::Carrier<sizeof(T)>::type;
  Bits bits;
  std::memcpy(&bits, at, sizeof bits);
  if constexpr (std::endian::native == std::endian::little) bits = big_endian_detail::turned(bits);
  return std::bit_cast<T>(bits);
}

/// Writes sizeof(T) bytes at `at`, most significant byte first.
template <class T>
requires std::is_arithmetic_v<T>
inline void store_big_endian(T value, std::byte* at) {
  using Bits = typename big_endian_detail::Carrier<sizeof(T)>::type;
  Bits bits = std::bit_cast<Bits>(value);
  if constexpr (std::endian::native == std::endian::little) bits = big_endian_detail::turned(bits);
  std::memcpy(at, &bits, sizeof bits);
}

/// Reads values.size() packed big-endian numbers from `at`; no alignment is needed.
template <class T>
inline void load_big_endian(const std::byte* at, std::span<T> values) {
  for (std::size_t k = 0; k < values.size(); ++k) values[k] = load_big_endian<T>(at + k * sizeof(T));
}

/// Writes the numbers packed and big-endian at `at`.
template <class T>
inline void store_big_endian(std::span<const T> values, std::byte* at) {
  for (std::size_t k = 0; k < values.size(); ++k) store_big_endian(values[k], at + k * sizeof(T));
}

}  // namespace pathstat
