#pragma once

#include <cstdint>

namespace pathstat {

/// Shows the power spectrum of the kept velocity autocorrelation: the square of its cosine transform (Å⁴/ps²) over
/// frequencies in 1/cm, with 0.03 cm/ps for the velocity of light.
///
/// @param max_time  length of the correlation function that is transformed, ps; it is cut or filled up with zeros
/// @param status    0, or 1 after a message
void run_pwr_(double max_time, std::int32_t& status);

}  // namespace pathstat
