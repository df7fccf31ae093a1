#include "desk/graphs/axis_text.h"

#include <algorithm>
#include <cctype>
#include <iterator>

namespace pathstat::desk {
namespace {

struct Spelling {
  std::string_view plain;
  std::string_view set;
};

/// Parts of any text, tried in this order.
constexpr Spelling parts[] = {
    {"Angstrom^3", "Å³"}, {"(Angstrom)", "(Å)"}, {"A*A", "Å²"},   {"A^2", "Å²"},      {"A^3", "Å³"},
    {"A^4", "Å⁴"},        {"ps^2", "ps²"},       {"cm^3", "cm³"}, {"(1/A)", "(1/Å)"}, {"1/cm", "cm⁻¹"},
};

/// Units of a label "quantity/unit". Energies are per mole throughout.
constexpr Spelling units[] = {{"A", "Å"}, {"kcal", "kcal/mol"}, {"degrees", "°"}, {"Degrees", "°"}};

/// Labels that are a unit and nothing else.
constexpr Spelling bare_units[] = {
    {"1/GPa", "1/GPa"}, {"GPa/K", "GPa/K"},   {"Cal/(Mol K)", "cal/(mol K)"},  {"1/K", "1/K"},  {"K/GPa", "K/GPa"},
    {"m/s", "m/s"},     {"Angstrom^3", "Å³"}, {"A*A per atom", "Å² per atom"}, {"Debyes", "D"}, {"NONE", ""},
};

constexpr Spelling whole_labels[] = {{"1/cm", "Wavenumber (cm⁻¹)"}};

/// Units of quantities whose labels tell none, by how the title of their graph begins.
constexpr Spelling unit_of_title[] = {{"Total DAC Power Spectrum", "D⁴ ps²"},
                                      {"DAC Power Spectrum", "D⁴ ps²"},
                                      {"Total DAC", "D²"},
                                      {"DAC component", "D²"}};

template <std::size_t N>
const Spelling* find(const Spelling (&table)[N], std::string_view text) {
  const auto* found = std::find_if(table, table + N, [&](const Spelling& row) { return row.plain == text; });
  return found == table + N ? nullptr : found;
}

std::string with_unit(std::string_view quantity, std::string_view unit) {
  if (quantity.empty() || unit.empty()) return std::string(quantity.empty() ? unit : quantity);
  return std::string(quantity).append(" (").append(unit).append(")");
}

std::string_view without_brackets(std::string_view unit) {
  return unit.size() > 2 && unit.front() == '(' && unit.back() == ')' ? unit.substr(1, unit.size() - 2) : unit;
}

}  // namespace

std::string typeset(std::string_view text) {
  std::string set(text);
  for (const auto& part : parts) {
    for (auto at = set.find(part.plain); at != std::string::npos; at = set.find(part.plain, at + part.set.size())) {
      set.replace(at, part.plain.size(), part.set);
    }
  }
  return set;
}

std::string axis_text(std::string_view label, std::string_view title) {
  if (label.empty()) {
    const auto* unit =
        std::ranges::find_if(unit_of_title, [&](const auto& row) { return title.starts_with(row.plain); });
    return with_unit(typeset(title), unit == std::end(unit_of_title) ? "" : unit->set);
  }
  if (const auto* whole = find(whole_labels, label)) return std::string(whole->set);
  if (const auto* unit = find(bare_units, label)) return with_unit(typeset(title), unit->set);
  const auto slash = label.find('/');
  const bool has_quantity = slash != std::string_view::npos && slash >= 3 && label.find('(') > slash &&
                            std::isalpha(static_cast<unsigned char>(label.front()));
  if (!has_quantity || slash + 1 == label.size()) return typeset(label);
  const auto unit = without_brackets(label.substr(slash + 1));
  const auto* spelling = find(units, unit);
  return with_unit(typeset(label.substr(0, slash)), spelling ? std::string(spelling->set) : typeset(unit));
}

AxisParts axis_parts(std::string_view axis) {
  const auto open = axis.rfind(" (");
  if (open == std::string_view::npos || !axis.ends_with(')')) return {axis, {}};
  return {axis.substr(0, open), axis.substr(open + 2, axis.size() - open - 3)};
}

std::string unit_of(std::string_view axis) { return std::string(axis_parts(axis).unit); }

}  // namespace pathstat::desk
