#pragma once

#include <cstdint>
#include <string>

#include "desk/model/molecular_model.h"

namespace pathstat::desk {

/// A group of symmetry operators with what the operations tell of it. Lattice and centring types are the codes of the
/// crystal library: 0 triclinic, 1 to 3 monoclinic with the unique axis a to c, 4 orthorhombic, 5 trigonal on hexagonal
/// axes, 6 on rhombohedral ones, 7 tetragonal, 8 hexagonal, 9 cubic; 0 primitive, 1 body, 2 face, 3 to 5 A to C, 6
/// rhombohedral.
struct SpaceGroup {
  std::string name;
  std::int32_t number = 0;  ///< in the International Tables; 0 where a model states the operators alone
  std::int32_t option = 1;
  std::int32_t lattice_type = 0;
  std::int32_t centring_type = 0;
  SymmetryOperators operators;
};

/// The group of a model's operators. Lattice and centring are read off the operators; on axes that no table has, which
/// do not lie as a lattice type says, the lattice is triclinic, which says nothing of the cell.
SpaceGroup group_of_operators(std::string name, const SymmetryOperators& operators);

/// The identity's rotation.
constexpr Matrix3 identity_rotation{1, 0, 0, 0, 1, 0, 0, 0, 1};

/// Puts the symmetry images of the file's atoms behind them, operator by operator, with copies of their bonds. An image
/// that lies within 0.05 Å of its atom or of another image of it, in any cell, is left out. Images are numbered on
/// from the largest identifier of the file.
///
/// @return false if the atoms would be too many or run out of identifiers; the model then is of no use
bool expand_symmetry(MolecularModel& model);

}  // namespace pathstat::desk
