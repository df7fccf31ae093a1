#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "support/vectors.h"

/// Triangulated surfaces of scalar fields on regular grids.
namespace pathstat {

/// Triangles over shared vertices.
struct SurfaceMesh {
  std::vector<Vector3> vertices;
  std::vector<Vector3> normals;  ///< one a vertex, or none
  std::vector<std::array<std::int32_t, 3>> triangles;
};

/// The most points on an axis: grid indices are kept in 16 bits.
constexpr std::int32_t most_surface_points = 32767;

namespace surface_error {
constexpr std::int32_t out_of_memory = 1;
constexpr std::int32_t other = 2;
}  // namespace surface_error

/// Extracts the surface on which a field takes the value `iso`, by marching cubes: each grid edge that it crosses has
/// one vertex, where the field interpolated along the edge takes the value. A point whose value equals `iso` is inside.
///
/// @param values  nx ny nz values, that of point (i, j, k) at i ny nz + j nz + k
/// @param x, y, z coordinates of the grid planes, nx, ny and nz of them
/// @param mesh    the normals are gradients, interpolated along the edge and not normalised; empty if the field does
///                not cross the value, and on an error
/// @return 0 or the first of surface_error, of which a line on standard output tells
/// Source: W. Lorensen, H. Cline, Computer Graphics 21 (1987) 163; the cases as in surface_cases.h.
std::int32_t kva_sur_iso(double iso, std::span<const double> values, std::int32_t nx, std::int32_t ny, std::int32_t nz,
                         std::span<const double> x, std::span<const double> y, std::span<const double> z,
                         SurfaceMesh& mesh);

}  // namespace pathstat
