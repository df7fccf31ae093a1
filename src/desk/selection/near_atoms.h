#pragma once

#include "desk/selection/selection.h"

namespace pathstat::desk {

/// The atoms whose distance to any of some atoms, or to an image of it, is not above a limit; those atoms are among
/// them. n log n in atoms, whatever the limit.
/// @param distance  the limit, Å; not negative
AtomFlags atoms_near(const MolecularModel& model, const AtomFlags& from, double distance);

}  // namespace pathstat::desk
