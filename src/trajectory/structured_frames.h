#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "structure/model_file.h"

// Frames as nested objects in a structured model file. One file is open at a time, for writing here or for reading in
// the Core. Status 1 stands for any refusal.

namespace pathstat {

/// What TRJ_OpenMode and TRJ_CloseMode tell.
namespace structured_mode {
constexpr std::int32_t none = 0;
constexpr std::int32_t read = 1;
constexpr std::int32_t write = 2;
}  // namespace structured_mode

inline ModelFile trj_file;              ///< the file being written, or null
inline std::int32_t TRJ_OpenMode = 0;   ///< kind of the file that is open
inline std::int32_t TRJ_CloseMode = 0;  ///< kind of the file that was closed last
inline std::string TRJ_OpenedFileName;

/// An object identifier that no frame has had before in this process.
std::int32_t new_frameid();

/// Opens a file to which frames are added behind what it holds.
void kvD_TRJ_OpenWrite(std::string_view name, std::int32_t& status);
/// Lets the Core open the file; raises "kvD_TRJ_OpenRead1" with the name if it cannot.
void kvD_TRJ_OpenRead(std::string_view name, std::int32_t& status);
/// Closes what is open. Objects still open in a written file are ended first.
void kvD_TRJ_Close(std::int32_t& status);
/// Closes the written file.
std::int32_t TRJ_Close();

/// Starts an object of class "Frame" whose label is the number; one frame is open at a time.
void kvD_TRJ_StartFrame(std::int32_t number, std::int32_t& status, std::int32_t& object);
/// Ends the frame; refused while objects inside it are open.
void kvD_TRJ_EndFrame(std::int32_t& status);
/// The three write into the open frame as FIL_WriteAttr, FIL_PushObject and FIL_PopObject do.
void kvD_TRJ_WriteAttr(std::string_view name, std::int32_t type, const AttributeValues& values, std::int32_t& status);
void kvD_TRJ_PushObj(std::int32_t id, std::string_view class_name, std::string_view label, std::int32_t& status);
void kvD_TRJ_PopObj(std::int32_t& status);

}  // namespace pathstat
