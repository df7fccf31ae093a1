#pragma once

#include <cstdint>
#include <string_view>

#include "support/text_field.h"

namespace pathstat {

/// Finds the first field of a text: what stands between blanks. The next field is in the text behind `end`.
///
/// @param field   out: the field, cut or blank-padded
/// @param length  out: its characters, 0 for a blank text
/// @param end     out: the place of its last character in the text, from 1; 0 for a blank text
void nxtfld_(std::string_view text, TextField field, std::int32_t& length, std::int32_t& end);

}  // namespace pathstat
