#include "desk/model/bond_search.h"

#include <algorithm>

#include "desk/model/boxes.h"
#include "structure/elements.h"

namespace pathstat::desk {

void find_bonds(MolecularModel& model) {
  model.bonds.clear();
  model.bond_cells.clear();
  double largest = 0;
  for (const auto element : model.elements) largest = std::max(largest, elements()[element].bond_radius);
  if (largest == 0) return;
  const Lattice lattice(model.periodic_type, model.cell);
  const Boxes boxes(model, lattice, 2 * largest + bond_tolerance, 1, [](std::uint32_t) { return true; });
  const auto radius = [&](std::uint32_t atom) { return elements()[model.elements[atom]].bond_radius; };
  for (std::uint32_t atom = 0; atom < model.atoms(); ++atom) {
    if (radius(atom) == 0) continue;
    const auto look_at = [&](std::uint32_t other) {
      if (other <= atom || radius(other) == 0) return;
      Vector3 d{};
      dvecsub_(model.positions[other], model.positions[atom], d);
      d = lattice.shortest(d);
      const double longest = radius(atom) + radius(other) + bond_tolerance;
      if (dvecdot_(d, d) <= longest * longest) model.bonds.emplace_back(atom, other);
    };
    boxes.any_near(atom, [&](std::uint32_t box) {
      for (auto other = boxes.first_atom(box); other != Boxes::none; other = boxes.next_atom(other)) look_at(other);
      return false;
    });
  }
  std::sort(model.bonds.begin(), model.bonds.end());
}

}  // namespace pathstat::desk
