#pragma once

#include <cstdint>

namespace pathstat {

/// Turns the radial distribution in rdf_file into structure factors and draws them, each component too:
///   S(k) = B + A times the integral of (g(r) - 1) 4 pi r^2 sin(kr)/(kr) dr
/// with the scale A and offset B of the file, in the discrete form of fft3d_. Without periodicity g(r) is not reduced.
///
/// @param k_interval  wanted spacing of k, 1/Å
/// @param status      0; 1 no file (PATHSTAT_ERROR_70), none that can be read (69), or too many points (54); the status
///                    of an allocation
void sofk_(double k_interval, std::int32_t& status);

}  // namespace pathstat
