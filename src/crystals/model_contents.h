#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "structure/cell_bonds.h"

namespace pathstat {

/// Which atoms of a model are meant: with its symmetry images, or also with the periodic images that are part of it.
enum class AtomSelector : std::int32_t { with_images = 3, with_all_images = 7 };

/// The atoms of a model of the Core.
/// @param status  0; impossible_count; atoms_do_not_match for a list that is not as long as was counted; that of the
/// Core
std::vector<std::int32_t> atoms_of(std::int32_t model, AtomSelector which, std::int32_t& status);

/// The bonds of a model of the Core, between object identifiers.
/// @param status  0; impossible_count; that of the Core
std::vector<CellBond> bonds_of_model(std::int32_t model, std::int32_t& status);

/// Makes bonds between objects of the Core, in one call; none for an empty list.
void make_bonds(std::span<const CellBond> bonds, std::int32_t& status);

/// Keeps those of the bonds that the Core does not have, in one call.
void drop_existing_bonds(std::vector<CellBond>& bonds, std::int32_t& status);

}  // namespace pathstat
