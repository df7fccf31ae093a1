#include "trajectory/open_trajectory.h"

#include <span>

#include "coreapi/messages.h"
#include "coreapi/operations.h"
#include "trajectory/front_end.h"
#include "trajectory/trajectory_keys.h"

namespace pathstat {

OpenTrajectory::OpenTrajectory(std::string_view file, std::int32_t model, std::int32_t& status, OpenProblem problem) {
  trj_openread_(file, 1, handle_, status);
  is_open_ = status == 0;
  if (is_open_) {
    trj_attachtomodels_(handle_, std::span(&model, 1), attach_status_);
  } else if (problem == OpenProblem::shown) {
    show_message("Traj_OpenProblem", file);
  }
}

OpenTrajectory::~OpenTrajectory() {
  std::int32_t status = 0;
  if (is_open_) trj_close_(handle_, status);
}

std::int32_t OpenTrajectory::integer(std::int32_t key, std::int32_t absent) const {
  std::int32_t value = 0;
  std::int32_t status = 0;
  trj_ivalue_(handle_, key, value, status);
  return status == 0 ? value : absent;
}

Misfit misfit_of(const OpenTrajectory& trajectory, std::int32_t model, std::int32_t& type) {
  std::int32_t model_type = 0;
  std::int32_t untold = 0;
  trj_ivalue_(trajectory.handle(), trajectory_key::periodic_type, type, untold);
  if (untold == 0) kvd_mod_periodictype_(model, model_type, untold);
  if (untold == 0 && model_type != type) return Misfit::periodicity;
  return untold == 0 && trajectory.attach_status() == 0 ? Misfit::none : Misfit::atoms;
}

}  // namespace pathstat
