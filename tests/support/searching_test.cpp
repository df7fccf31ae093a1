#include "support/searching.h"

#include "testing.h"

namespace pathstat {
namespace {

using Numbers = std::vector<std::int32_t>;

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

TEST(Searching, an_unsorted_table_gives_the_first_position) {
  const Numbers table{9, 0, -7, 9, 5}, keys{5, 9, 0, 1, -7};
  Numbers positions(5, 99);
  std::int32_t failures = -1, status = -1;
  searchnosort_(table, keys, positions, failures, status);
  EXPECT_THAT(positions, ElementsAre(5, 1, 2, 0, 3));
  EXPECT_EQ(failures, 1);
  EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace pathstat
