#include "desk/model/surface.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "structure/crystal_vectors.h"

namespace pathstat::desk {

using namespace crystal;

namespace {

/// An edge as one number: the lower vertex, then the higher one.
std::uint64_t edge_of(std::int32_t a, std::int32_t b) {
  const auto [low, high] = std::minmax(a, b);
  return static_cast<std::uint64_t>(low) << 32 | static_cast<std::uint32_t>(high);
}

std::vector<std::uint64_t> sorted_edges(const Surface& surface) {
  std::vector<std::uint64_t> edges;
  edges.reserve(3 * surface.triangles.size());
  for (const auto& [a, b, c] : surface.triangles) {
    edges.insert(edges.end(), {edge_of(a, b), edge_of(b, c), edge_of(c, a)});
  }
  std::ranges::sort(edges);
  return edges;
}

std::int64_t used_vertices(const Surface& surface) {
  std::vector<bool> used(surface.vertices.size());
  for (const auto& triangle : surface.triangles) {
    for (const auto vertex : triangle) used[static_cast<std::size_t>(vertex)] = true;
  }
  return std::ranges::count(used, true);
}

void count_edges(const Surface& surface, SurfaceMeasures& measures) {
  const auto edges = sorted_edges(surface);
  std::int64_t different = 0;
  measures.closed = true;
  for (auto edge = edges.begin(); edge != edges.end(); ++different) {
    const auto next = std::find_if(edge, edges.end(), [&](std::uint64_t other) { return other != *edge; });
    if ((next - edge) % 2 != 0) measures.closed = false;
    edge = next;
  }
  measures.euler_characteristic = used_vertices(surface) - different + std::ssize(surface.triangles);
}

}  // namespace

SurfaceMeasures measures_of(const Surface& surface) {
  SurfaceMeasures measures;
  if (surface.triangles.empty()) return measures;
  count_edges(surface, measures);
  const auto& origin = surface.vertices.front();
  double six_volumes = 0;
  for (const auto& triangle : surface.triangles) {
    std::array<Vector3, 3> corner;
    for (std::size_t k = 0; k < 3; ++k) {
      dvecsub_(surface.vertices[static_cast<std::size_t>(triangle[k])], origin, corner[k]);
    }
    Vector3 along, across;
    dvecsub_(corner[1], corner[0], along);
    dvecsub_(corner[2], corner[0], across);
    measures.area += length(cross(along, across)) / 2;
    six_volumes += dot(corner[0], cross(corner[1], corner[2]));
  }
  if (measures.closed) measures.volume = std::abs(six_volumes) / 6;
  return measures;
}

std::string surface_name(std::size_t place) { return fmt::format("surface-{}", place + 1); }

std::string in_words(const Surface& surface) {
  const auto measures = measures_of(surface);
  auto text = fmt::format("{} triangle{}, area {:.5g} Å²", surface.triangles.size(),
                          surface.triangles.size() == 1 ? "" : "s", measures.area);
  text += measures.closed ? fmt::format(", encloses {:.5g} Å³", measures.volume)
                          : std::string(", open where the grid ends");
  return text + fmt::format(", Euler characteristic {}.", measures.euler_characteristic);
}

std::string surface_as_ply(const Surface& surface) {
  fmt::memory_buffer text;
  const auto out = std::back_inserter(text);
  fmt::format_to(out, "ply\nformat ascii 1.0\nelement vertex {}\n", surface.vertices.size());
  for (const char axis : {'x', 'y', 'z'}) fmt::format_to(out, "property float {}\n", axis);
  if (!surface.normals.empty()) {
    for (const char axis : {'x', 'y', 'z'}) fmt::format_to(out, "property float n{}\n", axis);
  }
  fmt::format_to(out, "element face {}\nproperty list uchar int vertex_indices\nend_header\n",
                 surface.triangles.size());
  for (std::size_t k = 0; k < surface.vertices.size(); ++k) {
    fmt::format_to(out, "{:.7g}", fmt::join(surface.vertices[k], " "));
    if (!surface.normals.empty()) fmt::format_to(out, " {:.7g}", fmt::join(surface.normals[k], " "));
    fmt::format_to(out, "\n");
  }
  for (const auto& triangle : surface.triangles) fmt::format_to(out, "3 {}\n", fmt::join(triangle, " "));
  return fmt::to_string(text);
}

std::string surface_as_obj(const Surface& surface) {
  fmt::memory_buffer text;
  const auto out = std::back_inserter(text);
  for (const auto& vertex : surface.vertices) fmt::format_to(out, "v {:.7g}\n", fmt::join(vertex, " "));
  for (const auto& normal : surface.normals) fmt::format_to(out, "vn {:.7g}\n", fmt::join(normal, " "));
  for (const auto& triangle : surface.triangles) {
    fmt::format_to(out, "f");
    for (const auto vertex : triangle) {
      const auto number = static_cast<std::int64_t>(vertex) + 1;
      if (surface.normals.empty()) {
        fmt::format_to(out, " {}", number);
      } else {
        fmt::format_to(out, " {0}//{0}", number);
      }
    }
    fmt::format_to(out, "\n");
  }
  return fmt::to_string(text);
}

}  // namespace pathstat::desk
