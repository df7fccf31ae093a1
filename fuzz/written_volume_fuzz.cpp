// A volume of any values, written and read again: each comes back to half a step of what is stored.
#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "fuzz_input.h"
#include "volumes/volume_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace pathstat;
  fuzz::Numbers numbers(std::span(data, size));
  constexpr std::array<std::int32_t, 3> types{1, 2, 4};
  const auto type = types.at(numbers.byte() % types.size());
  const auto kind = numbers.byte() % 4 == 0 ? offset_volume : plain_volume;
  std::array<std::int32_t, 3> n{};
  for (auto& points : n) points = 2 + numbers.byte() % (numbers.byte() % 16 == 0 ? 14 : 4);
  const float min = static_cast<float>(100 * numbers.fraction());
  const float max = min + 1 + static_cast<float>(numbers.byte());
  FloatVector origin{}, spacing{};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    origin[axis] = static_cast<float>(20 * numbers.fraction());
    spacing[axis] = 0.1F + static_cast<float>(numbers.byte()) / 100;
  }
  const auto points = static_cast<std::size_t>(n[0] * n[1] * n[2]);
  std::vector<float> values(points), offsets(kind == offset_volume ? 3 * points : 0);
  for (auto& value : values) value = min + (max - min) * static_cast<float>(1.2 * numbers.fraction());
  for (auto& offset : offsets) offset = spacing[0] * static_cast<float>(numbers.fraction());

  const fuzz::MemoryFile file(nullptr, 0);
  std::int32_t unit = 0, status = 0;
  kvA_VOL_CreateVolume(file.path(), unit, type, min, max, origin, n[0], n[1], n[2], 1, spacing, {}, kind, status);
  if (status != 0) __builtin_trap();
  kvA_VOL_WriteAll(unit, values, offsets);
  kvA_VOL_CloseVolume(unit, status);
  if (status != 0) __builtin_trap();

  std::int32_t found_type = 0, found_kind = 0, count = 0;
  std::array<std::int32_t, 3> found_n{};
  float found_min = 0, found_max = 0;
  FloatVector found_origin{}, found_spacing{};
  kvA_VOL_OpenVolume(file.path(), unit, found_type, found_kind, found_n[0], found_n[1], found_n[2], found_min,
                     found_max, found_origin, found_spacing, status);
  if (status != 0 || found_type != type || found_kind != kind || found_n != n || found_min != min || found_max != max) {
    __builtin_trap();
  }
  constexpr float reach = 1e4F;
  FloatVector low{-reach, -reach, -reach}, high{reach, reach, reach};
  std::vector<float> found(points), places(3 * points), found_offsets(3 * points);
  kvA_VOL_GetRegion(unit, low, high, count, found, places, found_offsets, 1, status);
  if (status != 0 || static_cast<std::size_t>(count) != points) __builtin_trap();
  const float steps = type == 1 ? 127 : 16383;
  const float half_step = type == 4 ? 0 : (0.5F / steps + 1e-5F) * (max - min) + 1e-5F * std::abs(min);
  for (std::size_t k = 0; k < points; ++k) {
    if (std::abs(found[k] - std::clamp(values[k], min, max)) > half_step) __builtin_trap();
  }
  kvA_VOL_CloseVolume(unit, status);
  return 0;
}
