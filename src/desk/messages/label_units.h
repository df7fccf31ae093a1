#pragma once

#include <string_view>

namespace pathstat::desk {

/// The unit of a response property by the label of its curve or column, such as "Cv - Total Energy"; empty for a label
/// without one.
std::string_view unit_of_label(std::string_view label);

}  // namespace pathstat::desk
