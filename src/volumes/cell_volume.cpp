#include "volumes/cell_volume.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numbers>
#include <system_error>

#include "state/volume_state.h"
#include "structure/crystal_cell.h"
#include "volumes/volume_bricks.h"
#include "volumes/volume_file.h"
#include "volumes/volume_frame.h"
#include "volumes/volume_grid.h"

namespace pathstat {
namespace {

constexpr double same_within = 1e-4;  ///< of the longest edge

double longest_edge(const Matrix3& cell) {
  double longest = 0;
  for (std::size_t k = 0; k < 3; ++k) {
    longest = std::max(longest, std::hypot(cell[3 * k], cell[3 * k + 1], cell[3 * k + 2]));
  }
  return longest;
}

bool is_same(std::span<const float, 9> frame, const Matrix3& cell) {
  const double slack = same_within * longest_edge(cell);
  return std::ranges::equal(frame, cell, [&](float a, double b) { return std::abs(a - b) <= slack; });
}

bool is_upright(const Matrix3& cell) {
  const Matrix3 upright{cell[0], 0, 0, 0, cell[4], 0, 0, 0, cell[8]};
  std::array<float, 9> numbers;
  std::ranges::transform(cell, numbers.begin(), [](double x) { return static_cast<float>(x); });
  return std::min({cell[0], cell[4], cell[8]}) > 0 && is_same(numbers, upright);
}

/// Puts the cell into the state records from which a volume is made. The frame is the one that stands as the cell does;
/// frame 5, which trajectories use, where none does.
void describe_cell(const Matrix3& cell, bool& turned, std::int32_t& status) {
  const auto column = [&](std::size_t k) { return Vector3{cell[3 * k], cell[3 * k + 1], cell[3 * k + 2]}; };
  std::array<double, 3> length{}, angle{};
  kva_cry_3dcelltoparam_(column(0), column(1), column(2), length[0], length[1], length[2], angle[0], angle[1], angle[2],
                         status);
  if (status != 0) return;
  for (std::size_t k = 0; k < 3; ++k) {
    volinfo_.cell[k] = static_cast<float>(length[k]);
    volinfo_.cell[k + 3] = static_cast<float>(angle[k] * 180 / std::numbers::pi);
  }
  const auto& [a, b, c, alpha, beta, gamma] = volinfo_.cell;
  volorthog_ = {.a = a, .b = b, .c = c, .alpha = alpha, .beta = beta, .gamma = gamma};
  constexpr std::array frames{5, 1, 2, 3, 4, 6};
  const auto found = std::ranges::find_if(frames, [&](std::int32_t frame) {
    std::int32_t unusable = 0;
    volorthog_.frame = frame;
    kva_vol_corfrm_(unusable);
    return unusable == 0 && is_same(volorthog_.to_space, cell);
  });
  turned = found == frames.end();
  volinfo_.frame = turned ? frames.front() : *found;
}

std::uintmax_t expected_size(std::int32_t grid_type) {
  const auto bricks = volume_bricks();
  const auto records = volinfo_.title_count + first_records + std::int64_t{bricks[0]} * bricks[1] * bricks[2];
  return static_cast<std::uintmax_t>(records) * brick_points * static_cast<std::uintmax_t>(grid_type);
}

}  // namespace

void write_cell_volume(std::string_view path, std::int32_t grid_type, const CellField& field,
                       std::span<const std::string> titles, bool& turned, std::int32_t& status) {
  turned = false;
  status = 0;
  volinfo_ = {};
  const auto& [nx, ny, nz] = field.points;
  const bool upright = is_upright(field.cell);
  if (!upright) describe_cell(field.cell, turned, status);
  if (status != 0) return;
  FloatVector spacing{};
  for (std::size_t k = 0; k < 3; ++k) spacing[k] = static_cast<float>(field.cell[4 * k] / field.points[k]);
  const auto [low, high] = std::ranges::minmax(field.values);
  const std::string beside = std::string(path) + ".part";
  std::int32_t unit = 0;
  kva_vol_createvolume_(beside, unit, grid_type, low, high, {0, 0, 0}, nx, ny, nz, upright ? 1 : 0, spacing, titles,
                        plain_volume, status);
  if (status != 0) return;
  kva_vol_writeall_(unit, field.values, {});
  const auto size = expected_size(grid_type);
  kva_vol_closevolume_(unit, status);
  std::error_code failure;
  if (status == 0 && std::filesystem::file_size(beside, failure) == size && !failure) {
    std::filesystem::rename(beside, path, failure);
    if (!failure) return;
  }
  status = volume_status::not_assigned;
  std::filesystem::remove(beside, failure);
}

}  // namespace pathstat
