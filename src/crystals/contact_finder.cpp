#include "crystals/contact_finder.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "state/contact_grid.h"

namespace pathstat {
namespace {

constexpr double boxes_allowed = ContactGrid::most_boxes;
constexpr double third = 0.3333333432674408;
constexpr int bisections = 18;

struct Bounds {
  Vector3 low{}, extent{};
};

Bounds bounds_of(std::span<const double> xyz, double minimum_box) {
  Bounds bounds;
  Vector3 high{};
  for (std::size_t at = 0; at + 3 <= xyz.size(); at += 3) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const double x = xyz[at + axis];
      bounds.low[axis] = at == 0 ? x : std::min(bounds.low[axis], x);
      high[axis] = at == 0 ? x : std::max(high[axis], x);
    }
  }
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const double extent = std::max(high[axis] - bounds.low[axis], minimum_box);
    bounds.extent[axis] = extent == 0 ? 1 : extent;
  }
  return bounds;
}

/// The smallest boxes of which not too many fill the extents.
double box_size(const Vector3& extent, double minimum_box) {
  double low = std::pow(extent[0] * extent[1] * extent[2] / boxes_allowed, third);
  double high = *std::ranges::max_element(extent) / 19;
  for (int round = 0; round < bisections; ++round) {
    const double middle = (low + high) / 2;
    const double boxes = (extent[0] / middle + 1) * (extent[1] / middle + 1) * (extent[2] / middle + 1);
    (boxes <= boxes_allowed ? high : low) = middle;
  }
  return std::max(high, minimum_box);
}

/// The box of a point along an axis, and how far into it the point is. A point outside is in the box that would
/// continue the grid.
struct Place {
  std::int64_t box;
  double inside;
};

Place place_of(double x, std::size_t axis) {
  constexpr double far = 1e9;
  const auto& grid = kva_findcontactcom_;
  const double along = std::clamp((x - grid.origin[axis]) / grid.box_size, -far, far);
  const double whole = std::floor(along);
  return {static_cast<std::int64_t>(whole), (along - whole) * grid.box_size};
}

std::size_t box_number(std::int64_t x, std::int64_t y, std::int64_t z) {
  const auto& stride = kva_findcontactcom_.stride;
  return static_cast<std::size_t>(x * stride[0] + y * stride[1] + z);
}

struct Range {
  std::int64_t first, last;
};

Range boxes_within(const Place& place, double radius, std::size_t axis) {
  const auto& grid = kva_findcontactcom_;
  const std::int64_t below = place.inside - radius < 0 ? 1 : 0;
  const std::int64_t above = place.inside + radius >= grid.box_size ? 1 : 0;
  return {std::max<std::int64_t>(place.box - below, 0),
          std::min<std::int64_t>(place.box + above, grid.boxes[axis] - 1)};
}

double squared_distance(std::span<const double> xyz, std::int32_t atom, const Vector3& point) {
  const auto at = xyz.subspan(3 * static_cast<std::size_t>(atom - 1)).first<3>();
  const double x = at[0] - point[0], y = at[1] - point[1], z = at[2] - point[2];
  return x * x + y * y + z * z;
}

}  // namespace

void kva_initfindcont_(std::span<const double> xyz, double minimum_box, std::span<std::int32_t> links,
                       std::int32_t& status) {
  const bool finite = std::ranges::all_of(xyz, [](double x) { return std::isfinite(x); });
  status = finite && std::isfinite(minimum_box) && links.size() >= xyz.size() / 3 ? 0 : 1;
  if (status != 0) return;
  auto& grid = kva_findcontactcom_;
  const auto bounds = bounds_of(xyz, minimum_box);
  grid.origin = bounds.low;
  grid.box_size = box_size(bounds.extent, minimum_box);
  for (std::size_t axis = 0; axis < 3; ++axis) {
    grid.boxes[axis] = static_cast<std::int32_t>(bounds.extent[axis] / grid.box_size) + 1;
  }
  grid.stride = {grid.boxes[1] * grid.boxes[2], grid.boxes[2], 1};
  grid.head.fill(-1);
  for (std::size_t atom = xyz.size() / 3; atom-- > 0;) {
    const auto at = [&](std::size_t axis) { return place_of(xyz[3 * atom + axis], axis).box; };
    auto& head = grid.head[box_number(at(0), at(1), at(2))];
    links[atom] = head;
    head = static_cast<std::int32_t>(atom + 1);
  }
}

void kva_findcontact_(std::span<const double> xyz, std::span<const std::int32_t> links, const Vector3& point,
                      std::int32_t self, double radius, std::span<std::int32_t> list, std::int32_t& count,
                      std::int32_t half, std::int32_t& status) {
  const auto& grid = kva_findcontactcom_;
  count = 0;
  const bool finite = std::isfinite(point[0]) && std::isfinite(point[1]) && std::isfinite(point[2]);
  status = finite && radius <= grid.box_size ? 0 : 1;
  if (status != 0) return;
  const std::array place{place_of(point[0], 0), place_of(point[1], 1), place_of(point[2], 2)};
  std::array<Range, 3> range{};
  for (std::size_t axis = 0; axis < 3; ++axis) range[axis] = boxes_within(place[axis], radius, axis);
  const std::array own{place[0].box, place[1].box, place[2].box};
  for (auto x = range[0].first; x <= range[0].last; ++x) {
    for (auto y = range[1].first; y <= range[1].last; ++y) {
      for (auto z = range[2].first; z <= range[2].last; ++z) {
        const std::array box{x, y, z};
        if (half == 1 && box > own) continue;
        for (auto atom = grid.head[box_number(x, y, z)]; atom > 0; atom = links[static_cast<std::size_t>(atom - 1)]) {
          if (half == 1 ? box == own && atom >= self : atom == self) continue;
          if (squared_distance(xyz, atom, point) > radius * radius) continue;
          if (std::cmp_greater_equal(count, list.size())) return;
          list[static_cast<std::size_t>(count++)] = atom;
        }
      }
    }
  }
}

}  // namespace pathstat
