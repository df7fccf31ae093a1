#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "support/text_field.h"

namespace pathstat {

/// The most characters that the expanded path of a unit has.
constexpr std::size_t longest_unit_path = 1000;

/// The path with an environment prefix replaced: `$NAME/rest` and `$NAME:rest` give the value of NAME, a "/" and the
/// rest, where an unset or blank NAME counts as ".". Any other path stands as it is. Trailing blanks are dropped.
std::string unit_path(std::string_view source);

/// unit_path into a field.
void interpenv_(std::string_view source, TextField target);

/// The value of an environment variable with a "/" at its end; "./" if it is unset or blank.
void envar_(std::string_view name, TextField value);

/// True if the file of this path, expanded by unit_path, exists. A blank path does not.
bool exists_(std::string_view path);

/// May the file be used as asked? One that does not exist may. If not, the user is told on standard output, the bell
/// rings and the text window comes up.
/// @param mode   1 needs reading, 0 and 2 reading and writing
/// @param error  0, or 1 if the file exists and may not be used so
void checkaccess_(std::string_view path, std::int32_t mode, std::int32_t& error);

}  // namespace pathstat
