#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat {

/// The file that the mean square displacement is kept in.
constexpr std::string_view displacement_file = "./PathStat.msd";

/// Mean square displacement (Å² per atom) of the chosen atoms over the lags 0 ... intervals-1 (in analysed frames),
/// averaged over time origins; shown while it grows and kept in displacement_file. Positions are taken as the
/// trajectory has them. Source: Einstein relation; Allen & Tildesley, Computer Simulation of Liquids, ch. 2.
///
/// @param frames       analysed frames, first ... last by step; the last of them takes part in no pair
/// @param monitor      redraw while it runs
/// @param atoms        "ALL" or "SELECTED"
/// @param origin_step  analysed frames from one time origin to the next
/// @param anisotropic  XX, YY, ZZ, XY, XZ and YZ beside the total
/// @param available    true if the file was written
/// @param status       0; one of cache_status or that of the trajectory; that of an allocation or of the file
void run_msd_(std::int32_t intervals, std::int32_t frames, std::string_view trajectory, std::int32_t model,
              std::int32_t first, std::int32_t last, std::int32_t step, bool monitor, std::string_view atoms,
              std::int32_t origin_step, bool anisotropic, bool& available, std::int32_t& status);

}  // namespace pathstat
