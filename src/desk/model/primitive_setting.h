#pragma once

#include <cstdint>
#include <vector>

#include "desk/model/symmetry.h"

namespace pathstat::desk {

/// A centred lattice that operators describe on the axes of a primitive cell of it.
struct PrimitiveSetting {
  std::int32_t lattice_type = 0;   ///< of the primitive setting, a code of the crystal library
  SymmetryOperators conventional;  ///< the operators on the axes of the centred cell, centring vector by vector
};

/// All centred settings whose primitive setting has these operators on its axes, unlike ones such as monoclinic cells
/// centred on different faces among them; none for operators that have a centring themselves.
std::vector<PrimitiveSetting> primitive_settings(const SymmetryOperators& operators);

}  // namespace pathstat::desk
