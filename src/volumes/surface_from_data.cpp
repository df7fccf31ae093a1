#include "volumes/surface_from_data.h"

#include <numeric>
#include <vector>

#include "coreapi/error_reporting.h"
#include "coreapi/operations.h"
#include "structure/crystal_vectors.h"
#include "support/within_memory.h"
#include "volumes/isosurface.h"

namespace pathstat {

using namespace crystal;

namespace {

/// Grid coordinates to where they are in space: the steps along the three axes.
using Steps = std::array<Vector3, 3>;

Vector3 along(const Steps& steps, const Vector3& grid) {
  return sum(sum(scaled(steps[0], grid[0]), scaled(steps[1], grid[1])), scaled(steps[2], grid[2]));
}

Steps steps_of(const std::array<Vector3, 3>& edges, const std::array<std::int32_t, 3>& points) {
  Steps steps;
  for (std::size_t axis = 0; axis < 3; ++axis) steps[axis] = scaled(edges[axis], 1.0 / (points[axis] - 1));
  return steps;
}

void place(SurfaceMesh& mesh, const Vector3& origin, const Steps& steps, std::int32_t flags) {
  for (auto& vertex : mesh.vertices) vertex = sum(origin, along(steps, vertex));
  if (flags == surface_normals::none) mesh.normals.clear();
  const double sense = (flags & surface_normals::flipped) != 0 ? -1 : 1;
  for (auto& normal : mesh.normals) normal = unit(scaled(along(steps, normal), sense));
}

std::vector<double> plane_numbers(std::int32_t points) {
  std::vector<double> planes(static_cast<std::size_t>(points));
  std::iota(planes.begin(), planes.end(), 0.0);
  return planes;
}

std::int32_t extracted(double iso, std::span<const double> values, const std::array<std::int32_t, 3>& points,
                       SurfaceMesh& mesh) {
  std::int64_t expected = 1;
  for (const auto n : points) {
    if (n < 1 || n > most_surface_points) return surface_status::bad_data;
    expected *= n;
  }
  if (static_cast<std::int64_t>(values.size()) != expected) return surface_status::bad_data;
  auto code = surface_error::out_of_memory;
  within_memory([&] {
    code = kva_sur_iso(iso, values, points[0], points[1], points[2], plane_numbers(points[0]), plane_numbers(points[1]),
                       plane_numbers(points[2]), mesh);
  });
  if (code == surface_error::out_of_memory) return surface_status::out_of_memory;
  if (code != 0) return surface_status::bad_data;
  return mesh.vertices.empty() ? surface_status::no_surface : 0;
}

/// The numbers of an array of triples, one behind the other.
template <class T>
std::span<const T> flat(const std::vector<std::array<T, 3>>& triples) {
  static_assert(sizeof(std::array<T, 3>) == 3 * sizeof(T));
  return {reinterpret_cast<const T*>(triples.data()), 3 * triples.size()};
}

void hand_over(const SurfaceMesh& mesh, std::int32_t& surface, std::int32_t& status) {
  std::int32_t root = 0;
  kvD_Root(root, status);
  if (status != 0) return;
  kvD_SUR_CreateSurface(root, surface, status);
  if (status != 0) return;
  kvD_SUR_SetSurface(surface, flat(mesh.vertices), flat(mesh.normals), flat(mesh.triangles), status);
}

}  // namespace

void kva_sur_createsurfacefromdata_(double iso, std::span<const double> values, const Vector3& origin, const Vector3& a,
                                    const Vector3& b, const Vector3& c, std::int32_t nx, std::int32_t ny,
                                    std::int32_t nz, std::int32_t flags, std::int32_t& surface, std::int32_t& status) {
  surface = 0;
  SurfaceMesh mesh;
  status = extracted(iso, values, {nx, ny, nz}, mesh);
  if (status == 0) {
    place(mesh, origin, steps_of({a, b, c}, {nx, ny, nz}), flags);
    hand_over(mesh, surface, status);
  }
  kvU_ERR_Handler(status);
}

}  // namespace pathstat
