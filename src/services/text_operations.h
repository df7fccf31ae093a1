#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "support/text_field.h"

namespace pathstat {

/// The place of the last non-blank character, counted from 1; 1 for a text of blanks.
void kvs_str_nblen_(std::string_view text, std::int32_t& length);

/// Reads a number at the start of the text, its exponent marked by e, E, d or D. What stands behind it is no error.
/// @param error  1 if no character is part of a number or it is out of range; the value is stored all the same
void kvS_STR_ToDouble(std::string_view text, double& value, std::int32_t& error);
void kvs_str_todouble_(std::string_view text, double& value, std::int32_t& error);

/// The same for a decimal integer; one out of range gives the nearest that is in range.
void kvS_STR_ToInteger(std::string_view text, std::int32_t& value, std::int32_t& error);
void kvs_str_tointeger_(std::string_view text, std::int32_t& value, std::int32_t& error);

/// The part of the text between its leading and trailing white space.
std::string_view kvS_STR_TrimWhiteSpace(std::string_view text);
/// Overwrites trailing white space with terminators.
/// @return the block behind its leading white space, without the terminators
std::span<char> STR_Trim_white_space(std::span<char> text);
/// Moves the text to the start of its field.
void kvs_str_trimwhitespace_(TextField text);

/// Below 0, 0 or above 0 as `a` stands before, with or behind `b` when letters of either case are equal.
std::int32_t STR_CaseCmp(std::string_view a, std::string_view b);
std::int32_t kvs_str_casecmp_(std::string_view a, std::string_view b);

/// Turns the letters a to z to upper case.
void kvs_str_toupper_(TextField text);

/// Waits.
void kvS_MsecSleep(std::int32_t milliseconds);
void kvs_msecsleep_(std::int32_t milliseconds);

}  // namespace pathstat
