#pragma once

#include <cstdint>
#include <span>

#include "support/named_memory.h"
#include "trajectory/open_trajectory.h"

namespace pathstat {

/// Grams per cubic centimetre in one atomic mass unit per cubic ångström, as reports have it.
constexpr double density_factor = 1.66056;

/// The frames that the user chose.
struct FrameRange {
  std::int32_t first = 1;
  std::int32_t step = 1;
  std::int32_t points = 0;

  /// Frame of point k, from 0.
  std::int32_t frame(std::int32_t k) const { return first + k * step; }
};
FrameRange chosen_frames();

/// The number and x of each point of a walk over the chosen frames, in named blocks.
class FramePoints {
 public:
  /// @param status  0, or that of the allocation
  FramePoints(const FrameRange& range, std::int32_t& status);

  std::int32_t size() const { return range_.points; }
  std::span<const std::int32_t> numbers() const { return numbers_.span(); }
  std::span<const double> x() const { return x_.span(); }

  /// Loads the frame of point k, from 0, and stores its number and x: its time if frames carry times, else its number.
  /// @param status  0, or that of the frame after PATHSTAT_ERROR_93
  void read(const OpenTrajectory& trajectory, std::int32_t k, std::int32_t& status);

 private:
  FrameRange range_;
  NamedBlock<double> x_;
  NamedBlock<std::int32_t> numbers_;
};

}  // namespace pathstat
