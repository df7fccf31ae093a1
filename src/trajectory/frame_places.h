#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "support/named_memory.h"
#include "trajectory/open_trajectory.h"

namespace pathstat {

/// Labels of the named blocks of a search for places.
struct FramePlaceLabels {
  std::string_view moved_ids;  ///< identifiers of the trajectory's movable atoms
  std::string_view ids;        ///< identifiers of the atoms that are looked up
  std::string_view fixed;      ///< those of them that the frames do not hold
  std::string_view movable;    ///< whether they move
};

/// Where atoms stand among coordinates that hold the trajectory's movable atoms in the order of its frames and, behind
/// them, fixed atoms in the order in which they are looked up.
class FramePlaces {
 public:
  /// @param atoms   atoms of the model that the trajectory is attached to
  /// @param places  out: of each atom, from 0
  /// @param status  0; 1 if the Core or the trajectory do not answer; that of an allocation
  FramePlaces(const OpenTrajectory& trajectory, std::span<const std::int32_t> atoms, std::span<std::int32_t> places,
              const FramePlaceLabels& labels, std::int32_t& status);

  /// Atoms in each frame.
  std::int32_t moved() const { return moved_; }
  /// Moved and fixed atoms together.
  std::int64_t size() const { return moved_ + std::ssize(fixed_.span()); }
  /// An atom that moves is not in the frames.
  bool lacks_movable() const { return lacks_movable_; }

  /// Writes the coordinates of the fixed atoms, as the model has them, to their places.
  /// @param xyz     3 * size() numbers
  /// @param status  0; 1 if the Core does not answer
  void place_fixed(std::span<double> xyz, std::int32_t& status) const;

 private:
  void check_fixed(std::string_view label, std::int32_t& status);

  std::int32_t moved_ = 0;
  NamedBlock<std::int32_t> fixed_;
  bool lacks_movable_ = false;
};

}  // namespace pathstat
