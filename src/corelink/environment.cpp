#include "corelink/environment.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "corelink/fixed_text.h"
#include "support/text_field.h"

namespace pathstat {

namespace {

bool fields_are_traced() { return is_switched_on("GETENV_DEBUG"); }

std::string without_padding(std::string_view field) { return std::string(trimmed(field)); }

}  // namespace

const char* COM_getenv(const char* name) { return std::getenv(name); }

bool is_switched_on(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && std::string_view(value) == "ON";
}

void COM_setenv(const char* name, const char* value) {
  if (is_switched_on("ENV_DEBUG")) std::printf("COM_setenv: %s=%s\n", name, value);
  const int result = ::setenv(name, value, 1);
  if (result == 0) return;
  if (errno == ENOMEM) {
    std::fputs("Error in COM_setenv: no more memory\n", stderr);
  } else {
    std::fprintf(stderr, "Error in COM_setenv: system command 'putenv(%s)' rc=%d\n",
                 (std::string(name) + "=" + value).c_str(), result);
  }
}

void COM_unsetenv(const char* name) { COM_setenv(name, ""); }

const char* getenv_of_field(std::string_view name) {
  const std::string variable = without_padding(name);
  const char* value = std::getenv(variable.c_str());
  if (fields_are_traced()) {
    std::printf("com_getenv: %s%s%s\n", variable.c_str(), value == nullptr ? " is not set" : "=",
                value == nullptr ? "" : value);
  }
  return value;
}

void com_getenv_fortran_(std::string_view name, std::span<char> value) {
  const char* found = getenv_of_field(name);
  const std::string_view text = found == nullptr ? "" : found;
  const bool fits = text.size() <= value.size();
  kvS_STR_CopyC2F(value, fits ? text : "");
  if (fits) return;
  std::fprintf(stderr, "com_getenv: value of %s has %zu characters, and the field %zu\n", without_padding(name).c_str(),
               text.size(), value.size());
}

void com_setenv_fortran_(std::string_view name, std::string_view value) {
  const std::string variable = without_padding(name), text = without_padding(value);
  if (fields_are_traced()) std::printf("com_setenv: %s=%s\n", variable.c_str(), text.c_str());
  COM_setenv(variable.c_str(), text.c_str());
}

std::int32_t COM_getnumenv(const char* name, std::int32_t default_value) {
  if (name == nullptr) {
    std::fputs("COM_getnumenv warning: env_name=NULL\n", stderr);
    return default_value;
  }
  const char* value = std::getenv(name);
  if (value == nullptr) return default_value;
  const std::string_view text(value);
  std::int32_t number = 0;
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (failure == std::errc{} && end == text.data() + text.size() && number > 0) return number;
  std::fprintf(stderr, "Wrong value %s=%s. Default %d is accepted\n", name, value, default_value);
  return default_value;
}

}  // namespace pathstat
