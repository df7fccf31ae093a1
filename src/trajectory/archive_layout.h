#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "support/vectors.h"
#include "trajectory/frame_cell.h"

// What the lines of archives and of coordinate files say. Words count in upper and lower case alike.

namespace pathstat {

/// What the second line of a file says.
enum class ArchiveSecondLine : std::uint8_t {
  periodicity,  ///< a line of the header
  helix,        ///< a helical system
  unknown,      ///< a line of the periodicity that says nothing known
  frame         ///< no header line: the first line of the first frame
};

struct ArchivePeriodicity {
  std::int32_t type = 0;  ///< periodic_type
  std::int32_t directions = 0;
};

/// @param periodicity  out: what the line says; not periodic unless it is a line of the periodicity
ArchiveSecondLine read_second_line(std::string_view line, ArchivePeriodicity& periodicity);

/// True for a line that ends a molecule, or, behind another one, the frame: END, alone or with a blank behind it.
bool is_end_line(std::string_view line);

/// A title longer than this has the energy behind its first 64 characters.
constexpr std::size_t energy_column = 64;
constexpr bool has_energy_column(std::string_view title) {
  return title.find_last_not_of(' ') + 1 > energy_column;  // a blank title: npos + 1 is 0
}
/// The energy of a title; 0 if what stands there is no number.
double energy_of_title(std::string_view title);

/// a, b, c (Å) and alpha, beta, gamma (radians). Of a slab a is 1, and beta and gamma are right angles.
using ArchiveCell = std::array<double, 6>;

/// Reads a line of the cell: any first word, then a, b, c, alpha, beta, gamma, or b, c, alpha of a slab, in degrees.
bool read_cell_line(std::string_view line, std::int32_t directions, ArchiveCell& cell);

/// Reads an atom line: a name, x, y, z, four words, the partial charge. False if a field is missing or no number.
/// @param position  out: three numbers
bool read_atom_line(std::string_view line, double* position, double& charge);

/// The vectors a, b and c of a cell as they lie in models: c on z, b in the yz plane; of a slab a
/// is (1, 0, 0). @param status  that of the crystal maths; 0 without periodicity, with zeros
void archive_cell_vectors(const ArchiveCell& cell, std::int32_t periodic_type, CellVectors& vectors,
                          std::int32_t& status);
/// The matrix that turns positions of the file, in which a (of a slab b) lies on x and the next vector in the xy plane,
/// into those of models. @param status  that of the crystal maths
void archive_alignment(const ArchiveCell& cell, std::int32_t periodic_type, Matrix3& alignment, std::int32_t& status);

}  // namespace pathstat
