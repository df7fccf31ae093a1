#pragma once

#include <cstdint>
#include <list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "support/logical.h"
#include "support/record_file.h"
#include "support/text_field.h"
#include "trajectory/binary_frame.h"
#include "trajectory/binary_header.h"

// Binary trajectories (".trj", ".qtrj", ".atrj"): any number may be open at a time, each named by a handle. Values are
// asked for and set by integer key: 1000 to 1102 floating, 2001 to 2020 integer, 3001 to 3009 logical, 4001 to 4006
// text. Every operation ends in a status, 0 or one of the codes below.

namespace pathstat {

namespace binary_status {
constexpr std::int32_t no_such_handle = 50501;
constexpr std::int32_t bad_mode = 50502;
constexpr std::int32_t not_opened = 50503;  ///< no such file, a damaged head, or no memory
constexpr std::int32_t append_no_header = 50504;
constexpr std::int32_t append_old_version = 50505;
constexpr std::int32_t header_not_written = 50506;
constexpr std::int32_t frame_not_written = 50507;
constexpr std::int32_t not_for_reading = 50508;
constexpr std::int32_t frame_not_located = 50509;
constexpr std::int32_t frame_damaged = 50510;   ///< a record of the wrong length, or the system fails to read
constexpr std::int32_t too_small = 50511;       ///< count, capacity or width too small, or a text too long
constexpr std::int32_t not_present = 50512;     ///< the file or the frame does not hold the value
constexpr std::int32_t no_atom_arrays = 50513;  ///< no memory
constexpr std::int32_t unknown_key = 50514;
constexpr std::int32_t cannot_be_set = 50515;  ///< never, or not once the head is in the file
constexpr std::int32_t bad_periodicity = 50516;
constexpr std::int32_t no_frame = 50517;
constexpr std::int32_t no_text = 50518;
constexpr std::int32_t end_of_file = 50519;
constexpr std::int32_t open_for_reading = 50520;
}  // namespace binary_status

namespace binary_mode {
constexpr std::int32_t read = 100;
constexpr std::int32_t create = 200;
constexpr std::int32_t append = 300;
}  // namespace binary_mode

/// An open trajectory.
struct TrjStruct {
  std::int32_t handle = 0;
  std::int32_t mode = 0;
  std::string file_name;
  RecordReader reader;
  RecordWriter writer;
  bool header_written = false;
  std::int32_t current_frame = 0;          ///< 0: none has been read
  bool ended_inside_frame = false;         ///< the last read met the end of the file with a part of the frame there
  std::vector<std::int64_t> frame_starts;  ///< offsets of frames 1, 2, ... as far as they are known
  BinaryHeader header;
  BinaryFrame frame;
};

inline std::list<TrjStruct> kvA_TRJ_TrjList;
inline std::int32_t kvA_TRJ_NextId = 1;

/// The open trajectory of a handle, or null.
TrjStruct* binary_trajectory(std::int32_t handle);

/// Modes: 100 reads, 200 creates or empties, 300 appends. The handle is 0 after a failure.
void kvA_TRJ_Open(const std::string& name, std::int32_t mode, std::int32_t& handle, std::int32_t& status);
/// Mode 100.
void kvA_TRJ_OpenRead(const std::string& name, std::int32_t mode, std::int32_t& handle, std::int32_t& status);
/// Modes 200 and 300.
void kvA_TRJ_OpenWrite(const std::string& name, std::int32_t mode, std::int32_t& handle, std::int32_t& status);
/// Reads a trajectory from memory that outlives the handle.
void open_binary_trajectory(std::span<const std::byte> content, std::int32_t& handle, std::int32_t& status);
void kvA_TRJ_Close(std::int32_t handle, std::int32_t& status);

/// Makes a frame (from 1 on) the current one. Its scalar records are read; coordinates are read when a key asks for
/// them. Behind the last frame the status is 50519 and no frame is current.
void kvA_TRJ_ReadFrame(std::int32_t handle, std::int32_t frame, std::int32_t& status);
/// Writes the head if that is still to do, then the values that are set as one frame. A frame that cannot be written
/// as a whole leaves nothing in the file.
void kvA_TRJ_WriteFrame(std::int32_t handle, std::int32_t& status);

/// The getters: the capacity is the span's size; `count` is what the key yields, also if the capacity is too small.
/// Keys 1071, 1072 and 1073 yield positions, velocities and forces as x1, y1, z1, x2, ...
void kvA_TRJ_ValueDouble(std::int32_t handle, std::int32_t key, std::span<double> values, std::int32_t& count,
                         std::int32_t& status);
void kvA_TRJ_ValueFloat(std::int32_t handle, std::int32_t key, std::span<float> values, std::int32_t& count,
                        std::int32_t& status);
void kvA_TRJ_ValueInt(std::int32_t handle, std::int32_t key, std::span<std::int32_t> values, std::int32_t& count,
                      std::int32_t& status);
void kvA_TRJ_ValueLogical(std::int32_t handle, std::int32_t key, std::span<Logical> values, std::int32_t& count,
                          std::int32_t& status);
/// Each text is cut to `width` characters.
void kvA_TRJ_ValueChar(std::int32_t handle, std::int32_t key, std::span<std::string> texts, std::int32_t width,
                       std::int32_t& count, std::int32_t& status);

/// The setters, for the next frame to be written or for the head. A value stays until it is set again. What stands in
/// the head can only be set before the head is written.
void kvA_TRJ_SetValueDouble(std::int32_t handle, std::int32_t key, std::span<const double> values,
                            std::int32_t& status);
void kvA_TRJ_SetValueFloat(std::int32_t handle, std::int32_t key, std::span<const float> values, std::int32_t& status);
void kvA_TRJ_SetValueInt(std::int32_t handle, std::int32_t key, std::span<const std::int32_t> values,
                         std::int32_t& status);
void kvA_TRJ_SetValueLogical(std::int32_t handle, std::int32_t key, std::span<const Logical> values,
                             std::int32_t& status);
void kvA_TRJ_SetValueChar(std::int32_t handle, std::int32_t key, std::span<const std::string_view> texts,
                          std::int32_t& status);

/// The forms with blank-padded text. Several texts stand one behind the other in fields of `width` characters.
inline void kva_trj_open_(std::string_view name, std::int32_t mode, std::int32_t& handle, std::int32_t& status) {
  kvA_TRJ_Open(std::string(trimmed(name)), mode, handle, status);
}
inline void kva_trj_close_(std::int32_t handle, std::int32_t& status) { kvA_TRJ_Close(handle, status); }
inline void kva_trj_readframe_(std::int32_t handle, std::int32_t frame, std::int32_t& status) {
  kvA_TRJ_ReadFrame(handle, frame, status);
}
inline void kva_trj_writeframe_(std::int32_t handle, std::int32_t& status) { kvA_TRJ_WriteFrame(handle, status); }
inline void kva_trj_valuedouble_(std::int32_t handle, std::int32_t key, std::span<double> values, std::int32_t& count,
                                 std::int32_t& status) {
  kvA_TRJ_ValueDouble(handle, key, values, count, status);
}
inline void kva_trj_valuefloat_(std::int32_t handle, std::int32_t key, std::span<float> values, std::int32_t& count,
                                std::int32_t& status) {
  kvA_TRJ_ValueFloat(handle, key, values, count, status);
}
inline void kva_trj_valueint_(std::int32_t handle, std::int32_t key, std::span<std::int32_t> values,
                              std::int32_t& count, std::int32_t& status) {
  kvA_TRJ_ValueInt(handle, key, values, count, status);
}
inline void kva_trj_valuelogical_(std::int32_t handle, std::int32_t key, std::span<Logical> values, std::int32_t& count,
                                  std::int32_t& status) {
  kvA_TRJ_ValueLogical(handle, key, values, count, status);
}
void kva_trj_valuechar_(std::int32_t handle, std::int32_t key, std::span<char> fields, std::int32_t width,
                        std::int32_t& count, std::int32_t& status);
inline void kva_trj_setvaluedouble_(std::int32_t handle, std::int32_t key, std::span<const double> values,
                                    std::int32_t& status) {
  kvA_TRJ_SetValueDouble(handle, key, values, status);
}
inline void kva_trj_setvaluefloat_(std::int32_t handle, std::int32_t key, std::span<const float> values,
                                   std::int32_t& status) {
  kvA_TRJ_SetValueFloat(handle, key, values, status);
}
inline void kva_trj_setvalueint_(std::int32_t handle, std::int32_t key, std::span<const std::int32_t> values,
                                 std::int32_t& status) {
  kvA_TRJ_SetValueInt(handle, key, values, status);
}
inline void kva_trj_setvaluelogical_(std::int32_t handle, std::int32_t key, std::span<const Logical> values,
                                     std::int32_t& status) {
  kvA_TRJ_SetValueLogical(handle, key, values, status);
}
void kva_trj_setvaluechar_(std::int32_t handle, std::int32_t key, std::string_view fields, std::int32_t width,
                           std::int32_t& status);

}  // namespace pathstat
