#include "corelink/typed_log.h"

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>

#include "corelink/product.h"
#include "corelink/transport_log.h"

namespace pathstat {
namespace {

constexpr std::size_t all = std::numeric_limits<std::size_t>::max();

/// How the values of one type are shown: the type's name in both directions, and how many of them.
struct Style {
  const char* sent_name;
  const char* received_name;
  std::size_t sent_limit;
  std::size_t received_limit;
  std::size_t in_a_line;
};

template <class T>
constexpr Style style{};
template <>
constexpr Style style<char>{"char(s)", "char(s)", 100, 100, all};
template <>
constexpr Style style<std::int16_t>{"short(s)", "short", 100, all, all};
template <>
constexpr Style style<std::int32_t>{"int(s)", "int", 100, all, all};
template <>
constexpr Style style<float>{"float(s)", "float(s)", 30, 30, all};
template <>
constexpr Style style<double>{"double(s)", "double(s)", 0, all, 10};

template <class... Arguments>
std::string printed(const char* format, Arguments... arguments) {
  char text[400];  // the longest double takes 316 characters
  std::snprintf(text, sizeof text, format, arguments...);
  return text;
}

std::string element(double value) { return printed(" %f", value); }
std::string element(int value) { return printed(" %d", value); }

constexpr const char* cut_mark(std::size_t count, std::size_t limit) { return count > limit ? " ..." : ""; }

template <class T>
std::string list(std::span<const T> values, std::size_t limit) {
  std::string text;
  for (std::size_t k = 0; k < std::min(values.size(), limit); ++k) {
    if (k > 0 && k % style<T>.in_a_line == 0) text += '\n';
    text += element(values[k]);
  }
  return text + cut_mark(values.size(), limit) + "\n";
}

/// Characters between angle brackets; of the first `as_code` ones those that are not alphanumeric show their code.
std::string quoted(std::span<const char> values, std::size_t limit, std::size_t as_code) {
  std::string text = "<";
  for (std::size_t k = 0; k < std::min(values.size(), limit); ++k) {
    const auto code = static_cast<unsigned char>(values[k]);
    text += k < as_code && std::isalnum(code) == 0 ? printed("0x%x ", static_cast<unsigned>(code))
                                                   : std::string(1, values[k]);
  }
  return text + cut_mark(values.size(), limit) + ">\n";
}

void write_log(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), log_stream());
  std::fflush(log_stream());
}

}  // namespace

void PD_InitDebug() {
  if (pd_debug < 0) {
    const char* setting = std::getenv("PD_DEBUG");
    pd_debug = setting == nullptr ? 0 : std::string_view(setting) == "VERBOSE" ? 2 : 1;
  }
  PNC_InitDebug();
}

void PD_debug(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::vfprintf(log_stream(), format, arguments);
  va_end(arguments);
  std::fflush(log_stream());
}

template <class T>
void log_sent(const Connection& record, std::span<const T> values) {
  if (style<T>.sent_limit == 0) return;
  std::string text =
      printed("PD (%s) sending %d %s to ", PRODUCT_EXE, static_cast<int>(values.size()), style<T>.sent_name);
  text += std::string(or_null(record.peer)) + " (" + or_null(record.server) + "):";
  if constexpr (std::is_same_v<T, char>) {
    text += " " + quoted(values, style<T>.sent_limit, 2);
  } else {
    text += list(values, style<T>.sent_limit);
  }
  write_log(text);
}

template <class T>
void log_received(const Connection& record, std::span<const T> values, std::int64_t got) {
  const auto shown = values.first(static_cast<std::size_t>(std::max<std::int64_t>(got, 0)) / sizeof(T));
  if constexpr (std::is_same_v<T, char>) {
    write_log(printed("PD (%s) expected %d char(s), received %d: ", PRODUCT_EXE, static_cast<int>(values.size()),
                      static_cast<int>(got)) +
              quoted(shown, style<T>.received_limit, 0));
    return;
  }
  if (std::is_same_v<T, std::int16_t> && typed_log_on(2)) {
    PD_debug("PD is receiving %d bytes as %d short(s)\n", static_cast<int>(values.size_bytes()),
             static_cast<int>(values.size()));
  }
  write_log(
      printed("PD (%s) received %d bytes of %s from ", PRODUCT_EXE, static_cast<int>(got), style<T>.received_name) +
      or_null(record.peer) + " (" + or_null(record.server) + "):" + list(shown, style<T>.received_limit));
}

template void log_sent(const Connection&, std::span<const char>);
template void log_sent(const Connection&, std::span<const std::int16_t>);
template void log_sent(const Connection&, std::span<const std::int32_t>);
template void log_sent(const Connection&, std::span<const float>);
template void log_sent(const Connection&, std::span<const double>);
template void log_received(const Connection&, std::span<const char>, std::int64_t);
template void log_received(const Connection&, std::span<const std::int16_t>, std::int64_t);
template void log_received(const Connection&, std::span<const std::int32_t>, std::int64_t);
template void log_received(const Connection&, std::span<const float>, std::int64_t);
template void log_received(const Connection&, std::span<const double>, std::int64_t);

}  // namespace pathstat
