#include "desk/graphs/surface_picture.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <map>
#include <numbers>
#include <set>
#include <vector>

#include "structure/crystal_vectors.h"

namespace pathstat::desk {

using namespace crystal;

namespace {

constexpr double width = 720, height = 560, margin = 70;
constexpr double azimuth = 32 * std::numbers::pi / 180, elevation = 24 * std::numbers::pi / 180;

struct Box {
  Vector3 low, high;

  double longest() const { return std::max({high[0] - low[0], high[1] - low[1], high[2] - low[2]}); }
  /// A corner; bit k of its number tells the high end of axis k.
  Vector3 corner(int number) const {
    return {number & 1 ? high[0] : low[0], number & 2 ? high[1] : low[1], number & 4 ? high[2] : low[2]};
  }
};

Box box_of(const Surface& surface) {
  Box box{surface.vertices.front(), surface.vertices.front()};
  for (const auto& vertex : surface.vertices) {
    for (std::size_t k = 0; k < 3; ++k) {
      box.low[k] = std::min(box.low[k], vertex[k]);
      box.high[k] = std::max(box.high[k], vertex[k]);
    }
  }
  return box;
}

/// To the right, up, and towards the reader.
Vector3 turned(const Vector3& v) {
  const double x = -std::sin(azimuth) * v[0] + std::cos(azimuth) * v[1];
  const double ahead = std::cos(azimuth) * v[0] + std::sin(azimuth) * v[1];
  return {x, std::cos(elevation) * v[2] - std::sin(elevation) * ahead,
          std::sin(elevation) * v[2] + std::cos(elevation) * ahead};
}

/// From space to the picture, with the box in its middle.
class View {
 public:
  explicit View(const Box& box) {
    Vector3 low{1e300, 1e300, 0}, high{-1e300, -1e300, 0};
    for (int k = 0; k < 8; ++k) {
      const auto at = turned(box.corner(k));
      for (std::size_t axis = 0; axis < 2; ++axis) {
        low[axis] = std::min(low[axis], at[axis]);
        high[axis] = std::max(high[axis], at[axis]);
      }
    }
    const double wide = std::max(high[0] - low[0], 1e-9), tall = std::max(high[1] - low[1], 1e-9);
    scale_ = std::min((width - 2 * margin) / wide, (height - 2 * margin) / tall);
    middle_ = {(low[0] + high[0]) / 2, (low[1] + high[1]) / 2, 0};
  }
  /// x to the right and y down, in units of the picture; z towards the reader.
  Vector3 operator()(const Vector3& place) const {
    const auto at = turned(place);
    return {width / 2 + scale_ * (at[0] - middle_[0]), height / 2 - scale_ * (at[1] - middle_[1]), at[2]};
  }

 private:
  double scale_ = 1;
  Vector3 middle_{};
};

/// From dark to light by the angle between a face and the light, whichever side it shows.
std::string shade(const Vector3& normal) {
  const auto facing = unit(turned(normal));
  const double light = std::abs(dot(facing, unit(Vector3{-0.35, 0.55, 0.75})));
  const auto mixed = [&](double dark, double bright) { return static_cast<int>(dark + (bright - dark) * light); };
  return fmt::format("#{:02x}{:02x}{:02x}", mixed(20, 150), mixed(62, 205), mixed(110, 245));
}

void draw_triangles(const Surface& surface, const View& view, fmt::memory_buffer& svg) {
  struct Face {
    double depth;
    std::array<Vector3, 3> corner;
    std::string colour;
  };
  std::vector<Face> faces;
  for (const auto& triangle : surface.triangles) {
    const auto at = [&](std::size_t k) { return surface.vertices[static_cast<std::size_t>(triangle[k])]; };
    const auto normal = cross(sum(at(1), scaled(at(0), -1)), sum(at(2), scaled(at(0), -1)));
    if (length(normal) == 0) continue;
    Face face{0, {view(at(0)), view(at(1)), view(at(2))}, shade(normal)};
    for (const auto& corner : face.corner) face.depth += corner[2];
    faces.push_back(std::move(face));
  }
  std::ranges::sort(faces, {}, &Face::depth);
  for (const auto& [depth, corner, colour] : faces) {
    fmt::format_to(std::back_inserter(svg),
                   "<path fill=\"{0}\" stroke=\"{0}\" d=\"M{1:.1f} {2:.1f}L{3:.1f} {4:.1f}L"
                   "{5:.1f} {6:.1f}Z\"/>\n",
                   colour, corner[0][0], corner[0][1], corner[1][0], corner[1][1], corner[2][0], corner[2][1]);
  }
}

/// The corner of a box that lies farthest from the reader.
int farthest_corner(const Box& box, const View& view) {
  int farthest = 0;
  for (int k = 1; k < 8; ++k) {
    if (view(box.corner(k))[2] < view(box.corner(farthest))[2]) farthest = k;
  }
  return farthest;
}

/// The sides of the box that meet in its farthest corner, behind the surface, or all others, in front of it.
void draw_box(const Box& box, const View& view, bool behind, fmt::memory_buffer& svg) {
  const int hidden = farthest_corner(box, view);
  for (int from = 0; from < 8; ++from) {
    for (const int axis : {1, 2, 4}) {
      const int to = from | axis;
      if (to == from || (from == hidden || to == hidden) != behind) continue;
      const auto a = view(box.corner(from)), b = view(box.corner(to));
      fmt::format_to(std::back_inserter(svg),
                     "<path stroke=\"#8a94a0\" fill=\"none\" d=\"M{:.1f} {:.1f}L{:.1f} {:.1f}"
                     "\"{}/>\n",
                     a[0], a[1], b[0], b[1], behind ? " stroke-dasharray=\"4 4\"" : "");
    }
  }
}

/// Beside three sides of the box in front, where they begin and end.
void label_box(const Box& box, const View& view, fmt::memory_buffer& svg) {
  const int near = 7 - farthest_corner(box, view);
  const int below = near & 3;  // the near corner of the floor
  const auto middle = [&](int a, int b) { return scaled(sum(view(box.corner(a)), view(box.corner(b))), 0.5); };
  const auto write = [&](const Vector3& at, const char* anchor, char axis, std::size_t k) {
    fmt::format_to(std::back_inserter(svg),
                   "<text x=\"{:.1f}\" y=\"{:.1f}\" text-anchor=\"{}\">{} {:.4g} to {:.4g} Å"
                   "</text>\n",
                   at[0], at[1], anchor, axis, box.low[k], box.high[k]);
  };
  for (const int axis : {0, 1}) {
    auto at = middle(below, below ^ (1 << axis));
    const bool left = at[0] < view(box.corner(below))[0];
    at[0] += left ? -14 : 14, at[1] += 22;
    write(at, left ? "end" : "start", axis == 0 ? 'x' : 'y', static_cast<std::size_t>(axis));
  }
  // The upright side farthest to the right.
  int right = 0;
  for (int k = 1; k < 4; ++k) {
    if (view(box.corner(k))[0] > view(box.corner(right))[0]) right = k;
  }
  auto at = middle(right, right | 4);
  at[0] = std::min(at[0] + 10, width - 60), at[1] = view(box.corner(right | 4))[1] - 10;
  write(at, "end", 'z', 2);
}

}  // namespace

Surface coarsened(const Surface& surface, int cells) {
  const auto box = box_of(surface);
  const double step = box.longest() / cells;
  Surface coarse;
  if (!(step > 0)) return coarse;
  std::map<std::array<int, 3>, std::int32_t> places;
  std::vector<std::int32_t> place_of;
  std::vector<double> members;
  for (const auto& vertex : surface.vertices) {
    std::array<int, 3> cell{};
    for (std::size_t k = 0; k < 3; ++k) cell[k] = static_cast<int>((vertex[k] - box.low[k]) / step);
    const auto [known, is_new] = places.emplace(cell, static_cast<std::int32_t>(coarse.vertices.size()));
    if (is_new) {
      coarse.vertices.emplace_back();
      members.push_back(0);
    }
    auto& mean = coarse.vertices[static_cast<std::size_t>(known->second)];
    mean = sum(mean, vertex);
    ++members[static_cast<std::size_t>(known->second)];
    place_of.push_back(known->second);
  }
  for (std::size_t k = 0; k < members.size(); ++k) coarse.vertices[k] = scaled(coarse.vertices[k], 1 / members[k]);
  std::set<std::array<std::int32_t, 3>> seen;
  for (const auto& triangle : surface.triangles) {
    std::array<std::int32_t, 3> merged{};
    for (std::size_t k = 0; k < 3; ++k) merged[k] = place_of[static_cast<std::size_t>(triangle[k])];
    auto sorted = merged;
    std::ranges::sort(sorted);
    if (std::ranges::adjacent_find(sorted) == sorted.end() && seen.insert(sorted).second) {
      coarse.triangles.push_back(merged);
    }
  }
  return coarse;
}

std::string surface_picture(const Surface& surface) {
  if (surface.triangles.empty()) return {};
  const auto box = box_of(surface);
  const View view(box);
  auto drawn = surface;
  for (int cells = 96; drawn.triangles.size() > most_drawn_triangles && cells > 4; cells = cells * 4 / 5) {
    drawn = coarsened(surface, cells);
  }
  fmt::memory_buffer svg;
  fmt::format_to(std::back_inserter(svg),
                 "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 {} {}\" "
                 "stroke-linejoin=\"round\" stroke-width=\"0.6\" font-family=\"DejaVu Sans, sans-serif\" "
                 "font-size=\"13\" fill=\"#1c2430\">\n",
                 width, height);
  draw_box(box, view, true, svg);
  draw_triangles(drawn, view, svg);
  draw_box(box, view, false, svg);
  label_box(box, view, svg);
  fmt::format_to(std::back_inserter(svg), "</svg>\n");
  return fmt::to_string(svg);
}

}  // namespace pathstat::desk
