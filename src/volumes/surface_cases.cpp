#include "volumes/surface_cases.h"

#include <algorithm>

namespace pathstat {
namespace {

using Rows = std::array<std::array<std::int32_t, longest_case_row>, cube_cases>;

constexpr Rows rows{{
#include "volumes/surface_cases.inc"
}};

constexpr std::array<std::int32_t, cube_cases> counted() {
  std::array<std::int32_t, cube_cases> counts{};
  for (std::size_t k = 0; k < cube_cases; ++k) {
    while (rows[k][std::size_t{4} * static_cast<std::size_t>(counts[k])] != 0) ++counts[k];
  }
  return counts;
}

static_assert(std::ranges::all_of(rows, [](const auto& row) {
  return std::ranges::all_of(row, [](std::int32_t edge) { return edge >= 0 && edge <= 12; });
}));

}  // namespace

constexpr Rows iso_cases = rows;
constexpr std::array<std::int32_t, cube_cases> iso_triangle_count = counted();

}  // namespace pathstat
