#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "support/vectors.h"

namespace pathstat {

/// The axes of a molecule: an atom in the middle, another on the axis x, a third in the plane of x and y, towards y.
/// Molecules of a periodic cell may be cut by its faces.
struct MoleculeAtoms {
  std::int32_t middle = 0, on_x = 0, in_plane = 0;  ///< places among the coordinates, from 0
  std::int32_t number = 0;                          ///< of the molecule
};

/// Mean number density of atoms around molecules, on a cubic grid that turns with each of them. Point (i, j, k),
/// counted from 0, stands at i, j, k steps along the molecule's axes, and the molecule's middle at the point in the
/// middle. Each atom counts for the point nearest to it, by its image nearest to the middle.
class MoleculeDensity {
 public:
  /// @param points  along an edge, an odd number
  /// @param edge    Å; all of the cube has to be nearer to its middle than half the distance of any two faces of a cell
  MoleculeDensity(std::int32_t points, double edge);

  /// Adds a frame.
  ///
  /// @param coordinates  three for each atom, Å, in any image of the cell
  /// @param places       the atoms that count, by their places in `coordinates`, from 0
  /// @param molecules    of each of them the number of its molecule; atoms do not count for their own one
  /// @param around       the molecules; one whose three atoms stand on a line is left out
  /// @param cell         vectors as columns, Å
  /// @return false for a flat cell; nothing is added then
  bool add(std::span<const double> coordinates, std::span<const std::int32_t> places,
           std::span<const std::int32_t> molecules, std::span<const MoleculeAtoms> around, const Matrix3& cell);

  /// Molecules counted around, summed over the frames.
  std::int64_t samples() const { return samples_; }

  /// Atoms per Å³ at each point, x fastest, then y, then z. Zero without samples.
  std::vector<float> mean() const;

 private:
  std::int32_t points_;
  double edge_;
  std::vector<std::uint32_t> counts_;
  std::int64_t samples_ = 0;
};

/// The edge of the largest cube, Å, that lies within the sphere that fits between the faces of a cell; 0 for a flat
/// cell. @param cell  vectors as columns
double cube_within(const Matrix3& cell);

}  // namespace pathstat
