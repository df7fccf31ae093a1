#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "support/named_memory.h"
#include "trajectory/frame_cell.h"
#include "trajectory/open_trajectory.h"

namespace pathstat {

/// The measures of the trajectory's model in a walk over frames. What has been prepared is given up at the end of the
/// scope.
class FrameMeasures {
 public:
  /// Takes the mark of being on disk from the rows of measures whose monitors have changed.
  explicit FrameMeasures(const OpenTrajectory& trajectory);
  ~FrameMeasures();
  FrameMeasures(const FrameMeasures&) = delete;
  FrameMeasures& operator=(const FrameMeasures&) = delete;

  /// Prepares a row of the catalogue if it is to be extracted.
  /// @return numbers of a frame; 0 if there is nothing to do or, after PATHSTAT_ERROR_100, if the atoms of monitors
  ///         are not to be found in the frames
  std::int32_t prepare(std::size_t row);
  bool empty() const { return counts_.empty(); }

  /// Takes the coordinates and the cell of the frame that is loaded, beside those of the frame before, which `put` may
  /// be at work on meanwhile. @param status  that of the coordinates
  void take_frame(std::int32_t& status);
  /// Goes on to the frame that was taken last.
  void turn() { std::swap(frame_, taken_); }
  /// The measures of a row that is prepared, in the frame that was gone on to. An inversion that is undefined is 0.
  void put(std::int32_t id, std::span<double> out, std::int32_t& status) const;
  /// True for measures that call nobody, so that a thread of their own may put them.
  static bool may_run_beside(std::int32_t id);

 private:
  struct Count {
    std::int32_t id;
    std::int32_t measures;
  };
  bool find_atoms();

  const OpenTrajectory& trajectory_;
  std::vector<Count> counts_;
  bool is_searched_ = false;
  bool fits_ = false;
  std::size_t moved_ = 0;
  struct Frame {
    CellVectors cell;
    std::span<double> xyz;
  };
  Frame frame_, taken_;
  NamedBlock<std::int32_t> atoms_;  ///< of a frame, fixed ones behind
  NamedBlock<double> xyz_;          ///< of two frames
};

}  // namespace pathstat
