#pragma once

#include <cstdint>

#include "support/text_field.h"

namespace pathstat {

/// The process arguments as main received them.
inline std::int32_t main_argc = 0;
inline char** main_argv = nullptr;

/// The number of arguments behind the program's name.
std::int32_t iargc_();

/// Fills the field with argument `index` (0 is the program), blank-padded; with blanks if there is none.
void getarg_(std::int32_t index, TextField buffer);

/// The part of the first process argument behind its last "/".
const char* program_name();

}  // namespace pathstat
