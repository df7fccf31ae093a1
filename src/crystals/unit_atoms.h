#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "crystals/model_contents.h"
#include "crystals/periodic_frame.h"
#include "support/named_memory.h"

namespace pathstat {

/// The names under which the atoms of crystals or slabs keep where they came from.
struct BuildNames {
  std::string_view origin, origin_id;
};
inline constexpr BuildNames crystal_names{"CRY/ORIG", "CRY/ORIGID"};
inline constexpr BuildNames slab_names{"SFC/ORIG", "SFC/ORIGID"};

/// The symmetry-independent atoms from which a crystal or slab is built, folded into the cell.
class UnitAtoms {
 public:
  /// Reads what the Core knows of the atoms and folds them.
  /// @param status  0; 1 coordinates that are not finite or billions of cells away; that of the Core
  UnitAtoms(const PeriodicFrame& frame, std::span<const std::int32_t> atoms, std::int32_t& status);

  std::size_t size() const { return count_; }
  std::span<std::int32_t> objects() const { return oid_.span().first(count_); }
  std::span<std::int32_t> ids() const { return id_.span().first(count_); }
  std::span<std::int32_t> types() const { return type_.span().first(count_); }
  /// Where the atom stands in the Core.
  Vector3 position(std::size_t atom) const { return vector(xx_.span(), atom); }
  /// Where it stands folded into the cell, and the cells that it was moved by.
  Vector3 fraction(std::size_t atom) const { return vector(fxx_.span(), atom); }
  CellShift offset(std::size_t atom) const;

  /// Moves the atoms of the Core, with their bonds, to where they stand folded.
  void move_into_cell(std::int32_t& status);

  /// Deals with copies of atoms across faces of the cell: one that adds a translation of its atom becomes a periodic
  /// image of it, which keeps where it came from and gives its bonds to its atom; any other is deleted. Only the
  /// atoms that are no copies remain.
  void remove_duplicates(std::int32_t model, const BuildNames& names, std::int32_t report, std::int32_t& status);

 private:
  struct Copies;

  static Vector3 vector(std::span<const double> values, std::size_t atom) {
    return {values[3 * atom], values[3 * atom + 1], values[3 * atom + 2]};
  }
  void fold(std::int32_t& status);
  Copies sort_copies(std::span<const std::int32_t> links) const;
  void pack(std::span<const std::int32_t> links);

  const PeriodicFrame& frame_;
  std::size_t count_ = 0;
  NamedBlock<std::int32_t> oid_, id_, type_, disp_;
  NamedBlock<double> xx_, fxx_, charge_;
};

}  // namespace pathstat
