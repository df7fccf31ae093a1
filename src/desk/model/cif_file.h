#pragma once

#include <string>

#include "desk/model/model_import.h"

namespace pathstat::desk {

/// Reads the crystals of a Crystallographic Information File: one model for each data block with atoms, its cell,
/// symmetry, sites and occupancies, as an asymmetric unit with its group. Sites may be given by Cartesian coordinates
/// in a block without a cell. Bonds are none of what such a file tells.
ImportedModels read_cif_file(const std::string& path);

}  // namespace pathstat::desk
