#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "desk/model/molecular_model.h"
#include "structure/cell_bonds.h"

/// Changes of a model that add, drop or reorder atoms. Columns, bonds, images and relations stay in step; what knows
/// atoms by their places (selection, identifiers, monitors) is up to the caller.
namespace pathstat::desk {

/// What a file says of an atom.
struct StatedAtom {
  std::uint8_t element = 0;
  Vector3 position{};
  std::string_view name{};  ///< empty: its symbol and identifier
  std::string_view ff_type{};
  std::string_view residue{};
  std::int32_t residue_id = 0;
  double charge = 0;
  double occupancy = 1;
};

/// Adds an atom to the columns of a model, with what its element tells of it.
void append_atom(MolecularModel& model, std::int32_t id, const StatedAtom& atom);

/// Adds atoms behind the others, with what their elements tell of them. Their identifiers are the next free ones. In a
/// model with images they come to stand in front of those with the next rearrange.
/// @return false if the identifiers of files have run out
bool append_atoms(MolecularModel& model, std::span<const std::uint8_t> elements, std::span<const Vector3> positions);

/// The same with copies of the atoms at these places.
bool append_copies(MolecularModel& model, std::span<const std::uint32_t> places);

/// Gives the atoms another order and drops those that it does not name. Symmetry images stand behind the other atoms
/// whatever the order says; an image whose atom is dropped is an image no more.
///
/// @param order  places, each at most once
/// @return the order that was taken
std::vector<std::uint32_t> rearrange(MolecularModel& model, std::span<const std::uint32_t> order);

/// Of which atom each atom is an image, by which operator; an atom of the file is its own.
std::vector<ImageOrigin> origins_of(const MolecularModel& model);

/// Makes atoms images and sorts images behind the others, operator by operator.
/// @param origins  one for each atom
/// @return the order that was taken
std::vector<std::uint32_t> set_origins(MolecularModel& model, std::vector<ImageOrigin> origins);

/// The cells to which the bonds lead, seen from their first atoms: those they were made with, or else the nearest.
std::vector<Translation> bond_cells(const MolecularModel& model);

/// A bond between places as a set of bonds has it, and the bonds that a model has.
CellBond cell_bond(const std::pair<std::uint32_t, std::uint32_t>& ends, const Translation& cell);
BondSet known_bonds(const MolecularModel& model);

/// Writes down for all bonds to which cell they lead.
void fix_bond_cells(MolecularModel& model);

/// Adds bonds that are not there yet. @param cells  of the second atom of each, seen from the first
void add_bonds(MolecularModel& model, std::span<const std::pair<std::uint32_t, std::uint32_t>> bonds,
               std::span<const Translation> cells);

}  // namespace pathstat::desk
