#include "desk/selection/selection.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <utility>

#include "desk/advice/nearest.h"
#include "desk/messages/visible_text.h"
#include "desk/selection/selection_parts.h"
#include "desk/selection/selection_words.h"
#include "structure/elements.h"

namespace pathstat::desk {
namespace {

/// Bounds on what one selection, with the groups in it, asks of memory and time.
constexpr int deepest = 100;
constexpr std::size_t most_parts = 10000;

/// The words that are neither in a table nor the beginning of a part.
constexpr std::array<std::string_view, 5> inner_words{"and", "or", "of", "as", "to"};

/// The words that begin a part and are in no table.
constexpr std::array<std::string_view, 5> opening_words{"element", "not", "within", "same", "bonded"};

/// Words that never stand for a value without quotes, as they tell of an and or or that was left out.
constexpr std::array<std::string_view, 13> never_values{"not",      "within", "same",    "bonded", "element",
                                                        "name",     "fftype", "resname", "resid",  "index",
                                                        "molecule", "mass",   "charge"};

template <class Words>
bool holds(const Words& words, std::string_view text) {
  return std::find(words.begin(), words.end(), text) != words.end();
}

template <class Row>
const Row* row_of(std::span<const Row> rows, const SelectionWord& word) {
  const auto found = std::find_if(rows.begin(), rows.end(), [&](const Row& row) { return word.is(row.word); });
  return found == rows.end() ? nullptr : &*found;
}

template <class Row>
void add_words(std::span<const Row> rows, std::vector<std::string>& words) {
  for (const auto& row : rows) words.emplace_back(row.word);
}

template <class Row>
std::string listed(std::span<const Row> rows) {
  std::vector<std::string> words;
  add_words(rows, words);
  return fmt::format("{}", fmt::join(words, ", "));
}

/// Recursive descent: or of and of parts.
class Reader {
 public:
  Reader(std::string_view text, const AtomGroups& groups)
      : text_(text), groups_(groups), words_(selection_words_of(text)) {}

  ReadSelection read() {
    for (const auto& word : words_) {
      if (word.unclosed) fail(word, "this quote has no end");
    }
    auto selection = problem_.empty() ? alternatives() : nullptr;
    if (selection && !word().is_end()) {
      selection = word().is(")") ? fail(word(), "no parenthesis is open here")
                                 : fail(word(), fmt::format("and or or is missing in front of {}", shown(word())));
    }
    return {std::move(selection), std::move(problem_)};
  }

 private:
  // The reading functions return null once there is a problem.

  SelectionPointer alternatives() { return joined("or", &Reader::conditions, choose_any); }
  SelectionPointer conditions() { return joined("and", &Reader::part, choose_common); }

  SelectionPointer joined(std::string_view joint, SelectionPointer (Reader::*read_one)(),
                          Chooser (*choose)(std::vector<SelectionPointer>)) {
    std::vector<SelectionPointer> parts;
    do {
      parts.push_back((this->*read_one)());
      if (!parts.back()) return nullptr;
    } while (accept(joint));
    if (parts.size() == 1) return std::move(parts.front());
    const auto inner = parts;
    return node(choose(std::move(parts)), inner);
  }

  SelectionPointer part() {
    if (level_ == deepest) return fail(word(), "this goes too deep");
    ++level_;
    auto read = part_at(word());
    --level_;
    return read;
  }

  SelectionPointer part_at(const SelectionWord& begin) {
    if (accept("(")) return in_parentheses(begin);
    if (accept("not")) return around(choose_others);
    if (accept("within")) return within();
    if (accept("same")) return same();
    if (accept("bonded")) return expect("to") ? around(choose_bonded) : nullptr;
    if (accept("element")) return element_values(begin);
    if (const auto* row = row_of(plain_words(), begin)) return ++next_, plain(*row);
    if (const auto* row = row_of(text_words(), begin)) return ++next_, text_values(*row, begin);
    if (auto read = number_part(begin)) return *read;
    const auto group = begin.quoted ? groups_.end() : groups_.find(begin.text);
    if (group != groups_.end()) return ++next_, group->second;
    return fail_at_part(begin);
  }

  SelectionPointer fail_at_part(const SelectionWord& begin) {
    if (begin.is_end()) return fail(begin, "a selection is missing here");
    if (begin.is(")") || (!begin.quoted && holds(inner_words, begin.text)))
      return fail(begin, fmt::format("a selection is missing in front of {}", begin.text));
    const auto words = selection_words();
    auto known = words;
    for (auto& name : group_names(groups_)) known.push_back(std::move(name));
    const auto meant = did_you_mean(begin.text, known);
    return fail(begin, fmt::format("{} is neither a word of selections nor a group; {}", shown(begin),
                                   meant.empty() ? fmt::format("these are words: {}", fmt::join(words, ", ")) : meant));
  }

  SelectionPointer in_parentheses(const SelectionWord& open) {
    auto inner = alternatives();
    if (!inner || accept(")")) return inner;
    return word().is_end() ? fail(open, "this parenthesis is not closed")
                           : fail(word(), fmt::format("and or or is missing in front of {}", shown(word())));
  }

  template <class Choose>
  SelectionPointer around(Choose choose) {
    auto inner = part();
    return inner ? node(choose(inner), {inner}) : nullptr;
  }

  SelectionPointer within() {
    const auto distance = number(word());
    if (!distance || *distance < 0)
      return fail(word(), "within takes a distance in angstrom, as in within 3 of name NA");
    ++next_;
    if (!expect("of")) return nullptr;
    return around([&](SelectionPointer of) { return choose_near(*distance, std::move(of)); });
  }

  SelectionPointer same() {
    const auto* row = row_of(same_words(), word());
    if (!row) {
      return fail(word(), fmt::format("same takes one of {}, as in same molecule as name NA", listed(same_words())));
    }
    ++next_;
    if (!expect("as")) return nullptr;
    return around([&](SelectionPointer as) { return choose_same(*row, std::move(as)); });
  }

  SelectionPointer plain(const PlainWord& row) { return node(row.choose, {}); }

  /// True while values of a word go on; a word that can be none where one is needed is a problem.
  bool at_value() const {
    return !word().is_end() && !word().is("and") && !word().is("or") && !word().is("(") && !word().is(")");
  }

  /// Reads one value or more. @param take  returns what is wrong with one, or nothing
  template <class Take>
  bool values(const SelectionWord& of, Take take) {
    if (!at_value()) return fail(of, fmt::format("{} needs what to select", of.text)), false;
    for (; at_value(); ++next_) {
      if (!word().quoted && holds(never_values, word().text)) {
        return fail(word(), fmt::format("and or or is missing in front of {}, or quotes around it", word().text)),
               false;
      }
      if (auto wrong = take(word()); !wrong.empty()) return fail(word(), wrong), false;
    }
    return true;
  }

  SelectionPointer element_values(const SelectionWord& of) {
    std::vector<std::uint8_t> numbers;
    const bool read = values(of, [&](const SelectionWord& value) {
      numbers.push_back(element_of_symbol(value.text));
      return numbers.back() == 0 ? fmt::format("{} is not an element", shown(value)) : std::string{};
    });
    return read ? node(choose_elements(std::move(numbers)), {}) : nullptr;
  }

  SelectionPointer text_values(const TextWord& row, const SelectionWord& of) {
    std::vector<TextValue> texts;
    const bool read = values(of, [&](const SelectionWord& value) {
      texts.push_back({std::string(value.text), !value.quoted});
      return std::string{};
    });
    return read ? node(choose_texts(row, std::move(texts)), {}) : nullptr;
  }

  /// Reads a word of a number, also with a comparison at its end as in mass>2; nothing if it is none.
  std::optional<SelectionPointer> number_part(const SelectionWord& begin) {
    auto name = begin;
    if (!begin.quoted) name.text = begin.text.substr(0, begin.text.find_first_of("<>=!"));
    const auto* row = row_of(number_words(), name);
    if (!row) return std::nullopt;
    if (name.text.size() == begin.text.size())
      ++next_;
    else
      cut(name.text.size());
    if (comparison_at(word().text) && !word().quoted) return compared(*row);
    if (row->whole) return ranges(*row, name);
    return fail(word(), fmt::format("{0} needs a comparison, as in {0} > 2", row->word));
  }

  SelectionPointer compared(const NumberWord& row) {
    const auto* comparison = comparison_at(word().text);
    if (word().text.size() == comparison->sign.size())
      ++next_;
    else
      cut(comparison->sign.size());
    const auto limit = number(word());
    if (!limit) return fail(word(), fmt::format("a number is missing behind {} {}", row.word, comparison->sign));
    ++next_;
    return node(choose_compared(row, *comparison, *limit), {});
  }

  SelectionPointer ranges(const NumberWord& row, const SelectionWord& of) {
    std::vector<NumberRange> ranges;
    const bool read = values(of, [&](const SelectionWord& value) {
      const bool fits = read_range(value.text, ranges.emplace_back());
      return fits ? std::string{} : fmt::format("{} is not a number or a range such as 3-7", shown(value));
    });
    return read ? node(choose_ranges(row, std::move(ranges)), {}) : nullptr;
  }

  static std::optional<double> number(const SelectionWord& word) {
    double value = 0;
    const auto* end = word.text.data() + word.text.size();
    const auto [at, status] = std::from_chars(word.text.data(), end, value);
    const bool whole = status == std::errc{} && at == end && std::isfinite(value);
    return whole ? std::optional(value) : std::nullopt;
  }

  SelectionPointer node(Chooser choose, const std::vector<SelectionPointer>& inner) {
    Selection made{.choose = std::move(choose)};
    for (const auto& part : inner) {
      made.depth = std::max(made.depth, part->depth + 1);
      made.parts += part->parts;
    }
    if (made.depth > deepest) return fail(word(), "the groups in this selection make it go too deep");
    if (made.parts > most_parts) return fail(word(), fmt::format("a selection has at most {} parts", most_parts));
    return std::make_shared<const Selection>(std::move(made));
  }

  const SelectionWord& word() const { return words_[next_]; }

  bool accept(std::string_view text) {
    const bool is = word().is(text);
    next_ += is ? 1 : 0;
    return is;
  }

  bool expect(std::string_view text) {
    if (accept(text)) return true;
    fail(word(), fmt::format("{} is missing here", text));
    return false;
  }

  /// Takes the first letters of a word as read.
  void cut(std::size_t letters) {
    words_[next_].text.remove_prefix(letters);
    words_[next_].at += letters;
  }

  static std::string shown(const SelectionWord& word) { return visible(shortened(word.text, 60)); }

  SelectionPointer fail(const SelectionWord& word, const std::string& why) {
    const auto length = word.text.size() + (word.quoted ? word.unclosed ? 1 : 2 : 0);
    if (problem_.empty()) problem_ = why + pointed_at(text_, word.at, length);
    return nullptr;
  }

  std::string_view text_;
  const AtomGroups& groups_;
  std::vector<SelectionWord> words_;
  std::size_t next_ = 0;
  int level_ = 0;
  std::string problem_;
};

}  // namespace

std::vector<std::string> group_names(const AtomGroups& groups) {
  std::vector<std::string> names;
  for (const auto& [name, selection] : groups) names.push_back(name);
  return names;
}

std::string why_no_group_name(std::string_view name) {
  const auto letter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
  const auto inner = [&](char c) { return letter(c) || (c >= '0' && c <= '9') || c == '_' || c == '-' || c == '.'; };
  if (name.empty() || !letter(name.front()) || !std::all_of(name.begin(), name.end(), inner))
    return "the name of a group is a letter and letters, digits, _, - or . behind it";
  if (holds(inner_words, name) || holds(selection_words(), name))
    return fmt::format("{} is a word of selections and can't be the name of a group", name);
  return {};
}

std::vector<std::string> selection_words() {
  std::vector<std::string> words(opening_words.begin(), opening_words.end());
  add_words(plain_words(), words);
  add_words(text_words(), words);
  add_words(number_words(), words);
  return words;
}

ReadSelection read_selection(std::string_view text, const AtomGroups& groups) { return Reader(text, groups).read(); }

ChosenAtoms chosen_atoms(DataModel& data, std::span<ModelObject* const> models, const Selection& selection) {
  ChosenAtoms chosen;
  for (auto* object : models) {
    SelectionScope scope{.model = object->data,
                         .molecules = [&]() -> const Connectivity& { return data.connectivity(*object); },
                         .selected = object->atom_selected,
                         .notes = {}};
    auto flags = selection.choose(scope);
    chosen.count += static_cast<std::size_t>(std::count(flags.begin(), flags.end(), 1));
    // A word that fits an atom of another model is no mistake.
    if (chosen.flags.empty())
      chosen.notes = std::move(scope.notes);
    else
      std::erase_if(chosen.notes, [&](const std::string& note) { return !holds(scope.notes, note); });
    chosen.flags.push_back(std::move(flags));
  }
  return chosen;
}

std::vector<std::string> select_atoms(DataModel& data, const Selection& selection) {
  const auto models = data.models();
  auto chosen = chosen_atoms(data, models, selection);
  for (std::size_t k = 0; k < models.size(); ++k) data.set_selected_atoms(*models[k], std::move(chosen.flags[k]));
  return std::move(chosen.notes);
}

ReplacedGroups with_groups_replaced(DataModel& data, ModelObject& model, std::span<const std::string> words,
                                    const AtomGroups& groups) {
  constexpr std::size_t most_named = 100;
  ReplacedGroups replaced;
  for (const auto& word : words) {
    const auto group = groups.find(word);
    if (group == groups.end()) {
      replaced.words.push_back(word);
      continue;
    }
    auto* const model_of_group = &model;
    const auto chosen = chosen_atoms(data, std::span(&model_of_group, 1), *group->second);
    if (chosen.count == 0 || chosen.count > most_named) {
      replaced.problem = fmt::format("the group {} has {} atoms", word, chosen.count);
      return replaced;
    }
    for (std::size_t k = 0; k < model.data.atoms(); ++k) {
      if (chosen.flags[0][k]) replaced.words.push_back(std::to_string(model.data.ids[k]));
    }
  }
  return replaced;
}

}  // namespace pathstat::desk
