#include "desk/model/surface.h"

#include "desk/graphs/surface_picture.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

/// The corner of a cube of edge 1, cut off.
Surface tetrahedron() {
  return {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {}, {{0, 2, 1}, {0, 1, 3}, {0, 3, 2}, {1, 2, 3}}};
}

/// A sphere of radius 2 by longitude and latitude.
Surface sphere(int around, int rings) {
  Surface s;
  s.vertices.push_back({0, 0, -2});
  for (int r = 1; r < rings; ++r) {
    for (int a = 0; a < around; ++a) {
      const double latitude = std::numbers::pi * (double(r) / rings - 0.5), turn = 2 * std::numbers::pi * a / around;
      s.vertices.push_back(
          {2 * std::cos(latitude) * std::cos(turn), 2 * std::cos(latitude) * std::sin(turn), 2 * std::sin(latitude)});
    }
  }
  s.vertices.push_back({0, 0, 2});
  const auto top = static_cast<std::int32_t>(s.vertices.size()) - 1;
  const auto at = [&](int r, int a) { return r == 0 ? 0 : r == rings ? top : 1 + (r - 1) * around + a % around; };
  for (int r = 0; r < rings; ++r) {
    for (int a = 0; a < around; ++a) {
      if (r > 0) s.triangles.push_back({at(r, a), at(r, a + 1), at(r + 1, a)});
      if (r + 1 < rings) s.triangles.push_back({at(r, a + 1), at(r + 1, a + 1), at(r + 1, a)});
    }
  }
  return s;
}

TEST(Surfaces, are_measured_by_their_triangles) {
  const auto measures = measures_of(tetrahedron());
  EXPECT_NEAR(measures.area, 1.5 + std::sqrt(3) / 2, 1e-12);
  EXPECT_NEAR(measures.volume, 1.0 / 6, 1e-12);
  EXPECT_EQ(measures.euler_characteristic, 2);
  EXPECT_TRUE(measures.closed);
  auto open = tetrahedron();
  open.triangles.pop_back();
  EXPECT_FALSE(measures_of(open).closed);
  EXPECT_EQ(measures_of(open).volume, 0);
  EXPECT_EQ(in_words(open), "3 triangles, area 1.5 Å², open where the grid ends, Euler characteristic 1.");
  open.triangles.resize(1);
  EXPECT_THAT(in_words(open), StartsWith("1 triangle, "));
  EXPECT_EQ(measures_of(Surface{}).area, 0);
}

TEST(Surfaces, are_written_for_other_programs) {
  Surface one{{{0, 0, 0}, {1.5, 0, 0}, {0, -2, 0}}, {}, {{0, 1, 2}}};
  EXPECT_EQ(surface_as_ply(one),
            "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
            "element face 1\nproperty list uchar int vertex_indices\nend_header\n0 0 0\n1.5 0 0\n0 -2 0\n3 0 1 2\n");
  EXPECT_EQ(surface_as_obj(one), "v 0 0 0\nv 1.5 0 0\nv 0 -2 0\nf 1 2 3\n");
  one.normals = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
  EXPECT_THAT(surface_as_ply(one),
              AllOf(HasSubstr("property float nz\nelement face 1\n"), HasSubstr("\n1.5 0 0 0 0 1\n")));
  EXPECT_EQ(surface_as_obj(one), "v 0 0 0\nv 1.5 0 0\nv 0 -2 0\nvn 0 0 1\nvn 0 0 1\nvn 0 0 1\nf 1//1 2//2 3//3\n");
}

TEST(Surfaces, keep_their_shape_when_they_are_drawn_coarser) {
  const auto fine = sphere(200, 100);
  const auto coarse = coarsened(fine, 20);
  EXPECT_LT(coarse.triangles.size(), fine.triangles.size() / 5);
  EXPECT_NEAR(measures_of(coarse).area, 16 * std::numbers::pi, 0.15 * 16 * std::numbers::pi);
  EXPECT_TRUE(coarsened({{{1, 1, 1}, {1, 1, 1}, {1, 1, 1}}, {}, {{0, 1, 2}}}, 10).triangles.empty());
}

std::size_t count(std::string_view text, std::string_view part) {
  std::size_t times = 0;
  for (auto at = text.find(part); at != std::string_view::npos; at = text.find(part, at + 1)) ++times;
  return times;
}

TEST(Surfaces, are_drawn_with_a_limited_number_of_triangles_in_a_labelled_box) {
  const auto small = surface_picture(tetrahedron());
  EXPECT_EQ(count(small, "<path fill"), 4U);
  EXPECT_EQ(count(small, "stroke-dasharray"), 3U);
  EXPECT_EQ(count(small, "<path stroke"), 12U);
  EXPECT_EQ(count(small, " 0 to 1 Å<"), 3U);
  const auto large = surface_picture(sphere(400, 100));
  EXPECT_LE(count(large, "<path fill"), most_drawn_triangles);
  EXPECT_GE(count(large, "<path fill"), 500U);
  EXPECT_EQ(surface_picture({}), "");
}

}  // namespace
}  // namespace pathstat::desk
