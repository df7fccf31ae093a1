#include "services/text_operations.h"

#include <sys/select.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <string>

namespace pathstat {
namespace {

constexpr std::string_view white_space = " \t\n\v\f\r";

constexpr char upper(char letter) {
  return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

}  // namespace

void kvs_str_nblen_(std::string_view text, std::int32_t& length) {
  length = std::max(1, static_cast<std::int32_t>(trimmed(text).size()));
}

void kvS_STR_ToDouble(std::string_view text, double& value, std::int32_t& error) {
  std::string copy(text);
  const auto exponent = copy.find_first_of("dD");
  if (exponent != copy.npos) copy[exponent] = 'e';
  char* end = nullptr;
  errno = 0;
  value = std::strtod(copy.c_str(), &end);
  error = errno == ERANGE || end == copy.c_str() ? 1 : 0;
}
void kvs_str_todouble_(std::string_view text, double& value, std::int32_t& error) {
  kvS_STR_ToDouble(trimmed(text), value, error);
}

void kvS_STR_ToInteger(std::string_view text, std::int32_t& value, std::int32_t& error) {
  using Limits = std::numeric_limits<std::int32_t>;
  const std::string copy(text);
  char* end = nullptr;
  const long long number = std::strtoll(copy.c_str(), &end, 10);
  value = static_cast<std::int32_t>(std::clamp<long long>(number, Limits::min(), Limits::max()));
  error = number != value || end == copy.c_str() ? 1 : 0;
}
void kvs_str_tointeger_(std::string_view text, std::int32_t& value, std::int32_t& error) {
  kvS_STR_ToInteger(trimmed(text), value, error);
}

std::string_view kvS_STR_TrimWhiteSpace(std::string_view text) {
  const auto first = text.find_first_not_of(white_space);
  if (first == text.npos) return text.substr(text.size());
  return text.substr(first, text.find_last_not_of(white_space) + 1 - first);
}

std::span<char> STR_Trim_white_space(std::span<char> text) {
  const std::string_view all(text.data(), text.size());
  const std::string_view kept = kvS_STR_TrimWhiteSpace(all);
  const auto first = static_cast<std::size_t>(kept.data() - all.data());
  const auto trailing = text.subspan(all.find_last_not_of(white_space) + 1);
  std::fill(trailing.begin(), trailing.end(), '\0');
  return text.subspan(first, kept.size());
}

void kvs_str_trimwhitespace_(TextField text) { text.set(std::string(kvS_STR_TrimWhiteSpace(text))); }

std::int32_t STR_CaseCmp(std::string_view a, std::string_view b) {
  const auto common = std::min(a.size(), b.size());
  for (std::size_t k = 0; k < common; ++k) {
    const int difference = static_cast<unsigned char>(upper(a[k])) - static_cast<unsigned char>(upper(b[k]));
    if (difference != 0) return difference;
  }
  if (a.size() == b.size()) return 0;
  return a.size() < b.size() ? -1 : 1;
}
std::int32_t kvs_str_casecmp_(std::string_view a, std::string_view b) { return STR_CaseCmp(trimmed(a), trimmed(b)); }

void kvs_str_toupper_(TextField text) {
  std::string letters(text.view());
  std::transform(letters.begin(), letters.end(), letters.begin(), upper);
  text.set(letters);
}

void kvS_MsecSleep(std::int32_t milliseconds) {
  timeval time{milliseconds / 1000, suseconds_t{milliseconds % 1000} * 1000};
  ::select(0, nullptr, nullptr, nullptr, &time);
}
void kvs_msecsleep_(std::int32_t milliseconds) { kvS_MsecSleep(milliseconds); }

}  // namespace pathstat
