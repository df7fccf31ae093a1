#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

#include "desk/model/molecular_model.h"

namespace pathstat::desk {

/// The lattice of translations under which a bonded network repeats, as a basis of independent vectors.
class NetworkBasis {
 public:
  /// Adds a translation and all that follow from it.
  void add(Translation t);
  /// The number of independent translations, 0 to 3.
  int periodicity() const;
  /// The basis vectors as multiples of a, b, c; those behind the periodicity are 0.
  std::array<Translation, 3> vectors() const;

 private:
  std::array<Translation, 3> rows_{};  ///< echelon form: row k is 0 or begins in column k
};

/// The molecules of a model: sets of atoms that bonds connect. A bond leads to the nearest image of its second atom,
/// so that a molecule whose atoms lie on several sides of the cell is known as one whole.
struct Connectivity {
  std::vector<std::uint32_t> order;     ///< atoms, molecule by molecule, each molecule from its first atom along bonds
  std::vector<std::uint32_t> starts;    ///< place in `order` of each molecule's first atom, and the end
  std::vector<std::uint32_t> molecule;  ///< of each atom, from 0 in the order of first atoms
  std::vector<Translation> image;       ///< of each atom: the translation that takes it into its whole molecule, whose
                                        ///< first atom stays in place
  std::unordered_map<std::uint32_t, NetworkBasis> networks;  ///< of those molecules that are periodic themselves

  std::size_t molecules() const { return starts.size() - 1; }
  std::span<const std::uint32_t> atoms_of(std::uint32_t number) const {
    return std::span(order).subspan(starts[number], starts[number + 1] - starts[number]);
  }
};

/// Finds the molecules; linear in atoms and bonds.
Connectivity find_molecules(const MolecularModel& model);

}  // namespace pathstat::desk
