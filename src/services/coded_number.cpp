#include "services/coded_number.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "support/number_format.h"

namespace pathstat {
namespace {

constexpr double log10_of_e = 0.4342944819032518;
constexpr std::int32_t widest = 99;  ///< a format's numbers have two digits

std::int32_t truncated(double x) { return static_cast<std::int32_t>(x); }

std::string format(const char* form, std::int32_t width, std::int32_t decimals) {
  char text[16];
  std::snprintf(text, sizeof text, "(%s%02d.%02d", form, width, decimals);
  return text;
}

std::string fixed_form(std::int32_t width, std::int32_t decimals) { return format("f", width, decimals) + ")"; }

std::string exponent_form(std::int32_t width, std::int32_t decimals, std::int32_t exponent_digits) {
  const std::string start = format("1pe", width, decimals);
  return exponent_digits == 2 ? start + ")" : start + "e" + std::to_string(exponent_digits) + ")";
}

/// The format of the number; empty if there is no room for it.
std::string format_of(double value, std::int32_t width, std::int32_t digits, std::int32_t zeros) {
  const double size = std::abs(value);
  const double magnitude = size == 0 ? 0 : log10_of_e * std::log(size);
  std::int32_t exponent_digits = 2;
  if (std::abs(magnitude) >= 1) {
    exponent_digits = std::max(2, 1 + truncated(log10_of_e * std::log(std::abs(magnitude))));
  }
  if (width < std::int64_t{digits} + exponent_digits + 4) return {};
  if (size == 0) return fixed_form(width, digits);
  if (size < 1) {
    const std::int32_t before = truncated(std::floor(magnitude)) + 2;
    const std::int32_t decimals = digits - before;
    if (zeros >= 1 - before && width >= decimals + 4) return fixed_form(width, decimals + 1);
  } else {
    const std::int32_t decimals = digits - truncated(magnitude + 1);
    if (decimals >= 1) return fixed_form(width, decimals);
  }
  return exponent_form(width, digits - 1, exponent_digits);
}

}  // namespace

void kvs_fmt_codedouble_(TextField text, double value, std::int32_t width, std::int32_t digits, std::int32_t zeros) {
  const bool sound = width > 0 && width <= widest && static_cast<std::size_t>(width) <= text.width() && digits >= 1;
  const std::string form = sound && std::isfinite(value) ? format_of(value, width, digits, zeros) : std::string();
  if (form.empty()) {
    text.set("**********");
    return;
  }
  // format_of leaves room for a sign and for the zero ahead of a leading point, which `formatted` then writes.
  text.set(formatted(value, form));
}

}  // namespace pathstat
