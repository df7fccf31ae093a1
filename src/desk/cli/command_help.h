#pragma once

#include <string>
#include <string_view>

namespace pathstat::desk {

/// What there is to say of a topic: a command word or the first word of a line that begins with @; for another text the
/// words that have it in their name or meaning, in upper or lower case; for an empty one all words in short.
std::string help_text(std::string_view topic);

}  // namespace pathstat::desk
