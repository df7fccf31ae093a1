#pragma once

#include <string>

#include "desk/model/model_import.h"

namespace pathstat::desk {

/// Reads the first frame of a file of elements and Cartesian coordinates. A Lattice="..." of nine numbers in its
/// comment makes a model that repeats in three directions. Bonds are found from the coordinates.
ImportedModels read_xyz_file(const std::string& path);

}  // namespace pathstat::desk
