#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace pathstat {

/// The most bricks that a volume has on an axis, and the points that these cover.
constexpr std::size_t most_bricks = 40;
constexpr std::int32_t most_volume_points = 201;

/// The open volume, in the order of its file's header.
struct VolumeInfo {
  std::int32_t first_z_high = 0;
  std::array<std::int32_t, 3> spare{};
  std::int32_t nx = 0, ny = 0, nz = 0;
  std::int32_t z_low = 0, z_high = 0;
  std::int32_t x_low = 0, x_high = 0;
  std::int32_t y_low = 0, y_high = 0;
  float reserved = 0;
  float offset = 0;
  float scale = 1;
  std::array<float, 6> cell{};  ///< as the header has it; once a volume is open a, b, c (Å) and the angles (degrees)
  std::int32_t bricks_x = 0, bricks_y = 0, bricks_z = 0;
  float value_min = 0, value_max = 0;
  std::int32_t frame = 0;
  std::int32_t title_count = 0;
  std::int32_t unit = 0;
  float offset_scale = 1, offset_offset = 0;  ///< of the point offsets
  std::int32_t grid_type = 0;                 ///< bytes of a value
  std::int32_t kind = 0;                      ///< 2 with point offsets
};
static_assert(sizeof(VolumeInfo) == 34 * sizeof(std::int32_t));
inline VolumeInfo volinfo_;

/// From fractions of the open volume's cell to where they are in space.
struct VolumeFrame {
  std::array<float, 9> to_space{};     ///< by columns
  std::array<float, 9> to_fraction{};  ///< its inverse
  float a = 0, b = 0, c = 0, alpha = 0, beta = 0, gamma = 0;
  std::int32_t frame = 0;
  float origin_x = 0, origin_y = 0, origin_z = 0;
};
static_assert(sizeof(VolumeFrame) == 28 * sizeof(std::int32_t));
inline VolumeFrame volorthog_;

/// Which bricks are needed, x fastest.
inline std::array<std::int8_t, most_bricks * most_bricks * most_bricks> volumedata_{};

}  // namespace pathstat
