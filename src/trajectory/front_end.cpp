#include "trajectory/front_end.h"

#include <array>

#include "coreapi/messages.h"
#include "state/analysis_settings.h"
#include "support/text_field.h"
#include "trajectory/archive_adapter.h"
#include "trajectory/binary_adapter.h"
#include "trajectory/history_adapter.h"

namespace pathstat {

namespace {

struct Ending {
  std::string_view text;
  std::int32_t format;
};
/// The first that fits counts.
constexpr std::array<Ending, 5> endings{{
    {"his", reader::history},
    {"arc", reader::archive},
    {"atrj", reader::binary},
    {"qtrj", reader::binary},
    {"trj", reader::binary},
}};

/// The reader of a format; null for one that can't be read.
const TrajectoryReader* reader_of(std::int32_t format) {
  switch (format) {
    case reader::history:
      return &history_reader;
    case reader::archive:
      return &archive_reader;
    case reader::binary:
      return &binary_reader;
    default:
      return nullptr;
  }
}

std::int32_t format_of(std::string_view name) {
  for (const Ending& ending : endings) {
    if (name.ends_with(ending.text)) return ending.format;
  }
  return 0;
}

/// Hands a call on to the reader of the trajectory's format.
template <class Operation, class... Arguments>
void forward(Operation TrajectoryReader::*operation, std::int32_t& status, Arguments&&... arguments) {
  const TrajectoryReader* reader = reader_of(trj_i_.trj_format);
  status = reader == nullptr ? trajectory_status::unknown_format : 0;
  if (reader != nullptr) (reader->*operation)(std::forward<Arguments>(arguments)..., status);
}

}  // namespace

void trj_openread_(std::string_view name, std::int32_t mode, std::int32_t& handle, std::int32_t& status) {
  name = trimmed(name);
  const std::int32_t format = format_of(name);
  if (format != 0) trj_i_.trj_format = format;
  if (reader_of(format) == nullptr) {
    show_message("PATHSTAT_ERROR_108");
    status = trajectory_status::unknown_format;
    return;
  }
  forward(&TrajectoryReader::open, status, name, mode, handle);
}

void trj_attachtomodels_(std::int32_t handle, std::span<const std::int32_t> models, std::int32_t& status) {
  forward(&TrajectoryReader::attach, status, handle, models);
}

void trj_readframe_(std::int32_t handle, std::int32_t frame, std::int32_t& status) {
  forward(&TrajectoryReader::read_frame, status, handle, frame);
}

void trj_dvalue_(std::int32_t handle, std::int32_t key, std::span<double> values, std::int32_t& count,
                 std::int32_t& status) {
  forward(&TrajectoryReader::doubles, status, handle, key, values, count);
}

void trj_rvalue_(std::int32_t handle, std::int32_t key, std::span<float> values, std::int32_t& count,
                 std::int32_t& status) {
  forward(&TrajectoryReader::reals, status, handle, key, values, count);
}

void trj_ivalue_(std::int32_t handle, std::int32_t key, std::span<std::int32_t> values, std::int32_t& count,
                 std::int32_t& status) {
  forward(&TrajectoryReader::integers, status, handle, key, values, count);
}

void trj_lvalue_(std::int32_t handle, std::int32_t key, std::span<Logical> values, std::int32_t& count,
                 std::int32_t& status) {
  forward(&TrajectoryReader::logicals, status, handle, key, values, count);
}

void trj_cvalue_(std::int32_t handle, std::int32_t key, std::span<char> fields, std::int32_t width, std::int32_t& count,
                 std::int32_t& status) {
  forward(&TrajectoryReader::texts, status, handle, key, fields, width, count);
}

void trj_close_(std::int32_t handle, std::int32_t& status) { forward(&TrajectoryReader::close, status, handle); }

void trj_dvalue_(std::int32_t handle, std::int32_t key, double& value, std::int32_t& status) {
  std::int32_t count = 0;
  trj_dvalue_(handle, key, std::span(&value, 1), count, status);
}

void trj_ivalue_(std::int32_t handle, std::int32_t key, std::int32_t& value, std::int32_t& status) {
  std::int32_t count = 0;
  trj_ivalue_(handle, key, std::span(&value, 1), count, status);
}

void trj_lvalue_(std::int32_t handle, std::int32_t key, Logical& value, std::int32_t& status) {
  std::int32_t count = 0;
  trj_lvalue_(handle, key, std::span(&value, 1), count, status);
}

}  // namespace pathstat
