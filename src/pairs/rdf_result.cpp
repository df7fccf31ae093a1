#include "pairs/rdf_result.h"

#include <cstddef>

#include "support/whole_file.h"

namespace pathstat {
namespace {

constexpr std::int32_t head_mark = 333, head_kind = 10004;
constexpr std::int64_t head_bytes = 16, tail_bytes = 24;

std::int64_t point_bytes(const RdfHead& head) { return 12 + std::int64_t{8} * head.columns; }

RecordStatus load(RecordReader& file, std::int64_t bytes) {
  const auto status = file.expect(bytes);
  return status == RecordStatus::ok ? file.load() : status;
}

RecordStatus write_records(RecordWriter& file, const RdfHead& head, const RdfColumns<const double>& functions,
                           const RdfTail& tail) {
  RecordBytes record;
  record.i32(head.bins).i32(head.columns).i32(head_mark).i32(head_kind);
  auto status = file.write(record);
  for (std::size_t k = 0; k < static_cast<std::size_t>(head.bins) && status == RecordStatus::ok; ++k) {
    record.clear();
    record.i32(0).f64(functions.distances[k]).f64(functions.total[k]);
    if (head.columns == 3) record.f64(functions.intra[k]).f64(functions.inter[k]);
    status = file.write(record);
  }
  record.clear();
  record.f64(tail.scale).f64(tail.offset).i32(tail.periodic ? 1 : 0).i32(tail.set_type);
  return status == RecordStatus::ok ? file.write(record) : status;
}

}  // namespace

RecordStatus write_rdf(const std::string& path, const RdfHead& head, const RdfColumns<const double>& functions,
                       const RdfTail& tail) {
  return write_whole_file(path, [&](RecordWriter& file) { return write_records(file, head, functions, tail); });
}

RecordStatus read_rdf_head(RecordReader& file, RdfHead& head) {
  const auto status = load(file, head_bytes);
  if (status != RecordStatus::ok) return status;
  BigEndian in(file.payload());
  RdfHead found;
  found.bins = in.i32();
  found.columns = in.i32();
  const bool known = in.i32() == head_mark && in.i32() == head_kind && (found.columns == 1 || found.columns == 3);
  // The spacing of distances takes two of them.
  if (!known || found.bins < 2) return RecordStatus::wrong_length;
  const std::int64_t framing = bytes_between_payloads;
  if (!file.holds(found.bins * (point_bytes(found) + framing) + tail_bytes + framing)) return RecordStatus::cut;
  head = found;
  return RecordStatus::ok;
}

RecordStatus read_rdf_body(RecordReader& file, const RdfHead& head, const RdfColumns<double>& into, RdfTail& tail) {
  for (std::size_t k = 0; k < static_cast<std::size_t>(head.bins); ++k) {
    const auto status = load(file, point_bytes(head));
    if (status != RecordStatus::ok) return status;
    BigEndian in(file.payload());
    in.skip(4);
    into.distances[k] = in.f64();
    into.total[k] = in.f64();
    if (head.columns != 3) continue;
    into.intra[k] = in.f64();
    into.inter[k] = in.f64();
  }
  const auto status = load(file, tail_bytes);
  if (status != RecordStatus::ok) return status;
  BigEndian in(file.payload());
  tail.scale = in.f64();
  tail.offset = in.f64();
  tail.periodic = in.i32() != 0;
  tail.set_type = in.i32();
  return RecordStatus::ok;
}

}  // namespace pathstat
