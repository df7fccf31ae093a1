#include "support/named_memory.h"

#include "testing.h"

namespace pathstat {
namespace {

constexpr std::int64_t huge = std::numeric_limits<std::int64_t>::max();

class NamedMemory : public testing::Test {
 protected:
  void SetUp() override {
    errors.clear();
    set_memory_error_sink([](std::int32_t severity, std::string_view text) {
      EXPECT_EQ(severity, 1);
      errors.emplace_back(text);
    });
  }
  void TearDown() override {
    set_memory_error_sink(nullptr);
    while (dynmem2_.area_count > 0) kvdm_free_(dynmem1_.area_name[0], status);
  }
  std::int32_t alloc(std::string_view name, std::string_view type, std::int64_t count) {
    std::int64_t offset = 0;
    kvdm_alloc_(base.data(), name, count, type, offset, status);
    return status;
  }

  std::vector<double> base = std::vector<double>(4);
  std::int32_t status = -99;
  static inline std::vector<std::string> errors;
};

TEST_F(NamedMemory, refuses_in_the_stated_order_with_the_stated_text) {
  const std::string name32(32, 'n'), name33(33, 'n');
  EXPECT_EQ(alloc(name32 + "   ", "int", 1), 0);
  EXPECT_EQ(alloc(name33, "nothing", -1), -2);
  EXPECT_EQ(alloc(name32, "nothing", -1), -3);
  EXPECT_EQ(alloc("a", "nothing", -1), -1);
  EXPECT_EQ(alloc("a", "int", -12), -4);
  EXPECT_EQ(alloc("a", "int", 0), -5);
  EXPECT_EQ(alloc("a", "double", huge / 8), -1);
  const std::string head = "ERROR in dynamic memory allocation: |";
  EXPECT_THAT(errors, ElementsAre(head + " name ->" + name32 + "...<- is too long, |will not allocate any memory.",
                                  head + "already allocated: " + name32, "kvdm_size: unknown type: nothing",
                                  head + " size for a non-positive:      -12", head + " size for a is  zero",
                                  head + "Can not allocate any memory fora|The most probable cause of this error is "
                                         "that|there is no more swap space available."));
  EXPECT_EQ(dynmem2_.area_count, 1);
}

TEST_F(NamedMemory, holds_five_hundred_areas) {
  for (int k = 0; k < 500; ++k) ASSERT_EQ(alloc("area " + std::to_string(k), "char", 3), 0);
  EXPECT_EQ(alloc("one more", "char", 3), -1);
  EXPECT_THAT(errors, ElementsAre("ERROR in dynamic memory allocation. |Exceeded maximum number of dynamically "
                                  "allocated arrays.|Number allocated:  500    |Maximum allowed:  500"));
  EXPECT_EQ(kvs_msd_free_("area 0", status), 0);
  EXPECT_EQ(alloc("one more", "double", 3), 0);
  EXPECT_EQ(dynmem1_.area_name[0], "area 1");
  EXPECT_EQ(dynmem1_.area_name[499], "one more");
  EXPECT_EQ(dynmem2_.area_unit[499], 8);
}

TEST_F(NamedMemory, an_offset_reaches_the_block_from_any_base) {
  std::array<std::byte, 64> anywhere{};
  const std::array<std::string_view, 4> types{"char", "short", "int", "double"};
  for (std::size_t shift = 0; shift < 16; ++shift)
    for (const auto type : types) {
      std::int64_t offset = 0;
      ASSERT_EQ(status_of(kvdm_alloc_, &anywhere[shift], "block", 10, type, offset), 0);
      const std::int64_t unit = dynmem2_.area_unit[0];
      const auto first = reinterpret_cast<std::intptr_t>(&anywhere[shift]) + (offset - 1) * unit;
      EXPECT_EQ(dynmem2_.area_bytes[0], 11 * unit);
      EXPECT_GE(first, dynmem2_.area_address[0]);
      EXPECT_LE(first + 10 * unit, dynmem2_.area_address[0] + dynmem2_.area_bytes[0]);
      kvdm_free_("block", status);
    }
}

TEST_F(NamedMemory, resizing_keeps_the_common_elements_and_the_place) {
  // An odd base makes the first element shift inside the block from one allocation to the next.
  const char* odd = reinterpret_cast<const char*>(base.data()) + 3;
  std::int64_t offset = 0;
  const auto values = [&] { return pointer_at<char>(reinterpret_cast<std::intptr_t>(odd) + (offset - 1) * 4); };
  kvdm_alloc_(odd, "first", 100, "int", offset, status);
  std::array<std::int32_t, 100> expected{};
  std::iota(expected.begin(), expected.end(), 7);
  std::memcpy(values(), expected.data(), sizeof expected);
  ASSERT_EQ(alloc("second", "int", 1), 0);
  for (const std::int64_t count : {5000, 100, 30, 200, 1}) {
    ASSERT_EQ(status_of(kvdm_realloc_, "first", count, offset), 0);
    EXPECT_EQ(std::memcmp(values(), expected.data(), static_cast<std::size_t>(std::min<std::int64_t>(count, 30)) * 4),
              0);
    EXPECT_EQ(dynmem1_.area_name[0], "first");
  }
  EXPECT_EQ(status_of(kvdm_realloc_, "first", huge / 4, offset), -1);
  EXPECT_EQ(std::memcmp(values(), expected.data(), 4), 0);
  EXPECT_TRUE(errors.empty());
}

TEST_F(NamedMemory, an_owner_frees_its_label_first_and_last) {
  ASSERT_EQ(alloc("PathStat/VAC/vx1", "int", 4), 0);
  {
    NamedBlock<double> block("PathStat/VAC/vx1", 50, status);
    ASSERT_EQ(status, 0);
    EXPECT_THAT(block.span(), Each(0.0));
    block.span()[49] = 1.5;
    NamedBlock<double> moved(std::move(block));
    EXPECT_TRUE(block.span().empty());
    moved.resize(120, status);
    ASSERT_EQ(moved.span().size(), 120u);
    EXPECT_EQ(moved.span()[49], 1.5);
    EXPECT_THAT(moved.span().subspan(50), Each(0.0));
    moved.resize(huge / 8, status);
    EXPECT_NE(status, 0);
    EXPECT_EQ(moved.span()[49], 1.5);
  }
  EXPECT_EQ(dynmem2_.area_count, 0);
}

}  // namespace
}  // namespace pathstat
