#include "volumes/isosurface.h"

#include "desk/model/surface.h"
#include "in_process_core.h"
#include "testing.h"
#include "volumes/surface_cases.h"
#include "volumes/surface_from_data.h"

namespace pathstat {
namespace {

using std::numbers::pi;
using Triangle = std::array<std::int32_t, 3>;
using Triangles = std::vector<Triangle>;
using Side = std::pair<std::int32_t, std::int32_t>;

// The table of cases.

Triangles triangles_of(std::size_t number) {
  Triangles triangles;
  for (std::size_t k = 0; iso_cases[number][k] != 0; k += 4) {
    triangles.push_back({iso_cases[number][k], iso_cases[number][k + 1], iso_cases[number][k + 2]});
    EXPECT_EQ(iso_cases[number][k + 3], 0);
  }
  return triangles;
}

TEST(SurfaceCases, hold_these_rows) {
  const std::map<std::size_t, Triangles> rows{
      {0, {}},
      {1, {{1, 9, 4}}},
      {2, {{1, 2, 10}}},
      {3, {{2, 10, 9}, {2, 9, 4}}},
      {7, {{3, 9, 4}, {3, 12, 9}, {12, 10, 9}}},
      {15, {{10, 9, 12}, {12, 9, 11}}},
      {170, {{2, 6, 3}, {6, 7, 3}, {4, 5, 1}, {4, 8, 5}, {2, 1, 4}, {2, 4, 3}, {6, 5, 8}, {6, 8, 7}}},
      {254, {{1, 4, 9}}},
      {255, {}},
  };
  for (const auto& [number, triangles] : rows) EXPECT_EQ(triangles_of(number), triangles) << number;
}

TEST(SurfaceCases, hold_872_triangles_and_join_eleven_cases_with_8_or_10) {
  std::map<std::int32_t, int> cases;
  std::set<std::size_t> joining;
  std::int32_t sum = 0;
  for (std::size_t number = 0; number < cube_cases; ++number) {
    const auto count = iso_triangle_count[number];
    EXPECT_EQ(static_cast<std::size_t>(count), triangles_of(number).size());
    ++cases[count];
    sum += count;
    if (count >= 8) joining.insert(number);
  }
  const std::map<std::int32_t, int> expected{{0, 2}, {1, 16}, {2, 50}, {3, 80}, {4, 73}, {5, 24}, {8, 3}, {10, 8}};
  EXPECT_EQ(cases, expected);
  EXPECT_EQ(sum, 872);
  EXPECT_EQ(joining, (std::set<std::size_t>{91, 94, 122, 150, 167, 170, 173, 181, 195, 218, 229}));
}

/// The sides that belong to an odd number of triangles and lie in the cube's face at `side` of an axis; `inside` counts
/// those that lie in none.
std::set<Side> lines_on_face(std::size_t number, std::size_t axis, int side, int& inside) {
  const auto lies_in = [](std::int32_t edge, std::size_t a, int s) {
    const auto& [from, to] = iso_edges[static_cast<std::size_t>(edge - 1)];
    return from[a] == s && to[a] == s;
  };
  std::map<Side, int> times;
  for (const auto& [a, b, c] : triangles_of(number)) {
    for (const auto& [p, q] : {Side{a, b}, Side{b, c}, Side{c, a}}) {
      if (p != q) ++times[std::minmax(p, q)];
    }
  }
  std::set<Side> lines;
  for (const auto& [line, count] : times) {
    if (count % 2 == 0) continue;
    bool in_a_face = false;
    for (std::size_t a = 0; a < 3; ++a) {
      for (const int s : {0, 1}) in_a_face = in_a_face || (lies_in(line.first, a, s) && lies_in(line.second, a, s));
    }
    if (!in_a_face) ++inside;
    if (lies_in(line.first, axis, side) && lies_in(line.second, axis, side)) lines.insert(line);
  }
  return lines;
}

/// An edge of a face as the edge of the neighbour's face opposite.
std::int32_t moved(std::int32_t edge, std::size_t axis) {
  auto wanted = iso_edges[static_cast<std::size_t>(edge - 1)];
  wanted.from[axis] = wanted.to[axis] = 0;
  for (std::size_t k = 0; k < iso_edges.size(); ++k) {
    if (iso_edges[k].from == wanted.from && iso_edges[k].to == wanted.to) return static_cast<std::int32_t>(k + 1);
  }
  return 0;
}

constexpr std::array<std::array<int, 3>, 8> corners{
    {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}}};

/// The tags of a face as bits in an order that both neighbours share.
int tags_of_face(std::size_t number, std::size_t axis, int side) {
  int tags = 0;
  for (std::size_t k = 0; k < corners.size(); ++k) {
    if (corners[k][axis] != side || (number >> k & 1) == 0) continue;
    tags |= 1 << (corners[k][(axis + 1) % 3] + 2 * corners[k][(axis + 2) % 3]);
  }
  return tags;
}

TEST(SurfaceCases, close_the_surface_across_every_shared_face) {
  for (std::size_t axis = 0; axis < 3; ++axis) {
    std::map<int, std::set<Side>> lines_by_tags;
    int inside = 0;
    for (const int side : {0, 1}) {
      for (std::size_t number = 0; number < cube_cases; ++number) {
        std::set<Side> lines;
        for (const auto& [a, b] : lines_on_face(number, axis, side, inside)) {
          lines.insert(side == 0 ? std::minmax(a, b) : std::minmax(moved(a, axis), moved(b, axis)));
        }
        const auto [known, is_new] = lines_by_tags.emplace(tags_of_face(number, axis, side), lines);
        EXPECT_EQ(known->second, lines) << "case " << number << ", axis " << axis << ", side " << side;
      }
    }
    EXPECT_EQ(inside, 0);
    EXPECT_EQ(lines_by_tags.size(), 16u);
  }
}

// Surfaces.

struct Field {
  std::array<std::int32_t, 3> points;
  std::vector<double> values;

  Field(std::array<std::int32_t, 3> n, const std::function<double(double, double, double)>& f) : points(n) {
    for (int i = 0; i < n[0]; ++i) {
      for (int j = 0; j < n[1]; ++j) {
        for (int k = 0; k < n[2]; ++k) values.push_back(f(i, j, k));
      }
    }
  }
};

std::vector<double> planes(std::int32_t n, double from = 0, double step = 1) {
  std::vector<double> all(static_cast<std::size_t>(n));
  for (std::size_t k = 0; k < all.size(); ++k) all[k] = from + step * static_cast<double>(k);
  return all;
}

SurfaceMesh extracted(const Field& field, double iso, double from = 0, double step = 1) {
  SurfaceMesh mesh;
  const auto& [nx, ny, nz] = field.points;
  EXPECT_EQ(kva_sur_iso(iso, field.values, nx, ny, nz, planes(nx, from, step), planes(ny, from, step),
                        planes(nz, from, step), mesh),
            0);
  return mesh;
}

desk::SurfaceMeasures measured(const SurfaceMesh& mesh) {
  desk::Surface surface{mesh.vertices, {}, mesh.triangles};
  std::erase_if(surface.triangles, [](const Triangle& t) { return t[0] == t[1] || t[1] == t[2] || t[2] == t[0]; });
  return desk::measures_of(surface);
}

TEST(Isosurface, cuts_one_corner_off_with_one_triangle) {
  const auto mesh = extracted(Field({2, 2, 2}, [](double x, double y, double z) { return x + y + z == 0 ? 4 : 0; }), 1);
  EXPECT_THAT(mesh.triangles, ElementsAre(Triangle{0, 1, 2}));
  EXPECT_THAT(mesh.vertices, ElementsAre(Vector3{0.75, 0, 0}, Vector3{0, 0, 0.75}, Vector3{0, 0.75, 0}));
  EXPECT_THAT(mesh.normals, ElementsAre(Vector3{-4, -1, -1}, Vector3{-1, -1, -4}, Vector3{-1, -4, -1}));
}

TEST(Isosurface, takes_a_value_equal_to_its_own_as_inside) {
  const auto field = Field({2, 2, 2}, [](double x, double, double) { return x; });
  EXPECT_EQ(extracted(field, 1).triangles.size(), 2u);
  EXPECT_TRUE(extracted(field, 0).triangles.empty());
  EXPECT_TRUE(extracted(field, 1.5).triangles.empty());
}

TEST(Isosurface, is_a_sphere_for_the_distance_from_a_point) {
  const double radius = 1.2, step = 0.05;
  const auto distance = [&](double i, double j, double k) {
    return -std::hypot(-1.5 + step * i, -1.5 + step * j, -1.5 + step * k);
  };
  const auto mesh = extracted(Field({61, 61, 61}, distance), -radius, -1.5, step);
  const auto measures = measured(mesh);
  EXPECT_TRUE(measures.closed);
  EXPECT_EQ(measures.euler_characteristic, 2);
  EXPECT_NEAR(measures.area, 4 * pi * radius * radius, 0.002 * 4 * pi * radius * radius);
  EXPECT_NEAR(measures.volume, 4 * pi / 3 * std::pow(radius, 3), 0.002 * 4 * pi / 3 * std::pow(radius, 3));
  for (std::size_t k = 0; k < mesh.vertices.size(); ++k) {
    const auto& [x, y, z] = mesh.vertices[k];
    EXPECT_NEAR(std::hypot(x, y, z), radius, 0.001);
    const auto& [u, v, w] = mesh.normals[k];
    EXPECT_NEAR((u * x + v * y + w * z) / radius / std::hypot(u, v, w), -1, 0.001);
  }
}

TEST(Isosurface, is_a_torus_for_the_distance_from_a_circle) {
  const double ring = 1.0, tube = 0.4, step = 0.04;
  const auto distance = [&](double i, double j, double k) {
    const double x = -1.6 + step * i, y = -1.6 + step * j, z = -1.6 + step * k;
    return tube - std::hypot(std::hypot(x, y) - ring, z);
  };
  const auto measures = measured(extracted(Field({81, 81, 81}, distance), 0, -1.6, step));
  EXPECT_TRUE(measures.closed);
  EXPECT_EQ(measures.euler_characteristic, 0);
  EXPECT_NEAR(measures.area, 4 * pi * pi * ring * tube, 0.005 * 4 * pi * pi * ring * tube);
  EXPECT_NEAR(measures.volume, 2 * pi * pi * ring * tube * tube, 0.01 * 2 * pi * pi * ring * tube * tube);
}

/// With nothing set on the border, random fields make every case and a surface without one.
TEST(Isosurface, is_closed_for_random_fields_of_all_cases_with_one_vertex_for_each_crossed_edge) {
  const auto seed = std::random_device{}();
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  std::set<std::size_t> seen;
  const std::array<std::int32_t, 3> n{15, 16, 17};
  for (int round = 0; round < 10; ++round) {
    const Field field(n, [&](double i, double j, double k) {
      const bool border = i == 0 || j == 0 || k == 0 || i == n[0] - 1 || j == n[1] - 1 || k == n[2] - 1;
      const double value = std::uniform_real_distribution(0.0, 1.0)(random);
      return border ? value / 2 - 0.6 : value;
    });
    const auto at = [&](int i, int j, int k) {
      return field.values[static_cast<std::size_t>((i * n[1] + j) * n[2] + k)];
    };
    const auto mesh = extracted(field, 0.5);
    EXPECT_TRUE(measured(mesh).closed);
    std::size_t crossed = 0, triangles = 0;
    for (int i = 0; i < n[0]; ++i) {
      for (int j = 0; j < n[1]; ++j) {
        for (int k = 0; k < n[2]; ++k) {
          const bool here = at(i, j, k) >= 0.5;
          crossed += i + 1 < n[0] && here != (at(i + 1, j, k) >= 0.5);
          crossed += j + 1 < n[1] && here != (at(i, j + 1, k) >= 0.5);
          crossed += k + 1 < n[2] && here != (at(i, j, k + 1) >= 0.5);
          if (i + 1 == n[0] || j + 1 == n[1] || k + 1 == n[2]) continue;
          std::size_t number = 0;
          for (std::size_t c = 0; c < corners.size(); ++c) {
            number |= std::size_t{at(i + corners[c][0], j + corners[c][1], k + corners[c][2]) >= 0.5} << c;
          }
          seen.insert(number);
          triangles += static_cast<std::size_t>(iso_triangle_count[number]);
        }
      }
    }
    EXPECT_EQ(mesh.vertices.size(), crossed);
    EXPECT_EQ(std::set(mesh.vertices.begin(), mesh.vertices.end()).size(), crossed);
    EXPECT_EQ(mesh.triangles.size(), triangles);
  }
  EXPECT_EQ(seen.size(), cube_cases);
}

TEST(Isosurface, refuses_grids_that_are_not_what_they_say) {
  SurfaceMesh mesh;
  const std::vector<double> values(8, 1.0);
  const auto two = planes(2);
  testing::internal::CaptureStdout();
  EXPECT_EQ(kva_sur_iso(1, values, 2, 2, 3, two, two, planes(3), mesh), 2);
  EXPECT_EQ(kva_sur_iso(1, values, 2, 2, 2, two, planes(3), two, mesh), 2);
  EXPECT_EQ(kva_sur_iso(1, values, -2, -2, 2, two, two, two, mesh), 2);
  EXPECT_EQ(kva_sur_iso(1, values, 32768, 2, 2, planes(32768), two, two, mesh), 2);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "couldn't initialize tags\ncouldn't initialize tags\n"
            "couldn't initialize tags\ncouldn't initialize tags\n");
  EXPECT_EQ(kva_sur_iso(1, values, 8, 1, 1, planes(8), planes(1), planes(1), mesh), 0);
  EXPECT_TRUE(mesh.triangles.empty());
}

// Surfaces handed to the Core.

class SurfaceFromData : public testing::Test {
 protected:
  /// One corner set, on a sheared cell.
  std::int32_t make(std::int32_t flags, double iso = 1) {
    std::int32_t surface = -7;
    kvA_SUR_CreateSurfaceFromData(iso, values, {10, 20, 30}, {3, 0, 0}, {1, 4, 0}, {0, 0, 5}, 2, 2, 2, flags, surface,
                                  status);
    return surface;
  }

  InProcessCore core;
  std::vector<double> values{4, 0, 0, 0, 0, 0, 0, 0};
  std::int32_t status = -7;
};

TEST_F(SurfaceFromData, stands_in_the_cell) {
  const auto* surface = core.model.surface(make(surface_normals::none));
  EXPECT_EQ(status, 0);
  ASSERT_NE(surface, nullptr);
  EXPECT_THAT(surface->vertices, ElementsAre(Vector3{12.25, 20, 30}, Vector3{10, 20, 33.75}, Vector3{10.75, 23, 30}));
  EXPECT_THAT(surface->triangles, ElementsAre(Triangle{0, 1, 2}));
  EXPECT_TRUE(surface->normals.empty());
}

TEST_F(SurfaceFromData, has_unit_normals_that_the_second_bit_turns_round) {
  const auto first = make(surface_normals::along_gradient), second = make(surface_normals::flipped);
  EXPECT_NE(first, second);
  const auto along = core.model.surface(first)->normals, against = core.model.surface(second)->normals;
  ASSERT_EQ(along.size(), 3u);
  const double length = std::sqrt(13.0 * 13 + 4 * 4 + 5 * 5);
  EXPECT_NEAR(along[0][0], -13 / length, 1e-12);
  EXPECT_NEAR(along[0][1], -4 / length, 1e-12);
  EXPECT_NEAR(along[0][2], -5 / length, 1e-12);
  for (std::size_t k = 0; k < 3; ++k) {
    for (std::size_t axis = 0; axis < 3; ++axis) EXPECT_EQ(along[k][axis], -against[k][axis]);
  }
}

TEST_F(SurfaceFromData, needs_a_value_for_each_point) {
  values.pop_back();
  EXPECT_EQ(make(0), 0);
  EXPECT_EQ(status, 50101);
  EXPECT_EQ(core.messages.size(), 1u);
  EXPECT_TRUE(core.model.surfaces().empty());
}

TEST_F(SurfaceFromData, is_not_made_where_the_field_stays_on_one_side) {
  EXPECT_EQ(make(0, 5), 0);
  EXPECT_EQ(status, -50101);
  EXPECT_TRUE(core.model.surfaces().empty());
}

}  // namespace
}  // namespace pathstat
