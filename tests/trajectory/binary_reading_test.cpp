#include "trajectory/binary_open.h"

#include "testing.h"

namespace pathstat {
namespace {

using namespace testing_bytes;

constexpr BinaryFlags all_off{};

struct Case {
  std::int32_t version;
  BinaryFlags flags;

  friend void PrintTo(const Case& each, std::ostream* out) {
    *out << "version " << each.version << ", flags";
    for (const auto flag : each.flags) *out << ' ' << flag;
  }
};

/// Every floating key of every version yields what the file holds, and is refused if the file does not hold it.
class BinaryVersion : public testing::TestWithParam<Case> {};

TEST_P(BinaryVersion, holds_each_value_at_its_place) {
  const Plan plan{.version = GetParam().version, .flags = GetParam().flags};
  const bool forces = plan.version == 2010;
  Bytes content = header(plan);
  content.add(frame(plan, 1).bytes);
  const Frame second = frame(plan, 2, true, forces);
  content.add(second.bytes);
  Opened trj(content);
  ASSERT_EQ(trj.status, 0);
  ASSERT_EQ(trj.read(2), 0);
  for (std::int32_t key = 1000; key <= 1102; ++key) {
    const auto expected = second.floating.find(key);
    if (expected == second.floating.end()) {
      EXPECT_EQ(trj.doubles(key, 6).status, 50512) << "key " << key;
      continue;
    }
    const auto wide = trj.doubles(key, expected->second.size());
    EXPECT_EQ(wide.status, 0) << "key " << key;
    EXPECT_EQ(wide.values, expected->second) << "key " << key;
    const auto narrow = trj.floats(key, expected->second.size() + 1);
    EXPECT_TRUE(std::equal(expected->second.begin(), expected->second.end(), narrow.values.begin())) << "key " << key;
  }
  for (std::int32_t key = 2011; key <= 2016; ++key) {
    const auto expected = second.integers.find(key);
    const auto found = trj.integers(key, 1);
    EXPECT_EQ(found.status, expected == second.integers.end() ? 50512 : 0) << "key " << key;
    if (found.status == 0) {
      EXPECT_EQ(found.values[0], expected->second) << "key " << key;
    }
  }
  EXPECT_TRUE(trj.logical(3008));
  EXPECT_EQ(trj.logical(3009), forces);
  EXPECT_EQ(trj.read(3), 50519);
}

constexpr BinaryFlags cell_only{3, 0, 0, 1, 0, 0, 0, 0};
constexpr BinaryFlags thermostat{3, 1, 1, 1, 1, 0, 1, 1};
constexpr BinaryFlags logarithm{1, 0, 1, 0, 1, 1, 1, 1};
constexpr BinaryFlags no_cell{0, 0, 1, 0, 1, 0, 1, 1};

std::vector<Case> cases() {
  std::vector<Case> all;
  for (const std::int32_t version :
       {1, 150, 151, 155, 199, 200, 210, 211, 220, 300, 311, 2000, 2001, 2002, 2009, 2010}) {
    for (const auto& flags : {all_off, cell_only, thermostat, logarithm, no_cell}) {
      if (version < 151 && flags != all_off) continue;  // no flags are stored
      if (version < 300 && flags == logarithm) continue;
      all.push_back({version, flags});
    }
  }
  return all;
}
INSTANTIATE_TEST_SUITE_P(every_version, BinaryVersion, testing::ValuesIn(cases()), [](const auto& row) {
  std::string name = "v" + std::to_string(row.param.version) + "_";
  for (const auto flag : row.param.flags) name += std::to_string(flag);
  return name;
});

TEST(BinaryHeader, yields_what_the_head_holds) {
  for (const std::int32_t behind : {0, 33}) {
    Opened trj(file({.flags = {2, 7, 0, -1, 0, 0, 0, 1}, .text_2 = "second", .bytes_behind_lines = behind}, 1));
    ASSERT_EQ(trj.status, 0);
    EXPECT_THAT(trj.text(4001, 1, 4).values, ElementsAre("MDTR"));
    EXPECT_THAT(trj.text(4002, 3, 13).values, ElementsAre("first title  ", "second title ", ""));
    EXPECT_EQ(trj.text(4003, 1, 80).count, 0);
    EXPECT_THAT(trj.text(4004, 2, 20).values, ElementsAre("solvent ", "wall    "));
    EXPECT_THAT(trj.text(4005, 1, 5).values, ElementsAre("first"));
    EXPECT_THAT(trj.text(4006, 1, 80).values, ElementsAre("second"));
    const std::array<std::pair<std::int32_t, std::int32_t>, 9> single{
        {{2001, 2010}, {2002, 2}, {2003, 0}, {2004, 2}, {2007, 2}, {2009, 10}, {2010, 6}, {2018, 2}, {2020, 3}}};
    for (const auto& [key, value] : single) EXPECT_THAT(trj.integers(key, 1).values, ElementsAre(value)) << key;
    EXPECT_THAT(trj.integers(2005, 2).values, ElementsAre(2, 0));
    EXPECT_THAT(trj.integers(2006, 2).values, ElementsAre(2, 1));
    EXPECT_THAT(trj.integers(2008, 2).values, ElementsAre(10, 11));
    EXPECT_EQ(trj.integers(2017, 20).values[19], 119);
    const std::array<bool, 7> flags{true, false, true, false, false, false, true};
    for (std::int32_t k = 0; k < 7; ++k) EXPECT_EQ(trj.logical(3001 + k), flags[static_cast<std::size_t>(k)]) << k;
    ASSERT_EQ(trj.read(1), 0);
    EXPECT_THAT(trj.integers(2019, 1).values, ElementsAre(1));
  }
}

TEST(BinaryHeader, knows_the_old_forms) {
  struct Row {
    std::int32_t version, stored, periodicity;
  };
  for (const auto& row : {Row{2000, 2, 2}, Row{1999, 2, 3}, Row{1999, 0, 0}, Row{151, -5, 3}, Row{150, 1, 0}}) {
    Opened trj(header({.version = row.version, .flags = {row.stored, 0, 0, 0, 0, 0, 0, 0}}));
    EXPECT_THAT(trj.integers(2018, 1).values, ElementsAre(row.periodicity)) << "version " << row.version;
  }
  Opened oldest(header({.version = 199, .atoms = 3}));
  EXPECT_THAT(oldest.integers(2004, 1).values, ElementsAre(1));
  EXPECT_THAT(oldest.integers(2005, 1).values, ElementsAre(3));
  EXPECT_THAT(oldest.integers(2006, 1).values, ElementsAre(4));
  EXPECT_THAT(oldest.integers(2008, 3).values, ElementsAre(0, 1, 2));
  EXPECT_THAT(oldest.integers(2020, 1).values, ElementsAre(4));
}

TEST(BinaryFrames, end_behind_the_last_one) {
  Opened trj(file({}, 3));
  ASSERT_EQ(trj.read(3), 0);
  EXPECT_EQ(trj.read(4), 50519);
  EXPECT_THAT(trj.integers(2019, 1).values, ElementsAre(0));
  EXPECT_EQ(trj.doubles(1000, 1).status, 50517);
  EXPECT_EQ(trj.read(4), 50519) << "once more, by passing frame 3";
  EXPECT_EQ(trj.read(1), 0);
  EXPECT_EQ(trj.doubles(1000, 1).values[0], number(1, 1000));
  for (const std::int32_t nowhere : {5, 100, std::numeric_limits<std::int32_t>::max(), 0, -1}) {
    EXPECT_EQ(trj.read(nowhere), 50509) << nowhere;
    EXPECT_EQ(trj.doubles(1000, 1).values[0], number(1, 1000)) << "the frame stays";
  }
  EXPECT_EQ(trj.read(2), 0);
  EXPECT_EQ(trj.doubles(1000, 1).values[0], number(2, 1000));

  Opened empty(header({}));
  for (int time = 0; time < 3; ++time) EXPECT_EQ(empty.read(1), 50519);
}

TEST(BinaryFrames, have_velocities_and_forces_by_their_own_flags) {
  const Plan plan;
  Bytes content = header(plan);
  const std::array<Frame, 4> frames{frame(plan, 1), frame(plan, 2, true), frame(plan, 3, true, true),
                                    frame(plan, 4, false, true)};
  for (const auto& each : frames) content.add(each.bytes);
  Opened trj(content);
  for (const std::int32_t k : {1, 2, 3, 4, 1, 3, 2}) {
    ASSERT_EQ(trj.read(k), 0);
    const auto& expected = frames[static_cast<std::size_t>(k - 1)].floating;
    for (const std::int32_t key : {1071, 1072, 1073}) {
      const auto found = trj.doubles(key, 6);
      ASSERT_EQ(found.status, expected.contains(key) ? 0 : 50512) << "frame " << k << " key " << key;
      if (found.status == 0) {
        EXPECT_EQ(found.values, expected.at(key)) << "frame " << k << " key " << key;
      }
    }
  }
}

TEST(BinaryGetters, check_in_their_order) {
  Opened trj(file({.flags = cell_only}, 1));
  std::int32_t count = 0, status = 0;
  kvA_TRJ_ValueDouble(trj.handle + 1, 9999, {}, count, status);
  EXPECT_EQ(status, 50501);
  EXPECT_EQ(trj.doubles(9999, 0).status, 50511);
  EXPECT_EQ(trj.doubles(9999, 1).status, 50517);
  ASSERT_EQ(trj.read(1), 0);
  for (const std::int32_t key : {999, 1103}) EXPECT_EQ(trj.doubles(key, 1).status, 50514) << key;
  for (const std::int32_t key : {1058, 1071}) {
    EXPECT_EQ(trj.doubles(key, 5).status, 50511) << key;
    EXPECT_EQ(trj.doubles(key, 5).count, 6) << key;
  }
  EXPECT_EQ(trj.integers(2017, 19).count, 20);
  EXPECT_EQ(trj.text(4002, 1, 80).status, 50511);
  EXPECT_THAT(trj.text(4002, 1, 80).values, Each(""));
}

TEST(BinaryFiles, are_opened_by_name_and_closed_by_handle) {
  const Plan plan{.flags = thermostat};
  FileOnDisk disk(file(plan, 3).all());
  std::int32_t first = 0, second = 0, status = -1;
  ASSERT_EQ(status_of(kva_trj_open_, disk.path() + "   ", 100, first), 0);
  ASSERT_EQ(status_of(kvA_TRJ_Open, disk.path(), 100, second), 0);
  EXPECT_EQ(second, first + 1);
  EXPECT_EQ(status_of(kvA_TRJ_ReadFrame, second, 3), 0);
  EXPECT_EQ(status_of(kva_trj_close_, first), 0);
  EXPECT_EQ(status_of(kvA_TRJ_ReadFrame, first, 1), 50501);
  EXPECT_EQ(status_of(kvA_TRJ_ReadFrame, second, 1), 0);
  EXPECT_EQ(status_of(kvA_TRJ_WriteFrame, second), 50507);
  kvA_TRJ_Close(second, status);

  for (const auto& [name, mode, code] : {std::tuple{disk.path(), 101, 50502}, std::tuple{disk.path() + "x", 100, 50503},
                                         std::tuple{testing::TempDir(), 100, 50503}}) {
    EXPECT_EQ(status_of(kvA_TRJ_Open, name, mode, first), code) << name;
    EXPECT_EQ(first, 0);
  }
  EXPECT_TRUE(kvA_TRJ_TrjList.empty());
}

}  // namespace
}  // namespace pathstat
