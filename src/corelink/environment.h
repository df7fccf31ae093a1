#pragma once

#include <cstdint>

namespace pathstat {

/// The value of an environment variable, null if it is unset.
const char* COM_getenv(const char* name);

/// Sets a variable; a failure is told on standard error.
void COM_setenv(const char* name, const char* value);

/// Sets the variable to the empty text.
void COM_unsetenv(const char* name);

/// The variable's decimal value, or `default_value` if it is unset. A value that is no number above 0 is told on
/// standard error and gives the default.
std::int32_t COM_getnumenv(const char* name, std::int32_t default_value);

}  // namespace pathstat
