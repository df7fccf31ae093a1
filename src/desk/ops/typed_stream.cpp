#include "desk/ops/typed_stream.h"

namespace pathstat::desk {
namespace {

bool read_characters(ByteStream& stream, std::size_t length, std::string& text) {
  std::vector<std::int8_t> bytes;
  if (!read_array(stream, length, bytes)) return false;
  text.assign(bytes.begin(), std::find(bytes.begin(), bytes.end(), std::int8_t{0}));
  return true;
}

}  // namespace

bool read_text(ByteStream& stream, std::string& text) {
  std::int16_t length = 0;
  return read_value(stream, length) && length >= 1 && read_characters(stream, static_cast<std::size_t>(length), text);
}

bool read_long_text(ByteStream& stream, std::size_t most, std::string& text) {
  std::int32_t length = 0;
  if (!read_value(stream, length) || length < 1 || static_cast<std::size_t>(length) > most) return false;
  return read_characters(stream, static_cast<std::size_t>(length), text);
}

bool write_text(ByteStream& stream, std::string_view text) {
  text = text.substr(0, std::min(text.find('\0'), longest_text));
  return write_value(stream, static_cast<std::int16_t>(text.size() + 1)) &&
         stream.write(std::as_bytes(std::span(text.data(), text.size()))) && write_value(stream, std::int8_t{0});
}

}  // namespace pathstat::desk
