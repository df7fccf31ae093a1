#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "support/logical.h"
#include "trajectory/front_end.h"

// The binary trajectory behind the keys of the front end: what the file stores only implicitly is derived here.

namespace pathstat {

/// What the open binary trajectory is.
struct XgrafTrjI {
  std::int32_t xgraf_handle = 0;  ///< of the binary trajectory, 0 when closed
  std::int32_t unused = 0;
  std::int32_t xgraf_period_type = 0;  ///< 0, 100, 101, 102
  std::int32_t xgraf_ensemble = 0;
  std::int32_t xgraf_thermostat = 0;  ///< 1 a single value, 2 extended variables, 3 with a logarithm, -1 none
  std::int32_t xgraf_dof = 0;         ///< degrees of freedom
  std::int32_t xgraf_movable_atoms = 0;
  std::int32_t xgraf_total_atoms = 0;
};
inline XgrafTrjI xgraftrj_i_;

/// The model that the open trajectory is attached to.
inline std::int32_t xgraf_model = 0;

struct XgrafTrjL {
  Logical xgraf_open;
  Logical xgraf_attached;
};
inline XgrafTrjL xgraftrj_l_;

/// Addresses of named memory; movable atoms stand first, in file order, then fixed atoms in model order.
struct XgrafTrjP {
  std::int64_t xgraf_xyz = 0;       ///< "Trj/XGraf/dxyz": 3 numbers an atom
  std::int64_t xgraf_atom_ids = 0;  ///< "Trj/XGraf/AtIds"
};
inline XgrafTrjP xgraftrj_p_;

/// @param status  bad_mode, no_file, several_groups, the code of the binary file, or that of the allocator
void openxgraftrajectory_(std::string_view name, std::int32_t mode, std::int32_t& handle, std::int32_t& status);
/// Fits the trajectory to a model: as many atoms, the same periodicity, and, where some atoms are fixed, each of the
/// trajectory's identifiers on one atom of the model and every other atom a fixed one. @param status  attach_refused
void attachxgrafmodels_(std::int32_t handle, std::span<const std::int32_t> models, std::int32_t& status);
/// @param status  end_of_file; read_error, also for a frame that the file has only a part of
void readxgrafframe_(std::int32_t handle, std::int32_t frame, std::int32_t& status);
void getxgrafdatadble_(std::int32_t handle, std::int32_t key, std::span<double> values, std::int32_t& count,
                       std::int32_t& status);
/// This format has no values of this type: status 1.
void getxgrafdatareal_(std::int32_t handle, std::int32_t key, std::span<float> values, std::int32_t& count,
                       std::int32_t& status);
void getxgrafdataint_(std::int32_t handle, std::int32_t key, std::span<std::int32_t> values, std::int32_t& count,
                      std::int32_t& status);
void getxgrafdatalogical_(std::int32_t handle, std::int32_t key, std::span<Logical> values, std::int32_t& count,
                          std::int32_t& status);
void getxgrafdatachar_(std::int32_t handle, std::int32_t key, std::span<char> fields, std::int32_t width,
                       std::int32_t& count, std::int32_t& status);
void closexgraf_(std::int32_t handle, std::int32_t& status);

inline constexpr TrajectoryReader binary_reader{
    openxgraftrajectory_, attachxgrafmodels_,   readxgrafframe_,   getxgrafdatadble_, getxgrafdatareal_,
    getxgrafdataint_,     getxgrafdatalogical_, getxgrafdatachar_, closexgraf_,
};

}  // namespace pathstat
