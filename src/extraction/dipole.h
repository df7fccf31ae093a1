#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat {

/// The electric dipoles of the frames of a trajectory or of the selected models, into the scratch files of properties
/// 301 (magnitude) and 302 (vector), in Debye. Systems that repeat in one or two dimensions show PATHSTAT_ERROR_1.
///
/// @param source       "SELECTED MODELS", or anything else for the trajectory
/// @param atom_choice  "ALL", or anything else for the atoms selected in the Core
/// @param atom_kind    "MOLECULES" to add the dipoles of molecules, or anything else to take all charges as one group
/// @param status       0; 1 refused, interrupted or not answered by the Core; that of the trajectory, of an allocation
///                     or of a file that cannot be written
void dipole_(std::string_view file, std::string_view source, std::string_view atom_choice, std::string_view atom_kind,
             std::int32_t& status);

/// One point for each selected model, or the current one; a lone point is printed. A model without charges of both
/// signs (PATHSTAT_WARN_14, PATHSTAT_WARN_15) has the dipole 0.
void dipolemodels_(std::string_view atom_choice, std::string_view atom_kind, std::int32_t& status);

/// One point for each chosen frame. Charges, molecules and images are those of the trajectory's model, looked up once.
/// Frames that are not evenly spaced in time show PATHSTAT_WARN_11 and clear dipole_data_ready.
void dipoletrj_(std::string_view file, std::string_view atom_choice, std::string_view atom_kind, std::int32_t& status);

}  // namespace pathstat
