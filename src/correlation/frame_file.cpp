#include "correlation/frame_file.h"

#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>

#include "services/file_units.h"

namespace pathstat {
namespace {

using Transfer = ssize_t (*)(int, const iovec*, int);

/// Moves the bytes of all parts from or to the file's position on.
bool move_all(Transfer transfer, int descriptor, std::span<iovec> parts) {
  while (!parts.empty()) {
    const ssize_t moved = transfer(descriptor, parts.data(), static_cast<int>(parts.size()));
    if (moved < 0 && errno == EINTR) continue;
    if (moved <= 0) return false;
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

FrameFile::FrameFile(std::int32_t unit, std::int64_t atoms) : atoms_(atoms) {
  if (std::FILE* stream = unit_reader(unit)) descriptor_ = ::fileno(stream);
}

bool FrameFile::write(std::int64_t record, const Axes& frame) const {
  std::array<iovec, 3> parts;
  const auto atoms = static_cast<std::size_t>(atoms_);
  std::ranges::transform(std::array{frame.x, frame.y, frame.z}, parts.begin(),
                         [&](auto axis) { return part_of(axis.data(), atoms); });
  return ::lseek(descriptor_, offset(record), SEEK_SET) >= 0 && move_all(::writev, descriptor_, parts);
}

bool FrameFile::read(std::int64_t first, std::int64_t count, const AxesOut& frames, std::size_t stride) const {
  constexpr std::size_t records_at_once = 64;
  std::array<iovec, 3 * records_at_once> parts;
  const auto atoms = static_cast<std::size_t>(atoms_);
  if (::lseek(descriptor_, offset(first), SEEK_SET) < 0) return false;
  const auto end = static_cast<std::size_t>(count) * stride;
  for (std::size_t at = 0; at < end;) {
    std::size_t used = 0;
    for (; used < parts.size() && at < end; at += stride) {
      for (const auto& axis : {frames.x, frames.y, frames.z}) parts[used++] = part_of(axis.data() + at, atoms);
    }
    if (!move_all(::readv, descriptor_, std::span(parts).first(used))) return false;
  }
  return true;
}

}  // namespace pathstat
