#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "fuzz_input.h"
#include "volumes/volume_file.h"

namespace {

using namespace pathstat;

/// Every way of reading, with arrays that may be too small.
void read_everywhere(std::int32_t unit, std::size_t room) {
  std::vector<float> values(room), places(3 * room), offsets(3 * room);
  std::int32_t count = 0, status = 0;
  for (const float reach : {1.0F, 1e3F, 3e38F}) {
    FloatVector low{-reach, -reach, -reach}, high{reach, reach, reach};
    kvA_VOL_SizeRegion(unit, low, high, count, 1, status);
    kvA_VOL_GetRegion(unit, low, high, count, values, places, offsets, 1, status);
    float from = -reach, to = reach;
    kvA_VOL_SizeValues(unit, from, to, count, 1, status);
    kvA_VOL_GetValues(unit, from, to, count, values, places, offsets, 0, status);
  }
  const std::array points{0.0F, 0.0F, 0.0F, 1.0F, 2.0F, 3.0F, 1e30F, 0.0F, 0.0F};
  kvA_VOL_GetPoints(unit, points, values, places, offsets, status);
}

}  // namespace

/// Any bytes as a volume file: it opens or is refused, and every read stays inside the arrays of the caller.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::MemoryFile file(data, size);
  std::int32_t unit = 0, type = 0, kind = 0, nx = 0, ny = 0, nz = 0, status = 0;
  float min = 0, max = 0;
  FloatVector origin{}, spacing{};
  kvA_VOL_OpenVolume(file.path(), unit, type, kind, nx, ny, nz, min, max, origin, spacing, status);
  if (status != 0) return 0;
  const auto points = static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny) * static_cast<std::size_t>(nz);
  if (points <= 20'000) read_everywhere(unit, points);
  read_everywhere(unit, 7);
  kvA_VOL_CloseVolume(unit, status);
  return 0;
}
