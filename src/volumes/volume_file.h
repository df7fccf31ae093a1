#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

/// Volume files: a scalar field on a regular grid, cut into bricks of 6 x 6 x 6 points that share their faces, so that
/// a part is read without the whole. Numbers are big-endian; values are signed bytes, 16-bit integers or floats (grid
/// types 1, 2 and 4), the first two quantised. A volume of kind 2 has an offset from the grid for each point. One
/// volume is open at a time; state/volume_state.h holds what is known of it.
///
/// Points are counted from 1 on each axis; values of a whole grid run x fastest, then y, then z. In space point
/// (i, j, k) stands at the origin and (i - 1) / nx, (j - 1) / ny, (k - 1) / nz of the cell's vectors.
namespace pathstat {

namespace volume_status {
constexpr std::int32_t no_volume = 1;         ///< creating: sizes or kind are refused; opening: no volume file; else:
                                              ///< the unit isn't that of the open volume
constexpr std::int32_t unknown_type = 2;      ///< creating and opening
constexpr std::int32_t outside = 2;           ///< reading: nothing of what is asked for is in the volume
constexpr std::int32_t bad_header = 3;        ///< opening: titles or header; creating: they cannot be written
constexpr std::int32_t bad_first_record = 4;  ///< opening
constexpr std::int32_t not_assigned = 5;      ///< creating and opening
constexpr std::int32_t no_room = 6;           ///< reading: an array of the caller is too small
}  // namespace volume_status

constexpr std::int32_t plain_volume = 1;
constexpr std::int32_t offset_volume = 2;

/// The most titles of a caller, and their width.
constexpr std::size_t most_volume_titles = 18;
constexpr std::size_t volume_title_width = 128;

/// Stands where a point was not read.
constexpr float volume_not_read = 99999;

using FloatVector = std::array<float, 3>;

/// Makes a volume file up to its bricks, in the place of any of that name.
///
/// @param unit        the file's unit; 0 without one
/// @param min, max    of the values; others are clamped to these
/// @param orthogonal  1 for a grid along the axes from `origin` with `spacing`; else the caller has set cell and frame
///                    (1 to 6) in volinfo_
/// @param titles      those behind the 18th are left out; none gives a default
/// @param kind        plain_volume or offset_volume
/// @param status      0 or a value of volume_status; what is wrong is told on standard output
void kva_vol_createvolume_(std::string_view file, std::int32_t& unit, std::int32_t grid_type, float min, float max,
                           const FloatVector& origin, std::int32_t nx, std::int32_t ny, std::int32_t nz,
                           std::int32_t orthogonal, const FloatVector& spacing, std::span<const std::string> titles,
                           std::int32_t kind, std::int32_t& status);

/// Writes all bricks of the volume that was created. A file that can't take them is told on standard output.
/// @param values   one for each point; others are not written, and a line says so
/// @param offsets  three for each point, for a volume of kind 2
void kva_vol_writeall_(std::int32_t unit, std::span<const float> values, std::span<const float> offsets);

/// @param unit    0 behind this
/// @param status  0; 1 for a unit below 1 and a file whose last bytes could not be stored
void kva_vol_closevolume_(std::int32_t& unit, std::int32_t& status);

/// Reads a volume's header. `min`, `max`, `origin` and `spacing` are those of its creation; where the grid isn't
/// orthogonal `origin` holds the lengths of the cell, as the header has them in its place.
/// @param unit    0 unless `status` is 0
void kva_vol_openvolume_(std::string_view file, std::int32_t& unit, std::int32_t& grid_type, std::int32_t& kind,
                         std::int32_t& nx, std::int32_t& ny, std::int32_t& nz, float& min, float& max,
                         FloatVector& origin, FloatVector& spacing, std::int32_t& status);

/// The points of a box between two corners.
/// @param count  by the box's lengths in spacings
/// @param clip   other than 0: `low` and `high` become what the volume has of the box
void kva_vol_sizeregion_(std::int32_t unit, FloatVector& low, FloatVector& high, std::int32_t& count, std::int32_t clip,
                         std::int32_t& status);

/// The points whose value lies in low ... high.
/// @param clip   other than 0: `low` and `high` become what the volume's limits leave of them
void kva_vol_sizevalues_(std::int32_t unit, float& low, float& high, std::int32_t& count, std::int32_t clip,
                         std::int32_t& status);

/// Reads the points nearest to a box and in it, x fastest.
/// @param values       nx ny nz of them, 99999 where nothing was read
/// @param coordinates  three for each value; offsets: the same, for a volume of kind 2
void kva_vol_getregion_(std::int32_t unit, FloatVector& low, FloatVector& high, std::int32_t& count,
                        std::span<float> values, std::span<float> coordinates, std::span<float> offsets,
                        std::int32_t clip, std::int32_t& status);

/// Reads the points whose value lies in low ... high, in the order of the bricks. The arrays are of as many points as
/// kva_vol_sizevalues_ tells.
void kva_vol_getvalues_(std::int32_t unit, float& low, float& high, std::int32_t& count, std::span<float> values,
                        std::span<float> coordinates, std::span<float> offsets, std::int32_t clip,
                        std::int32_t& status);

/// Reads the grid points nearest to points in space, three numbers each. One outside the volume ends the call with
/// volume_status::outside; what stands in front of it has been read.
void kva_vol_getpoints_(std::int32_t unit, std::span<const float> points, std::span<float> values,
                        std::span<float> coordinates, std::span<float> offsets, std::int32_t& status);

inline constexpr auto& kvA_VOL_CreateVolume = kva_vol_createvolume_;
inline constexpr auto& kvA_VOL_WriteAll = kva_vol_writeall_;
inline constexpr auto& kvA_VOL_CloseVolume = kva_vol_closevolume_;
inline constexpr auto& kvA_VOL_OpenVolume = kva_vol_openvolume_;
inline constexpr auto& kvA_VOL_SizeRegion = kva_vol_sizeregion_;
inline constexpr auto& kvA_VOL_SizeValues = kva_vol_sizevalues_;
inline constexpr auto& kvA_VOL_GetRegion = kva_vol_getregion_;
inline constexpr auto& kvA_VOL_GetValues = kva_vol_getvalues_;
inline constexpr auto& kvA_VOL_GetPoints = kva_vol_getpoints_;

}  // namespace pathstat
