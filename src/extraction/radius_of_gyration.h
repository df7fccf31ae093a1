#pragma once

#include <cstdint>
#include <span>

namespace pathstat {

/// Mass-weighted radius of gyration: √(Σ m |r − c|² / Σ m) with c the centre of mass.
///
/// @param masses       of n atoms
/// @param coordinates  3n numbers, x, y, z of each atom, Å; taken as they stand, without periodic images
/// @return Å; 0 without atoms or mass
double radius_of_gyration(std::span<const double> masses, std::span<const double> coordinates);

/// The radius of gyration of all atoms of a model. @param status  0, or that of the allocation
void calcradgyr_(std::int32_t model, double& radius, std::int32_t& status);

}  // namespace pathstat
