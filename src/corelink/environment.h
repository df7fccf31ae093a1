#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace pathstat {

/// The value of an environment variable, null if it is unset.
const char* COM_getenv(const char* name);

/// True for a variable that is set to "ON".
bool is_switched_on(const char* name);

/// Sets a variable; a failure is told on standard error.
void COM_setenv(const char* name, const char* value);

/// Sets the variable to the empty text.
void COM_unsetenv(const char* name);

// By address: names and values are fields, of which trailing blanks are no part. GETENV_DEBUG set to "ON" traces them
// on standard output, as ENV_DEBUG does COM_setenv.

/// The value of the variable that a field names, null if it is unset.
const char* getenv_of_field(std::string_view name);

/// The same into a field, blank-padded; blanks if the variable is unset. A value that the field has no room for is told
/// on standard error and gives blanks.
void com_getenv_fortran_(std::string_view name, std::span<char> value);

/// Sets a variable by COM_setenv.
void com_setenv_fortran_(std::string_view name, std::string_view value);

/// The variable's decimal value, or `default_value` if it is unset. A value that is no number above 0 is told on
/// standard error and gives the default.
std::int32_t COM_getnumenv(const char* name, std::int32_t default_value);

}  // namespace pathstat
