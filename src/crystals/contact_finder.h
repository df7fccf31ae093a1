#pragma once

#include <cstdint>
#include <span>

#include "support/vectors.h"

/// Finds the atoms near a point with a grid of boxes, the one of kva_findcontactcom_.
namespace pathstat {

/// Sorts atoms into boxes, at most 8000 of them whatever the size of the system.
///
/// @param xyz          three finite coordinates for each atom
/// @param minimum_box  the least size of a box: the largest radius that will be asked for
/// @param links        one for each atom; filled with the number of the next atom in its box, -1 at the end
/// @param status       0; 1 coordinates that are not finite
void kva_initfindcont_(std::span<const double> xyz, double minimum_box, std::span<std::int32_t> links,
                       std::int32_t& status);

/// Finds the atoms within a radius of a point.
///
/// @param xyz, links  as the grid was made
/// @param self        with half = 0 an atom that is left out, 0 for none; with half = 1 the atom whose point it is
/// @param list        filled with atoms, from 1; the search stops when it is full
/// @param half        0: all atoms; 1: those in boxes before the point's own, and those of its own below `self`, so
///                    that a loop over all atoms meets each pair once
/// @param status      0; 1 a radius beyond the size of a box, or no number, with no atom found
void kva_findcontact_(std::span<const double> xyz, std::span<const std::int32_t> links, const Vector3& point,
                      std::int32_t self, double radius, std::span<std::int32_t> list, std::int32_t& count,
                      std::int32_t half, std::int32_t& status);

}  // namespace pathstat
