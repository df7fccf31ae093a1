#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "desk/model/lattice.h"
#include "desk/model/word_column.h"
#include "support/vectors.h"

namespace pathstat::desk {

/// Kinds of a monitor, by their codes.
enum MonitorType : std::int32_t {
  torsion_monitor = 50,
  plane_monitor = 54,
  inversion_monitor = 59,
  distance_monitor = 60,
  angle_monitor = 61,
};

/// A measurement that the user has set up between atoms.
struct Monitor {
  std::int32_t type = distance_monitor;
  std::int32_t convention = 0;       ///< of an inversion: 1, 2 or 4
  std::vector<std::uint32_t> atoms;  ///< 2 of a distance, 3 of an angle, 4 of a torsion or inversion, 3 of each plane
  std::vector<Translation> images;   ///< the cell in which each atom stands; empty if all are where the model has them

  Translation image(std::size_t k) const { return images.empty() ? Translation{} : images[k]; }
};

/// The number of atoms of a monitor of a type, or 0 for a type that there is not.
std::size_t monitor_atoms(std::int32_t type);

/// The present value of a monitor in Å or degrees; an undefined inversion is 0.
///
/// @param positions  one vector for each of the monitor's atoms
double monitor_value(const Monitor& monitor, std::span<const Vector3> positions);

/// Where a symmetry image comes from.
struct ImageOrigin {
  std::uint32_t parent = 0;  ///< place of its atom
  std::int32_t op = 1;       ///< number of the operator, from 1, the identity
  Translation shift{};       ///< the cells that it stands away from where the operator takes its atom
};

struct MolecularModel;
/// Where the atoms of a monitor of a model stand now.
std::vector<Vector3> monitor_positions(const MolecularModel& model, const Monitor& monitor);

/// Fractional symmetry operators x' = R x + t, one rotation and one translation each.
struct SymmetryOperators {
  std::vector<Matrix3> rotations;
  std::vector<Vector3> translations;

  std::size_t size() const { return rotations.size(); }
  bool operator==(const SymmetryOperators&) const = default;
};

/// A model as its file states it, by columns over its atoms: all that is known of it but its place in the data model.
/// Behind the atoms of the file stand their symmetry images, once expand_symmetry has made them.
struct MolecularModel {
  std::string name;
  std::int32_t periodic_type = not_periodic;
  Cell cell{};
  SymmetryOperators symmetry;  ///< empty, or the identity first; of a model that isn't periodic: the group and cell
                               ///< that a crystal of its atoms would have

  std::vector<std::int32_t> ids;       ///< numbers that trajectory files use
  std::vector<std::uint8_t> elements;  ///< by the number of elements.h
  WordColumn names;
  WordColumn ff_types;
  WordColumn residues;
  std::vector<std::int32_t> residue_ids;
  std::vector<double> charges;  ///< elementary charges
  std::vector<double> masses;   ///< atomic mass units
  std::vector<double> occupancies;
  std::vector<Vector3> positions;  ///< Å
  std::vector<std::uint8_t> movable;
  std::map<std::string, std::vector<Vector3>, std::less<>> vectors;  ///< "Velocity" (Å/ps), "Force" and others

  std::vector<Translation> cell_offsets;  ///< cells in which the atoms are shown; empty if as their molecules are whole
  std::vector<Translation> face_flags;    ///< 1 for the directions on whose lower face an atom lies; empty if unknown

  std::vector<std::pair<std::uint32_t, std::uint32_t>> bonds;  ///< places of atoms
  std::vector<Translation> bond_cells;  ///< of each bond: the cell of its second atom; empty if that is the nearest one
  std::vector<Monitor> monitors;

  std::size_t file_atoms = 0;  ///< atoms that are no symmetry images
  std::size_t file_bonds = 0;
  std::vector<ImageOrigin> image_origins;               ///< of each symmetry image
  std::vector<std::vector<std::uint32_t>> atom_images;  ///< of each atom of the file: the places of its images

  std::size_t atoms() const { return ids.size(); }
};

}  // namespace pathstat::desk
