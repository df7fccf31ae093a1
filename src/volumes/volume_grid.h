#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "state/volume_state.h"
#include "volumes/volume_file.h"

/// The grid of the open volume, by axis.
namespace pathstat {

inline std::array<std::int32_t, 3> volume_points() { return {volinfo_.nx, volinfo_.ny, volinfo_.nz}; }
inline std::array<std::int32_t, 3> volume_bricks() { return {volinfo_.bricks_x, volinfo_.bricks_y, volinfo_.bricks_z}; }
inline std::array<std::int32_t, 3> volume_low() { return {volinfo_.x_low, volinfo_.y_low, volinfo_.z_low}; }
inline std::array<std::int32_t, 3> volume_high() { return {volinfo_.x_high, volinfo_.y_high, volinfo_.z_high}; }

inline std::size_t volume_size() {
  const auto points = volume_points();
  return static_cast<std::size_t>(points[0]) * static_cast<std::size_t>(points[1]) *
         static_cast<std::size_t>(points[2]);
}

/// The place of a point, counted from 0 on each axis, among the values of the whole grid.
inline std::size_t point_number(std::int32_t i, std::int32_t j, std::int32_t k) {
  const auto points = volume_points();
  return (static_cast<std::size_t>(k) * static_cast<std::size_t>(points[1]) + static_cast<std::size_t>(j)) *
             static_cast<std::size_t>(points[0]) +
         static_cast<std::size_t>(i);
}

/// Where a brick, counted from 0 on each axis, stands in volumedata_.
constexpr std::size_t brick_flag(std::int32_t x, std::int32_t y, std::int32_t z) {
  return (static_cast<std::size_t>(z) * most_bricks + static_cast<std::size_t>(y)) * most_bricks +
         static_cast<std::size_t>(x);
}

/// A place in space in points of the grid, the first being 1; and the other way round.
std::array<double, 3> grid_position(const FloatVector& place);
FloatVector place_of(const std::array<double, 3>& position);

}  // namespace pathstat
