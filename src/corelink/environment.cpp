#include "corelink/environment.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace pathstat {

const char* COM_getenv(const char* name) { return std::getenv(name); }

void COM_setenv(const char* name, const char* value) {
  const char* trace = std::getenv("ENV_DEBUG");
  if (trace != nullptr && std::string_view(trace) == "ON") std::printf("COM_setenv: %s=%s\n", name, value);
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
