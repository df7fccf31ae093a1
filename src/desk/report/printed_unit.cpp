#include "desk/report/printed_unit.h"

#include <algorithm>
#include <array>
#include <utility>

namespace pathstat::desk {
namespace {

/// Units by how a line begins.
constexpr std::array<std::pair<std::string_view, std::string_view>, 6> units{{{"Dipole moment = ", " D"},
                                                                              {"Dipole Vector = ", " D"},
                                                                              {"Positive COC  = ", " Å"},
                                                                              {"Negative COC  = ", " Å"},
                                                                              {"Dipole origin = ", " Å"},
                                                                              {"Net charge    = ", " e"}}};

}  // namespace

std::string with_unit(std::string_view line) {
  const auto found = std::ranges::find_if(units, [&](const auto& row) { return line.starts_with(row.first); });
  return std::string(line).append(found == units.end() ? "" : found->second);
}

}  // namespace pathstat::desk
