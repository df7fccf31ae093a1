#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace pathstat::desk {

/// The number of single changes that turn one text into the other, in letters of either case: a letter more, less,
/// another one, or two neighbours changed round.
std::size_t distance(std::string_view a, std::string_view b);

/// The candidate that is meant by a text with one or two wrong letters: one in a text of three to five, none in a
/// shorter one but its case. @return empty if no candidate is that near
std::string nearest(std::string_view wanted, std::span<const std::string> candidates);

/// "did you mean NAME?", or nothing.
std::string did_you_mean(std::string_view wanted, std::span<const std::string> candidates);

/// The text between quotes if it holds blanks, else as it stands.
std::string as_argument(std::string_view text);

/// True for texts that are the same but for the case of their letters.
bool same_in_any_case(std::string_view a, std::string_view b);

}  // namespace pathstat::desk
