#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "desk/model/lattice.h"
#include "desk/model/molecular_model.h"
#include "support/vectors.h"

namespace pathstat::desk {

/// Follows atoms out of the cell that a run has wrapped them into.
///
/// The first atom of each molecule moves by the displacement vectors of the toroidal view: from frame to frame by the
/// nearest image of the difference of its wrapped places, in the cell of the later frame. Where a cell changes, this
/// keeps the path that the atom went; adding whole cells of changing size would let the cell's changes pull it along.
/// Every other atom stands at the nearest image to the atom that it is bonded to, so that molecules are whole in every
/// frame.
///
/// Source: S. von Bülow, J. T. Bullerjahn and G. Hummer, J. Chem. Phys. 153, 021101 (2020); for molecules J. T.
/// Bullerjahn, S. von Bülow, M. Heidari, J. Hénin and G. Hummer, J. Chem. Theory Comput. 19, 3406 (2023).
class Unwrapping {
 public:
  /// @param model  atoms and bonds, with the wrapped positions and the cell of the first frame
  /// @param stays  the first atoms of molecules stay where the run has them, so that molecules are whole and no more
  explicit Unwrapping(const MolecularModel& model, bool stays = false);

  /// The next frame; the first one, as every one where molecules stay, leaves the first atom of each molecule in place.
  ///
  /// @param lattice  the frame's cell
  /// @param xyz      in: wrapped places of all atoms as x1, y1, z1, x2, ..., Å; out: where they went
  void follow(const Lattice& lattice, std::span<double> xyz);

  std::size_t molecules() const { return molecules_; }

 private:
  struct Place {
    std::uint32_t atom;
    std::uint32_t parent;  ///< the atom itself for the first of a molecule
  };

  bool stays_;
  std::vector<Place> order_;  ///< each atom behind its parent
  std::size_t molecules_ = 0;
  std::vector<double> wrapped_;  ///< all atoms of the frame as they came
  std::vector<double> before_;   ///< first atoms of molecules as they came in the frame before
  std::vector<double> places_;   ///< and where they went
};

}  // namespace pathstat::desk
