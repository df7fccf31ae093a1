#include "volumes/isosurface.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>

#include "support/parallel.h"
#include "support/within_memory.h"
#include "volumes/surface_cases.h"

namespace pathstat {
namespace {

using Size = std::size_t;

struct Failure {
  const char* text;
  std::int32_t code;
};
constexpr Failure no_tags{"couldn't initialize tags", surface_error::other};
constexpr Failure no_triangles{"couldn't allocate memory for triangles", surface_error::out_of_memory};
constexpr Failure no_list{"couldn't initialize compute list", surface_error::other};
constexpr Failure no_vertices{"couldn't allocate memory for vertices", surface_error::out_of_memory};
constexpr Failure no_normals{"couldn't allocate memory for normals", surface_error::out_of_memory};
constexpr Failure no_storage{"error allocating save or list storage", surface_error::out_of_memory};

std::int32_t told(const Failure& failure) {
  std::printf("%s\n", failure.text);
  return failure.code;
}

/// Does a step that may run out of memory. @return 0, or the code of its failure, which is then told
template <class Step>
std::int32_t attempt(const Failure& failure, Step step) {
  return within_memory(step) ? 0 : told(failure);
}

/// A field on its grid, z fastest.
struct Grid {
  std::span<const double> values;
  std::array<Size, 3> points;
  std::array<std::span<const double>, 3> planes;

  Size at(Size i, Size j, Size k) const { return (i * points[1] + j) * points[2] + k; }
  Size cubes(Size axis) const { return points[axis] - 1; }
};

/// The two ends of the grid edge that a vertex lies on, as grid indices.
using VertexRecord = std::array<std::int16_t, 6>;

/// A cube that the surface crosses.
struct CrossedCube {
  std::uint16_t i;
  std::uint8_t number;
};

bool is_crossed(std::uint8_t number) { return number != 0 && number != cube_cases - 1; }

/// The case numbers of all cubes, z fastest.
std::vector<std::uint8_t> case_numbers(const Grid& grid, double iso) {
  const auto nx = grid.points[0], ny = grid.points[1], nz = grid.points[2];
  std::vector<std::uint8_t> tags(grid.values.size());
  for_pieces(tags.size(), Size{1} << 18, [&](Size first, Size end) {
    for (Size k = first; k < end; ++k) tags[k] = iso <= grid.values[k];
  });
  std::vector<std::uint8_t> numbers((nx - 1) * (ny - 1) * (nz - 1));
  for_blocks(static_cast<std::int64_t>(nx - 1), [&](std::int64_t block, std::size_t) {
    const auto i = static_cast<Size>(block);
    std::vector<std::uint8_t> column(nz);
    for (Size j = 0; j + 1 < ny; ++j) {
      const auto* const tag_00 = &tags[grid.at(i, j, 0)];
      const auto* const tag_10 = &tags[grid.at(i + 1, j, 0)];
      const auto* const tag_11 = &tags[grid.at(i + 1, j + 1, 0)];
      const auto* const tag_01 = &tags[grid.at(i, j + 1, 0)];
      for (Size k = 0; k < nz; ++k) {
        column[k] = static_cast<std::uint8_t>(tag_00[k] | tag_10[k] << 1 | tag_11[k] << 2 | tag_01[k] << 3);
      }
      auto* const row = &numbers[(i * (ny - 1) + j) * (nz - 1)];
      for (Size k = 0; k + 1 < nz; ++k) row[k] = static_cast<std::uint8_t>(column[k] | column[k + 1] << 4);
    }
  });
  return numbers;
}

/// Calls back for each cube that the surface crosses, in the order of the numbers: i, then j, then k fastest.
template <class Visit>
void for_crossed(const Grid& grid, std::span<const std::uint8_t> numbers, Visit visit) {
  const auto length = grid.cubes(2);
  const auto* row = numbers.data();
  for (Size i = 0; i < grid.cubes(0); ++i) {
    for (Size j = 0; j < grid.cubes(1); ++j, row += length) {
      for (Size k = 0; k < length;) {
        std::uint64_t eight = 0;
        if (k + sizeof eight <= length) {
          std::memcpy(&eight, row + k, sizeof eight);
          if (eight == 0 || eight == ~std::uint64_t{0}) {
            k += sizeof eight;
            continue;
          }
        }
        if (is_crossed(row[k])) visit(i, j, k, row[k]);
        ++k;
      }
    }
  }
}

/// The crossed cubes in the order in which they are worked through: k outermost, then j, i innermost.
class ComputeList {
 public:
  void fill(const Grid& grid, std::span<const std::uint8_t> numbers) {
    rows_ = grid.cubes(1);
    starts_.assign(rows_ * grid.cubes(2) + 1, 0);
    for_crossed(grid, numbers, [&](Size, Size j, Size k, std::uint8_t) { ++starts_[k * rows_ + j + 1]; });
    for (Size row = 1; row < starts_.size(); ++row) starts_[row] += starts_[row - 1];
    cubes_.resize(starts_.back());
    auto next = starts_;
    for_crossed(grid, numbers, [&](Size i, Size j, Size k, std::uint8_t number) {
      cubes_[next[k * rows_ + j]++] = {static_cast<std::uint16_t>(i), number};
    });
  }

  std::span<const CrossedCube> all() const { return cubes_; }
  std::span<const CrossedCube> row(Size j, Size k) const {
    const auto at = k * rows_ + j;
    return all().subspan(starts_[at], starts_[at + 1] - starts_[at]);
  }

 private:
  Size rows_ = 0;
  std::vector<Size> starts_;  ///< of row (j, k) at k rows + j
  std::vector<CrossedCube> cubes_;
};

/// The numbers of the vertices on the grid edges around one layer of cubes: those along x and along y in the plane
/// below it and in the plane above, and those along z in between. What was kept for a layer further down is told from
/// what is current by its lower number, so that nothing is ever cleared.
class EdgeVertices {
 public:
  explicit EdgeVertices(const Grid& grid) : width_(grid.points[0]) {
    for (auto& sheet : sheets_) sheet.assign(width_ * grid.points[1], -1);
    for (Size e = 0; e < iso_edges.size(); ++e) {
      const auto& [from, to] = iso_edges[e];
      const Sheet sheet = from[2] != to[2]   ? z
                          : from[0] != to[0] ? (from[2] == 0 ? x_below : x_above)
                                             : (from[2] == 0 ? y_below : y_above);
      places_[e] = {sheet, static_cast<Size>(from[0]) + static_cast<Size>(from[1]) * width_};
    }
  }

  /// The next layer up begins, with so many vertices made.
  void ascend(std::int32_t vertices) {
    std::swap(sheets_[x_below], sheets_[x_above]);
    std::swap(sheets_[y_below], sheets_[y_above]);
    current_from_[x_below] = current_from_[y_below] = current_from_[z];
    current_from_[x_above] = current_from_[y_above] = current_from_[z] = vertices;
  }

  /// The vertex on an edge (from 0) of cube (i, j); `next` is made its number if it has none.
  std::int32_t vertex(Size i, Size j, Size edge, std::int32_t next) {
    const auto& place = places_[edge];
    auto& number = sheets_[place.sheet][j * width_ + i + place.offset];
    if (number < current_from_[place.sheet]) number = next;
    return number;
  }

 private:
  enum Sheet : Size { x_below, x_above, y_below, y_above, z, sheet_count };
  struct Place {
    Sheet sheet;
    Size offset;
  };
  Size width_;
  std::array<Place, iso_edges.size()> places_;
  std::array<std::vector<std::int32_t>, sheet_count> sheets_;
  std::array<std::int32_t, sheet_count> current_from_{};
};

VertexRecord record_of(Size i, Size j, Size k, const CubeEdge& edge) {
  const std::array corner{i, j, k};
  VertexRecord record;
  for (Size axis = 0; axis < 3; ++axis) {
    record[axis] = static_cast<std::int16_t>(static_cast<std::int32_t>(corner[axis]) + edge.from[axis]);
    record[axis + 3] = static_cast<std::int16_t>(static_cast<std::int32_t>(corner[axis]) + edge.to[axis]);
  }
  return record;
}

/// Fills the triangles, which have their number, and appends a record for each vertex.
void triangulate(const Grid& grid, const ComputeList& list, EdgeVertices& edges,
                 std::span<std::array<std::int32_t, 3>> triangles, std::vector<VertexRecord>& records) {
  auto triangle = triangles.begin();
  for (Size k = 0; k < grid.cubes(2); ++k) {
    edges.ascend(static_cast<std::int32_t>(records.size()));
    for (Size j = 0; j < grid.cubes(1); ++j) {
      for (const auto& cube : list.row(j, k)) {
        const auto& row = iso_cases[cube.number];
        for (Size at = 0; row[at] != 0; at += 4, ++triangle) {
          for (Size corner = 0; corner < 3; ++corner) {
            const auto edge = static_cast<Size>(row[at + corner] - 1);
            const auto next = static_cast<std::int32_t>(records.size());
            const auto vertex = edges.vertex(cube.i, j, edge, next);
            if (vertex == next) records.push_back(record_of(cube.i, j, k, iso_edges[edge]));
            (*triangle)[corner] = vertex;
          }
        }
      }
    }
  }
}

/// The gradient at a grid point: central differences inside, one-sided ones on the border.
Vector3 gradient(const Grid& grid, const std::array<Size, 3>& point, Size at) {
  const std::array<Size, 3> stride{grid.points[1] * grid.points[2], grid.points[2], 1};
  Vector3 slope;
  for (Size axis = 0; axis < 3; ++axis) {
    const Size back = point[axis] > 0 ? 1 : 0;
    const Size ahead = point[axis] + 1 < grid.points[axis] ? 1 : 0;
    const auto& planes = grid.planes[axis];
    slope[axis] = (grid.values[at + ahead * stride[axis]] - grid.values[at - back * stride[axis]]) /
                  (planes[point[axis] + ahead] - planes[point[axis] - back]);
  }
  return slope;
}

void interpolate(const Grid& grid, double iso, const VertexRecord& record, Vector3& position, Vector3& normal) {
  std::array<Size, 3> from, to;
  std::transform(record.begin(), record.begin() + 3, from.begin(), [](std::int16_t k) { return static_cast<Size>(k); });
  std::transform(record.begin() + 3, record.end(), to.begin(), [](std::int16_t k) { return static_cast<Size>(k); });
  const auto at_from = grid.at(from[0], from[1], from[2]);
  const auto at_to = grid.at(to[0], to[1], to[2]);
  const double t = (iso - grid.values[at_from]) / (grid.values[at_to] - grid.values[at_from]);
  const auto slope_from = gradient(grid, from, at_from);
  const auto slope_to = gradient(grid, to, at_to);
  for (Size axis = 0; axis < 3; ++axis) {
    const auto& planes = grid.planes[axis];
    position[axis] = planes[from[axis]] + t * (planes[to[axis]] - planes[from[axis]]);
    normal[axis] = slope_from[axis] + t * (slope_to[axis] - slope_from[axis]);
  }
}

bool is_grid(const Grid& grid, std::int32_t nx, std::int32_t ny, std::int32_t nz) {
  for (const auto points : {nx, ny, nz}) {
    if (points < 1 || points > most_surface_points) return false;
  }
  for (Size axis = 0; axis < 3; ++axis) {
    if (grid.planes[axis].size() != grid.points[axis]) return false;
  }
  return grid.values.size() == grid.points[0] * grid.points[1] * grid.points[2];
}

std::int32_t extract(const Grid& grid, double iso, SurfaceMesh& mesh) {
  std::vector<std::uint8_t> numbers;
  if (const auto code = attempt(no_tags, [&] { numbers = case_numbers(grid, iso); }); code != 0) return code;

  ComputeList list;
  if (const auto code = attempt(no_list, [&] { list.fill(grid, numbers); }); code != 0) return code;
  Size triangles = 0;
  for (const auto& cube : list.all()) triangles += static_cast<Size>(iso_triangle_count[cube.number]);
  if (triangles == 0) return 0;
  constexpr auto most_triangles = static_cast<Size>(std::numeric_limits<std::int32_t>::max() / 3);
  if (triangles > most_triangles) return told(no_triangles);
  if (const auto code = attempt(no_triangles, [&] { mesh.triangles.resize(triangles); }); code != 0) return code;

  std::vector<VertexRecord> records;
  const auto storage = attempt(no_storage, [&] {
    EdgeVertices edges(grid);
    records.reserve(triangles);
    triangulate(grid, list, edges, mesh.triangles, records);
  });
  if (storage != 0) return storage;

  if (const auto code = attempt(no_vertices, [&] { mesh.vertices.resize(records.size()); }); code != 0) return code;
  if (const auto code = attempt(no_normals, [&] { mesh.normals.resize(records.size()); }); code != 0) return code;
  for_pieces(records.size(), 4096, [&](Size first, Size end) {
    for (Size k = first; k < end; ++k) interpolate(grid, iso, records[k], mesh.vertices[k], mesh.normals[k]);
  });
  return 0;
}

}  // namespace

std::int32_t kva_sur_iso(double iso, std::span<const double> values, std::int32_t nx, std::int32_t ny, std::int32_t nz,
                         std::span<const double> x, std::span<const double> y, std::span<const double> z,
                         SurfaceMesh& mesh) {
  mesh = {};
  const Grid grid{values, {static_cast<Size>(nx), static_cast<Size>(ny), static_cast<Size>(nz)}, {x, y, z}};
  if (!is_grid(grid, nx, ny, nz)) return told(no_tags);
  if (std::min({nx, ny, nz}) < 2) return 0;
  const auto code = extract(grid, iso, mesh);
  if (code != 0) mesh = {};
  return code;
}

}  // namespace pathstat
