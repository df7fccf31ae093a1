#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "crystals/model_contents.h"
#include "crystals/periodic_frame.h"
#include "structure/symmetry_codes.h"

namespace pathstat {

/// The operators of a space group as the routines of symmetry_codes.h take them.
struct GroupTable {
  std::vector<double> rotations, translations;
  std::vector<std::int32_t> codes, index;

  std::size_t size() const { return codes.size(); }
  /// x' = R x + t of an operator, counted from 0.
  Vector3 applied(std::size_t op, const Vector3& f) const;
  /// R s
  CellShift turned(std::size_t op, const CellShift& shift) const;
};

/// @param status  that of sym_constructgrouptable_
GroupTable group_table(std::int32_t group, std::int32_t& status);

/// All atoms of a periodic model with their bonds, symmetry images included: bonds that symmetry asks for, bonds that
/// distances tell, and the cells in which the atoms are shown.
///
/// Bonds that are made or copied have at least one end among the atoms that are new.
class PeriodicNetwork {
 public:
  /// @param new_atoms  objects that were built just now
  /// @param status     0; 1 coordinates that can't be folded; those of atoms_of and bonds_of_model
  PeriodicNetwork(std::int32_t model, const PeriodicFrame& frame, std::span<const std::int32_t> new_atoms,
                  std::int32_t& status);

  /// Gives the symmetry images of bonded atoms the images of the bonds.
  void copy_bonds(const GroupTable& group, std::int32_t& status);

  /// Bonds atoms whose distance is at most the sum of their bonding radii.
  /// @param bonding      a value of build_option
  /// @param failure_key  the message of a failed search
  /// @param status       0; 1 a search that failed or found too many atoms; that of the Core
  void find_bonds(std::int32_t bonding, std::string_view failure_key, std::int32_t& status);

  /// Tells the Core in which cell each atom is shown and on which faces it lies.
  void display(std::int32_t display, std::int32_t faces, std::int32_t& status);

 private:
  struct Relations;
  struct Molecules;

  bool is_new(const CellBond& bond) const {
    return new_[static_cast<std::size_t>(bond.first)] != 0 || new_[static_cast<std::size_t>(bond.second)] != 0;
  }
  void read_bonds(std::int32_t model, std::int32_t& status);
  void make(std::vector<CellBond> bonds, std::int32_t& status);
  void search_around(std::size_t atom, const CellShift& shift, std::int32_t bonding, std::vector<CellBond>& found,
                     std::int32_t& status);
  Molecules molecules(bool across_cells) const;

  const PeriodicFrame& frame_;
  std::vector<std::int32_t> objects_;
  std::vector<std::uint8_t> new_;
  std::vector<double> positions_;  ///< where the atoms stand folded, Cartesian
  std::vector<Vector3> stored_;    ///< fractions where the Core has them
  std::vector<Folded> folded_;
  std::vector<double> radii_;
  double largest_radius_ = 0;
  std::vector<std::int32_t> chains_;  ///< of the contact finder
  std::vector<CellBond> bonds_;       ///< between places
  BondSet known_;
};

}  // namespace pathstat
