#include "desk/import/topology_blocks.h"

#include <memory>

#include "testing.h"

namespace pathstat::desk {
namespace {

using Counts = std::vector<std::int64_t>;
using Places = std::vector<std::int32_t>;

std::string take(TopologyBlocks& blocks, std::string_view tag, const auto& numbers) {
  return blocks.take(tag, std::as_bytes(std::span(numbers)));
}

TEST(TopologyBlocks, ABlockOfBondsMayBeEmpty) {
  TopologyBlocks blocks;
  EXPECT_EQ(take(blocks, "counts", Counts{2, 0, 1, 0}), "");
  EXPECT_EQ(take(blocks, "bonds", Places{}), "");
  EXPECT_FALSE(blocks.has_bonds());
}

TEST(TopologyBlocks, NothingIsTakenThatTheCountsDoNotBearOut) {
  const struct {
    std::string_view tag;
    Places numbers;
    std::string_view problem;
  } cases[] = {
      {"ids", {5}, "the numbers of the atoms are not distinct"},
      {"ids", {5, 5, 6}, "the numbers of the atoms are not distinct"},
      {"ids", {5, -1, 6}, "an atom has a negative number"},
      {"bonds", {0, 1}, "the bonds are not as many as they should be"},
      {"bonds", {0, 1, 1, 3}, "a bond leads to no atom"},
      {"bonds", {0, 1, 2, 2}, "a bond leads to no atom"},
      {"counts", {}, "the counts are not as they should be"},
      {"resids", {1, 1}, "the block resids has another length than the atoms"},
      {"masses", {0, 0, 0, 0, 0, 0x7ff00000}, "the masses are not all numbers"},
  };
  for (const auto& [tag, numbers, problem] : cases) {
    TopologyBlocks blocks;
    ASSERT_EQ(take(blocks, "counts", Counts{3, 2, 1, 0}), "");
    EXPECT_EQ(take(blocks, tag, numbers), problem) << tag;
  }
}

TEST(TopologyBlocks, HaveLimits) {
  const Counts most{500'000'000, 4'000'000'000, 1, 0};
  EXPECT_EQ(take(*std::make_unique<TopologyBlocks>(), "counts", most), "");
  for (const std::size_t beyond : {0U, 1U}) {
    TopologyBlocks blocks;
    auto counts = most;
    ++counts[beyond];
    EXPECT_EQ(take(blocks, "counts", counts), "there are too many atoms");
  }
  TopologyBlocks blocks;
  ASSERT_EQ(take(blocks, "counts", Counts{1, 0, 1, 0}), "");
  std::string series;
  for (int k = 0; k < 65; ++k) series += "temperature\n";
  EXPECT_EQ(take(blocks, "series", series), "there are too many series");
  EXPECT_EQ(take(blocks, "names", std::string(100, 'n') + "\n"), "");
  EXPECT_EQ(take(blocks, "elements", std::string("Ar\n")), "");
  std::string problem;
  EXPECT_EQ(blocks.give_model("one", problem).names[0], std::string(64, 'n'));
  EXPECT_EQ(problem, "");
}

}  // namespace
}  // namespace pathstat::desk
