#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat {

/// Whether the user is told, by "Traj_OpenProblem", of a file that cannot be opened.
enum class OpenProblem { shown, left_to_caller };

/// A trajectory that is open through the front end and attached to a model, for a scope.
class OpenTrajectory {
 public:
  /// Opens the file and attaches it.
  /// @param status  that of the open; how the attach went is kept in attach_status()
  OpenTrajectory(std::string_view file, std::int32_t model, std::int32_t& status,
                 OpenProblem problem = OpenProblem::shown);
  ~OpenTrajectory();
  OpenTrajectory(const OpenTrajectory&) = delete;
  OpenTrajectory& operator=(const OpenTrajectory&) = delete;

  std::int32_t handle() const { return handle_; }
  std::int32_t attach_status() const { return attach_status_; }
  /// The one integer of a key, or `absent` where the reader does not know it.
  std::int32_t integer(std::int32_t key, std::int32_t absent) const;

 private:
  std::int32_t handle_ = 0;
  std::int32_t attach_status_ = 0;
  bool is_open_ = false;
};

/// Why a model is not that of a trajectory.
enum class Misfit { none, periodicity, atoms };

/// Holds a model against an open trajectory that was attached to it.
/// @param type  the trajectory's periodic type; left alone if the reader does not tell it without a model that fits
Misfit misfit_of(const OpenTrajectory& trajectory, std::int32_t model, std::int32_t& type);

}  // namespace pathstat
