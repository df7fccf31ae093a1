#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat {

/// The file that the velocity autocorrelation is kept in.
constexpr std::string_view velocity_file = "./PathStat.vac";

/// Velocity autocorrelation (Å²/ps² per atom) of the chosen atoms over the lags 0 ... intervals-1, averaged over time
/// origins; shown while it grows and kept in velocity_file. Mixed components are means of both orders of the axes.
/// Parameters as for run_msd_. Source: Allen & Tildesley, Computer Simulation of Liquids, ch. 2.
///
/// @param status  0; one of cache_status or that of the trajectory; 6, 7 or 8 for lack of memory; that of the file
void run_vac_(std::int32_t intervals, std::int32_t frames, std::string_view trajectory, std::int32_t model,
              std::int32_t first, std::int32_t last, std::int32_t step, bool monitor, std::string_view atoms,
              std::int32_t origin_step, bool anisotropic, bool& available, std::int32_t& status);

}  // namespace pathstat
