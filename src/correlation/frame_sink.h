#pragma once

#include <cstdint>

#include "correlation/correlation_kernels.h"

namespace pathstat {

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
