#include "structure/cell_bonds.h"

namespace pathstat {

bool points_forward(const CellShift& shift) {
  for (const auto component : shift) {
    if (component != 0) return component > 0;
  }
  return false;
}

CellBond CellBond::normalised() const {
  const bool turn = first > second || (first == second && shift != CellShift{} && !points_forward(shift));
  return turn ? CellBond{second, first, plus({}, shift, -1)} : *this;
}

bool BondSet::add(const CellBond& bond) {
  if (bond.first == bond.second && bond.shift == CellShift{}) return false;
  return bonds_.insert(bond.normalised()).second;
}

std::size_t BondSet::Hash::operator()(const CellBond& bond) const {
  std::uint64_t hash = 0;
  const auto mix = [&](std::int32_t part) {
    hash = (hash ^ static_cast<std::uint32_t>(part)) * 0x9e3779b97f4a7c15u;
    hash ^= hash >> 32;
  };
  mix(bond.first), mix(bond.second);
  for (const auto component : bond.shift) mix(component);
  return hash;
}

}  // namespace pathstat
