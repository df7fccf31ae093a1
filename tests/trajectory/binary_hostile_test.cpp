#include <fcntl.h>

#include "testing.h"
#include "trajectory/binary_open.h"

namespace pathstat {
namespace {

using namespace testing_bytes;

constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t smallest = std::numeric_limits<std::int32_t>::min();

/// As many records as the version can have.
Plan rich(std::int32_t version) {
  if (version < 151) return {.version = version};
  return {.version = version, .flags = {3, 1, 1, 1, 1, 0, 1, 1}};
}

TEST(BinaryDamage, a_file_cut_at_any_byte_gives_a_status) {
  for (const std::int32_t version : {100, 199, 250, 2001, 2010}) {
    const Plan plan = rich(version);
    Bytes whole = header(plan);
    const auto head = whole.size();
    whole.add(frame(plan, 1, true, version == 2010).bytes);
    const auto first = whole.size();
    whole.add(frame(plan, 2, true).bytes);
    for (std::size_t kept = 0; kept < whole.size(); ++kept) {
      SCOPED_TRACE(testing::Message() << "version " << version << " cut to " << kept << " bytes");
      Opened trj(whole.part(0, kept));
      ASSERT_EQ(trj.status, kept < head ? 50503 : 0);
      if (kept < head) continue;
      ASSERT_EQ(trj.read(1), kept < first ? 50519 : 0);
      ASSERT_EQ(trj.read(2), kept < first ? 50509 : 50519);
    }
  }
}

TEST(BinaryDamage, a_count_that_cannot_be_is_refused) {
  const Bytes newest = header({.titles = {}});
  const Bytes oldest = header({.version = 199});
  // Behind the 92 bytes of the first record: the records of lines (12 bytes each when empty), flags (40), groups (44),
  // identifiers (20) and the first text (22).
  struct Row {
    const Bytes* head;
    std::size_t offset;
    std::vector<std::int32_t> counts;
  };
  const std::vector<std::int32_t> any{largest, largest / 80, 100, -1, smallest};
  const std::array rows{Row{&newest, 92 + 4, any},                        // titles
                        Row{&newest, 104 + 4, any},                       // comments
                        Row{&newest, 156 + 4, {largest, 100}},            // groups, of which there may be none
                        Row{&newest, 156 + 8, {-1, smallest}},            // movable atoms of a group
                        Row{&newest, 156 + 16, {largest, -1, smallest}},  // atoms of a group, and their sum
                        Row{&newest, 200 + 4, any},                       // movable atoms
                        Row{&newest, 220 + 4, any},                       // characters of the first text
                        Row{&newest, 242 + 4, any},                       // characters of the second text
                        Row{&oldest, 120 + 4, {-1, smallest}},            // atoms, old form
                        Row{&oldest, 120 + 8, {-1, smallest}}};           // movable atoms, old form
  for (const auto& row : rows) {
    for (const auto count : row.counts) {
      Bytes content = *row.head;
      content.patch(row.offset, count);
      EXPECT_EQ(Opened(content).status, 50503) << "count " << count << " at " << row.offset;
    }
    EXPECT_EQ(Opened(*row.head).status, 0);
  }
}

TEST(BinaryDamage, atoms_that_the_file_cannot_hold_take_no_memory) {
  for (const std::int32_t atoms : {largest, largest / 4}) {
    Bytes content = header({.version = 199});
    content.patch(92 + 28 + 8, atoms);
    content.add(frame({.version = 199}, 1).bytes);
    Opened trj(content);
    ASSERT_EQ(trj.status, 0);
    EXPECT_EQ(trj.read(1), 50510);
    EXPECT_EQ(trj.integers(2008, 4).status, 50511);
  }
}

TEST(BinaryDamage, a_record_of_another_length_is_refused_and_the_frame_stays) {
  const Plan plan = rich(2010);
  const Frame second = frame(plan, 2, true, true);
  const std::array<std::int32_t, 7> scalars{492, 96, 32, 176, 116, 24, 8};
  std::vector<std::size_t> lengths_at;
  std::size_t at = 0;
  for (const auto length : scalars) {
    lengths_at.push_back(at);
    at += static_cast<std::size_t>(length) + 8;
  }
  lengths_at.push_back(at);
  at += 64;
  for (int axis = 0; axis < 9; ++axis, at += 24) lengths_at.push_back(at);
  ASSERT_EQ(at, second.bytes.size());
  for (const auto damaged : lengths_at) {
    for (const std::int32_t length : {0, 15, -1, largest}) {
      Bytes content = file(plan, 1);
      const auto start = content.size();
      content.add(second.bytes);
      content.add(frame(plan, 3).bytes);
      content.patch(start + damaged, length);
      Opened trj(content);
      ASSERT_EQ(trj.read(1), 0);
      ASSERT_EQ(trj.read(2), 50510) << "record at " << damaged;
      EXPECT_EQ(trj.doubles(1000, 1).values[0], number(1, 1000));
      EXPECT_EQ(trj.doubles(1071, 6).values[5], coordinate(1, 1071, 1, 2));
      EXPECT_EQ(trj.doubles(1072, 6).status, 50512);
      EXPECT_EQ(trj.read(3), 50509) << "it lies behind a frame that cannot be passed";
    }
  }
}

TEST(BinaryDamage, a_file_that_shrinks_loses_its_coordinates_with_a_status) {
  const Plan plan{.atoms = 1000};
  FileOnDisk disk(file(plan, 2).all());
  std::int32_t handle = 0, status = -1, count = 0;
  kvA_TRJ_Open(disk.path(), 100, handle, status);
  ASSERT_EQ(status_of(kvA_TRJ_ReadFrame, handle, 2), 0);
  std::filesystem::resize_file(disk.path(), std::filesystem::file_size(disk.path()) - 20'000);
  std::vector<double> values(3000);
  EXPECT_EQ(status_of(kvA_TRJ_ValueDouble, handle, 1071, values, count), 50510);
  EXPECT_EQ(status_of(kvA_TRJ_ReadFrame, handle, 1), 0);
  EXPECT_EQ(status_of(kvA_TRJ_ValueDouble, handle, 1071, values, count), 0);
  EXPECT_EQ(values[2999], coordinate(1, 1071, 999, 2));
  EXPECT_EQ(status_of(kvA_TRJ_ReadFrame, handle, 2), 50519);
  kvA_TRJ_Close(handle, status);
}

TEST(BinaryDamage, any_bytes_are_answered) {
  const unsigned seed = std::random_device{}();
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937 random(seed);
  for (int round = 0; round < 3000; ++round) {
    const std::array<std::int32_t, 5> versions{100, 210, 1999, 2002, 2010};
    Bytes content = file(rich(versions[random() % versions.size()]), 3);
    for (int change = 0; change < 1 + round % 4; ++change) {
      const std::array<std::int32_t, 6> values{largest, smallest, -1, 0, 1, static_cast<std::int32_t>(random())};
      content.patch(random() % (content.size() - 4), values[random() % values.size()]);
    }
    Opened trj(content);
    for (const std::int32_t frame : {1, 3, 2, 4}) {
      if (trj.status != 0 || trj.read(frame) != 0) continue;
      for (const std::int32_t key : {1000, 1058, 1071, 1072, 1102}) {
        const auto answer = trj.doubles(key, 6);
        EXPECT_TRUE(answer.status == 0 || answer.status == 50511 || answer.status == 50512) << answer.status;
      }
    }
  }
}

/// Offsets beyond 4 GiB: a file of holes with real bytes where the frames' heads and the last coordinates are.
TEST(BinaryLargeFile, late_frames_are_read) {
  const Plan plan{.flags = {3, 0, 0, 0, 0, 0, 0, 0}, .atoms = 2'000'000, .titles = {}};
  const std::int32_t frames = 100;
  const std::int64_t axis = std::int64_t{8} * plan.atoms + 8;
  const Plan without_atoms{.flags = plan.flags, .atoms = 0};
  const auto scalars = static_cast<std::int64_t>(frame(without_atoms, 1).bytes.size()) - 3 * 8;
  FileOnDisk disk(header(plan).all());
  const auto head = static_cast<std::int64_t>(std::filesystem::file_size(disk.path()));
  const int fd = ::open(disk.path().c_str(), O_WRONLY);
  const auto put = [&](std::int64_t offset, const Bytes& bytes) {
    ASSERT_EQ(::pwrite(fd, bytes.all().data(), bytes.size(), offset), static_cast<ssize_t>(bytes.size()));
  };
  Bytes length;
  length.i32(8 * plan.atoms);
  for (std::int32_t k = 1; k <= frames; ++k) {
    const auto start = head + (k - 1) * (scalars + 3 * axis);
    const auto heads = frame(without_atoms, k).bytes.part(0, static_cast<std::size_t>(scalars));
    put(start, heads);
    for (int record = 0; record < 3; ++record) {
      put(start + scalars + record * axis, length);
      put(start + scalars + (record + 1) * axis - 4, length);
    }
  }
  Bytes last;
  last.f64(12.5);
  put(head + frames * (scalars + 3 * axis) - 4 - 8, last);
  ::close(fd);
  ASSERT_GT(std::filesystem::file_size(disk.path()), std::uintmax_t{1} << 32);

  std::int32_t handle = 0, status = -1, count = 0;
  ASSERT_EQ(status_of(kvA_TRJ_Open, disk.path(), 100, handle), 0);
  for (const std::int32_t k : {frames, 1, frames - 1, frames}) {
    ASSERT_EQ(status_of(kvA_TRJ_ReadFrame, handle, k), 0) << k;
    double energy = 0;
    kvA_TRJ_ValueDouble(handle, 1032, {&energy, 1}, count, status);
    EXPECT_EQ(energy, number(k, 1032));
  }
  std::vector<double> positions(3 * static_cast<std::size_t>(plan.atoms));
  EXPECT_EQ(status_of(kvA_TRJ_ValueDouble, handle, 1071, positions, count), 0);
  EXPECT_EQ(positions.back(), 12.5);
  EXPECT_EQ(positions[positions.size() - 2], 0.0);
  EXPECT_EQ(status_of(kvA_TRJ_ReadFrame, handle, frames + 1), 50519);
  kvA_TRJ_Close(handle, status);
}

}  // namespace
}  // namespace pathstat
