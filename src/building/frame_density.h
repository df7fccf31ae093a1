#pragma once

#include <cstdint>
#include <string_view>

#include "volumes/cell_volume.h"

namespace pathstat {

/// What a density is made of.
struct DensityRequest {
  std::string_view trajectory;  ///< file, of the model
  std::int32_t model = 0;
  std::int32_t first = 1, last = 0, step = 1;  ///< frames
  bool selected = false;                       ///< of the atoms selected in the Core, not of all
  std::int32_t centre =
      0;               ///< number of the atom, in the order of the model, that stays in the middle of the cell; or 0
  double spacing = 0;  ///< the most that points may stand apart along an edge of the cell, Å
};

struct FrameDensity {
  CellField field;  ///< atoms per Å³ on the mean cell
  std::int64_t frames = 0;
  std::int64_t atoms = 0;
};

/// Counts the atoms of the frames on a grid over the cell, which is laid out for the cell of the first. An interrupt
/// keeps what was counted.
/// @return 0; a status after a message: without a cell in three directions, with more than 201 points on an axis,
///         without atoms, and for a frame that cannot be read
std::int32_t mean_density(const DensityRequest& request, FrameDensity& density);

}  // namespace pathstat
