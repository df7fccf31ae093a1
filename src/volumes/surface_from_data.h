#pragma once

#include <cstdint>
#include <span>

#include "support/vectors.h"

namespace pathstat {

/// Which normals a surface gets: none with 0, else gradients, which the bit `flipped` turns round.
namespace surface_normals {
constexpr std::int32_t none = 0;
constexpr std::int32_t along_gradient = 1;
constexpr std::int32_t flipped = 2;
}  // namespace surface_normals

namespace surface_status {
constexpr std::int32_t out_of_memory = 100;
constexpr std::int32_t bad_data = 50101;
constexpr std::int32_t no_surface = -50101;
}  // namespace surface_status

/// Makes the surface of a field on a parallelepiped, and hands it to the Core as an object under the root.
///
/// @param values         as in kva_sur_iso
/// @param origin         of point (0, 0, 0)
/// @param a, b, c        edges of the whole grid along its three axes
/// @param flags          as in surface_normals
/// @param surface        the Core's object; 0 if there is none
/// @param status         0; a value of surface_status; that of the Core. It is shown to the user
void kva_sur_createsurfacefromdata_(double iso, std::span<const double> values, const Vector3& origin, const Vector3& a,
                                    const Vector3& b, const Vector3& c, std::int32_t nx, std::int32_t ny,
                                    std::int32_t nz, std::int32_t flags, std::int32_t& surface, std::int32_t& status);
inline constexpr auto& kvA_SUR_CreateSurfaceFromData = kva_sur_createsurfacefromdata_;

}  // namespace pathstat
