#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "desk/selection/selection.h"

namespace pathstat::desk {

// The parts that selections are made of. Each chooser gives one flag per atom of the scope's model.

using Chooser = std::function<AtomFlags(SelectionScope& scope)>;

/// A word that holds by itself.
struct PlainWord {
  std::string_view word;
  AtomFlags (*choose)(SelectionScope& scope);
};
std::span<const PlainWord> plain_words();

Chooser choose_elements(std::vector<std::uint8_t> numbers);

/// A word that names a column of words, with patterns behind it.
struct TextWord {
  std::string_view word;
  std::string_view told;  ///< what an atom has
  WordColumn MolecularModel::*column;
};
std::span<const TextWord> text_words();

struct TextValue {
  std::string text;
  bool is_pattern;  ///< * and ? stand for letters
};
Chooser choose_texts(const TextWord& word, std::vector<TextValue> values);

/// A word that names a number of each atom, with ranges or a comparison behind it.
struct NumberWord {
  std::string_view word;
  bool whole;  ///< takes ranges too
  std::vector<double> (*values)(SelectionScope& scope);
};
std::span<const NumberWord> number_words();

struct NumberRange {
  std::int32_t first = 0, last = 0;
};
/// Reads 7, 3-7 or 3:7. @return false for what is none, or runs backwards
bool read_range(std::string_view text, NumberRange& range);
Chooser choose_ranges(const NumberWord& word, std::vector<NumberRange> ranges);

struct Comparison {
  std::string_view sign;
  bool (*holds)(double a, double b);
};
/// The sign that a text begins with; null if it does with none.
const Comparison* comparison_at(std::string_view text);
Chooser choose_compared(const NumberWord& word, const Comparison& comparison, double number);

/// What atoms may have the same of, with a label per atom that tells which are the same.
struct SameWord {
  std::string_view word;
  std::vector<std::uint32_t> (*labels)(SelectionScope& scope);
};
std::span<const SameWord> same_words();
Chooser choose_same(const SameWord& word, SelectionPointer as);

Chooser choose_near(double distance, SelectionPointer of);
Chooser choose_bonded(SelectionPointer to);
Chooser choose_others(SelectionPointer than);
Chooser choose_any(std::vector<SelectionPointer> parts);
Chooser choose_common(std::vector<SelectionPointer> parts);

}  // namespace pathstat::desk
