#pragma once

#include <cstdint>

#include "support/text_field.h"

namespace pathstat {

/// Writes a number in `width` columns with `digits` significant digits, in the fixed form where it has room and at
/// most `zeros` zeros behind the point ahead of the first digit, else in the exponent form. "**********" where
/// there is no room for either.
void kvs_fmt_codedouble_(TextField text, double value, std::int32_t width, std::int32_t digits, std::int32_t zeros);

}  // namespace pathstat
