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
      0;  ///< number of the atom, in the order of the model, that stays in the middle of the cell; or 0
  std::int32_t axis = 0, plane = 0;  ///< numbers of two more atoms: the density is that around all molecules like
                                     ///< theirs, on the axes of each; 0 for the axes of the cell
  double spacing = 0;                ///< the most that points may stand apart along an edge of the cell, Å
};

struct FrameDensity {
  CellField field;  ///< atoms per Å³ on the mean cell, or on a cube around the molecules
  std::int64_t frames = 0;
  std::int64_t atoms = 0;
  std::int64_t molecules = 0;  ///< whose axes the density has; 0 for those of the cell
};

/// Counts the atoms of the frames on a grid over the cell, or over the largest cube around a molecule in which each
/// atom is met once; it is laid out for the cell of the first. An interrupt keeps what was counted.
/// @return 0; a status after a message: without a cell in three directions, with more than 201 points on an axis,
///         without atoms, and for a frame that cannot be read
std::int32_t mean_density(const DensityRequest& request, FrameDensity& density);

}  // namespace pathstat
