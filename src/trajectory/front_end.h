#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "support/logical.h"

// The one way in which the analyses read a trajectory, whatever its format: open it, attach it to a model, read a
// frame, ask for values by key, close it. One trajectory is open at a time.
//
// Keys are of one vocabulary: 100000s logical, 200000s integer (200160 to 200172 are atom arrays of doubles), 400000s
// floating, small numbers text. Positions are in Å, velocities in Å/ps, times in ps, energies in kcal/mol, pressures in
// GPa, angles in radians; atom arrays are x1, y1, z1, x2, ...

namespace pathstat {

namespace trajectory_status {
constexpr std::int32_t unknown_format = 50000;  ///< by the name; PATHSTAT_ERROR_108 is shown
constexpr std::int32_t bad_mode = 50002;        ///< PATHSTAT_ERROR_106 is shown
constexpr std::int32_t read_error = 50003;      ///< inside a frame
constexpr std::int32_t end_of_file = 50004;
constexpr std::int32_t no_such_key = 50005;  ///< the format does not know the key or the file does not hold the value
constexpr std::int32_t no_file_unit = 50006;
constexpr std::int32_t unit_not_assigned = 50007;
constexpr std::int32_t too_small = 50008;  ///< the capacity; what fits is filled
constexpr std::int32_t not_periodic = 50010;
constexpr std::int32_t not_two_dimensional = 50011;
constexpr std::int32_t no_file = 50012;  ///< PATHSTAT_ERROR_107 is shown
constexpr std::int32_t helical = 50013;  ///< PATHSTAT_ERROR_110 is shown
constexpr std::int32_t not_attached = 50014;
constexpr std::int32_t attach_refused = 50015;  ///< PATHSTAT_ERROR_111 or 112 is shown
constexpr std::int32_t not_history = 50016;
constexpr std::int32_t count_too_small = 50017;   ///< of a history file
constexpr std::int32_t bad_frame_marker = 50018;  ///< of a history file
constexpr std::int32_t not_three_dimensional = 50019;
constexpr std::int32_t several_groups = 50020;
constexpr std::int32_t header_cut = 50021;
constexpr std::int32_t fixed_header_cut = 50022;
constexpr std::int32_t unknown_periodicity = 50023;  ///< PATHSTAT_ERROR_119 is shown
}  // namespace trajectory_status

/// What is open.
struct TrjI {
  std::int32_t trj_format = 0;         ///< reader code: 2 archive, 3 history, 4 binary; stays after a close
  std::int32_t trj_current_frame = 0;  ///< frame now loaded, 0 for none
};
inline TrjI trj_i_;

/// The handle of the open trajectory.
constexpr std::int32_t open_trajectory_handle = 1;

/// A format's reader, as the front end calls it. A getter gives the number of items that the key yields, also if the
/// capacity, the size of the span, is too small for them.
struct TrajectoryReader {
  void (*open)(std::string_view name, std::int32_t mode, std::int32_t& handle, std::int32_t& status);
  void (*attach)(std::int32_t handle, std::span<const std::int32_t> models, std::int32_t& status);
  void (*read_frame)(std::int32_t handle, std::int32_t frame, std::int32_t& status);
  void (*doubles)(std::int32_t handle, std::int32_t key, std::span<double> values, std::int32_t& count,
                  std::int32_t& status);
  void (*reals)(std::int32_t handle, std::int32_t key, std::span<float> values, std::int32_t& count,
                std::int32_t& status);
  void (*integers)(std::int32_t handle, std::int32_t key, std::span<std::int32_t> values, std::int32_t& count,
                   std::int32_t& status);
  void (*logicals)(std::int32_t handle, std::int32_t key, std::span<Logical> values, std::int32_t& count,
                   std::int32_t& status);
  void (*texts)(std::int32_t handle, std::int32_t key, std::span<char> fields, std::int32_t width, std::int32_t& count,
                std::int32_t& status);
  void (*close)(std::int32_t handle, std::int32_t& status);
};

/// Opens a trajectory with the reader that the end of its name tells: "his", "arc", or "atrj", "qtrj", "trj". Case
/// matters. @param mode  has to be 1
void trj_openread_(std::string_view name, std::int32_t mode, std::int32_t& handle, std::int32_t& status);
/// Attaches the trajectory to the model that it belongs to, of which there has to be one.
void trj_attachtomodels_(std::int32_t handle, std::span<const std::int32_t> models, std::int32_t& status);
/// Loads a frame, from 1 on. At the end of the file no frame is loaded, and frame 1 can be read again.
void trj_readframe_(std::int32_t handle, std::int32_t frame, std::int32_t& status);

void trj_dvalue_(std::int32_t handle, std::int32_t key, std::span<double> values, std::int32_t& count,
                 std::int32_t& status);
void trj_rvalue_(std::int32_t handle, std::int32_t key, std::span<float> values, std::int32_t& count,
                 std::int32_t& status);
void trj_ivalue_(std::int32_t handle, std::int32_t key, std::span<std::int32_t> values, std::int32_t& count,
                 std::int32_t& status);
void trj_lvalue_(std::int32_t handle, std::int32_t key, std::span<Logical> values, std::int32_t& count,
                 std::int32_t& status);
/// Texts stand in fields of `width` characters, one behind the other, blank-padded.
void trj_cvalue_(std::int32_t handle, std::int32_t key, std::span<char> fields, std::int32_t width, std::int32_t& count,
                 std::int32_t& status);
void trj_close_(std::int32_t handle, std::int32_t& status);

/// The value of a key that yields one; leaves it alone and gives the status if it can't be had.
void trj_dvalue_(std::int32_t handle, std::int32_t key, double& value, std::int32_t& status);
void trj_ivalue_(std::int32_t handle, std::int32_t key, std::int32_t& value, std::int32_t& status);
void trj_lvalue_(std::int32_t handle, std::int32_t key, Logical& value, std::int32_t& status);

}  // namespace pathstat
