#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat {

/// Parks the selected properties (word "PROPERTIES") or fluctuations ("FLUCTUATIONS") in scratch files, each once;
/// any other word only brings the catalogue up to date.
///
/// @param file    the trajectory
/// @param source  "TRAJECTORY" or "SELECTED MODELS"
/// @param status  0, or that of the pass that was cut short
void datatodisk_(std::string_view file, std::string_view source, std::string_view word, std::int32_t& status);

void propsdatatodisk_(std::int32_t& status, std::string_view file, std::string_view source);

/// One series per frame of the chosen range for each wanted row whose file is not there. All such rows are read in one
/// walk over the frames and written in the order of the catalogue. Rows of dipoles are not done here. Only measures
/// need the atoms: where they do not fit those of the model, the measures are left out after PATHSTAT_ERROR_100.
///
/// @param status  0; that of the open after "Traj_OpenProblem"; that of a frame that cannot be read, after
///                PATHSTAT_ERROR_93, no row being written; that of a file that cannot be written, rows before it being
///                written; that of a value that the trajectory does not hold, the other rows being written
void propsdatatodisktrj_(std::string_view file, std::int32_t& status);

/// One series per selected model for each wanted row, afresh at each call. A row that no model can serve shows its
/// message and is passed over. @param status  0, or that of the allocation or of a file that cannot be written
void propsdatatodiskmodel_(std::int32_t& status);

/// The columns that the fluctuations are computed from: one file for all thermodynamic rows, one for the dielectric
/// constant, which takes the dipole vectors from their scratch file.
/// @param status  as propsdatatodisktrj_; that of a dipole file that is missing or of other frames
void fluctdatatodisk_(std::string_view file, std::int32_t& status);

}  // namespace pathstat
