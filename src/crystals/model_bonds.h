#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "structure/cell_bonds.h"

namespace pathstat {

/// The bonds of a model of the Core, between object identifiers.
/// @param status  0; that of the Core
std::vector<CellBond> bonds_of_model(std::int32_t model, std::int32_t& status);

/// Makes bonds between objects of the Core, in one call; none for an empty list.
void make_bonds(std::span<const CellBond> bonds, std::int32_t& status);

/// Keeps those of the bonds that the Core does not have, in one call.
void drop_existing_bonds(std::vector<CellBond>& bonds, std::int32_t& status);

}  // namespace pathstat
