#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <unordered_set>

namespace pathstat {

/// A move by whole cell vectors along the periodic directions of a crystal (A, B, C) or a slab (U, V, none).
using CellShift = std::array<std::int32_t, 3>;

/// a + factor b
constexpr CellShift plus(const CellShift& a, const CellShift& b, std::int32_t factor = 1) {
  return {a[0] + factor * b[0], a[1] + factor * b[1], a[2] + factor * b[2]};
}

/// True if the first component that is not 0 is positive.
bool points_forward(const CellShift& shift);

/// A bond of an atom to another, or to an image of it in another cell. Atoms are known by identifiers or places.
struct CellBond {
  std::int32_t first = 0, second = 0;
  CellShift shift{};  ///< the cell of the second atom, seen from the first

  /// The same bond written in one way: the lower atom first, or of an atom's bond to itself the shift that points
  /// forward.
  CellBond normalised() const;
  bool operator==(const CellBond&) const = default;
};

/// Bonds, each kept once whichever way it is written.
class BondSet {
 public:
  /// @return false if the bond was there already, or joins an atom to itself
  bool add(const CellBond& bond);
  bool contains(const CellBond& bond) const { return bonds_.contains(bond.normalised()); }
  void reserve(std::size_t count) { bonds_.reserve(count); }

 private:
  struct Hash {
    std::size_t operator()(const CellBond& bond) const;
  };
  std::unordered_set<CellBond, Hash> bonds_;
};

}  // namespace pathstat
