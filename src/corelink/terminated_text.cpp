#include "corelink/terminated_text.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace pathstat {
namespace {

bool is_space(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

template <class Change>
void change_each(char* text, Change change) {
  for (; text != nullptr && *text != '\0'; ++text) {
    *text = static_cast<char>(change(static_cast<unsigned char>(*text)));
  }
}

}  // namespace

std::unique_ptr<char[]> COM_strsave(const char* text) {
  if (text == nullptr) return nullptr;
  const std::size_t size = std::strlen(text) + 1;
  std::unique_ptr<char[]> copy(new (std::nothrow) char[size]);
  if (copy == nullptr) {
    std::fputs("\nCOM_strsave error: no more memory\n", stderr);
  } else {
    std::memcpy(copy.get(), text, size);
  }
  return copy;
}

std::unique_ptr<char[]> COM_strsave_lc(const char* text) {
  auto copy = COM_strsave(text);
  COM_tolower(copy.get());
  return copy;
}

std::unique_ptr<char[]> COM_strsave_uc(const char* text) {
  auto copy = COM_strsave(text);
  COM_toupper(copy.get());
  return copy;
}

void COM_tolower(char* text) {
  change_each(text, [](int c) { return std::tolower(c); });
}

void COM_toupper(char* text) {
  change_each(text, [](int c) { return std::toupper(c); });
}

const char* COM_index(const char* text, char character) { return std::strchr(text, character); }

const char* COM_rindex(const char* text, char character) { return std::strrchr(text, character); }

std::int32_t COM_strindex(std::string_view pattern, std::string_view text) {
  const auto place = text.find(pattern);
  return place == std::string_view::npos ? 0 : static_cast<std::int32_t>(place + 1);
}

bool COM_realloc(void*& block, std::int32_t& capacity, std::int32_t needed) {
  if (block == nullptr && capacity > 0) {
    std::fprintf(stderr, "COM_realloc warning: *HowMuchIs=%d, but *addr == NULL\n", capacity);
    capacity = 0;
  }
  if (capacity > needed) return true;
  if (needed > INT32_MAX - 256) return false;
  const std::int32_t grown = (needed + 256) / 256 * 256;
  void* moved = std::realloc(block, static_cast<std::size_t>(grown));
  if (moved == nullptr) return false;
  block = moved;
  capacity = grown;
  return true;
}

void COM_bytecopy(std::byte* target, std::span<const std::byte> source) {
  if (!source.empty()) std::memmove(target, source.data(), source.size());
}

std::string COM_args2parm(std::span<const char* const> arguments) {
  std::string joined;
  for (const std::string_view argument : arguments) {
    if (!joined.empty()) joined += ' ';
    const bool quoted = argument.find_first_of(" \t") != std::string_view::npos;
    if (quoted) joined += '\'';
    joined += argument;
    if (quoted) joined += '\'';
  }
  return joined;
}

std::vector<std::string> COM_parm2args(std::string_view text) {
  std::vector<std::string> words;
  auto at = text.begin();
  while ((at = std::find_if_not(at, text.end(), is_space)) != text.end()) {
    const char mark = *at;
    const bool quoted = mark == '"' || mark == '\'';
    if (quoted) ++at;
    const auto end = quoted ? std::find(at, text.end(), mark) : std::find_if(at, text.end(), is_space);
    words.emplace_back(at, end);
    at = quoted && end != text.end() ? end + 1 : end;
  }
  return words;
}

}  // namespace pathstat
