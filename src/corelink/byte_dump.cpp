#include "corelink/byte_dump.h"

#include <algorithm>
#include <charconv>

namespace pathstat {
namespace {

constexpr std::size_t row_bytes = 16;
constexpr std::size_t group_bytes = 4;

std::string row_text(std::span<const std::byte> row) {
  std::string hexadecimal;
  std::string characters;
  for (std::size_t k = 0; k < row_bytes; ++k) {
    if (k > 0 && k % group_bytes == 0) hexadecimal += ' ';
    hexadecimal += k < row.size() ? COM_scdump(row.subspan(k, 1)) : "  ";
    if (k >= row.size()) continue;
    const auto value = std::to_integer<unsigned char>(row[k]);
    characters += value <= 0x20 || value >= 0x7F ? '.' : static_cast<char>(value);
  }
  return hexadecimal + "  *" + characters + "*\n";
}

}  // namespace

std::vector<std::byte> COM_h2c(std::string_view digits) {
  std::vector<std::byte> bytes;
  for (std::size_t at = 0; at + 1 < digits.size(); at += 2) {
    unsigned char value = 0;
    const char* pair = digits.data() + at;
    if (std::from_chars(pair, pair + 2, value, 16).ptr != pair + 2) break;
    bytes.push_back(std::byte{value});
  }
  return bytes;
}

std::string COM_scdump(std::span<const std::byte> bytes) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string text;
  text.reserve(2 * bytes.size());
  for (const std::byte value : bytes) {
    text += digits[std::to_integer<std::size_t>(value >> 4)];
    text += digits[std::to_integer<std::size_t>(value & std::byte{15})];
  }
  return text;
}

void COM_cdump(std::string_view title, std::span<const std::byte> bytes, std::FILE* out) {
  constexpr std::size_t least = 4;
  constexpr std::size_t most = 4096;
  constexpr std::size_t instead = 80;
  std::fprintf(out, "*** dump *** %.*s\n", static_cast<int>(title.size()), title.data());
  if (bytes.size() < least || bytes.size() > most) {
    std::fprintf(out, "*** dump error: length=%d ... set %d\n", static_cast<int>(bytes.size()),
                 static_cast<int>(instead));
    bytes = bytes.first(std::min(bytes.size(), instead));
  }
  for (; !bytes.empty(); bytes = bytes.subspan(std::min(bytes.size(), row_bytes))) {
    std::fputs(row_text(bytes.first(std::min(bytes.size(), row_bytes))).c_str(), out);
  }
}

}  // namespace pathstat
