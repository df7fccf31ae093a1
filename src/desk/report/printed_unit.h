#pragma once

#include <string>
#include <string_view>

namespace pathstat::desk {

/// A line of the process with the unit of its numbers behind it, where the line does not tell it itself.
std::string with_unit(std::string_view line);

}  // namespace pathstat::desk
