#include "trajectory/binary_header.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace pathstat {
namespace {

/// Walks the head value by value; after the first value that is not there, ok() is false and everything reads as 0.
class HeaderWalk {
 public:
  explicit HeaderWalk(RecordReader& file) : file_(file) { file_.seek(4); }

  bool ok() const { return ok_; }
  bool require(bool condition) { return ok_ = ok_ && condition; }

  void skip(std::int64_t bytes) {
    if (require(bytes >= 0 && file_.holds(bytes))) file_.seek(file_.position() + bytes);
  }
  void fill(std::span<std::int32_t> values) {
    const auto raw = std::as_writable_bytes(values);
    if (require(file_.read_bytes(raw) == RecordStatus::ok)) {
      load_big_endian(raw.data(), values);
    } else {
      std::ranges::fill(values, 0);
    }
  }
  std::int32_t i32() {
    std::int32_t value = 0;
    fill(std::span(&value, 1));
    return value;
  }
  /// A count of items of `bytes` bytes each that stand behind it; 0 if it is negative or they cannot be there.
  std::int32_t count(std::int64_t bytes) {
    const auto found = i32();
    return require(found >= 0 && file_.holds(found * bytes)) ? found : 0;
  }
  /// The same where a negative count says that there is nothing.
  std::int32_t count_if_any(std::int64_t bytes) {
    const auto found = std::max(i32(), 0);
    return require(file_.holds(found * bytes)) ? found : 0;
  }
  std::vector<std::int32_t> integers(std::int32_t count) {
    std::vector<std::int32_t> values(static_cast<std::size_t>(count));
    fill(values);
    return values;
  }
  std::string text(std::size_t length) {
    std::string characters(length, ' ');
    require(file_.read_bytes(std::as_writable_bytes(std::span(characters))) == RecordStatus::ok);
    return characters;
  }
  std::vector<std::string> texts(std::int32_t count, std::size_t length) {
    std::vector<std::string> all;
    all.reserve(static_cast<std::size_t>(count));
    for (std::int32_t k = 0; k < count && ok_; ++k) all.push_back(text(length));
    return all;
  }

 private:
  RecordReader& file_;
  bool ok_ = true;
};

/// A record of lines; the only kind whose leading length counts, as something may stand behind the lines.
std::vector<std::string> read_lines(HeaderWalk& walk) {
  walk.skip(4);
  const std::int64_t length = static_cast<std::uint32_t>(walk.i32());
  const auto count = walk.count(line_width);
  auto lines = walk.texts(count, line_width);
  walk.skip(length - std::int64_t{line_width} * count - 4);
  return lines;
}

BinaryFlags read_flags(HeaderWalk& walk, std::int32_t version) {
  BinaryFlags flags{};
  if (version < 151) return flags;
  walk.skip(bytes_between_payloads);
  walk.fill(std::span(flags).first(version < 300 ? 5 : 8));
  for (auto& flag : std::span(flags).subspan(1)) flag = flag != 0;
  if (version < 2000 && flags[0] != 0) flags[0] = 3;
  return flags;
}

void read_groups(HeaderWalk& walk, BinaryHeader& header) {
  walk.skip(bytes_between_payloads);
  header.groups = walk.count_if_any(8 + group_name_width);
  header.group_movable = walk.integers(header.groups);
  header.group_atoms = walk.integers(header.groups);
  header.group_names = walk.texts(header.groups, group_name_width);
  const auto least = [](const auto& counts) { return counts.empty() ? 0 : std::ranges::min(counts); };
  const auto total = std::accumulate(header.group_atoms.begin(), header.group_atoms.end(), std::int64_t{0});
  walk.require(least(header.group_movable) >= 0 && least(header.group_atoms) >= 0 &&
               total <= std::numeric_limits<std::int32_t>::max());
  if (walk.ok()) header.total = static_cast<std::int32_t>(total);
}

void read_atoms(HeaderWalk& walk, BinaryHeader& header) {
  if (header.version() < 200) {
    walk.skip(bytes_between_payloads);
    std::array<std::int32_t, 4> counts{};  // the last two are two integers that nothing reads
    walk.fill(counts);
    header.total = counts[0];
    header.movable = counts[1];
    walk.require(header.total >= 0 && header.movable >= 0);
    return;
  }
  read_groups(walk, header);
  walk.skip(bytes_between_payloads);
  header.movable = walk.count(4);
  header.movable_ids = walk.integers(header.movable);
}

RecordBytes lines_record(const std::vector<std::string>& lines) {
  RecordBytes record;
  record.i32(static_cast<std::int32_t>(lines.size()));
  for (const auto& line : lines) record.text(line, line_width);
  return record;
}

RecordBytes groups_record(const BinaryHeader& header) {
  RecordBytes record;
  record.i32(header.groups);
  if (header.groups == 0) return record;
  record.i32(header.movable).i32(header.total);
  for (const auto& name : header.group_names) record.text(name, group_name_width);
  return record;
}

RecordBytes identifiers_record(const BinaryHeader& header) {
  auto ids = header.movable_ids;
  if (ids.empty()) {
    ids.resize(static_cast<std::size_t>(header.movable));
    std::iota(ids.begin(), ids.end(), 0);
  }
  RecordBytes record;
  record.i32(header.movable).all(std::span<const std::int32_t>(ids));
  return record;
}

}  // namespace

bool read_binary_header(RecordReader& file, BinaryHeader& header) {
  HeaderWalk walk(file);
  header.magic = walk.text(4);
  walk.fill(header.integers);
  if (header.version() >= 311) {
    header.titles = read_lines(walk);
    header.comments = read_lines(walk);
  }
  header.flags = read_flags(walk, header.version());
  read_atoms(walk, header);
  for (auto& text : header.texts) {
    walk.skip(bytes_between_payloads);
    const auto length = walk.count(1);
    text = walk.text(static_cast<std::size_t>(length));
  }
  walk.skip(4);
  return walk.ok();
}

bool write_binary_header(RecordWriter& file, const BinaryHeader& header) {
  if (header.groups > 1) return false;
  RecordBytes first;
  first.text(header.magic, 4).all(std::span<const std::int32_t>(header.integers));
  RecordBytes flags;
  flags.all(std::span<const std::int32_t>(header.flags));
  bool written = true;
  for (const auto& record : {first, lines_record(header.titles), lines_record(header.comments), flags,
                             groups_record(header), identifiers_record(header)}) {
    written = written && file.write(record) == RecordStatus::ok;
  }
  for (const auto& text : header.texts) {
    RecordBytes record;
    record.i32(static_cast<std::int32_t>(text.value_or("").size())).text(text.value_or(""));
    written = written && file.write(record) == RecordStatus::ok;
  }
  return written;
}

}  // namespace pathstat
