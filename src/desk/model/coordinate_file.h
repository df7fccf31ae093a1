#pragma once

#include <string>

#include "desk/model/model_import.h"

namespace pathstat::desk {

/// Reads a coordinate file (.car, .cor): a title, a line of the periodicity, then one frame with its title, its date,
/// the cell if the file is periodic, one line per atom, and END behind each molecule and at the end. An atom's line has
/// its name, x, y, z, residue, residue number, force-field type, element and charge. Atoms are numbered from 1.
/// The file states no bonds: they are found from the coordinates.
///
/// The cell and the coordinates are turned from the file's orientation (a on x) into that of trajectories (c on z, b in
/// the yz plane).
ImportedModels read_coordinate_file(const std::string& path);

}  // namespace pathstat::desk
