#include "desk/import/unwrapping.h"

#include <algorithm>

#include "desk/model/connectivity.h"

namespace pathstat::desk {
namespace {

Vector3 at(std::span<const double> xyz, std::size_t atom) {
  return {xyz[3 * atom], xyz[3 * atom + 1], xyz[3 * atom + 2]};
}

void put(std::span<double> xyz, std::size_t atom, const Vector3& place) {
  std::copy_n(place.begin(), 3, &xyz[3 * atom]);
}

}  // namespace

Unwrapping::Unwrapping(const MolecularModel& model, bool stays) : stays_(stays) {
  const auto found = find_molecules(model);
  molecules_ = found.molecules();
  std::vector<std::uint32_t> rank(model.atoms());
  for (std::uint32_t k = 0; k < found.order.size(); ++k) rank[found.order[k]] = k;
  order_.reserve(model.atoms());
  for (const auto atom : found.order) order_.push_back({atom, atom});
  for (auto [one, other] : model.bonds) {
    if (rank[one] > rank[other]) std::swap(one, other);
    auto& parent = order_[rank[other]].parent;
    if (rank[one] < rank[parent]) parent = one;
  }
}

void Unwrapping::follow(const Lattice& lattice, std::span<double> xyz) {
  const bool first = places_.empty() || stays_;
  before_.resize(3 * molecules_), places_.resize(3 * molecules_);
  wrapped_.assign(xyz.begin(), xyz.end());
  std::size_t molecule = 0;
  for (const auto& [atom, parent] : order_) {
    const bool is_first = parent == atom;
    const auto base = is_first ? first ? at(wrapped_, atom) : at(places_, molecule) : at(xyz, parent);
    // Steps are taken between wrapped places: in a cell that changes, where an atom went is no image of where it is.
    const auto from = is_first ? first ? base : at(before_, molecule) : at(wrapped_, parent);
    Vector3 step{};
    dvecsub_(at(wrapped_, atom), from, step);
    dvecadd_(base, lattice.shortest(step), step);
    put(xyz, atom, step);
    if (!is_first) continue;
    put(before_, molecule, at(wrapped_, atom));
    put(places_, molecule, step);
    ++molecule;
  }
}

}  // namespace pathstat::desk
