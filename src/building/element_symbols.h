#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat {

/// The number of an element by its symbol, in its own spelling; 0 for any other text. Behind the 118 elements by their
/// atomic numbers stand D and T.
std::int32_t number_of_element(std::string_view symbol);

/// The symbol of such a number; empty for a number that no element has.
std::string_view element_symbol(std::int32_t number);

}  // namespace pathstat
