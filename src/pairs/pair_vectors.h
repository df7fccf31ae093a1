#pragma once

#include <cstddef>
#include <cstdint>

#include "support/vectors.h"

namespace pathstat {

/// Atoms that one atom is held against, an array for each axis. The arrays go on, with numbers that do not count, up to
/// a multiple of vector_lanes from `x`.
struct PairOthers {
  const double* x;
  const double* y;
  const double* z;
  const std::int32_t* order;  ///< numbers in the list
  std::size_t atoms;
};
constexpr std::size_t vector_lanes = 8;

/// An atom and the image that it is seen in.
struct PairAtom {
  Vector3 at;
  Vector3 image;
  std::int32_t order;  ///< number in the list
};

/// A column of cells and the atoms that may have others in it. Axes in the order across, across, along.
struct ColumnSearch {
  const double* atoms[3];
  Vector3 image;  ///< that the atoms are seen in
  double low[2];  ///< sides of the column
  double high[2];
  double origin;      ///< start of the cells along the column
  double per_length;  ///< cells in a unit of length
  double cells;
  double reach;
};

/// The inner loops of a pair count, built for the vector instructions of a machine. Squares have room for a multiple of
/// vector_lanes.
struct PairVectors {
  /// Squares of the distances |atom - other + image| below the limit. @return their number
  std::size_t (*between_two)(const PairAtom& atom, const PairOthers& others, double limit, double* squares);
  /// The same within one set, where of the two atoms the one with the lower number is the one that is moved: the atom
  /// by the image, or the other by the image opposite. An atom itself is not among the others.
  std::size_t (*within_one)(const PairAtom& atom, const PairOthers& others, double limit, double* squares);
  /// The bin of the root of each square.
  void (*bins)(const double* squares, std::size_t count, double interval, double last_bin, std::int32_t* bins);
  /// For each of `count` atoms the cells of the column within reach, from first to one before last.
  void (*cells_near)(const ColumnSearch& column, std::size_t count, std::int32_t* first, std::int32_t* last);
};
const PairVectors& pair_vectors();

/// All that this machine can run, the plainest first.
std::size_t pair_vector_choices();
const PairVectors& pair_vectors(std::size_t choice);

}  // namespace pathstat
