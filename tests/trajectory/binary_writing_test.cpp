#include <sys/resource.h>

#include <csignal>

#include "surroundings.h"
#include "testing.h"
#include "trajectory/binary_open.h"

namespace pathstat {
namespace {

using namespace testing_bytes;

/// A trajectory being written.
class Written {
 public:
  explicit Written(const std::string& path, std::int32_t mode = 200) { kvA_TRJ_Open(path, mode, handle, status); }
  Written(const Written&) = delete;
  ~Written() {
    std::int32_t closed = 0;
    if (handle != 0) kvA_TRJ_Close(handle, closed);
  }

  std::int32_t set(std::int32_t key, const std::vector<double>& values) {
    kvA_TRJ_SetValueDouble(handle, key, values, status);
    return status;
  }
  std::int32_t set_integers(std::int32_t key, const std::vector<std::int32_t>& values) {
    kvA_TRJ_SetValueInt(handle, key, values, status);
    return status;
  }
  std::int32_t set_logical(std::int32_t key, bool value) {
    const Logical logical = value;
    kvA_TRJ_SetValueLogical(handle, key, {&logical, 1}, status);
    return status;
  }
  std::int32_t set_texts(std::int32_t key, const std::vector<std::string_view>& texts) {
    kvA_TRJ_SetValueChar(handle, key, texts, status);
    return status;
  }
  std::int32_t write() {
    kvA_TRJ_WriteFrame(handle, status);
    return status;
  }

  std::int32_t handle = 0;
  std::int32_t status = -1;
};

/// Everything that the head of a plan holds, except for its two groups.
void set_head(Written& trj, const BinaryFlags& flags, const std::vector<std::int32_t>& ids) {
  ASSERT_EQ(trj.set_texts(4001, {"SNAP"}), 0);
  ASSERT_EQ(trj.set_texts(4002, {"a title", ""}), 0);
  ASSERT_EQ(trj.set_texts(4004, {"wall"}), 0);
  ASSERT_EQ(trj.set_texts(4005, {"some text "}), 0);
  ASSERT_EQ(trj.set_integers(2008, ids), 0);
  ASSERT_EQ(trj.set_integers(2018, {flags[0]}), 0);
  ASSERT_EQ(trj.set_integers(2020, {5}), 0);
  for (std::int32_t k = 1; k < 8; ++k) ASSERT_EQ(trj.set_logical(3000 + k, flags[static_cast<std::size_t>(k)] != 0), 0);
}

void set_frame(Written& trj, const Frame& frame) {
  for (const auto& [key, values] : frame.floating) ASSERT_EQ(trj.set(key, values), 0) << "key " << key;
  for (const auto& [key, value] : frame.integers) ASSERT_EQ(trj.set_integers(key, {value}), 0) << "key " << key;
}

Bytes expected_head(const BinaryFlags& flags, const std::vector<std::int32_t>& ids) {
  Bytes file;
  Bytes first;
  first.text("SNAP");
  first.i32(2010);
  first.zeros(76);
  file.record(first);
  file.record(lines({"a title", ""}, 0));
  file.record(lines({}, 0));
  Bytes words;
  for (const auto flag : flags) words.i32(flag);
  file.record(words);
  Bytes groups;
  for (const auto value : {1, static_cast<std::int32_t>(ids.size()), 5}) groups.i32(value);
  groups.text("wall    ");
  file.record(groups);
  Bytes atoms;
  atoms.i32(static_cast<std::int32_t>(ids.size()));
  for (const auto id : ids) atoms.i32(id);
  file.record(atoms);
  Bytes text;
  text.i32(10);
  text.text("some text ");
  file.record(text);
  Bytes empty;
  empty.i32(0);
  file.record(empty);
  return file;
}

struct Head {
  BinaryFlags flags;

  friend void PrintTo(const Head& head, std::ostream* out) {
    *out << "flags";
    for (const auto flag : head.flags) *out << ' ' << flag;
  }
};
class BinaryWriting : public testing::TestWithParam<Head> {};

/// The bytes are those of the second writer; velocity and force flags are written as 1.
TEST_P(BinaryWriting, lays_out_head_and_frames) {
  const BinaryFlags flags = GetParam().flags;
  const Plan plan{.flags = flags, .atoms = 3};
  const std::vector<std::int32_t> ids{7, 3, 12};
  FileOnDisk disk;
  {
    Written trj(disk.path());
    ASSERT_EQ(trj.status, 0);
    set_head(trj, flags, ids);
    set_frame(trj, frame(plan, 1));
    ASSERT_EQ(trj.write(), 0);
    set_frame(trj, frame(plan, 2, true));
    ASSERT_EQ(trj.write(), 0);
    set_frame(trj, frame(plan, 3, true, true));
    ASSERT_EQ(trj.write(), 0);
  }
  Bytes expected = expected_head(flags, ids);
  for (std::int32_t k = 1; k <= 3; ++k) {
    const auto start = expected.size();
    expected.add(frame(plan, k, k > 1, k > 2).bytes);
    expected.patch(start + 4 + 476, k > 1);
    expected.patch(start + 4 + 480, k > 2);
  }
  EXPECT_EQ(disk.content(), expected.all());

  Opened again(disk.content());
  for (std::int32_t k = 1; k <= 3; ++k) {
    ASSERT_EQ(again.read(k), 0);
    for (const auto& [key, values] : frame(plan, k, k > 1, k > 2).floating) {
      EXPECT_EQ(again.doubles(key, values.size()).values, values) << "key " << key;
    }
  }
}
INSTANTIATE_TEST_SUITE_P(flags, BinaryWriting,
                         testing::Values(Head{}, Head{{3, 0, 1, 1, 1, 0, 1, 1}}, Head{{1, 1, 1, 0, 0, 1, 1, 0}},
                                         Head{{0, 0, 1, 0, 1, 1, 1, 1}}));

TEST(BinaryAppending, continues_a_file_with_its_own_records) {
  const Plan plan{.flags = {0, 0, 1, 0, 0, 1, 0, 0}};
  FileOnDisk disk(file(plan, 2).all());
  {
    Written trj(disk.path(), 300);
    ASSERT_EQ(trj.status, 0);
    const Frame third = frame(plan, 3);
    for (const auto& [key, values] : third.floating) ASSERT_EQ(trj.set(key, values), 0);
    EXPECT_EQ(trj.set(1052, {1.0}), 50512) << "record 4 where the file has record 3";
    EXPECT_EQ(trj.set_integers(2008, {1, 2}), 50515);
    EXPECT_EQ(trj.set(1071, std::vector<double>(9)), 50511);
    ASSERT_EQ(trj.write(), 0);
  }
  Opened trj(disk.content());
  for (const std::int32_t k : {3, 1, 2}) {
    ASSERT_EQ(trj.read(k), 0);
    EXPECT_EQ(trj.doubles(1048, 1).values[0], number(k, 1048));
    EXPECT_EQ(trj.doubles(1071, 6).values[3], coordinate(k, 1071, 1, 0));
  }
  EXPECT_EQ(trj.read(4), 50519);
}

TEST(BinarySetters, refuse_what_the_file_cannot_hold) {
  FileOnDisk disk;
  Written trj(disk.path());
  EXPECT_EQ(trj.set(9999, {1}), 50514);
  EXPECT_EQ(trj.set(1000, {1, 2}), 50511);
  EXPECT_EQ(trj.set(1071, std::vector<double>(7)), 50511) << "no whole atoms";
  EXPECT_EQ(trj.set_integers(2005, {1}), 50515);
  for (const std::int32_t periodicity : {-1, 4}) EXPECT_EQ(trj.set_integers(2018, {periodicity}), 50516);
  EXPECT_EQ(trj.set_texts(4001, {"MDTRX"}), 50511);
  EXPECT_EQ(trj.set_texts(4002, std::vector<std::string_view>(11, "x")), 50511);
}

TEST(BinaryAppending, refuses_what_it_cannot_continue_and_leaves_it_as_it_was) {
  struct Row {
    std::vector<std::byte> content;
    std::int32_t status;
  };
  for (const auto& row : {Row{file({.version = 2001}, 1).all(), 50505}, Row{file({.version = 2009}, 1).all(), 50505},
                          Row{header({}).part(0, 100).all(), 50504}, Row{Bytes().all(), 50504}}) {
    FileOnDisk disk;
    disk.replace(row.content);
    const Written trj(disk.path(), 300);
    EXPECT_EQ(trj.status, row.status);
    EXPECT_EQ(trj.handle, 0);
    EXPECT_EQ(disk.content(), row.content);
  }
  FileOnDisk missing;
  EXPECT_EQ(Written(missing.path(), 300).status, 50504);
  EXPECT_FALSE(std::filesystem::exists(missing.path()));
  EXPECT_TRUE(kvA_TRJ_TrjList.empty());
}

TEST(BinaryWriter, keeps_the_file_whole_when_the_disk_is_full) {
  FileOnDisk disk;
  Written trj(disk.path());
  ASSERT_EQ(trj.set(1071, std::vector<double>(3 * 10'000, 1.0)), 0);
  const auto with_limit = [&](rlim_t bytes) {
    const FileSizeLimit limit(bytes);
    return trj.write();
  };
  EXPECT_EQ(with_limit(100), 50506);
  EXPECT_EQ(std::filesystem::file_size(disk.path()), 0U);
  ASSERT_EQ(trj.write(), 0);
  const auto whole = std::filesystem::file_size(disk.path());
  EXPECT_EQ(with_limit(whole + 100'000), 50507);
  EXPECT_EQ(std::filesystem::file_size(disk.path()), whole);
  ASSERT_EQ(trj.write(), 0);
  Opened again(disk.content());
  EXPECT_EQ(again.read(2), 0);
  EXPECT_EQ(again.read(3), 50519);
}

}  // namespace
}  // namespace pathstat
