#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "support/vectors.h"

namespace pathstat {

/// A field on a grid over a periodic cell: point (i, j, k), counted from 0, stands at i / nx, j / ny, k / nz of the
/// cell's vectors.
struct CellField {
  std::array<std::int32_t, 3> points{};
  Matrix3 cell{};             ///< vectors as columns, Å
  std::vector<float> values;  ///< x fastest, then y, then z
};

/// Writes a field as a volume file, beside its place first, so that what stands there stays until it is whole.
///
/// @param turned  out: no frame of a volume file stands as the cell does, so that its volume is turned in space
/// @param status  0; a value of volume_status, not_assigned also where the disk is full. No volume is open then
void write_cell_volume(std::string_view path, std::int32_t grid_type, const CellField& field,
                       std::span<const std::string> titles, bool& turned, std::int32_t& status);

}  // namespace pathstat
