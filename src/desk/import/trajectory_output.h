#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "desk/model/lattice.h"

namespace pathstat::desk {

/// How a run was controlled, as far as the user tells.
enum class Ensemble : std::uint8_t { unknown, nve, nvt, nph, npt };

/// What the head of a binary trajectory says.
struct TrajectoryHead {
  std::string title;
  std::span<const std::int32_t> ids;  ///< of all atoms, in the order of the coordinates
  bool periodic = false;
  bool cell_varies = false;
  Ensemble ensemble = Ensemble::unknown;
};

/// A frame on its way to a file.
struct FrameValues {
  double time = 0;                     ///< ps
  Cell cell{};                         ///< c on z and b in the yz plane, Å; of no account without periodicity
  std::span<const double> xyz;         ///< x1, y1, z1, x2, ..., Å
  std::span<const double> velocities;  ///< as xyz, Å/ps; empty: none
};

/// A binary trajectory that is being written. A value that nobody sets is not a number in the file, so that a reader
/// takes it for what it is: not there.
class TrajectoryOutput {
 public:
  TrajectoryOutput() = default;
  ~TrajectoryOutput();
  TrajectoryOutput(const TrajectoryOutput&) = delete;
  TrajectoryOutput& operator=(const TrajectoryOutput&) = delete;

  // Each returns what went wrong, or nothing.
  std::string create(const std::string& path, const TrajectoryHead& head);
  /// Sets a series in the next frame and those behind it: one of those that frames can hold.
  void set(std::string_view series, double value);
  std::string write(const FrameValues& frame);
  std::string close();

 private:
  std::string failed(std::int32_t status) const;

  std::int32_t handle_ = 0;
  std::string path_;
  bool periodic_ = false;
  std::array<double, 6> pressure_tensor_{};
};

/// True for the name of a value that a frame can hold, such as "potential" (kcal/mol), "temperature" (K), "volume" (Å³)
/// or "pressure_xx" (GPa).
bool is_frame_series(std::string_view name);

}  // namespace pathstat::desk
