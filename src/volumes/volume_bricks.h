#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "state/volume_state.h"

/// Bricks of the open volume: how they stand in its file and which points they cover.
namespace pathstat {

constexpr std::int32_t brick_edge = 6;
constexpr std::int32_t brick_step = 5;  ///< neighbours share a plane of points
constexpr std::size_t brick_points = 216;
constexpr std::int64_t first_records = 2;  ///< beside the titles: the first and the header

/// Room for a record of any grid type, and the part of it that a type uses.
using RecordBytes = std::array<std::byte, brick_points * sizeof(float)>;
inline std::span<std::byte> record_part(RecordBytes& bytes, std::int32_t grid_type) {
  return std::span(bytes).first(brick_points * static_cast<std::size_t>(grid_type));
}

/// The values of one brick as they stand in the file; the member of the grid type's width is in use.
struct BrickBuffers {
  std::array<std::int8_t, brick_points> bytes{};
  std::array<std::int16_t, brick_points> shorts{};
  std::array<float, brick_points> floats{};
};

/// Reads one brick of a volume.
/// @param brick             its number from 1; behind the bricks of the values stand those of the point offsets
/// @param points_x ... z    points that it has in the grid, at most `edge`
/// @param copy              those points, x fastest, as 16-bit integers: bytes without sign, floats cut
/// @param raw               untouched by a read error, of which a line on standard output tells
/// @return false on a read error
bool kva_vol_ghbmd_(std::int32_t unit, std::int32_t brick, std::int32_t points_x, std::int32_t points_y,
                    std::int32_t points_z, std::int32_t edge, std::int32_t titles, std::int32_t grid_type,
                    std::span<std::int16_t> copy, BrickBuffers& raw);

/// Marks in volumedata_ the bricks that are needed.
/// @param mode       1 for all bricks; 2 to 6 for those of a box
/// @param low, high  the box's corners in space
/// @param status     0; 1 for another mode
void kva_vol_sbfcim_(std::int32_t mode, const std::array<float, 3>& low, const std::array<float, 3>& high,
                     std::int32_t& status);

/// @param position  of the first element equal to `value`, from 1; 0 if there is none
void index_list_(std::span<const std::int32_t> list, std::int32_t value, std::int32_t& position);

/// How values are stored: round((v + offset) scale), or as they are for floats.
struct VolumeCoding {
  std::int32_t grid_type = 0;
  float scale = 1;
  float offset = 0;
};
/// Of values between limits, and of point offsets up to the largest spacing.
VolumeCoding value_coding(std::int32_t grid_type, float min, float max);
VolumeCoding offset_coding(std::int32_t grid_type, float largest_spacing);

constexpr bool is_grid_type(std::int32_t type) { return type == 1 || type == 2 || type == 4; }
constexpr std::int32_t bricks_for(std::int32_t points) { return (points - 2) / brick_step + 1; }

}  // namespace pathstat
