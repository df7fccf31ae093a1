#pragma once

#include <cstdint>

namespace pathstat::actions {

// Displacement and velocity autocorrelation of the loaded trajectory, and what is made of their files.

std::int32_t msd();
std::int32_t linear_fit();
std::int32_t vac();
std::int32_t power_spectrum();

}  // namespace pathstat::actions
