#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat {

/// The file that the dipole autocorrelation is kept in.
constexpr std::string_view dipole_correlation_file = "./PathStat.dac";

/// Autocorrelation of the total dipole (Debye²) of the frames over the lags 0 ... intervals, averaged over time
/// origins, of which the last frame can be one; shown while it grows and kept in dipole_correlation_file with
/// trj_gui_l_3 set. Dipoles that are not on disk are calculated first (PATHSTAT_MSG_37).
///
/// Source: M. P. Allen, D. J. Tildesley, Computer Simulation of Liquids, ch. 2 and 6.
///
/// @param trajectory, atoms  what the dipoles are calculated of: the file, and "ALL" or "SELECTED"
/// @param monitor            redraw while it runs
/// @param origin_step        frames of the series from one time origin to the next
/// @param anisotropic        XX, YY, ZZ, XY, XZ and YZ beside the total
/// @param status  0; 1 without dipoles, for uneven times (PATHSTAT_ERROR_63) or if the user interrupts, which keeps
///                nothing; that of the dipoles, of an allocation or of a file
void rundac_(std::string_view trajectory, std::string_view atoms, std::int32_t intervals, bool monitor,
             std::int32_t origin_step, bool anisotropic, std::int32_t& status);

}  // namespace pathstat
