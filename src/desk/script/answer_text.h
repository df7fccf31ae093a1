#pragma once

#include <string>
#include <vector>

namespace pathstat::desk {

/// The items of all values of an answer: a value is a list with commas between and "\," for a comma in an item. Blanks
/// at their starts are kept: they set items in under a heading.
std::vector<std::string> items_of(const std::vector<std::string>& values);

/// The items in a line if they are few, else on a line each.
std::string spelled(const std::vector<std::string>& values);

/// The items that can be chosen, without blanks: those that are set in, if any are, else all; but for those between
/// < and >, which cannot be had yet.
std::vector<std::string> choices_of(const std::vector<std::string>& ranges);

/// The items that can be chosen, under those of their headings that something stands under.
std::string spelled_choices(const std::vector<std::string>& ranges);

}  // namespace pathstat::desk
