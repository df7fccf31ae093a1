#pragma once

#include "desk/model/molecular_model.h"

namespace pathstat::desk {

/// How much longer than the sum of its atoms' covalent radii a bond may be, Å.
/// Source: Meng and Lewis, J. Comput. Chem. 12 (1991) 891, the criterion of crystallographic data bases.
constexpr double bond_tolerance = 0.45;

/// Gives a model the bonds that its coordinates tell, in the place of those that it has: one between any two atoms the
/// nearest images of which are near enough. Linear in atoms of ordinary densities.
void find_bonds(MolecularModel& model);

}  // namespace pathstat::desk
