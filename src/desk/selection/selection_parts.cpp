#include "desk/selection/selection_parts.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <numeric>
#include <utility>

#include "desk/advice/nearest.h"
#include "desk/messages/visible_text.h"
#include "desk/selection/near_atoms.h"
#include "desk/selection/selection_words.h"
#include "structure/elements.h"

namespace pathstat::desk {
namespace {

AtomFlags all(SelectionScope& scope) { return AtomFlags(scope.model.atoms(), 1); }
AtomFlags none(SelectionScope& scope) { return AtomFlags(scope.model.atoms()); }
AtomFlags selected(SelectionScope& scope) {
  return scope.selected.empty() ? none(scope) : AtomFlags(scope.selected.begin(), scope.selected.end());
}

constexpr std::array plain_rows{PlainWord{"all", all}, PlainWord{"none", none}, PlainWord{"selected", selected}};

constexpr std::array text_rows{TextWord{"name", "name", &MolecularModel::names},
                               TextWord{"fftype", "force-field type", &MolecularModel::ff_types},
                               TextWord{"type", "force-field type", &MolecularModel::ff_types},
                               TextWord{"resname", "residue name", &MolecularModel::residues},
                               TextWord{"residue", "residue name", &MolecularModel::residues}};

template <auto column>
std::vector<double> numbers_in(SelectionScope& scope) {
  const auto& numbers = scope.model.*column;
  return {numbers.begin(), numbers.end()};
}

template <std::size_t axis>
std::vector<double> coordinates(SelectionScope& scope) {
  std::vector<double> values;
  values.reserve(scope.model.atoms());
  for (const auto& position : scope.model.positions) values.push_back(position[axis]);
  return values;
}

std::vector<double> places(SelectionScope& scope) {
  std::vector<double> values(scope.model.atoms());
  std::iota(values.begin(), values.end(), 1.0);
  return values;
}

std::vector<double> molecule_numbers(SelectionScope& scope) {
  std::vector<double> values;
  values.reserve(scope.model.atoms());
  for (const auto molecule : scope.molecules().molecule) values.push_back(molecule + 1.0);
  return values;
}

constexpr std::array number_rows{NumberWord{"id", true, numbers_in<&MolecularModel::ids>},
                                 NumberWord{"ids", true, numbers_in<&MolecularModel::ids>},
                                 NumberWord{"index", true, places},
                                 NumberWord{"resid", true, numbers_in<&MolecularModel::residue_ids>},
                                 NumberWord{"molecule", true, molecule_numbers},
                                 NumberWord{"mass", false, numbers_in<&MolecularModel::masses>},
                                 NumberWord{"charge", false, numbers_in<&MolecularModel::charges>},
                                 NumberWord{"x", false, coordinates<0>},
                                 NumberWord{"y", false, coordinates<1>},
                                 NumberWord{"z", false, coordinates<2>}};

// The longer of two signs that begin alike stands first.
constexpr std::array comparisons{Comparison{"<=", [](double a, double b) { return a <= b; }},
                                 Comparison{">=", [](double a, double b) { return a >= b; }},
                                 Comparison{"==", [](double a, double b) { return a == b; }},
                                 Comparison{"!=", [](double a, double b) { return a != b; }},
                                 Comparison{"<", [](double a, double b) { return a < b; }},
                                 Comparison{">", [](double a, double b) { return a > b; }},
                                 Comparison{"=", [](double a, double b) { return a == b; }}};

template <WordColumn MolecularModel::*column>
std::vector<std::uint32_t> word_labels(SelectionScope& scope) {
  std::vector<std::uint32_t> labels(scope.model.atoms());
  for (std::size_t k = 0; k < labels.size(); ++k) labels[k] = (scope.model.*column).key(k);
  return labels;
}

std::vector<std::uint32_t> element_labels(SelectionScope& scope) {
  return {scope.model.elements.begin(), scope.model.elements.end()};
}

std::vector<std::uint32_t> molecule_labels(SelectionScope& scope) { return scope.molecules().molecule; }

/// Sets of atoms that are joined step by step, each known by one of its atoms.
class JoinedSets {
 public:
  explicit JoinedSets(std::size_t count) : above_(count) { std::iota(above_.begin(), above_.end(), 0U); }

  std::uint32_t find(std::uint32_t k) {
    while (above_[k] != k) k = above_[k] = above_[above_[k]];
    return k;
  }
  void join(std::uint32_t a, std::uint32_t b) { above_[find(b)] = find(a); }

 private:
  std::vector<std::uint32_t> above_;
};

/// A residue hangs together, by bonds or by the order of its atoms: files of many residues use numbers again.
std::vector<std::uint32_t> residue_labels(SelectionScope& scope) {
  const auto& model = scope.model;
  JoinedSets residues(model.atoms());
  const auto join = [&](std::uint32_t a, std::uint32_t b) {
    const bool same = model.residue_ids[a] == model.residue_ids[b] && model.residues.key(a) == model.residues.key(b);
    if (same) residues.join(a, b);
  };
  for (std::uint32_t k = 1; k < model.atoms(); ++k) join(k - 1, k);
  for (const auto& [a, b] : model.bonds) join(a, b);
  std::vector<std::uint32_t> labels(model.atoms());
  for (std::uint32_t k = 0; k < labels.size(); ++k) labels[k] = residues.find(k);
  return labels;
}

constexpr std::array same_rows{SameWord{"residue", residue_labels},
                               SameWord{"molecule", molecule_labels},
                               SameWord{"element", element_labels},
                               SameWord{"name", word_labels<&MolecularModel::names>},
                               SameWord{"fftype", word_labels<&MolecularModel::ff_types>},
                               SameWord{"resname", word_labels<&MolecularModel::residues>}};

/// The numbers of a column's words that a value fits; says so where there is none.
std::vector<std::uint32_t> fitting_words(const WordColumn& column, const TextValue& value, std::string_view told,
                                         std::vector<std::string>& notes) {
  if (const auto key = column.find(value.text)) return {*key};
  std::vector<std::uint32_t> keys;
  const auto& words = column.words();
  for (std::uint32_t k = 0; value.is_pattern && k < words.size(); ++k) {
    if (fits_pattern(words[k], value.text)) keys.push_back(k);
  }
  if (keys.empty()) {
    const auto meant = did_you_mean(value.text, std::vector<std::string>(words.begin(), words.end()));
    notes.push_back(fmt::format("no atom has the {} {}{}{}", told, visible(shortened(value.text, 60)),
                                meant.empty() ? "" : "; ", visible(meant)));
  }
  return keys;
}

}  // namespace

std::span<const PlainWord> plain_words() { return plain_rows; }
std::span<const TextWord> text_words() { return text_rows; }
std::span<const NumberWord> number_words() { return number_rows; }
std::span<const SameWord> same_words() { return same_rows; }

Chooser choose_elements(std::vector<std::uint8_t> numbers) {
  return [numbers = std::move(numbers)](SelectionScope& scope) {
    std::array<std::uint8_t, 256> wanted{}, there{};
    for (const auto number : numbers) wanted[number] = 1;
    AtomFlags flags(scope.model.atoms());
    for (std::size_t k = 0; k < flags.size(); ++k) {
      there[scope.model.elements[k]] = 1;
      flags[k] = wanted[scope.model.elements[k]];
    }
    for (const auto number : numbers) {
      if (!there[number]) scope.notes.push_back(fmt::format("no atom is {}", elements()[number].symbol));
    }
    return flags;
  };
}

Chooser choose_texts(const TextWord& word, std::vector<TextValue> values) {
  return [&word, values = std::move(values)](SelectionScope& scope) {
    const auto& column = scope.model.*word.column;
    AtomFlags wanted(column.words().size()), flags(scope.model.atoms());
    for (const auto& value : values) {
      for (const auto key : fitting_words(column, value, word.told, scope.notes)) wanted[key] = 1;
    }
    for (std::size_t k = 0; k < flags.size(); ++k) flags[k] = wanted[column.key(k)];
    return flags;
  };
}

bool read_range(std::string_view text, NumberRange& range) {
  const auto* end = text.data() + text.size();
  auto [at, status] = std::from_chars(text.data(), end, range.first);
  if (status != std::errc{}) return false;
  range.last = range.first;
  if (at != end && (*at == '-' || *at == ':')) {
    const auto last = std::from_chars(at + 1, end, range.last);
    at = last.ptr, status = last.ec;
  }
  return status == std::errc{} && at == end && range.first <= range.last;
}

Chooser choose_ranges(const NumberWord& word, std::vector<NumberRange> ranges) {
  std::sort(ranges.begin(), ranges.end(), [](const NumberRange& a, const NumberRange& b) { return a.first < b.first; });
  for (std::size_t k = 1; k < ranges.size(); ++k) ranges[k].last = std::max(ranges[k].last, ranges[k - 1].last);
  return [&word, ranges = std::move(ranges)](SelectionScope& scope) {
    const auto values = word.values(scope);
    AtomFlags flags(values.size());
    for (std::size_t k = 0; k < flags.size(); ++k) {
      const auto above = std::upper_bound(ranges.begin(), ranges.end(), values[k],
                                          [](double value, const NumberRange& range) { return value < range.first; });
      flags[k] = above != ranges.begin() && values[k] <= std::prev(above)->last ? 1 : 0;
    }
    return flags;
  };
}

const Comparison* comparison_at(std::string_view text) {
  const auto* found = std::find_if(comparisons.begin(), comparisons.end(),
                                   [&](const Comparison& row) { return text.starts_with(row.sign); });
  return found == comparisons.end() ? nullptr : found;
}

Chooser choose_compared(const NumberWord& word, const Comparison& comparison, double number) {
  return [&word, &comparison, number](SelectionScope& scope) {
    const auto values = word.values(scope);
    AtomFlags flags(values.size());
    for (std::size_t k = 0; k < flags.size(); ++k) flags[k] = comparison.holds(values[k], number) ? 1 : 0;
    return flags;
  };
}

Chooser choose_same(const SameWord& word, SelectionPointer as) {
  return [&word, as = std::move(as)](SelectionScope& scope) {
    auto flags = as->choose(scope);
    const auto labels = word.labels(scope);
    const auto most = std::max_element(labels.begin(), labels.end());
    AtomFlags wanted(most == labels.end() ? 0 : *most + std::size_t{1});
    for (std::size_t k = 0; k < flags.size(); ++k) wanted[labels[k]] |= flags[k];
    for (std::size_t k = 0; k < flags.size(); ++k) flags[k] = wanted[labels[k]];
    return flags;
  };
}

Chooser choose_near(double distance, SelectionPointer of) {
  return [distance, of = std::move(of)](SelectionScope& scope) {
    return atoms_near(scope.model, of->choose(scope), distance);
  };
}

Chooser choose_bonded(SelectionPointer to) {
  return [to = std::move(to)](SelectionScope& scope) {
    const auto others = to->choose(scope);
    AtomFlags flags(others.size());
    for (const auto& [a, b] : scope.model.bonds) {
      flags[a] |= others[b];
      flags[b] |= others[a];
    }
    return flags;
  };
}

Chooser choose_others(SelectionPointer than) {
  return [than = std::move(than)](SelectionScope& scope) {
    auto flags = than->choose(scope);
    for (auto& flag : flags) flag ^= 1;
    return flags;
  };
}

Chooser choose_any(std::vector<SelectionPointer> parts) {
  return [parts = std::move(parts)](SelectionScope& scope) {
    auto flags = none(scope);
    for (const auto& part : parts) {
      const auto more = part->choose(scope);
      for (std::size_t k = 0; k < flags.size(); ++k) flags[k] |= more[k];
    }
    return flags;
  };
}

Chooser choose_common(std::vector<SelectionPointer> parts) {
  return [parts = std::move(parts)](SelectionScope& scope) {
    auto flags = all(scope);
    for (const auto& part : parts) {
      const auto more = part->choose(scope);
      for (std::size_t k = 0; k < flags.size(); ++k) flags[k] &= more[k];
    }
    return flags;
  };
}

}  // namespace pathstat::desk
