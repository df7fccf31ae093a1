#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace pathstat {

/// What a data source may offer. A rule names the fact that a row depends on.
enum class Fact : std::uint8_t {
  never,
  always,
  energies,          ///< history or binary trajectory
  binary,            ///< binary trajectory
  history,           ///< history trajectory
  conserved_energy,  ///< binary trajectory with times, from version 2000 on, with extended thermostat variables or none
  total_cross_terms,    ///< binary trajectory from version 2010 on
  cross_terms,          ///< the same, or history
  molecules,            ///< history trajectory of several molecules
  periodic,             ///< at least one periodic direction; some model with a layer or crystal cell
  pressure,             ///< periodic history or binary trajectory
  crystal,              ///< three periodic directions; some such model
  layer,                ///< two periodic directions; some such model
  cell,                 ///< a cell whose parameters can be listed
  gyration,             ///< binary trajectory without periodic direction; some such model
  measures,             ///< monitors of the row's family
  thermostat,           ///< fluctuations without a single thermostat value
  crystal_thermostat,   ///< the same in three periodic directions
  pressure_thermostat,  ///< the same with a run of varying volume
  dielectric,           ///< fluctuations in three periodic directions
  count
};

/// Truth of each fact; of measures, for each family from 501 on.
struct Facts {
  std::array<bool, static_cast<std::size_t>(Fact::count)> known{};
  std::array<bool, 6> measures{};

  bool& operator[](Fact fact) { return known[static_cast<std::size_t>(fact)]; }
  bool operator[](Fact fact) const { return known[static_cast<std::size_t>(fact)]; }
  /// The fact as the row with this identifier asks for it.
  bool of_row(Fact fact, std::int32_t id) const {
    return fact == Fact::measures ? measures[static_cast<std::size_t>(id - 501)] : (*this)[fact];
  }
};

/// The facts that the rows with identifiers first ... last depend on.
struct MaskRule {
  std::int32_t first;
  std::int32_t last;
  Fact selectable;
  Fact can_be_used;
};

inline constexpr auto trajectory_rules = [] {
  using enum Fact;
  return std::to_array<MaskRule>({
      {601, 601, never, always},
      {1, 1, always, always},
      {2, 3, energies, energies},
      {201, 201, binary, binary},
      {4, 5, binary, binary},
      {6, 6, conserved_energy, conserved_energy},
      {602, 602, never, energies},
      {101, 104, energies, energies},
      {106, 108, energies, energies},
      {105, 105, binary, binary},
      {109, 110, binary, binary},
      {122, 124, total_cross_terms, total_cross_terms},
      {111, 116, cross_terms, cross_terms},
      {117, 121, history, history},
      {902, 902, molecules, never},
      {904, 907, molecules, never},
      {909, 911, molecules, never},
      {914, 924, molecules, never},
      {603, 603, never, periodic},
      {203, 203, pressure, pressure},
      {205, 205, pressure, pressure},
      {204, 204, crystal, crystal},
      {207, 207, crystal, crystal},
      {208, 208, layer, layer},
      {206, 206, cell, cell},
      {604, 604, never, always},
      {301, 302, always, always},
      {606, 606, never, gyration},
      {202, 202, gyration, gyration},
      {607, 607, never, always},
      {501, 506, measures, measures},
  });
}();

inline constexpr auto model_rules = [] {
  using enum Fact;
  return std::to_array<MaskRule>({
      {606, 606, never, gyration},
      {202, 202, gyration, gyration},
      {206, 206, cell, cell},
      {207, 207, crystal, crystal},
      {204, 204, crystal, crystal},
      {603, 603, never, periodic},
      {208, 208, layer, layer},
      {604, 604, never, always},
      {607, 607, never, always},
      {301, 302, always, always},
      {501, 506, measures, measures},
  });
}();

inline constexpr auto fluctuation_rules = [] {
  using enum Fact;
  return std::to_array<MaskRule>({
      {701, 701, never, thermostat},
      {801, 802, pressure_thermostat, pressure_thermostat},
      {803, 803, crystal_thermostat, crystal_thermostat},
      {804, 805, pressure_thermostat, pressure_thermostat},
      {806, 806, thermostat, thermostat},
      {807, 810, pressure_thermostat, pressure_thermostat},
      {702, 702, never, dielectric},
      {901, 901, dielectric, dielectric},
  });
}();

/// The rule of a row; a row without one is never there.
constexpr MaskRule mask_rule(std::span<const MaskRule> rules, std::int32_t id) {
  for (const auto& rule : rules) {
    if (id >= rule.first && id <= rule.last) return rule;
  }
  return {id, id, Fact::never, Fact::never};
}

}  // namespace pathstat
