#pragma once

#include <cstdint>
#include <vector>

#include "crystals/model_contents.h"
#include "support/vectors.h"

/// Lays polymer segments along an axis of the cell.
///
/// A segment is a molecule with dummy atoms of the link type "XX" in the places of its neighbours in the chain. Its
/// head-to-tail vector runs from the dummy at its head, which stands where the previous segment ends, to the atom at
/// its own end; the length of that vector is the repeat length. The segment is turned about its centre until the
/// vector points along the axis, and its dummies are deleted.
namespace pathstat {

/// What was aligned.
struct AlignedPolymer {
  double length = 0;            ///< the repeat length in Å, 0 without a segment
  std::vector<CellBond> links;  ///< from the tail atom of each segment to the head atom of the next one
};

/// Aligns a viable monomer: a model with one dummy at its head and one at its tail.
/// @param head, tail  the dummies
/// @param status      0; 1 a dummy without its one neighbour; that of the Core
void align_polymer_(std::int32_t model, std::int32_t head, std::int32_t tail, const Vector3& axis,
                    AlignedPolymer& aligned, std::int32_t& status);

/// Aligns the segments whose head and tail atoms are of the link types "J1" and "J2". A molecule that holds a dummy
/// needs exactly one of each, a dummy at one of them, and the length of the others: else "CrystalBadPolAlign" is shown,
/// after "Crystal2J1" or "Crystal2J2" for a second one.
/// @param status  0; 1 no good segment; that of the Core
void align_links_(std::int32_t model, const Vector3& axis, AlignedPolymer& aligned, std::int32_t& status);

/// Turns atoms about their centre so that a vector points along an axis.
/// @param xyz  three coordinates for each atom
void alignpolsegment_(std::span<double> xyz, const Vector3& vector, const Vector3& axis);

}  // namespace pathstat
