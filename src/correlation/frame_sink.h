#pragma once

#include <cstdint>

#include "correlation/correlation_kernels.h"

namespace pathstat {

namespace cache_status {
constexpr std::int32_t no_velocities = 1;
constexpr std::int32_t velocities_unusable = 2;
constexpr std::int32_t selection_unusable = 3;
constexpr std::int32_t frame_unreadable = 4;  ///< before the last
constexpr std::int32_t not_written = 5;
constexpr std::int32_t uneven_spacing = 6;  ///< PATHSTAT_ERROR_61 has been shown
}  // namespace cache_status

/// Takes the frames of a correlation as they come from the trajectory.
class FrameSink {
 public:
  FrameSink() = default;
  FrameSink(const FrameSink&) = delete;
  FrameSink& operator=(const FrameSink&) = delete;
  virtual ~FrameSink() = default;

  /// @param atoms, frames  of which all are going to come, unless the trajectory can't be read any more
  /// @return 0, cache_status::not_written, or the status of an allocation or of a unit, of which the user has been told
  virtual std::int32_t open(std::int32_t atoms, std::int32_t frames) = 0;
  /// Takes record k, from 1. False if it can't be kept.
  virtual bool write(std::int32_t record, const Axes& frame) = 0;
  /// All records have come. False if they can't be kept.
  virtual bool finish() { return true; }
};

}  // namespace pathstat
