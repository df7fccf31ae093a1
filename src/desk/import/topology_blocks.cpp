#include "desk/import/topology_blocks.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <unordered_set>

#include "desk/import/script_stream.h"
#include "desk/import/trajectory_output.h"
#include "structure/elements.h"

namespace pathstat::desk {
namespace {

constexpr std::int64_t most_atoms = 500'000'000;
constexpr std::int64_t longest_word = 64;
constexpr std::int64_t most_series = 64;
constexpr std::size_t numbers_of_counts = 4;

enum class Unit : std::uint8_t { counts, atoms, bonds, series };

/// The blocks and the longest payload for one of what they are counted by.
struct BlockRow {
  std::string_view tag;
  Unit unit;
  std::int64_t bytes;
};

constexpr auto rows = std::to_array<BlockRow>({
    {"counts", Unit::counts, sizeof(std::int64_t)},
    {"ids", Unit::atoms, sizeof(std::int32_t)},
    {"resids", Unit::atoms, sizeof(std::int32_t)},
    {"masses", Unit::atoms, sizeof(double)},
    {"charges", Unit::atoms, sizeof(double)},
    {"bonds", Unit::bonds, 2 * sizeof(std::int32_t)},
    {"names", Unit::atoms, longest_word},
    {"types", Unit::atoms, longest_word},
    {"elements", Unit::atoms, longest_word},
    {"residues", Unit::atoms, longest_word},
    {"series", Unit::series, longest_word},
});

constexpr bool is_words(const BlockRow& row) { return row.bytes == longest_word; }

/// As many numbers as the payload should have; empty if it has another length.
template <class T>
std::vector<T> numbers(std::span<const std::byte> payload, std::int64_t count) {
  if (std::ssize(payload) != count * static_cast<std::int64_t>(sizeof(T))) return {};
  return numbers_in<T>(payload);
}

/// The words of a text, each of which ends with a line feed.
std::vector<std::string_view> words_of(std::span<const std::byte> payload) {
  std::string_view text(reinterpret_cast<const char*>(payload.data()), payload.size());
  std::vector<std::string_view> words;
  while (!text.empty()) {
    const auto end = std::min(text.find('\n'), text.size());
    words.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return words;
}

/// What a model file can hold of a word: no blanks, quotes and parentheses.
std::string plain(std::string_view word) {
  std::string text(word.substr(0, longest_word));
  std::replace_if(
      text.begin(), text.end(),
      [](char c) { return static_cast<unsigned char>(c) <= ' ' || std::string_view("()\"'\\").find(c) < 5; }, '_');
  return text;
}

}  // namespace

std::int64_t TopologyBlocks::longest(std::string_view tag) const {
  const auto row = std::find_if(rows.begin(), rows.end(), [&](const BlockRow& r) { return r.tag == tag; });
  if (row == rows.end()) return -1;
  switch (row->unit) {
    case Unit::counts:
      return static_cast<std::int64_t>(numbers_of_counts) * row->bytes;
    case Unit::atoms:
      return atoms_ * row->bytes;
    case Unit::bonds:
      return bonds_ * row->bytes;
    case Unit::series:
      return most_series * row->bytes;
  }
  return -1;
}

std::string TopologyBlocks::take(std::string_view tag, std::span<const std::byte> payload) {
  if (tag == "counts") return take_counts(payload);
  if (atoms_ == 0) return fmt::format("a block {} stands before the counts", tag);
  if (tag == "ids") return take_ids(payload);
  if (tag == "bonds") return take_bonds(payload);
  const auto row = std::find_if(rows.begin(), rows.end(), [&](const BlockRow& r) { return r.tag == tag; });
  if (row == rows.end()) return fmt::format("a block {} is not known", tag);
  if (is_words(*row)) return take_words(tag, payload);
  if (std::ssize(payload) != longest(tag)) return fmt::format("the block {} has another length than the atoms", tag);
  if (tag == "resids") {
    model_.residue_ids = numbers<std::int32_t>(payload, atoms_);
    return {};
  }
  auto values = numbers<double>(payload, atoms_);
  const bool finite = std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
  if (!finite) return fmt::format("the {} are not all numbers", tag);
  (tag == "masses" ? model_.masses : model_.charges) = std::move(values);
  return {};
}

std::string TopologyBlocks::take_counts(std::span<const std::byte> payload) {
  const auto values = numbers<std::int64_t>(payload, numbers_of_counts);
  if (values.empty() || atoms_ > 0) return "the counts are not as they should be";
  atoms_ = values[0], bonds_ = values[1], frames_ = values[2], cell_varies_ = values[3] != 0;
  if (atoms_ < 1) return "there are no atoms";
  if (atoms_ > most_atoms || bonds_ < 0 || bonds_ > 8 * most_atoms) return "there are too many atoms";
  return {};
}

std::string TopologyBlocks::take_words(std::string_view tag, std::span<const std::byte> payload) {
  const auto words = words_of(payload);
  if (tag == "series") {
    if (std::cmp_greater(words.size(), most_series)) return "there are too many series";
    for (const auto word : words) {
      if (!is_frame_series(word)) return fmt::format("frames have no value {}", word.substr(0, longest_word));
    }
    series_.assign(words.begin(), words.end());
    return {};
  }
  if (std::cmp_not_equal(words.size(), atoms_))
    return fmt::format("there are {} {} of {} atoms", words.size(), tag, atoms_);
  if (tag == "elements") return take_elements(words);
  auto& column = tag == "names" ? model_.names : tag == "types" ? model_.ff_types : model_.residues;
  column = {};
  for (const auto word : words) column.push_back(plain(word));
  return {};
}

std::string TopologyBlocks::take_elements(const std::vector<std::string_view>& words) {
  model_.elements.clear();
  for (const auto word : words) {
    const auto element = element_of_symbol(word);
    if (element == 0) return fmt::format("{} is no element", word.substr(0, longest_word));
    model_.elements.push_back(element);
  }
  return {};
}

std::string TopologyBlocks::take_ids(std::span<const std::byte> payload) {
  model_.ids = numbers<std::int32_t>(payload, atoms_);
  const std::unordered_set<std::int32_t> distinct(model_.ids.begin(), model_.ids.end());
  if (std::cmp_not_equal(distinct.size(), atoms_)) return "the numbers of the atoms are not distinct";
  return std::ranges::min(model_.ids) < 0 ? "an atom has a negative number" : std::string{};
}

std::string TopologyBlocks::take_bonds(std::span<const std::byte> payload) {
  const auto places = numbers<std::int32_t>(payload, 2 * bonds_);
  if (std::cmp_not_equal(places.size(), 2 * bonds_)) return "the bonds are not as many as they should be";
  model_.bonds.clear();
  for (std::size_t k = 0; k < places.size(); k += 2) {
    const auto [one, other] = std::minmax(places[k], places[k + 1]);
    if (one < 0 || other >= atoms_ || one == other) return "a bond leads to no atom";
    model_.bonds.emplace_back(static_cast<std::uint32_t>(one), static_cast<std::uint32_t>(other));
  }
  return {};
}

MolecularModel TopologyBlocks::give_model(const std::string& name, std::string& problem) {
  const auto n = atoms();
  auto& m = model_;
  m.name = name;
  if (n == 0) problem = "the import script sent no atoms";
  if (m.elements.size() != n) problem = "the import script sent no elements";
  if (!problem.empty()) return {};
  if (m.ids.empty()) {
    m.ids.resize(n);
    std::iota(m.ids.begin(), m.ids.end(), 1);
  }
  if (m.names.size() == 0) {
    for (std::size_t k = 0; k < n; ++k)
      m.names.push_back(fmt::format("{}{}", elements()[m.elements[k]].symbol, m.ids[k]));
  }
  if (m.ff_types.size() == 0) m.ff_types.assign(n, "");
  if (m.residues.size() == 0) m.residues.assign(n, "");
  if (m.residue_ids.empty()) m.residue_ids.assign(n, 0);
  if (m.charges.empty()) m.charges.assign(n, 0.0);
  if (m.masses.empty()) {
    for (const auto element : m.elements) m.masses.push_back(elements()[element].mass);
    masses_known_ = std::ranges::all_of(m.masses, [](double mass) { return mass > 0; });
  }
  m.occupancies.assign(n, 1.0);
  m.movable.assign(n, 1);
  m.file_atoms = n;
  m.file_bonds = m.bonds.size();
  return std::move(m);
}

}  // namespace pathstat::desk
