#pragma once

#include <cstdint>

namespace pathstat::actions {

// Displacement, velocity and dipole autocorrelation of the loaded trajectory, and what is made of their files.

std::int32_t msd();
std::int32_t linear_fit();
std::int32_t vac();
std::int32_t power_spectrum();

/// Dipoles of the frames or of the selected models.
std::int32_t dipole();
std::int32_t dac();
std::int32_t dac_power_spectrum();

}  // namespace pathstat::actions
