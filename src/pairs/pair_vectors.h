#pragma once

#include <cstddef>
#include <cstdint>

#include "support/vectors.h"

namespace pathstat {

constexpr std::size_t vector_lanes = 8;

/// Atoms in the order of their cells, an array for each axis. The arrays go on, with numbers that do not count, for
/// vector_lanes.
struct PairAtoms {
  const double* x;
  const double* y;
  const double* z;
  const std::int32_t* order;  ///< numbers in the list
};

/// Some atoms, each of which is held against a stretch of a column of others.
struct PairBatch {
  PairAtoms atoms;
  std::size_t first;  ///< atom
  std::size_t count;
  Vector3 image;  ///< that the atoms are seen in
  PairAtoms others;
  const std::uint32_t* starts;  ///< of the cells in the column
  /// For each atom the cells of its stretch, from first to one before last.
  const std::int32_t* first_cells;
  const std::int32_t* last_cells;
  bool later_only;  ///< of the others, only those that stand behind an atom
  double limit;     ///< of squares
};

/// How far a batch is done.
struct PairPlace {
  std::size_t atom = 0;   ///< of the batch
  std::size_t other = 0;  ///< before which all others are done with
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

/// Squares at which a walk through a batch stops, and the room for them.
constexpr std::size_t enough_squares = 1024;
constexpr std::size_t longest_stretch = 512;
constexpr std::size_t room_for_squares = enough_squares + longest_stretch + vector_lanes;

/// The inner loops of a pair count, built for the vector instructions of a machine.
struct PairVectors {
  /// Puts squares of the distances |atom - other + image| below the limit behind those that were found before, until
  /// there are enough or the batch is done. @return the number of all
  std::size_t (*between_two)(const PairBatch& batch, PairPlace& place, double* squares, std::size_t found);
  /// The same within one set, where of the two atoms the one with the lower number is the one that is moved: the atom
  /// by the image, or the other by the image opposite. An atom makes no pair with itself.
  std::size_t (*within_one)(const PairBatch& batch, PairPlace& place, double* squares, std::size_t found);
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
