#include "volumes/volume_bricks.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "services/file_units.h"
#include "support/big_endian.h"
#include "support/number_format.h"
#include "volumes/volume_grid.h"

namespace pathstat {
namespace {

/// A float without its decimals, as far as 16 bits go.
std::int16_t cut(float value) {
  using Limits = std::numeric_limits<std::int16_t>;
  if (std::isnan(value)) return 0;
  return static_cast<std::int16_t>(
      std::clamp(value, static_cast<float>(Limits::min()), static_cast<float>(Limits::max())));
}

std::int16_t as_short(const BrickBuffers& raw, std::int32_t grid_type, std::size_t at) {
  if (grid_type == 1) return static_cast<std::uint8_t>(raw.bytes[at]);
  return grid_type == 2 ? raw.shorts[at] : cut(raw.floats[at]);
}

/// Marks the bricks of a range on each axis, from 0.
void mark(const std::array<std::int32_t, 3>& first, const std::array<std::int32_t, 3>& last) {
  for (auto z = first[2]; z <= last[2]; ++z) {
    for (auto y = first[1]; y <= last[1]; ++y) {
      for (auto x = first[0]; x <= last[0]; ++x) volumedata_[brick_flag(x, y, z)] = 1;
    }
  }
}

constexpr std::array type_steps{0.0, 127.0, 16383.0};  ///< steps between the limits, by grid type

VolumeCoding coding(std::int32_t grid_type, double offset, double range) {
  constexpr double least_range = 0.0001;
  if (grid_type == 4) return {grid_type, 1, 0};
  const double scale = range < least_range ? 1 : type_steps[static_cast<std::size_t>(grid_type)] / range;
  return {grid_type, static_cast<float>(scale), static_cast<float>(offset)};
}

}  // namespace

bool kva_vol_ghbmd_(std::int32_t unit, std::int32_t brick, std::int32_t points_x, std::int32_t points_y,
                    std::int32_t points_z, std::int32_t edge, std::int32_t titles, std::int32_t grid_type,
                    std::span<std::int16_t> copy, BrickBuffers& raw) {
  const auto record = std::int64_t{brick} + titles + first_records;
  RecordBytes bytes;
  const auto used = record_part(bytes, grid_type);
  if (!unit_read_record(unit, record, used)) {
    std::printf("Error reading brick no %s in ghbmd\n", formatted(record, "(I10)").c_str());
    return false;
  }
  if (grid_type == 1) load_big_endian(used.data(), std::span<std::int8_t>(raw.bytes));
  if (grid_type == 2) load_big_endian(used.data(), std::span<std::int16_t>(raw.shorts));
  if (grid_type == 4) load_big_endian(used.data(), std::span<float>(raw.floats));
  std::size_t at = 0;
  for (std::int32_t z = 0; z < points_z; ++z) {
    for (std::int32_t y = 0; y < points_y; ++y) {
      for (std::int32_t x = 0; x < points_x && at < copy.size(); ++x) {
        const auto place = (z * edge + y) * edge + x;
        copy[at++] = as_short(raw, grid_type, static_cast<std::size_t>(place));
      }
    }
  }
  return true;
}

void kva_vol_sbfcim_(std::int32_t mode, const FloatVector& low, const FloatVector& high, std::int32_t& status) {
  constexpr std::int32_t all_bricks = 1, last_box_mode = 6;
  volumedata_.fill(0);
  status = mode < all_bricks || mode > last_box_mode ? 1 : 0;
  if (status != 0) return;
  const auto bricks = volume_bricks();
  if (mode == all_bricks) return mark({0, 0, 0}, {bricks[0] - 1, bricks[1] - 1, bricks[2] - 1});

  const auto from = grid_position(low), to = grid_position(high);
  const auto lowest = volume_low(), highest = volume_high();
  std::array<std::int32_t, 3> first, last;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    if (std::isnan(from[axis]) || std::isnan(to[axis])) return;
    const double begin = std::trunc(from[axis]), end = std::trunc(to[axis]);
    if (end < lowest[axis] || begin > highest[axis] || end < begin) return;
    const auto brick_of = [&](double point) {
      const auto index = static_cast<std::int32_t>(std::clamp<double>(point, lowest[axis], highest[axis]));
      return std::min((index - lowest[axis] + brick_step) / brick_step, bricks[axis]) - 1;
    };
    first[axis] = brick_of(begin);
    last[axis] = brick_of(end);
  }
  mark(first, last);
}

void index_list_(std::span<const std::int32_t> list, std::int32_t value, std::int32_t& position) {
  const auto found = std::ranges::find(list, value);
  position = found == list.end() ? 0 : static_cast<std::int32_t>(found - list.begin()) + 1;
}

VolumeCoding value_coding(std::int32_t grid_type, float min, float max) {
  return coding(grid_type, -double{min}, double{max} - double{min});
}

VolumeCoding offset_coding(std::int32_t grid_type, float largest_spacing) {
  return coding(grid_type, -double{largest_spacing}, 2 * double{largest_spacing});
}

}  // namespace pathstat
