#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "support/logical.h"
#include "support/named_memory.h"
#include "support/record_file.h"
#include "support/text_field.h"
#include "support/vectors.h"

// History trajectories (".his", ".fhis") as they stand in the file: the head, and the frames, of which each holds an
// energy record, a cell, positions and velocities. One file is open at a time, and these records are what is known of
// it. Statuses are those of trajectory_status.

namespace pathstat {

/// Counts of the open history file.
struct HisTrjI {
  std::int32_t his_unit = 0;
  std::int32_t his_ff_types = 0;
  std::int32_t his_residue_types = 0;
  std::int32_t his_atoms = 0;
  std::int32_t his_movable = 0;
  std::int32_t his_molecules = 0;
  std::int32_t his_residues = 0;
  std::int32_t his_bonds = 0;
  std::int32_t his_operators = 0;   ///< of the attached model
  std::int32_t his_components = 0;  ///< energy components
  std::int32_t his_interval = 0;    ///< steps from frame to frame
  std::int32_t his_first_step = 0;
  std::int32_t his_stored_atoms = 0;  ///< atoms in the records of every frame but the first
  std::array<std::int32_t, 3> unused{};
  std::int32_t his_period_type = 0;    ///< of the attached model
  std::int32_t his_dims = 0;           ///< its periodic directions
  std::int32_t his_total_atoms = 0;    ///< with symmetry images
  std::int32_t his_total_movable = 0;  ///< with symmetry images
  std::int32_t his_version_major = 0;
  std::int32_t his_version_minor = 0;   ///< hundredths
  std::int32_t his_header_records = 0;  ///< before the first frame
};
inline HisTrjI histrj_i_;

struct HisTrjD {
  double his_version = 0.0;
  std::array<double, 6> cell{};  ///< of the current frame: a, b, c (Å), alpha, beta, gamma (radians)
  Matrix3 vectors{};             ///< its cell vectors one after the other, Å
  double his_time_step = 0.0;    ///< ps
};
inline HisTrjD histrj_d_;

struct HisTrjL {
  Logical his_attached;
  Logical unused;
  Logical his_periodic;
};
inline HisTrjL histrj_l_;

/// The title, and the two lines behind it.
struct HisTrjC {
  std::array<Text<80>, 3> lines;
};
inline HisTrjC histrj_c_;

/// What the head lists, in blocks called "Trj/His/" and the name.
struct HisTrjP {
  NamedBlock<char> ff_type_names;             ///< "FFTypeNames": 4 characters each
  NamedBlock<double> ff_type_mass;            ///< "FFTypeMass"
  NamedBlock<char> residue_names;             ///< "ResidueNames": 4 characters each
  NamedBlock<std::int32_t> atom_ff_index;     ///< "AtomFFIndex"
  NamedBlock<char> atom_names;                ///< "AtomNames": 5 characters each
  NamedBlock<std::int32_t> mov_atom_index;    ///< "MovAtomIndex": movable atoms, from 1; empty where all are stored
  NamedBlock<std::int32_t> atoms_per_mol;     ///< "NAtomsPermol"
  NamedBlock<std::int32_t> residues_per_mol;  ///< "NResPermol"
  NamedBlock<std::int32_t> res_atom_index;    ///< "ResAtomIndex": first and last atom of each residue
  NamedBlock<std::int32_t> res_name_index;    ///< "ResNameIndex"
  NamedBlock<std::int32_t> bond_index;        ///< "BondIndex": two atoms a bond
};
inline HisTrjP histrj_p_;

/// Opens a history file, or a block of memory that holds one, with frame 1 loaded.
/// @param status  end_of_file, read_error, not_history, count_too_small
void open_history(RecordReader file, std::int32_t& status);
void close_history();

/// Loads a frame, from 1 on: its energies and its cell. Positions and velocities are only located. Frames that have
/// been passed before are found at once; others are walked to, by the lengths of their records.
/// @param status  end_of_file where the file ends before the frame; read_error where it ends inside it, or a record has
///                a wrong length; bad_frame_marker. No frame is loaded then.
void read_history_frame(std::int32_t frame, std::int32_t& status);
/// The frame that is loaded, 0 for none.
std::int32_t history_frame();

/// The parts of the energy record, in its order. Energies are in kcal/mol; pressures are in units of 0.0001 GPa.
enum class HistoryEnergy : std::uint8_t {
  total,
  potential,
  kinetic,
  components,     ///< one for each component
  potential_of,   ///< one for each molecule, as are those that follow
  components_of,  ///< all molecules for component 1, then for component 2, ...
  attractive_of,  ///< van der Waals
  repulsive_of,   ///< van der Waals
  van_der_waals_of,
  coulomb_of,
  pressure,
  ignored,
  stress,   ///< nine numbers
  tensors,  ///< five further ones
  count
};
constexpr double history_pressure_unit = 0.0001;  ///< GPa

/// Numbers in a part of the energy record.
std::int64_t history_energies(HistoryEnergy part);
/// Numbers of a part of the loaded frame, from `first` on; a part holds as many as history_energies tells.
void get_history_energies(HistoryEnergy part, std::int64_t first, std::span<double> values);

enum class HistoryVectors : bool { positions, velocities };

/// The vectors of the loaded frame's movable atoms, in the order of "MovAtomIndex", or of all atoms where each frame
/// stores them all: of as many as there is room for, at most his_stored_atoms.
/// @param turn    what each vector is multiplied by; null for the vectors as they stand
/// @param status  read_error
void get_history_vectors(HistoryVectors which, const Matrix3* turn, std::span<double> vectors, std::int32_t& status);

}  // namespace pathstat
