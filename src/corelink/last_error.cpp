#include "corelink/last_error.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace pathstat {
namespace {

using TextBlock = std::array<char, 1024>;

TextBlock last_error{};

}  // namespace

void PLE_error(const char* format, ...) {
  TextBlock local;  // the arguments may point into the last error itself
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(local.data(), local.size(), format, arguments);
  va_end(arguments);
  last_error = local;
}

const char* PLE_get_error() { return last_error.data(); }

void PLE_reset_error() { last_error[0] = '\0'; }

void PLE_notab_error() { std::replace(last_error.begin(), last_error.end(), '\t', ' '); }

const char* PLE_system_error() {
  static TextBlock text;
  const int number = errno;
  const char* description = ::strerrordesc_np(number);
  text[0] = '\0';
  if (description != nullptr) std::snprintf(text.data(), text.size(), "\n\tsystem error: %s", description);
  return text.data();
}

}  // namespace pathstat
