#include "building/command_words.h"

#include <array>

#include "building/unit_actions.h"

namespace pathstat {
namespace {

// clang-format off
constexpr auto words = std::to_array<CommandWord>({
  {"CELL", Action{.run = unit_actions::cell, .nesting = Nesting::free}, "Cell of the asymmetric unit", "six numbers: a, b, c in Å, alpha, beta, gamma in degrees"},
  {"CLEAR_SITES", Action{.run = unit_actions::clear_sites, .nesting = Nesting::free}, "Drops all sites of the asymmetric unit", ""},
  {"SITE", Action{.run = unit_actions::site, .nesting = Nesting::free}, "Adds an atom to the asymmetric unit", "element symbol and three fractional coordinates"},
  {"SPACE_GROUP", Action{.run = unit_actions::space_group, .nesting = Nesting::free}, "Space group of the asymmetric unit", "name or number of the group, then its setting where it is not the first"},
});
// clang-format on

static_assert(well_formed(words));

}  // namespace

std::span<const CommandWord> building_command_words() { return words; }

}  // namespace pathstat
