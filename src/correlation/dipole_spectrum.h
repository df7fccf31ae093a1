#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat {

/// The file that the dipole spectrum is kept in.
constexpr std::string_view dipole_spectrum_file = "./PathStat.fftdac";

/// Shows and keeps the power spectrum of the dipole autocorrelation: the square of its cosine transform (Debye⁴ ps²)
/// over frequencies in 1/cm up to 7000, with 0.03 cm/ps for the velocity of light; the value at frequency 0 is kept as
/// 0. A correlation that is not there is calculated first (PATHSTAT_MSG_38).
///
/// @param max_time  length of the correlation that is transformed, ps; it is cut or filled up with zeros
/// @param status    0; that of rundac_, which the other parameters are for; 1, without a message, if the length is not
///                  2 to 131073 points, or after PATHSTAT_ERROR_35 if it is 2; that of an allocation or of the file
void runfftdac_(std::string_view trajectory, std::string_view atoms, std::int32_t intervals, bool monitor,
                std::int32_t origin_step, bool anisotropic, double max_time, std::int32_t& status);

}  // namespace pathstat
