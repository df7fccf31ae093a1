#pragma once

#include <cstdint>

namespace pathstat {

/// Tells the user what the current crystal or slab holds: its group, atoms, bonds, the atoms of each site with their
/// number in a cell, the cell's volume or area, and the density of a crystal from masses and occupancies.
void report_structure(std::int32_t model);

}  // namespace pathstat
