#include "desk/selection/selection_words.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace pathstat::desk {
namespace {

constexpr std::string_view between_words = " \t\r\f\v,";

char closing_quote(char c) { return c == '"' || c == '\'' ? c : c == '{' ? '}' : '\0'; }

/// Where an unquoted word ends that begins at a place.
std::size_t word_end(std::string_view text, std::size_t from) {
  if (text[from] == '(' || text[from] == ')') return from + 1;
  int open = 0;
  auto end = from;
  for (; end < text.size() && between_words.find(text[end]) == std::string_view::npos; ++end) {
    const auto before = text.substr(from, end - from);
    if (text[end] == '(') {
      if (stands_before_selection(before)) break;
      ++open;
    } else if (text[end] == ')' && --open < 0) {
      break;
    }
  }
  return end;
}

std::size_t columns(std::string_view shown) {
  const auto begins_letter = [](char c) { return (c & 0xc0) != 0x80; };
  return static_cast<std::size_t>(std::count_if(shown.begin(), shown.end(), begins_letter));
}

}  // namespace

bool stands_before_selection(std::string_view word) {
  constexpr std::array<std::string_view, 6> words{"and", "or", "not", "of", "as", "to"};
  return std::find(words.begin(), words.end(), word) != words.end();
}

std::vector<SelectionWord> selection_words_of(std::string_view text) {
  std::vector<SelectionWord> words;
  std::size_t at = 0;
  while ((at = text.find_first_not_of(between_words, at)) != std::string_view::npos) {
    if (const char closing = closing_quote(text[at])) {
      const auto end = text.find(closing, at + 1);
      words.push_back({.text = text.substr(at + 1, std::min(end, text.size()) - at - 1),
                       .at = at,
                       .quoted = true,
                       .unclosed = end == std::string_view::npos});
      at = std::min(end, text.size() - 1) + 1;
    } else {
      const auto end = word_end(text, at);
      words.push_back({.text = text.substr(at, end - at), .at = at});
      at = end;
    }
  }
  words.push_back({.text = {}, .at = text.size()});
  return words;
}

bool fits_pattern(std::string_view text, std::string_view pattern) {
  std::size_t t = 0, p = 0, star = std::string_view::npos, resume = 0;
  while (t < text.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      resume = t;
    } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == text[t])) {
      ++p, ++t;
    } else if (star != std::string_view::npos) {
      p = star + 1;
      t = ++resume;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

std::string pointed_at(std::string_view text, std::size_t at, std::size_t length) {
  constexpr std::size_t most_before = 60, most_behind = 40;
  auto from = at > most_before ? at - most_before : 0;
  while (from < at && (text[from] & 0xc0) == 0x80) ++from;  // no letter is cut
  length = std::min(length, most_behind);
  const auto before = (from > 0 ? "..." : "") + visible(text.substr(from, at - from));
  const auto marked = visible(text.substr(at, length));
  const auto rest = text.substr(std::min(at + length, text.size()));
  const auto behind = visible(rest.substr(0, most_behind)) + (rest.size() > most_behind ? "..." : "");
  const auto further = std::max<std::size_t>(columns(marked), 1) - 1;
  return fmt::format("\n    {}{}{}\n    {}^{}", before, marked, behind, std::string(columns(before), ' '),
                     std::string(further, '~'));
}

}  // namespace pathstat::desk
