#include "extraction/scratch_format.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "support/whole_file.h"

namespace pathstat {
namespace {

constexpr std::int64_t head_bytes = 5 * std::int64_t{4};
constexpr std::int32_t head_mark = 333;
constexpr std::int64_t framing_bytes = 8;
constexpr std::int64_t longest_record = std::numeric_limits<std::int32_t>::max();

std::int64_t point_bytes(std::int32_t values) { return 12 + std::int64_t{8} * values; }

/// Bytes that the records behind the head take; -1 if a record of such a length cannot be.
std::int64_t body_bytes(const ScratchHead& head) {
  if (head.points < 0 || head.values < 0 || head.extras < 0) return -1;
  if (point_bytes(head.values) > longest_record) return -1;
  std::int64_t bytes = head.points * (point_bytes(head.values) + framing_bytes);
  if (head.kind == kind_models) bytes += 2 * (std::int64_t{4} * head.points + framing_bytes);
  if (head.extras > 0) bytes += std::int64_t{8} * head.extras + framing_bytes;
  return bytes;
}

template <class T>
RecordStatus read_array(RecordReader& file, std::span<T> values) {
  auto status = file.expect(static_cast<std::int64_t>(values.size_bytes()));
  if (status == RecordStatus::ok) status = file.load();
  if (status == RecordStatus::ok) load_big_endian(file.payload().data(), values);
  return status;
}

RecordStatus write_records(RecordWriter& file, const ScratchSeries& series) {
  const ScratchHead& head = series.head;
  RecordBytes record;
  record.i32(head.points).i32(head.values).i32(head_mark).i32(head.kind).i32(head.extras);
  auto status = file.write(record);
  const auto row = static_cast<std::size_t>(head.values);
  for (std::size_t k = 0; k < static_cast<std::size_t>(head.points) && status == RecordStatus::ok; ++k) {
    const auto at = static_cast<std::size_t>(series.first + static_cast<std::int64_t>(k) * series.stride);
    record.clear();
    record.i32(series.numbers[k]).f64(series.x[k]).all(series.values.subspan(at, row));
    status = file.write(record);
  }
  if (head.kind == kind_models) {
    for (const auto& integers : {series.models, series.sizes}) {
      record.clear();
      record.all(integers.first(static_cast<std::size_t>(head.points)));
      if (status == RecordStatus::ok) status = file.write(record);
    }
  }
  if (head.extras > 0) {
    record.clear();
    record.all(series.extras.first(static_cast<std::size_t>(head.extras)));
    if (status == RecordStatus::ok) status = file.write(record);
  }
  return status;
}

}  // namespace

RecordStatus read_scratch_head(RecordReader& file, ScratchHead& head) {
  auto status = file.expect(head_bytes);
  if (status == RecordStatus::ok) status = file.load();
  if (status != RecordStatus::ok) return status;
  BigEndian in(file.payload());
  ScratchHead found;
  found.points = in.i32();
  found.values = in.i32();
  in.skip(4);
  found.kind = in.i32();
  found.extras = in.i32();
  const std::int64_t bytes = body_bytes(found);
  if (bytes < 0 || (found.kind != kind_frames && found.kind != kind_models)) return RecordStatus::wrong_length;
  if (!file.holds(bytes)) return RecordStatus::cut;
  head = found;
  return RecordStatus::ok;
}

RecordStatus read_scratch_points(RecordReader& file, const ScratchHead& head, const ScratchArrays& into) {
  const auto points = static_cast<std::size_t>(head.points);
  const auto row = static_cast<std::size_t>(head.values);
  auto status = RecordStatus::ok;
  for (std::size_t k = 0; k < points; ++k) {
    status = file.expect(point_bytes(head.values));
    if (status == RecordStatus::ok) status = file.load();
    if (status != RecordStatus::ok) return status;
    BigEndian in(file.payload());
    into.numbers[k] = in.i32();
    into.x[k] = in.f64();
    in.fill(into.values.subspan(k * row, row));
  }
  if (head.kind == kind_models) {
    const auto sizes = into.sizes.first(points);
    status = read_array(file, into.models.first(points));
    if (status == RecordStatus::ok) status = read_array(file, sizes);
    if (status != RecordStatus::ok) return status;
    const bool fit = std::ranges::all_of(sizes, [&](std::int32_t size) { return size >= 0 && size <= head.values; });
    if (!fit) return RecordStatus::wrong_length;
  }
  if (head.extras > 0) status = read_array(file, into.extras.first(static_cast<std::size_t>(head.extras)));
  return status;
}

RecordStatus write_scratch(const std::string& path, const ScratchSeries& series) {
  return write_whole_file(path, [&](RecordWriter& file) { return write_records(file, series); });
}

}  // namespace pathstat
