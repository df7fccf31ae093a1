#pragma once

#include <string>
#include <string_view>

namespace pathstat::desk {

/// A text as it may be shown to a person, whoever wrote it: control characters (below 0x20, 0x7f, 0x80 to 0x9f, and
/// those that end a line or turn the direction of writing) and bytes that are no UTF-8 as `\xNN`.
/// @param kept  control characters that stay, such as line ends
std::string visible(std::string_view text, std::string_view kept = {});

/// The text, or its first `most` bytes, no letter cut, and how long it is in all.
std::string shortened(std::string_view text, std::size_t most);

/// Lines of text: their ends and tabs stay.
inline std::string visible_lines(std::string_view text) { return visible(text, "\n\t"); }

}  // namespace pathstat::desk
