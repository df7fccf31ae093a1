#include "structure/model_numbers.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace pathstat {

namespace {

constexpr bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
constexpr bool parts_numbers(char c) { return is_space(c) || c == '(' || c == ')'; }

/// printf's general form with capital letters; to_chars gives the same digits with small ones.
void append_general(std::string& text, double value, int digits) {
  char buffer[40];
  const auto end = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, digits).ptr;
  for (char* c = buffer; c != end; ++c) {
    if (*c >= 'a' && *c <= 'z') *c = static_cast<char>(*c - 'a' + 'A');
  }
  text.append(buffer, end);
}

template <class Number>
bool read_piece(std::string_view text, std::vector<Number>& values) {
  const char* at = text.data();
  const char* const end = at + text.size();
  while (true) {
    while (at != end && parts_numbers(*at)) ++at;
    if (at == end) return true;
    if (*at == '+' && at + 1 != end && at[1] != '-') ++at;
    Number value;
    const auto [behind, error] = std::from_chars(at, end, value);
    if (error != std::errc{} || (behind != end && !parts_numbers(*behind))) return false;
    values.push_back(value);
    at = behind;
  }
}

template <class Number>
bool read(std::string_view text, std::vector<Number>& values) {
  values.clear();
  if (text.size() <= text_piece) return read_piece(text, values);
  struct Piece {
    std::vector<Number> values;
    bool sound = true;
  };
  const auto read = [](std::string_view part) {
    Piece piece;
    piece.sound = read_piece(part, piece.values);
    return piece;
  };
  bool all = true;
  read_by_pieces(text, read, [&](const Piece& piece) {
    if (all) values.insert(values.end(), piece.values.begin(), piece.values.end());
    all = all && piece.sound;
  });
  return all;
}

}  // namespace

std::vector<std::string_view> text_pieces(std::string_view text) {
  std::vector<std::string_view> pieces;
  while (!text.empty()) {
    std::size_t length = std::min(text_piece, text.size());
    while (length < text.size() && !is_space(text[length])) ++length;
    pieces.push_back(text.substr(0, length));
    text.remove_prefix(length);
  }
  return pieces;
}

void append_number(std::string& text, std::int32_t value) {
  char buffer[12];
  text.append(buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr);
}

void append_number(std::string& text, float value) { append_general(text, static_cast<double>(value), 8); }

void append_number(std::string& text, double value) { append_general(text, value, 17); }

bool read_numbers(std::string_view text, std::vector<std::int32_t>& values) { return read(text, values); }
bool read_numbers(std::string_view text, std::vector<double>& values) { return read(text, values); }

std::vector<std::string_view> split_words(std::string_view text) {
  std::vector<std::string_view> words;
  std::size_t at = 0;
  while (true) {
    while (at < text.size() && is_space(text[at])) ++at;
    if (at == text.size()) return words;
    const std::size_t begin = at;
    while (at < text.size() && !is_space(text[at])) ++at;
    words.push_back(text.substr(begin, at - begin));
  }
}

}  // namespace pathstat
