#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "desk/export/exported_frame.h"

namespace pathstat::desk {

// Frames as texts of formats that other programs read. Each function adds a frame to a text and returns what keeps the
// format from holding it, or nothing.

/// Protein Data Bank format 3.3: a record CRYST1 for each frame, MODEL and ENDMDL where there are several. Serial and
/// residue numbers go on from 0 behind 99999 and 9999.
std::string add_pdb(const ExportedFrame& frame, std::string& text);
/// Atoms beyond these have serial numbers that stand twice in the file.
inline constexpr std::size_t most_pdb_serials = 99999;
/// The records behind the last frame: bonds, unless serial numbers stand twice.
void end_pdb(const ExportedFrame& frame, std::string& text);
/// Element, x, y, z in Å; the line of the comment has the cell and the time in the extended form, Lattice="...".
std::string add_xyz(const ExportedFrame& frame, std::string& text);
/// Å become nm, Å/ps nm/ps. Numbers of residues and atoms go on from 0 behind 99999.
std::string add_gro(const ExportedFrame& frame, std::string& text);
/// Crystallographic Information File: fractional coordinates of a crystal, or Cartesian ones. A frame that is taken as
/// a unit has its symmetry, any other is one of P 1. Holds one frame.
std::string add_cif(const ExportedFrame& frame, std::string& text);
/// Coordinate file (.car): a on x, b in the xy plane. Holds one frame, which is no slab.
std::string add_car(const ExportedFrame& frame, std::string& text);

}  // namespace pathstat::desk
