#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "services/file_units.h"
#include "volumes/volume_bricks.h"
#include "volumes/volume_file.h"
#include "volumes/volume_grid.h"

namespace pathstat {
namespace {

constexpr std::int32_t box_mode = 4;

using Index = std::array<std::int32_t, 3>;  ///< of a point or brick, by axis
using Position = std::array<double, 3>;

bool is_open(std::int32_t unit) { return unit >= 1 && unit == volinfo_.unit && kvs_fil_isunitopen_(unit); }

/// A point as the arrays of the caller get it.
struct GridPoint {
  float value = 0;
  FloatVector place{};
  FloatVector offset{};
};

/// One brick with all that the file has of its points.
class Brick {
 public:
  /// @param at  the brick, from 0 on each axis. @return false if the values or offsets can't be read
  bool read(const Index& at) {
    const auto bricks = volume_bricks(), low = volume_low(), points = volume_points();
    const auto number = (at[2] * bricks[1] + at[1]) * bricks[0] + at[0] + 1;
    const auto count = bricks[0] * bricks[1] * bricks[2];
    for (std::size_t axis = 0; axis < 3; ++axis) {
      first_[axis] = low[axis] + brick_step * at[axis];
      size_[axis] = std::min(brick_edge, points[axis] - brick_step * at[axis]);
    }
    if (!read_part(number, values_)) return false;
    for (std::size_t axis = 0; volinfo_.kind == offset_volume && axis < 3; ++axis) {
      if (!read_part(number + count * (1 + static_cast<std::int32_t>(axis)), offsets_[axis])) return false;
    }
    return true;
  }

  const Index& first() const { return first_; }
  const Index& size() const { return size_; }

  /// A point of the grid that the brick covers.
  GridPoint point(const Index& index) const {
    const auto at = static_cast<std::size_t>(((index[2] - first_[2]) * brick_edge + index[1] - first_[1]) * brick_edge +
                                             index[0] - first_[0]);
    GridPoint point{decoded(values_, at, volinfo_.scale, volinfo_.offset),
                    place_of({double(index[0]), double(index[1]), double(index[2])}),
                    {}};
    for (std::size_t axis = 0; volinfo_.kind == offset_volume && axis < 3; ++axis) {
      point.offset[axis] = decoded(offsets_[axis], at, volinfo_.offset_scale, volinfo_.offset_offset);
      point.place[axis] += point.offset[axis];
    }
    return point;
  }

  /// Calls back with each point that the brick covers, x fastest.
  template <class Visit>
  void for_points(Visit visit) const {
    for (auto k = first_[2]; k < first_[2] + size_[2]; ++k) {
      for (auto j = first_[1]; j < first_[1] + size_[1]; ++j) {
        for (auto i = first_[0]; i < first_[0] + size_[0]; ++i) visit(Index{i, j, k});
      }
    }
  }

 private:
  bool read_part(std::int32_t number, BrickBuffers& raw) const {
    std::array<std::int16_t, brick_points> copy;
    return kva_vol_ghbmd_(volinfo_.unit, number, size_[0], size_[1], size_[2], brick_edge, volinfo_.title_count,
                          volinfo_.grid_type, copy, raw);
  }
  static float decoded(const BrickBuffers& raw, std::size_t at, float scale, float offset) {
    if (volinfo_.grid_type == 4) return raw.floats[at];
    const double stored = volinfo_.grid_type == 1 ? raw.bytes[at] : raw.shorts[at];
    return static_cast<float>(stored / scale - offset);
  }

  Index first_{}, size_{};
  BrickBuffers values_;
  std::array<BrickBuffers, 3> offsets_;
};

/// Reads the bricks that are marked, one after another; one that can't be read is passed over.
void for_marked_bricks(const std::function<void(const Brick&)>& visit) {
  const auto bricks = volume_bricks();
  Brick brick;
  for (std::int32_t z = 0; z < bricks[2]; ++z) {
    for (std::int32_t y = 0; y < bricks[1]; ++y) {
      for (std::int32_t x = 0; x < bricks[0]; ++x) {
        if (volumedata_[brick_flag(x, y, z)] != 0 && brick.read({x, y, z})) visit(brick);
      }
    }
  }
}

/// Which points were seen before: those of a face belong to several bricks.
class Seen {
 public:
  Seen() : points_(volume_size(), false) {}
  /// @return true the first time that it is asked for a point
  bool first_time(const Index& index) {
    const auto low = volume_low();
    const auto at = point_number(index[0] - low[0], index[1] - low[1], index[2] - low[2]);
    const bool first = !points_[at];
    points_[at] = true;
    return first;
  }

 private:
  std::vector<bool> points_;
};

/// The caller's arrays. Coordinates and offsets may be left out, as empty ones.
struct Arrays {
  std::span<float> values, coordinates, offsets;

  bool have_room(std::size_t points) const {
    const auto fits = [&](std::span<float> array) { return array.empty() || array.size() >= 3 * points; };
    return values.size() >= points && fits(coordinates) && (volinfo_.kind != offset_volume || fits(offsets));
  }
  void put(std::size_t at, const GridPoint& point) const {
    values[at] = point.value;
    if (!coordinates.empty()) std::ranges::copy(point.place, coordinates.begin() + static_cast<std::ptrdiff_t>(3 * at));
    if (volinfo_.kind != offset_volume || offsets.empty()) return;
    std::ranges::copy(point.offset, offsets.begin() + static_cast<std::ptrdiff_t>(3 * at));
  }
};

/// A box in points of the grid, cut to the volume.
struct Box {
  Position low, high;
};

/// @return false for a box that has nothing of the volume
bool clipped_box(const FloatVector& low, const FloatVector& high, Box& box) {
  // What rounding in 32 bits makes of a place on the border still counts as on it.
  constexpr double slack = 1e-4;
  box = {grid_position(low), grid_position(high)};
  const auto lowest = volume_low(), highest = volume_high();
  for (std::size_t axis = 0; axis < 3; ++axis) {
    auto &from = box.low[axis], &to = box.high[axis];
    if (!(from <= highest[axis] + slack && to >= lowest[axis] - slack && from <= to)) return false;
    from = std::clamp<double>(from, lowest[axis], highest[axis]);
    to = std::clamp<double>(to, lowest[axis], highest[axis]);
  }
  return true;
}

void return_box(const Box& box, FloatVector& low, FloatVector& high, std::int32_t clip) {
  if (clip == 0) return;
  low = place_of(box.low);
  high = place_of(box.high);
}

/// Cuts a range of values to the volume's limits. @return false if nothing is left
bool clip_range(float& low, float& high, std::int32_t clip) {
  if (!(low <= volinfo_.value_max && high >= volinfo_.value_min && low <= high)) return false;
  if (clip == 0) return true;
  low = std::max(low, volinfo_.value_min);
  high = std::min(high, volinfo_.value_max);
  return true;
}

/// Calls back with each point whose value, cut to the volume's limits, lies in a range.
void for_values(float low, float high, const std::function<void(const GridPoint&)>& visit) {
  std::int32_t status = 0;
  kva_vol_sbfcim_(1, {}, {}, status);
  Seen seen;
  for_marked_bricks([&](const Brick& brick) {
    brick.for_points([&](const Index& index) {
      if (!seen.first_time(index)) return;
      auto point = brick.point(index);
      point.value = std::min(std::max(volinfo_.value_min, point.value), volinfo_.value_max);
      if (point.value >= low && point.value <= high) visit(point);
    });
  });
}

}  // namespace

std::array<double, 3> grid_position(const FloatVector& place) {
  const auto points = volume_points();
  const FloatVector origin{volorthog_.origin_x, volorthog_.origin_y, volorthog_.origin_z};
  Position position;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    double fraction = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      fraction += double{volorthog_.to_fraction[axis + 3 * k]} * (double{place[k]} - double{origin[k]});
    }
    position[axis] = fraction * points[axis] + 1;
  }
  return position;
}

FloatVector place_of(const std::array<double, 3>& position) {
  const auto points = volume_points();
  Position place{volorthog_.origin_x, volorthog_.origin_y, volorthog_.origin_z};
  for (std::size_t k = 0; k < 3; ++k) {
    const double fraction = (position[k] - 1) / points[k];
    for (std::size_t axis = 0; axis < 3; ++axis) place[axis] += double{volorthog_.to_space[axis + 3 * k]} * fraction;
  }
  return {static_cast<float>(place[0]), static_cast<float>(place[1]), static_cast<float>(place[2])};
}

void kva_vol_sizeregion_(std::int32_t unit, FloatVector& low, FloatVector& high, std::int32_t& count, std::int32_t clip,
                         std::int32_t& status) {
  constexpr double rounding = 1e-4;
  count = 0;
  status = volume_status::no_volume;
  if (!is_open(unit)) return;
  Box box;
  status = clipped_box(low, high, box) ? 0 : volume_status::outside;
  if (status != 0) return;
  count = 1;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    count *= static_cast<std::int32_t>(box.high[axis] - box.low[axis] + rounding) + 1;
  }
  return_box(box, low, high, clip);
}

void kva_vol_getregion_(std::int32_t unit, FloatVector& low, FloatVector& high, std::int32_t& count,
                        std::span<float> values, std::span<float> coordinates, std::span<float> offsets,
                        std::int32_t clip, std::int32_t& status) {
  count = 0;
  status = volume_status::no_volume;
  if (!is_open(unit)) return;
  const Arrays arrays{values, coordinates, offsets};
  Box box;
  status = clipped_box(low, high, box) ? 0 : volume_status::outside;
  if (status != 0) return;
  Index from, size;
  std::size_t points = 1;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    from[axis] = static_cast<std::int32_t>(std::round(box.low[axis]));
    size[axis] = static_cast<std::int32_t>(std::round(box.high[axis])) - from[axis] + 1;
    points *= static_cast<std::size_t>(size[axis]);
  }
  if (!arrays.have_room(points)) {
    status = volume_status::no_room;
    return;
  }
  std::ranges::fill(values.first(std::min(values.size(), volume_size())), volume_not_read);
  return_box(box, low, high, clip);
  kva_vol_sbfcim_(box_mode, place_of(box.low), place_of(box.high), status);
  Seen seen;
  for_marked_bricks([&](const Brick& brick) {
    brick.for_points([&](const Index& index) {
      std::size_t at = 0;
      for (std::size_t axis = 3; axis-- > 0;) {
        const auto inside = index[axis] - from[axis];
        if (inside < 0 || inside >= size[axis]) return;
        at = at * static_cast<std::size_t>(size[axis]) + static_cast<std::size_t>(inside);
      }
      if (!seen.first_time(index)) return;
      arrays.put(at, brick.point(index));
      ++count;
    });
  });
}

void kva_vol_sizevalues_(std::int32_t unit, float& low, float& high, std::int32_t& count, std::int32_t clip,
                         std::int32_t& status) {
  count = 0;
  status = volume_status::no_volume;
  if (!is_open(unit)) return;
  status = clip_range(low, high, clip) ? 0 : volume_status::outside;
  if (status == 0) for_values(low, high, [&](const GridPoint&) { ++count; });
}

void kva_vol_getvalues_(std::int32_t unit, float& low, float& high, std::int32_t& count, std::span<float> values,
                        std::span<float> coordinates, std::span<float> offsets, std::int32_t clip,
                        std::int32_t& status) {
  count = 0;
  status = volume_status::no_volume;
  if (!is_open(unit)) return;
  const Arrays arrays{values, coordinates, offsets};
  status = clip_range(low, high, clip) ? 0 : volume_status::outside;
  if (status != 0) return;
  for_values(low, high, [&](const GridPoint& point) {
    const auto at = static_cast<std::size_t>(count);
    if (!arrays.have_room(at + 1)) {
      status = volume_status::no_room;
      return;
    }
    arrays.put(at, point);
    ++count;
  });
}

void kva_vol_getpoints_(std::int32_t unit, std::span<const float> points, std::span<float> values,
                        std::span<float> coordinates, std::span<float> offsets, std::int32_t& status) {
  status = volume_status::no_volume;
  if (!is_open(unit)) return;
  const Arrays arrays{values, coordinates, offsets};
  status = arrays.have_room(points.size() / 3) ? 0 : volume_status::no_room;
  if (status != 0) return;
  const auto low = volume_low(), high = volume_high(), bricks = volume_bricks();
  Brick brick;
  Index held{-1, -1, -1};
  for (std::size_t k = 0; k < points.size() / 3; ++k) {
    const auto position = grid_position({points[3 * k], points[3 * k + 1], points[3 * k + 2]});
    Index index, at;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const double nearest = std::round(position[axis]);
      if (!(nearest >= low[axis] && nearest <= high[axis])) {
        status = volume_status::outside;
        return;
      }
      index[axis] = static_cast<std::int32_t>(nearest);
      at[axis] = std::min((index[axis] - low[axis]) / brick_step, bricks[axis] - 1);
    }
    if (at != held && !brick.read(at)) {
      held = {-1, -1, -1};
      arrays.put(k, {volume_not_read, {points[3 * k], points[3 * k + 1], points[3 * k + 2]}, {}});
      continue;
    }
    held = at;
    arrays.put(k, brick.point(index));
  }
}

}  // namespace pathstat
