#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat {

/// Puts frame 1 of a trajectory on its model: cell, positions of all atoms, velocities and forces where the file has
/// them, and for a model from a coordinate file also which atoms move. The Core then finds the bonds anew.
///
/// @param file_type  of the file that the model came from: 1 structured, 14 coordinates
/// @param status  0; 1 after PATHSTAT_ERROR_102 (the model is empty), 103 (another periodic type), 104 (the trajectory
///                has the atoms of another model); that of the reader
void trjfixatoms_(std::string_view file, std::int32_t file_type, std::int32_t model, std::int32_t& status);

}  // namespace pathstat
