#include "correlation/frame_file.h"

#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>

#include "coreapi/messages.h"
#include "correlation/frame_sink.h"
#include "services/unit_paths.h"

namespace pathstat {
namespace {

using Transfer = ssize_t (*)(int, const iovec*, int, off_t);

/// Moves the bytes of all parts from or to the file's place.
bool move_all(Transfer transfer, int descriptor, std::int64_t place, std::span<iovec> parts) {
  while (!parts.empty()) {
    const ssize_t moved = transfer(descriptor, parts.data(), static_cast<int>(parts.size()), place);
    if (moved < 0 && errno == EINTR) continue;
    if (moved <= 0) return false;
    place += moved;
    auto left = static_cast<std::size_t>(moved);
    while (!parts.empty() && left >= parts[0].iov_len) {
      left -= parts[0].iov_len;
      parts = parts.subspan(1);
    }
    if (left > 0) parts[0] = {static_cast<std::byte*>(parts[0].iov_base) + left, parts[0].iov_len - left};
  }
  return true;
}

iovec part_of(const double* values, std::size_t count) {
  return {const_cast<double*>(values), count * sizeof(double)};  // the system's type serves reading and writing
}

}  // namespace

FileUnit open_cache(std::string_view file, std::int32_t record_words, std::int32_t& status) {
  status = 0;
  FileUnit unit(file, {.record_words = record_words}, status);
  if (status == unit_error::none_free) {
    show_message("PATHSTAT_ERROR_12");
  } else if (!unit) {
    status = cache_status::not_written;
  } else {
    std::remove(unit_path(file).c_str());
  }
  return unit;
}

int cache_descriptor(std::int32_t unit) {
  std::FILE* const stream = unit_reader(unit);
  return stream == nullptr ? -1 : ::fileno(stream);
}

bool write_values(int descriptor, std::int64_t place, std::span<const double> values) {
  iovec part = part_of(values.data(), values.size());
  return move_all(::pwritev, descriptor, place, std::span(&part, 1));
}

bool read_values(int descriptor, std::int64_t place, std::span<double> values) {
  iovec part = part_of(values.data(), values.size());
  return move_all(::preadv, descriptor, place, std::span(&part, 1));
}

FrameFile::FrameFile(std::int32_t unit, std::int64_t atoms) : descriptor_(cache_descriptor(unit)), atoms_(atoms) {}

bool FrameFile::write(std::int64_t record, const Axes& frame) const {
  std::array<iovec, 3> parts;
  const auto atoms = static_cast<std::size_t>(atoms_);
  std::ranges::transform(std::array{frame.x, frame.y, frame.z}, parts.begin(),
                         [&](auto axis) { return part_of(axis.data(), atoms); });
  return move_all(::pwritev, descriptor_, offset(record), parts);
}

bool FrameFile::read(std::int64_t first, std::int64_t count, const AxesOut& frames, std::size_t stride) const {
  constexpr std::size_t records_at_once = 64;
  std::array<iovec, 3 * records_at_once> parts;
  const auto atoms = static_cast<std::size_t>(atoms_);
  std::int64_t place = offset(first);
  const auto end = static_cast<std::size_t>(count) * stride;
  for (std::size_t at = 0; at < end;) {
    std::size_t used = 0;
    for (; used < parts.size() && at < end; at += stride) {
      for (const auto& axis : {frames.x, frames.y, frames.z}) parts[used++] = part_of(axis.data() + at, atoms);
    }
    if (!move_all(::preadv, descriptor_, place, std::span(parts).first(used))) return false;
    place += static_cast<std::int64_t>(used / 3) * offset(2);
  }
  return true;
}

}  // namespace pathstat
