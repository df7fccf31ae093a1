#include "desk/messages/visible_text.h"

#include <fmt/format.h>

#include <array>
#include <cstdint>
#include <iterator>

namespace pathstat::desk {
namespace {

/// Sequences of UTF-8: how the first byte begins, and the smallest code that needs so many bytes.
struct Sequence {
  unsigned char mask, lead;
  std::size_t bytes;
  std::uint32_t smallest;
};
constexpr std::array<Sequence, 4> sequences{
    {{0x80, 0x00, 1, 0}, {0xe0, 0xc0, 2, 0x80}, {0xf0, 0xe0, 3, 0x800}, {0xf8, 0xf0, 4, 0x10000}}};

/// Also what ends a line or turns the direction of the text behind it.
bool is_control(std::uint32_t code) {
  return code < 0x20 || (code >= 0x7f && code < 0xa0) || (code >= 0x2028 && code <= 0x202e) ||
         (code >= 0x2066 && code <= 0x2069);
}
bool is_surrogate(std::uint32_t code) { return code >= 0xd800 && code < 0xe000; }

/// The bytes of the letter that a text begins with; 0 for a control character and for what is no UTF-8.
std::size_t letter(std::string_view text) {
  const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
  for (const auto& [mask, lead, bytes, smallest] : sequences) {
    if ((byte(0) & mask) != lead || text.size() < bytes) continue;
    std::uint32_t code = byte(0) & static_cast<unsigned char>(~mask);
    for (std::size_t k = 1; k < bytes; ++k) {
      if ((byte(k) & 0xc0) != 0x80) return 0;
      code = code << 6 | (byte(k) & 0x3f);
    }
    return code < smallest || code > 0x10ffff || is_control(code) || is_surrogate(code) ? 0 : bytes;
  }
  return 0;
}

}  // namespace

std::string shortened(std::string_view text, std::size_t most) {
  if (text.size() <= most) return std::string(text);
  const auto continues = [&](std::size_t k) { return (static_cast<unsigned char>(text[k]) & 0xc0) == 0x80; };
  auto end = most;
  while (end > 0 && most - end < 3 && continues(end)) --end;
  return fmt::format("{}... ({} characters)", text.substr(0, end), text.size());
}

std::string visible(std::string_view text, std::string_view kept) {
  std::string shown;
  while (!text.empty()) {
    const bool keep = kept.find(text[0]) != std::string_view::npos;
    if (const auto bytes = keep ? 1 : letter(text); bytes > 0) {
      shown += text.substr(0, bytes);
      text.remove_prefix(bytes);
    } else {
      fmt::format_to(std::back_inserter(shown), "\\x{:02x}", static_cast<unsigned char>(text[0]));
      text.remove_prefix(1);
    }
  }
  return shown;
}

}  // namespace pathstat::desk
