#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace pathstat {

/// Writes one number in fixed columns, by one edit descriptor.
///
/// `format` is `[kP]Fw.d`, `[kP]Ew.d[Ee]`, `[kP]Gw.d[Ee]` for reals, `Iw[.m]` or `Gw` for integers, `Lw` or `Gw` for
/// logicals. Case, blanks and one pair of parentheses do not matter: "(G12.5)", "(1pe16.09e3)", "I6". w and d are at
/// most 400 and w at least 1.
///
/// - The result has w characters, right-aligned, and is w asterisks if the number does not fit. A zero before the
///   point is left out only if the width demands it.
/// - Reals are rounded from their exact value, ties to even. A negative number that rounds to zero, and negative zero,
///   keep the minus sign.
/// - E has a two-digit exponent; one of three digits takes the place of the letter E. With Ee it has e digits.
/// - G writes a value that, rounded to d digits, lies in 0.1 <= |x| < 10^d as F with d digits and four (with Ee: e + 2)
///   blanks behind, zero as F with d - 1 decimals, and all else as E.
/// - The scale factor kP multiplies by 10^k under F, and moves k digits before the point under E; where G takes the F
///   form it does nothing. It holds for the one descriptor.
/// - Not-a-number is "NaN"; infinity is "Infinity", or "Inf" where that does not fit.
/// - A format that is none of these, or is not for the value's type, gives asterisks: w of them, or one if there is no
/// w.
std::string formatted(double value, std::string_view format);
std::string formatted(std::int32_t value, std::string_view format);
std::string formatted(std::int64_t value, std::string_view format);
std::string formatted(bool value, std::string_view format);

}  // namespace pathstat
