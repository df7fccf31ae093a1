#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "support/named_memory.h"
#include "trajectory/frame_cell.h"

namespace pathstat {

/// The atoms of a model in the order of a trajectory reader: those that the file stores, then the images that the
/// operators of the model's space group make of them. Places count from 1. A model that is not periodic in three
/// directions, or whose group has one operator, has no images.
class SymmetryImages {
 public:
  /// What becomes of a vector: positions are turned and moved, velocities turned.
  enum class Kind : bool { positions, velocities };

  SymmetryImages() = default;
  /// Asks the Core for the operators and the images.
  /// @param labels  what the labels of the blocks begin with; behind it stand "SymMat", "SymTr", "SymParent", "SymPtr"
  ///                and "IdList"
  /// @param stored  the stored atoms' objects in the reader's order
  /// @param status  0; 1 if the Core does not answer or the images do not make up the model's number of atoms; that of
  ///                the allocator
  SymmetryImages(std::string_view labels, std::int32_t model, std::span<const std::int32_t> stored,
                 std::int32_t& status);

  std::int32_t operators() const { return static_cast<std::int32_t>(translations_.size() / 3); }
  /// Atoms with their images.
  std::int32_t atoms() const { return static_cast<std::int32_t>(ids_.size()); }
  /// Identifiers of all places.
  std::span<const std::int32_t> ids() const { return ids_.span(); }
  /// The place of the stored atom of each place: that of a stored atom is its own.
  std::span<const std::int32_t> parents() const { return parents_.span(); }
  /// Atoms up to a place with their images.
  std::int32_t atoms_of(std::int32_t last_parent) const;

  /// Puts the images of the first `parents` atoms behind them, in the order of the places, as far as there is room.
  /// @param vectors  three numbers for each; those of the first `parents` atoms are there
  /// @param cell     in the orientation of the vectors
  /// @param status   0, or 1 for a flat cell
  void add_images(std::span<double> vectors, std::int32_t parents, const CellVectors& cell, Kind kind,
                  std::int32_t& status) const;

 private:
  void read_operators(std::string_view labels, std::int32_t model, std::int32_t& status);
  void read_images(std::span<const std::int32_t> stored, std::span<std::int32_t> objects, std::int32_t& status);

  NamedBlock<double> rotations_;     // nine numbers an operator, fractional, by columns
  NamedBlock<double> translations_;  // three, fractional
  NamedBlock<std::int32_t> parents_, operators_, ids_;
};

}  // namespace pathstat
