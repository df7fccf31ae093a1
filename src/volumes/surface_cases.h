#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// How a surface crosses a cube of a grid. A corner is set if its value is not below the surface's; bit k of the case
/// number stands for corner k of (0,0,0) (1,0,0) (1,1,0) (0,1,0) and the same again at z = 1.
namespace pathstat {

constexpr std::size_t cube_cases = 256;
constexpr std::size_t longest_case_row = 41;

/// The cube's edges, by the offsets of their ends. Edge e, counted from 1, stands at e - 1.
struct CubeEdge {
  std::array<std::int8_t, 3> from;
  std::array<std::int8_t, 3> to;
};
inline constexpr std::array<CubeEdge, 12> iso_edges{{
    {{0, 0, 0}, {1, 0, 0}},
    {{1, 0, 0}, {1, 1, 0}},
    {{0, 1, 0}, {1, 1, 0}},
    {{0, 0, 0}, {0, 1, 0}},
    {{0, 0, 1}, {1, 0, 1}},
    {{1, 0, 1}, {1, 1, 1}},
    {{0, 1, 1}, {1, 1, 1}},
    {{0, 0, 1}, {0, 1, 1}},
    {{0, 0, 0}, {0, 0, 1}},
    {{1, 0, 0}, {1, 0, 1}},
    {{0, 1, 0}, {0, 1, 1}},
    {{1, 1, 0}, {1, 1, 1}},
}};

/// The triangles of each case: three edge numbers and a 0 each, and a 0 in the first place behind the last.
///
/// On a face whose corners are set crosswise the surface cuts off the set ones, whichever cube looks at it, so that it
/// is closed across every shared face: each side of a triangle belongs to an even number of triangles. Eleven cases
/// join the two pieces through the cube, with lids that lie in the crosswise faces; in eight of them the last triangle
/// is collapsed to a point. Triangles are wound towards the set side, but for the lids of case 170.
extern const std::array<std::array<std::int32_t, longest_case_row>, cube_cases> iso_cases;
extern const std::array<std::int32_t, cube_cases> iso_triangle_count;

}  // namespace pathstat
