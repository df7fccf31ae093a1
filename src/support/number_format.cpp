#include "support/number_format.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <optional>

namespace pathstat {
namespace {

constexpr int most_columns = 400;
// The longest real: 309 digits before the point, the point, the decimals and the scale behind it.
using Digits = std::array<char, 309 + 1 + most_columns + 16>;

struct Descriptor {
  char kind = 0;  ///< lower case; 0 if the format cannot be used
  int width = 1;
  std::optional<int> decimals;
  std::optional<int> exponent_digits;
  int scale = 0;
};

/// Reads a format; blanks are skipped and letters are taken in lower case.
class FormatText {
 public:
  explicit FormatText(std::string_view text) : text_(text) {}

  char next() {
    while (!text_.empty() && text_.front() == ' ') text_.remove_prefix(1);
    const char c = text_.empty() ? '\0' : text_.front();
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  char take() {
    const char c = next();
    if (!text_.empty()) text_.remove_prefix(1);
    return c;
  }
  bool take(char wanted) { return next() == wanted && take() == wanted; }
  std::optional<int> number() {
    std::optional<int> value;
    while (next() >= '0' && next() <= '9') value = std::min(value.value_or(0) * 10 + (take() - '0'), most_columns + 1);
    return value;
  }

 private:
  std::string_view text_;
};

bool usable(const Descriptor& d, std::string_view kinds) {
  const int decimals = d.decimals.value_or(0);
  const bool real = kinds == "feg";
  const bool sized = d.width >= 1 && decimals <= most_columns && d.exponent_digits.value_or(1) >= 1 &&
                     d.exponent_digits.value_or(1) <= most_columns;
  if (!sized || kinds.find(d.kind) == std::string_view::npos) return false;
  if (!real) return d.scale == 0 && !d.exponent_digits && (d.kind == 'i' || d.kind == 'g' || !d.decimals);
  const bool scaled = d.scale <= 9 && (d.kind == 'f' || d.scale <= decimals + 1);
  // E and G need a digit; F takes no exponent.
  return d.decimals && scaled && (d.kind == 'f' ? !d.exponent_digits : decimals + (d.kind == 'e' ? d.scale : 0) >= 1);
}

Descriptor parse(std::string_view format, std::string_view kinds) {
  FormatText text(format);
  Descriptor d;
  const bool open = text.take('(');
  if (const auto scale = text.number()) {
    d.scale = *scale;
    if (!text.take('p')) return {};
  }
  d.kind = text.take();
  const auto width = text.number();
  if (!width || *width > most_columns) return {};
  d.width = *width;
  bool complete = true;
  if (text.take('.')) complete = (d.decimals = text.number()).has_value();
  if (complete && text.take('e')) complete = (d.exponent_digits = text.number()).has_value();
  if (!complete || (open && !text.take(')')) || text.next() != '\0' || !usable(d, kinds)) d.kind = 0;
  d.width = std::max(d.width, 1);
  return d;
}

std::string stars(int width) { return std::string(static_cast<std::size_t>(width), '*'); }

std::string right_aligned(std::string_view text, int width) {
  const auto columns = static_cast<std::size_t>(width);
  if (text.size() > columns) return stars(width);
  std::string field(columns, ' ');
  text.copy(field.data() + (columns - text.size()), text.size());
  return field;
}

/// A number in parts, put together as sign, whole, point, fraction, tail.
struct Parts {
  bool negative;
  std::string_view whole;
  std::string_view fraction;
  std::string_view tail = {};
  bool zero_optional = false;  ///< `whole` may go if the width demands it
};

std::string assembled(Parts parts, int width) {
  std::size_t length = (parts.negative ? 1u : 0u) + parts.whole.size() + 1 + parts.fraction.size() + parts.tail.size();
  const auto columns = static_cast<std::size_t>(std::max(width, 0));
  if (length > columns && parts.zero_optional) {
    length -= parts.whole.size();
    parts.whole = {};
  }
  if (length > columns) return stars(std::max(width, 0));
  std::string field;
  field.reserve(columns);
  field.append(columns - length, ' ');
  if (parts.negative) field += '-';
  return field.append(parts.whole).append(1, '.').append(parts.fraction).append(parts.tail);
}

std::string fixed_form(double value, int width, int decimals, int scale) {
  Digits digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), std::abs(value),
                                 std::chars_format::fixed, decimals + scale)
                       .ptr;
  // Multiplying by 10^scale is moving the point, which keeps the one rounding exact.
  char* point = std::find(digits.data(), end, '.');
  if (point != end) std::rotate(point, point + 1, point + 1 + scale);
  point = point == end ? end : point + scale;
  const char* first = std::find_if(digits.data(), point - 1, [](char c) { return c != '0'; });
  const char* fraction = std::min(point + 1, end);
  const std::string_view whole(first, point);
  const bool zero_optional = whole == "0" && fraction != end;
  return assembled({std::signbit(value), whole, {fraction, end}, {}, zero_optional}, width);
}

/// The decimal digits of |value| without a point, rounded to a count, and the power of ten of the first.
struct Scientific {
  Digits digits;
  std::size_t count;
  int power;
};

Scientific scientific(double value, int count) {
  Scientific s;
  const auto end = std::to_chars(s.digits.data(), s.digits.data() + s.digits.size(), std::abs(value),
                                 std::chars_format::scientific, count - 1)
                       .ptr;
  const char* mark = std::find(s.digits.data(), end, 'e');
  s.count = static_cast<std::size_t>(count);
  s.power = 0;
  std::from_chars(mark[1] == '+' ? mark + 2 : mark + 1, end, s.power);
  std::copy(s.digits.data() + 2, s.digits.data() + std::max<std::size_t>(s.count + 1, 2), s.digits.data() + 1);
  return s;
}

/// "E+05", "+105", or with a digit count "E+005"; empty if the exponent does not fit.
std::string exponent_text(int exponent, std::optional<int> wanted_digits) {
  const std::string digits = std::to_string(std::abs(exponent));
  const std::size_t room = wanted_digits ? static_cast<std::size_t>(*wanted_digits) : digits.size() > 2 ? 3 : 2;
  if (digits.size() > room) return {};
  std::string text = !wanted_digits && room == 3 ? "" : "E";
  text += exponent < 0 ? '-' : '+';
  return text.append(room - digits.size(), '0').append(digits);
}

std::string exponent_form(double value, const Descriptor& d) {
  const int decimals = *d.decimals;
  const auto s = scientific(value, d.scale == 0 ? decimals : decimals + 1);
  const auto tail = exponent_text(value == 0.0 ? 0 : s.power + 1 - d.scale, d.exponent_digits);
  if (tail.empty()) return stars(d.width);
  const std::string_view digits(s.digits.data(), s.count);
  const auto before = static_cast<std::size_t>(d.scale);
  if (d.scale == 0) return assembled({std::signbit(value), "0", digits, tail, true}, d.width);
  return assembled({std::signbit(value), digits.substr(0, before), digits.substr(before), tail}, d.width);
}

std::string general_form(double value, const Descriptor& d) {
  const int decimals = *d.decimals;
  const int before_point = value == 0.0 ? 1 : scientific(value, decimals).power + 1;
  if (before_point < 0 || before_point > decimals) return exponent_form(value, d);
  const int blanks = d.exponent_digits ? *d.exponent_digits + 2 : 4;
  std::string field = fixed_form(value, d.width - blanks, decimals - before_point, 0);
  if (field.empty() || field.front() == '*') return stars(d.width);
  return field.append(static_cast<std::size_t>(blanks), ' ');
}

std::string not_finite(double value, int width) {
  if (std::isnan(value)) return right_aligned("NaN", width);
  const bool negative = std::signbit(value);
  const bool in_full = width >= (negative ? 9 : 8);
  return right_aligned(negative ? (in_full ? "-Infinity" : "-Inf") : (in_full ? "Infinity" : "Inf"), width);
}

}  // namespace

std::string formatted(double value, std::string_view format) {
  const Descriptor d = parse(format, "feg");
  if (d.kind == 0) return stars(d.width);
  if (!std::isfinite(value)) return not_finite(value, d.width);
  if (d.kind == 'f') return fixed_form(value, d.width, *d.decimals, d.scale);
  return d.kind == 'e' ? exponent_form(value, d) : general_form(value, d);
}

std::string formatted(std::int64_t value, std::string_view format) {
  const Descriptor d = parse(format, "ig");
  if (d.kind == 0) return stars(d.width);
  const int least_digits = d.kind == 'i' ? d.decimals.value_or(1) : 1;
  if (value == 0 && least_digits == 0) return right_aligned("", d.width);
  std::array<char, most_columns + 24> text;
  char* const digits = text.data() + most_columns + 1;
  const auto magnitude = value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
  char* const end = std::to_chars(digits, text.data() + text.size(), magnitude).ptr;
  char* first = std::min(digits, end - least_digits);
  std::fill(first, digits, '0');
  if (value < 0) *--first = '-';
  return right_aligned({first, end}, d.width);
}

std::string formatted(std::int32_t value, std::string_view format) {
  return formatted(static_cast<std::int64_t>(value), format);
}

std::string formatted(bool value, std::string_view format) {
  const Descriptor d = parse(format, "lg");
  return d.kind == 0 ? stars(d.width) : right_aligned(value ? "T" : "F", d.width);
}

}  // namespace pathstat
