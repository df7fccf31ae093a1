#include "structure/model_file.h"

#include <new>

#include "services/file_names.h"

namespace pathstat {

namespace {

std::int32_t took(QFXio& file, std::FILE* stream, ModelFileState state) {
  if (stream == nullptr) return 1;
  file.stream = stream;
  file.state = state;
  return 0;
}

std::int32_t open(QFXio& file, const char* mode, ModelFileState state) {
  if (!FIL_QFXioIsClosed(file)) return 1;
  return took(file, std::fopen(file.name.c_str(), mode), state);
}

}  // namespace

QFXio* FIL_QFXioCreate(std::string_view name) {
  try {
    auto file = std::make_unique<QFXio>();
    file->name = name;
    return file.release();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void FIL_QFXioDestroy(QFXio* file) {
  if (file == nullptr) return;
  if (!FIL_QFXioIsClosed(*file)) FIL_QFXioClose(*file);
  delete file;
}

bool FIL_QFXioIsReading(const QFXio& file) { return file.state == model_file_reading; }
bool FIL_QFXioIsWriting(const QFXio& file) { return file.state == model_file_writing; }
bool FIL_QFXioIsClosed(const QFXio& file) { return file.state == model_file_closed; }

std::int32_t FIL_QFXioOpenRead(QFXio& file) { return open(file, "r", model_file_reading); }
std::int32_t FIL_QFXioOpenWrite(QFXio& file) { return open(file, "w", model_file_writing); }
std::int32_t FIL_QFXioOpenAppend(QFXio& file) { return open(file, "a", model_file_writing); }

std::int32_t FIL_QFXioOpenSearchRead(QFXio& file) {
  if (!FIL_QFXioIsClosed(file)) return 1;
  char path[64];
  return took(file, kvS_FIL_OpenSearch(file.name, "r", path), model_file_reading);
}

std::int32_t FIL_QFXioClose(QFXio& file) {
  if (!FIL_QFXioIsReading(file) && !FIL_QFXioIsWriting(file)) return FIL_QFXioIsClosed(file) ? 0 : 1;
  const bool wrote = FIL_QFXioIsWriting(file);
  const bool failed = std::fclose(file.stream) != 0;
  file.stream = nullptr;
  file.state = model_file_closed;
  file.block_begin = file.block_end = 0;
  return wrote && failed ? 1 : 0;
}

}  // namespace pathstat
