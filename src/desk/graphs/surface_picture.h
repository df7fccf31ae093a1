#pragma once

#include <cstddef>
#include <string>

#include "desk/model/surface.h"

namespace pathstat::desk {

/// The most triangles that a picture shows; a finer surface is drawn coarser.
constexpr std::size_t most_drawn_triangles = 5000;

/// A surface with fewer triangles: vertices that share a cell of a grid over the surface become one at their mean.
/// @param cells  of the grid along the longest side of the surface
Surface coarsened(const Surface& surface, int cells);

/// A surface as a picture in SVG: shaded triangles in parallel projection, seen from above and aside, in the box that
/// holds them, whose sides are labelled with where they begin and end.
std::string surface_picture(const Surface& surface);

}  // namespace pathstat::desk
