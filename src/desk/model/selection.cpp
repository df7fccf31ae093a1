#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <set>

#include "desk/model/data_model.h"
#include "desk/model/elements.h"

namespace pathstat::desk {
namespace {

using Flags = std::vector<std::uint8_t>;
using Values = std::span<const std::string>;

/// Marks the atoms that match any of the values; returns what is wrong with a value.
using Matcher = std::string (*)(const MolecularModel& model, Values values, Flags& flags);

std::string match_all(const MolecularModel&, Values, Flags& flags) {
  std::fill(flags.begin(), flags.end(), std::uint8_t{1});
  return {};
}

std::string match_none(const MolecularModel&, Values, Flags&) { return {}; }

std::string match_elements(const MolecularModel& model, Values values, Flags& flags) {
  std::array<std::uint8_t, 256> wanted{};
  for (const auto& value : values) {
    const auto element = element_of_symbol(value);
    if (element == 0) return fmt::format("{} is not an element", value);
    wanted[element] = 1;
  }
  for (std::size_t k = 0; k < flags.size(); ++k) flags[k] = wanted[model.elements[k]];
  return {};
}

template <WordColumn MolecularModel::*column>
std::string match_words(const MolecularModel& model, Values values, Flags& flags) {
  const auto& words = model.*column;
  Flags wanted(words.words().size());
  for (const auto& value : values) {
    if (const auto key = words.find(value)) wanted[*key] = 1;
  }
  for (std::size_t k = 0; k < flags.size(); ++k) flags[k] = wanted[words.key(k)];
  return {};
}

struct Range {
  std::int32_t first = 0, last = 0;
};

bool read_range(std::string_view text, Range& range) {
  const auto* end = text.data() + text.size();
  auto [at, status] = std::from_chars(text.data(), end, range.first);
  if (status != std::errc{}) return false;
  range.last = range.first;
  if (at != end && *at == '-') {
    const auto last = std::from_chars(at + 1, end, range.last);
    at = last.ptr, status = last.ec;
  }
  return status == std::errc{} && at == end && range.first <= range.last;
}

std::string match_ids(const MolecularModel& model, Values values, Flags& flags) {
  std::vector<Range> ranges(values.size());
  for (std::size_t k = 0; k < values.size(); ++k) {
    if (!read_range(values[k], ranges[k])) return fmt::format("{} is not an identifier or a range of them", values[k]);
  }
  std::sort(ranges.begin(), ranges.end(), [](const Range& a, const Range& b) { return a.first < b.first; });
  for (std::size_t k = 1; k < ranges.size(); ++k) ranges[k].last = std::max(ranges[k].last, ranges[k - 1].last);
  for (std::size_t k = 0; k < flags.size(); ++k) {
    const auto above = std::upper_bound(ranges.begin(), ranges.end(), model.ids[k],
                                        [](std::int32_t id, const Range& range) { return id < range.first; });
    flags[k] = above != ranges.begin() && model.ids[k] <= std::prev(above)->last ? 1 : 0;
  }
  return {};
}

struct SelectionKey {
  std::string_view word;
  Matcher match;
  bool takes_values;
};

constexpr std::array selection_keys{
    SelectionKey{"all", match_all, false},
    SelectionKey{"none", match_none, false},
    SelectionKey{"element", match_elements, true},
    SelectionKey{"fftype", match_words<&MolecularModel::ff_types>, true},
    SelectionKey{"name", match_words<&MolecularModel::names>, true},
    SelectionKey{"residue", match_words<&MolecularModel::residues>, true},
    SelectionKey{"id", match_ids, true},
};

std::string known_keys() {
  std::string words;
  for (const auto& key : selection_keys) words += words.empty() ? std::string(key.word) : fmt::format(", {}", key.word);
  return words;
}

}  // namespace

std::string DataModel::select_atoms(std::string_view word, Values values) {
  const auto key = std::find_if(selection_keys.begin(), selection_keys.end(),
                                [&](const SelectionKey& candidate) { return candidate.word == word; });
  if (key == selection_keys.end()) return fmt::format("atoms are selected by {}, not by {}", known_keys(), word);
  if (key->takes_values && values.empty()) return fmt::format("{} needs what to select", word);
  if (!key->takes_values && !values.empty()) return fmt::format("{} takes no values", word);
  std::vector<Flags> selections;
  for (const auto* object : models()) {
    auto& flags = selections.emplace_back(object->data.atoms());
    if (auto problem = key->match(object->data, values, flags); !problem.empty()) return problem;
  }
  auto next = selections.begin();
  for (auto* object : models()) {
    object->atom_selected = std::move(*next++);
    object->selected_atoms =
        static_cast<std::size_t>(std::count(object->atom_selected.begin(), object->atom_selected.end(), 1));
  }
  return {};
}

std::string DataModel::select_models(Values names) {
  if (names.empty()) return "the models to select are all, none, or names of models";
  const bool all = names.size() == 1 && names[0] == "all";
  const bool none = names.size() == 1 && names[0] == "none";
  std::set<std::int32_t> chosen;
  for (const auto& name : all || none ? Values{} : names) {
    const auto before = chosen.size();
    for (const auto* object : models()) {
      if (object->data.name == name) chosen.insert(object->id);
    }
    if (chosen.size() == before) return fmt::format("there is no model {}", name);
  }
  for (auto* object : models()) object->selected = all || chosen.contains(object->id);
  return {};
}

std::size_t DataModel::selected_atoms() const {
  std::size_t sum = 0;
  for (const auto* object : models()) sum += object->selected_atoms;
  return sum;
}

std::size_t DataModel::selected_models() const {
  const auto list = models();
  return static_cast<std::size_t>(std::count_if(list.begin(), list.end(), [](const auto* m) { return m->selected; }));
}

}  // namespace pathstat::desk
