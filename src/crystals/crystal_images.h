#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "crystals/periodic_network.h"
#include "crystals/unit_atoms.h"

namespace pathstat {

/// The images of the atoms of an asymmetric unit under the operators of a group: which of them are atoms of the
/// crystal, where they stand, and which of them are atoms that the model has already.
///
/// Each place is an atom of the unit under an operator, counted operator by operator; a place's image may fall
/// together with another and is dropped in its favour.
class CrystalImages {
 public:
  /// Makes the images. @param status  0; 1 no memory; images that can't be folded
  CrystalImages(const PeriodicFrame& frame, const UnitAtoms& unit, const GroupTable& group, std::int32_t& status);

  /// Finds conflicts between images and atoms on special positions: of images that fall together one is left, at
  /// their mean position, and an atom of the unit that is the image of another takes that image's place.
  void settle(std::int32_t report, std::int32_t& status);

  /// Makes the images in the Core, operator by operator, and tells it positions and symmetry.
  /// @param new_atoms  filled with all atoms of the places, made or there already
  void create(std::vector<std::int32_t>& new_atoms, std::int32_t& status);

 private:
  std::size_t atom_of(std::size_t place) const { return place % atoms_; }
  std::size_t operator_of(std::size_t place) const { return place / atoms_; }
  Vector3 fraction(std::size_t place) const {
    const auto at = fxx_.span().subspan(3 * place);
    return {at[0], at[1], at[2]};
  }
  Vector3 position(std::size_t place) const {
    const auto at = xx_.span().subspan(3 * place);
    return {at[0], at[1], at[2]};
  }
  void set_position(std::size_t place, const Vector3& x);
  void find_over_specified(std::int32_t report, std::int32_t& status);
  void drop_coincident(std::size_t atom);
  void take_place_of_partner(std::size_t atom);
  std::size_t survivor_of(std::size_t place) const;

  const PeriodicFrame& frame_;
  const UnitAtoms& unit_;
  const GroupTable& group_;
  std::size_t atoms_, places_;
  NamedBlock<double> xx_, fxx_;         ///< where the Core will have the images, and folded fractions of that
  NamedBlock<std::int32_t> link_;       ///< above 0 for a place that is an atom of the crystal
  NamedBlock<std::int32_t> symparent_;  ///< of a place: its atom, from 1; of a dropped atom: the place of its partner
  NamedBlock<std::int32_t> spparent_;   ///< of a dropped image: the place, from 1, that stands for it
  NamedBlock<std::int32_t> holder_;     ///< object of the Core at a place, 0 for one that has to be made
  std::vector<std::int32_t> deleted_;   ///< objects whose place another one took
  std::vector<std::size_t> moved_;      ///< places whose object has to move in the Core
};

}  // namespace pathstat
