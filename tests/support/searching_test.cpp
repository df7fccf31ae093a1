#include "support/searching.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace pathstat {
namespace {

using testing::ElementsAre;
using Numbers = std::vector<std::int32_t>;

const Numbers rising{-4, 1, 3, 3, 8, 20};
const Numbers falling{20, 8, 3, 1, -4};

TEST(Searching, sorted_tables_are_searched_in_both_directions) {
  struct Case {
    Numbers table, keys, positions;
    std::int32_t failures;
  };
  for (const auto& c : {Case{rising, {-4, 20, 8, 2, -5, 21}, {1, 6, 5, 0, 0, 0}, 3}, Case{rising, {3}, {4}, 0},
                        Case{falling, {-4, 20, 8, 2, -5, 21}, {5, 1, 2, 0, 0, 0}, 3},
                        Case{{6, 6, 6}, {6, 5}, {3, 0}, 1}, Case{{6}, {6}, {1}, 0}, Case{{}, {6, 7}, {0, 0}, 2}}) {
    Numbers positions(c.keys.size(), 99);
    std::int32_t failures = -1, status = -1;
    search_(c.table, positions, c.keys, failures, status);
    EXPECT_EQ(positions, c.positions);
    EXPECT_EQ(failures, c.failures);
    EXPECT_EQ(status, 0);
  }
  std::int32_t failures = 0, status = 0;
  search_(rising, {}, falling, failures, status);
  EXPECT_EQ(status, 1);
}

TEST(Searching, a_hunt_ends_where_a_walk_would_from_every_guess) {
  for (const bool up : {true, false})
    for (std::int32_t n = 0; n < 20; ++n) {
      Numbers table;
      for (std::int32_t k = 0; k < n; ++k) table.push_back(up ? 2 * k : -2 * k);
      for (std::int32_t key = -2 * n - 3; key <= 2 * n + 3; ++key)
        for (std::int32_t guess = -1; guess <= n + 2; ++guess) {
          std::int32_t position = guess, status = 99, expected = 1;
          const bool ascending = up && n > 1;
          while (expected <= n) {
            const std::int32_t there = table[static_cast<std::size_t>(expected - 1)];
            if (there == key || (ascending ? there > key : there < key)) break;
            ++expected;
          }
          const bool there = expected <= n && table[static_cast<std::size_t>(expected - 1)] == key;
          hunt_(table, key, position, status);
          ASSERT_EQ(position, expected) << "n " << n << " key " << key << " guess " << guess << " up " << up;
          ASSERT_EQ(status, there ? 0 : -1);
        }
    }
}

TEST(Searching, a_bracket_is_narrowed_to_the_last_element_not_after_the_key) {
  std::int32_t low = 1, high = 6, status = -1;
  ibinchop_(rising, low, high, 5, true, status);
  EXPECT_EQ(low, 4);
  EXPECT_EQ(high, 5);
  EXPECT_EQ(status, 0);
  for (const auto& [from, to] : std::vector<std::pair<int, int>>{{-1, 3}, {0, 8}, {3, 3}, {4, 2}}) {
    low = from, high = to;
    ibinchop_(rising, low, high, 5, true, status);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(low, from);
  }
}

TEST(Searching, an_unsorted_table_gives_the_first_position) {
  const Numbers table{9, 0, -7, 9, 5}, keys{5, 9, 0, 1, -7};
  Numbers positions(5, 99);
  std::int32_t failures = -1, status = -1;
  searchnosort_(table, keys, positions, failures, status);
  EXPECT_THAT(positions, ElementsAre(5, 1, 2, 0, 3));
  EXPECT_EQ(failures, 1);
  EXPECT_EQ(status, 0);
  positions.assign(5, 99);
  searchnosort_({}, keys, positions, failures, status);
  EXPECT_EQ(failures, 5);
  EXPECT_THAT(positions, testing::Each(99));
  EXPECT_EQ(index_list_(table, 9), 1);
  EXPECT_EQ(index_list_(table, 5), 5);
  EXPECT_EQ(index_list_(table, 4), 0);
}

TEST(Searching, repeats_are_dropped) {
  Numbers list{3, 1, 3, 2, 1}, out(5);
  std::int32_t count = -1, status = -1;
  iuniquenosort_(list, out, count);
  out.resize(3);
  EXPECT_EQ(count, 3);
  EXPECT_THAT(out, ElementsAre(3, 1, 2));
  list = {0, -1, 0, 5, -1, 5, 5};
  iuniquenosort_(list, list, count);
  list.resize(3);
  EXPECT_EQ(count, 3);
  EXPECT_THAT(list, ElementsAre(0, -1, 5));
  iuniquenosort_({}, list, count);
  EXPECT_EQ(count, 0);

  list = rising;
  iunique_(list, list, count, status);
  list.resize(5);
  EXPECT_EQ(count, 5);
  EXPECT_THAT(list, ElementsAre(-4, 1, 3, 8, 20));
  iunique_(rising, std::span(list).first(2), count, status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(count, 2);
}

}  // namespace
}  // namespace pathstat
