#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace pathstat {

/// The text without its trailing blanks.
constexpr std::string_view trimmed(std::string_view text) {
  const auto last = text.find_last_not_of(' ');
  return last == std::string_view::npos ? std::string_view{} : text.substr(0, last + 1);
}

/// True if two fields hold the same text when their padding is ignored.
constexpr bool same_text(std::string_view a, std::string_view b) { return trimmed(a) == trimmed(b); }

/// A caller's fixed-width field that a routine writes; what is written is cut or blank-padded to the width.
class TextField {
 public:
  constexpr TextField(std::span<char> field) : field_(field) {}

  constexpr std::size_t width() const { return field_.size(); }
  constexpr std::string_view view() const { return {field_.data(), field_.size()}; }
  constexpr operator std::string_view() const { return view(); }
  /// The field of the first `width` characters, at most its own width.
  constexpr TextField first(std::size_t width) const { return field_.first(std::min(width, field_.size())); }

  constexpr void set(std::string_view text) const {
    const auto used = std::min(text.size(), field_.size());
    std::copy_n(text.begin(), used, field_.begin());
    std::fill(field_.begin() + static_cast<std::ptrdiff_t>(used), field_.end(), ' ');
  }

 private:
  std::span<char> field_;
};

/// A blank-padded text of fixed width, as shared records hold it.
template <std::size_t N>
class Text {
 public:
  constexpr Text() { chars_.fill(' '); }
  constexpr Text(std::string_view text) { *this = text; }
  constexpr Text(const char* text) { *this = std::string_view(text); }

  constexpr Text& operator=(std::string_view text) {
    field().set(text);
    return *this;
  }
  constexpr Text& operator=(const char* text) { return *this = std::string_view(text); }
  constexpr TextField field() { return TextField(std::span<char>(chars_)); }
  constexpr operator TextField() { return field(); }
  constexpr char* begin() { return chars_.data(); }
  /// All N characters, padding included.
  constexpr std::string_view full() const { return {chars_.data(), N}; }
  /// The characters without the padding.
  constexpr std::string_view view() const { return trimmed(full()); }
  constexpr operator std::string_view() const { return full(); }
  std::string str() const { return std::string(view()); }
  constexpr bool operator==(std::string_view other) const { return same_text(full(), other); }

 private:
  std::array<char, N> chars_{};
};
static_assert(sizeof(Text<28>) == 28);

}  // namespace pathstat
