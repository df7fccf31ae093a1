#include "trajectory/structured_frames.h"

#include "coreapi/messages.h"

namespace pathstat {
namespace {

constexpr std::int32_t refused = 1;
constexpr std::int32_t frame_depth = 1;  // objects that are open when a frame is and nothing in it

bool frame_is_open() { return trj_file && trj_file->depth >= frame_depth; }

void opened(std::int32_t mode, std::string_view name) {
  TRJ_OpenMode = mode;
  TRJ_OpenedFileName = name;
}

}  // namespace

std::int32_t new_frameid() {
  static std::int32_t last = 0;
  return ++last;
}

void kvD_TRJ_OpenWrite(std::string_view name, std::int32_t& status) {
  status = refused;
  if (TRJ_OpenMode != structured_mode::none) return;
  ModelFile file(FIL_QFXioCreate(name));
  if (!file || FIL_QFXioOpenAppend(*file) != 0) return;
  trj_file = std::move(file);
  opened(structured_mode::write, name);
  status = 0;
}

void kvD_TRJ_OpenRead(std::string_view name, std::int32_t& status) {
  status = refused;
  if (TRJ_OpenMode != structured_mode::none) return;
  std::int32_t error = 0;
  kvD_TRJ_OpenReadCore(name, error);
  if (error != 0) {
    show_message("kvD_TRJ_OpenRead1", name);
    return;
  }
  opened(structured_mode::read, name);
  status = 0;
}

void kvD_TRJ_Close(std::int32_t& status) {
  status = refused;
  if (TRJ_OpenMode == structured_mode::none) return;
  std::int32_t error = 0;
  if (TRJ_OpenMode == structured_mode::write) {
    error = TRJ_Close();
  } else {
    kvD_TRJ_CloseCore(error);
  }
  TRJ_CloseMode = TRJ_OpenMode;
  opened(structured_mode::none, {});
  status = error == 0 ? 0 : refused;
}

std::int32_t TRJ_Close() {
  if (!trj_file) return refused;
  std::int32_t status = 0;
  while (trj_file->depth > 0 && status == 0) status = FIL_PopObject(*trj_file);
  if (FIL_QFXioClose(*trj_file) != 0) status = refused;
  trj_file.reset();
  return status;
}

void kvD_TRJ_StartFrame(std::int32_t number, std::int32_t& status, std::int32_t& object) {
  object = 0;
  status = refused;
  if (!trj_file || frame_is_open()) return;
  const auto id = new_frameid();
  status = FIL_PushObject(*trj_file, id, "Frame", std::to_string(number));
  if (status == 0) object = id;
}

void kvD_TRJ_EndFrame(std::int32_t& status) {
  status = trj_file && trj_file->depth == frame_depth ? FIL_PopObject(*trj_file) : refused;
}

void kvD_TRJ_WriteAttr(std::string_view name, std::int32_t type, const AttributeValues& values, std::int32_t& status) {
  status = frame_is_open() ? FIL_WriteAttr(*trj_file, name, type, values) : refused;
}

void kvD_TRJ_PushObj(std::int32_t id, std::string_view class_name, std::string_view label, std::int32_t& status) {
  status = frame_is_open() ? FIL_PushObject(*trj_file, id, class_name, label) : refused;
}

void kvD_TRJ_PopObj(std::int32_t& status) {
  status = frame_is_open() && trj_file->depth > frame_depth ? FIL_PopObject(*trj_file) : refused;
}

}  // namespace pathstat
