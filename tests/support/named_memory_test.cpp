#include "support/named_memory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <numeric>
#include <string>
#include <vector>

namespace pathstat {
namespace {

using testing::ElementsAre;
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
  std::int64_t address = 0;
  static inline std::vector<std::string> errors;
};

TEST_F(NamedMemory, type_names_are_matched_by_their_beginning_in_table_order) {
  struct Case {
    const char* type;
    std::int64_t bytes;
  };
  for (const auto& [type, bytes] : {Case{"i", 4},
                                    {"D", 8},
                                    {"double precision", 8},
                                    {"b", 1},
                                    {"c", 1},
                                    {"character", 1},
                                    {"s", 2},
                                    {"f", 4},
                                    {"Real ", 4},
                                    {"LOGICAL", 4},
                                    {"integer2", 2},
                                    {"byte8", 8}}) {
    std::int64_t got = 0;
    kvdm_size_(type, got, status);
    EXPECT_EQ(status, 0) << type;
    EXPECT_EQ(got, bytes) << type;
  }
  std::int64_t got = 0;
  kvdm_size_("complex", got, status);
  EXPECT_EQ(status, -1);
  EXPECT_EQ(got, 4);
  EXPECT_THAT(errors, ElementsAre("kvdm_size: unknown type: complex"));
}

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
}

TEST_F(NamedMemory, an_offset_reaches_the_block_from_any_base) {
  std::array<std::byte, 64> anywhere{};
  const std::array<std::string_view, 4> types{"char", "short", "int", "double"};
  for (std::size_t shift = 0; shift < 16; ++shift)
    for (const auto type : types) {
      std::int64_t offset = 0, count = 0;
      kvdm_alloc_(&anywhere[shift], "block", 10, type, offset, status);
      ASSERT_EQ(status, 0);
      const std::int64_t unit = dynmem2_.area_unit[0];
      const auto first = reinterpret_cast<std::intptr_t>(&anywhere[shift]) + (offset - 1) * unit;
      EXPECT_EQ(dynmem2_.area_bytes[0], 11 * unit);
      EXPECT_GE(first, dynmem2_.area_address[0]);
      EXPECT_LE(first + 10 * unit, dynmem2_.area_address[0] + dynmem2_.area_bytes[0]);
      kvdm_nunits_("block", count, status);
      EXPECT_EQ(count, 10);
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
    kvdm_realloc_("first", count, offset, status);
    ASSERT_EQ(status, 0);
    EXPECT_EQ(std::memcmp(values(), expected.data(), static_cast<std::size_t>(std::min<std::int64_t>(count, 30)) * 4),
              0);
    EXPECT_EQ(dynmem1_.area_name[0], "first");
  }
  kvdm_realloc_("first", huge / 4, offset, status);
  EXPECT_EQ(status, -1);
  EXPECT_EQ(std::memcmp(values(), expected.data(), 4), 0);
  EXPECT_TRUE(errors.empty());
  kvdm_realloc_("third", 5, offset, status);
  EXPECT_EQ(status, -1);
  kvdm_realloc_("first", -5, offset, status);
  EXPECT_EQ(status, -4);
  EXPECT_EQ(errors.at(0), "ERROR in dynamic memory allocation :not allocated third");
}

TEST_F(NamedMemory, freeing_moves_later_areas_up) {
  for (const auto* name : {"a", "b", "c"}) ASSERT_EQ(alloc(name, name[0] == 'c' ? "double" : "int", 4), 0);
  EXPECT_EQ(kvs_msd_free_("b", status), 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(dynmem2_.area_count, 2);
  EXPECT_EQ(dynmem1_.area_name[0], "a");
  EXPECT_EQ(dynmem1_.area_name[1], "c");
  EXPECT_EQ(dynmem2_.area_unit[1], 8);
  EXPECT_EQ(dynmem1_.area_name[2], "");
  EXPECT_EQ(kvs_msd_free_("b", status), 1);
  EXPECT_EQ(status, -1);
  EXPECT_TRUE(errors.empty());
}

TEST_F(NamedMemory, the_table_is_printed_in_allocation_order) {
  testing::internal::CaptureStdout();
  kvs_msd_debug_();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "No memory currently allocated by, kvdm_alloc or kvdm_calloc\n");
  ASSERT_EQ(alloc("a", "int", 4), 0);
  ASSERT_EQ(alloc("b", "double", 9), 0);
  testing::internal::CaptureStdout();
  kvs_msd_debug_();
  const std::string text = testing::internal::GetCapturedStdout();
  const std::string pad(31, ' ');
  EXPECT_TRUE(text.starts_with("\n DEBUG information from kvdm_debug\n   2 areas out of maximum  500\n\n Area"));
  EXPECT_NE(text.find("\n    1 a" + pad + "    4       20 "), std::string::npos) << text;
  EXPECT_NE(text.find("\n    2 b" + pad + "    8       80 "), std::string::npos) << text;
  EXPECT_TRUE(text.ends_with("\n-----\nTotal         100\n-----\n")) << text;
}

TEST_F(NamedMemory, the_service_layer_gives_addresses) {
  EXPECT_EQ(kvs_msd_alloc_("x", "double", 0, address, status), 0);
  EXPECT_EQ(kvs_msd_numunits_("x", status), 1);
  EXPECT_EQ(address % 8, 0);
  *pointer_at<double>(address) = 2.5;
  std::int64_t found = 0;
  EXPECT_EQ(kvS_MSD_Loc("x", found, status), 0);
  EXPECT_EQ(found, address);
  EXPECT_EQ(kvs_msd_realloc_("x", 1000, address, status), 0);
  ASSERT_EQ(named_span<double>("x").size(), 1000u);
  EXPECT_EQ(named_span<double>("x")[0], 2.5);
  EXPECT_TRUE(named_span<float>("x").empty());
  EXPECT_EQ(kvs_msd_alloc_("x", "int", 1, found, status), -3);
  EXPECT_EQ(found, 0);
  EXPECT_EQ(kvs_msd_loc_("y", found, status), 1);
  EXPECT_EQ(kvs_msd_numunits_("y", status), 0);
  EXPECT_NE(status, 0);
}

TEST_F(NamedMemory, an_owner_frees_its_label_first_and_last) {
  ASSERT_EQ(alloc("PathStat/VAC/vx1", "int", 4), 0);
  {
    NamedBlock<double> block("PathStat/VAC/vx1", 50, status);
    ASSERT_EQ(status, 0);
    EXPECT_THAT(block.span(), testing::Each(0.0));
    block.span()[49] = 1.5;
    NamedBlock<double> moved(std::move(block));
    EXPECT_TRUE(block.span().empty());
    moved.resize(120, status);
    ASSERT_EQ(moved.span().size(), 120u);
    EXPECT_EQ(moved.span()[49], 1.5);
    EXPECT_THAT(moved.span().subspan(50), testing::Each(0.0));
    moved.resize(huge / 8, status);
    EXPECT_NE(status, 0);
    EXPECT_EQ(moved.span()[49], 1.5);
    moved = NamedBlock<double>("other", 0, status);
    EXPECT_EQ(dynmem2_.area_count, 1);
    EXPECT_TRUE(moved.span().empty());
  }
  EXPECT_EQ(dynmem2_.area_count, 0);
  const NamedBlock<char> refused("123456789 123456789 123456789 123", 5, status);
  EXPECT_EQ(status, -2);
  EXPECT_TRUE(refused.span().empty());
}

TEST_F(NamedMemory, an_owner_leaves_a_block_that_took_over_its_label) {
  NamedBlock<std::int32_t> outer("label", 10, status);
  NamedBlock<std::int32_t> inner("label", 100000, status);
  outer.release();
  EXPECT_EQ(named_span<std::int32_t>("label").size(), 100000u);
}

TEST(PlainMemory, refuses_sizes_that_cannot_be) {
  static int failures;
  failures = 0;
  set_memory_failure_hook([](std::string_view routine, std::string_view text) {
    ++failures;
    EXPECT_EQ(routine, "MEM_Alloc");
    EXPECT_EQ(text, "Allocation error");
  });
  const auto allocations = mem_alloc_call_count, frees = mem_free_call_count;
  testing::internal::CaptureStderr();
  std::int64_t address = 5;
  std::int32_t status = 0;
  EXPECT_EQ(MEM_Alloc(-20), nullptr);
  kvs_mem_alloc_(huge, address, status);
  EXPECT_EQ(address, 0);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(MEM_Calloc(huge / 4, 8), nullptr);
  EXPECT_EQ(failures, 1);
  EXPECT_TRUE(
      testing::internal::GetCapturedStderr().starts_with("MEM_Alloc: Cannot allocate -20 bytes\nMEM_Alloc: Cannot"));
  EXPECT_EQ(mem_alloc_call_count, allocations);

  kvs_mem_calloc_(3, 8, address, status);
  EXPECT_EQ(pointer_at<std::int64_t>(address)[2], 0);
  pointer_at<std::int64_t>(address)[2] = 77;
  kvs_mem_resize_(address, 80000, status);
  EXPECT_EQ(pointer_at<std::int64_t>(address)[2], 77);
  kvs_mem_free_(address, status);
  EXPECT_EQ(status, 0);
  kvs_mem_free_(0, status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(mem_alloc_call_count, allocations + 1);
  EXPECT_EQ(mem_free_call_count, frees + 2);
  set_memory_failure_hook(nullptr);
}

}  // namespace
}  // namespace pathstat
