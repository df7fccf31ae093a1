#pragma once

#include <cmath>
#include <cstdint>

namespace pathstat {

/// Watches that the frames of a series follow one another evenly in time.
class FrameSpacing {
 public:
  /// Takes the next frame. False if it is the third or a later one and its distance from the frame before differs from
  /// that frame's own distance by more than the time step of the dynamics, or if the time step has changed by more
  /// than one part in 10000.
  ///
  /// @param time       of the frame, ps
  /// @param time_step  of the dynamics at the frame, ps
  bool add(double time, double time_step) {
    const double spacing = frames_ == 0 ? 0.0 : std::abs(time - time_);
    const bool irregular = frames_ >= 2 && (time_step < std::abs(spacing - spacing_) ||
                                            std::abs((time_step - time_step_) / time_step_) > 1e-4);
    ++frames_;
    time_ = time;
    spacing_ = spacing;
    time_step_ = time_step;
    return !irregular;
  }

  /// Distance of the last two frames, ps; 0 before there are two.
  double spacing() const { return spacing_; }

 private:
  std::int64_t frames_ = 0;
  double time_ = 0.0;
  double spacing_ = 0.0;
  double time_step_ = 0.0;
};

}  // namespace pathstat
