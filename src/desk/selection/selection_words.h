#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "desk/messages/visible_text.h"

namespace pathstat::desk {

/// A word, a parenthesis, or the end of a selection.
struct SelectionWord {
  std::string_view text;
  std::size_t at = 0;     ///< where it stands, with its quote
  bool quoted = false;    ///< stands for itself: neither a word of the language nor a pattern
  bool unclosed = false;  ///< the quote has no end

  bool is(std::string_view word) const { return !quoted && text == word; }
  bool is_end() const { return text.empty() && !quoted; }
};

/// True for a word behind which a selection begins, or a parenthesis around one: and, of, ...
bool stands_before_selection(std::string_view word);

/// Splits a selection: words end at blanks, commas and the parentheses that group, and may stand in quotes. A
/// parenthesis inside a word, as in H(1), belongs to it.
std::vector<SelectionWord> selection_words_of(std::string_view text);

/// True if a text fits a pattern in which * stands for any letters and ? for one. Linear in both but for patterns of
/// many stars, then in their product.
bool fits_pattern(std::string_view text, std::string_view pattern);

/// A text with a mark under a part of it, as two indented lines; of a long text what stands around the part.
std::string pointed_at(std::string_view text, std::size_t at, std::size_t length);

}  // namespace pathstat::desk
