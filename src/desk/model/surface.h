#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "support/vectors.h"

namespace pathstat::desk {

/// A triangulated surface.
struct Surface {
  std::vector<Vector3> vertices;                       ///< Å
  std::vector<Vector3> normals;                        ///< one a vertex, or none
  std::vector<std::array<std::int32_t, 3>> triangles;  ///< vertices, counted from 0
};

/// What there is to tell of a surface.
struct SurfaceMeasures {
  double area = 0;    ///< Å²
  double volume = 0;  ///< Å³, between its sheets; 0 for a surface with a border
  bool closed = false;
  std::int64_t euler_characteristic = 0;  ///< vertices - edges + triangles; 2 for each sphere, 0 for each torus
};

/// @param surface  of triangles with three different corners
SurfaceMeasures measures_of(const Surface& surface);

/// "surface-1" for the first: the name of a surface's files, without an extension.
std::string surface_name(std::size_t place);

/// Its size, area, volume and shape as a sentence for people.
std::string in_words(const Surface& surface);

/// A surface as a text in the polygon format, and as one in the object format, for programs that show it.
std::string surface_as_ply(const Surface& surface);
std::string surface_as_obj(const Surface& surface);

}  // namespace pathstat::desk
