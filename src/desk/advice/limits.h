#pragma once

#include <string>
#include <string_view>

#include "desk/advice/present.h"

namespace pathstat::desk {

/// Why a value does not suit a word at present: "1000 is above 200, the last frame of the file", and what to do where
/// there is something to do. Empty if the value is within the limits, or none are known.
std::string beyond_limits(std::string_view word, double value, Present& present);

}  // namespace pathstat::desk
