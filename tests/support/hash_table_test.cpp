#include "support/hash_table.h"

#include <unordered_map>

#include "support/identifier_index.h"
#include "testing.h"

namespace pathstat {
namespace {

using Numbers = std::vector<std::int32_t>;
constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t smallest = std::numeric_limits<std::int32_t>::min();

struct Table {
  explicit Table(std::int32_t slots)
      : keys(static_cast<std::size_t>(slots)), values(static_cast<std::size_t>(slots), -5), size(slots) {
    hashinitialize_(keys, count, 0, status);
  }
  void insert(const Numbers& k, const Numbers& v) { hashinsert_(k, v, keys, values, count, size, 0, status); }
  void overwrite(const Numbers& k, const Numbers& v) {
    hashinsertduplicates_(k, v, keys, values, count, size, 0, status);
  }
  std::int32_t find(std::int32_t key) {
    std::int32_t value = 0;
    hashsearch1_(key, keys, values, value, size, 0, -1, status);
    return value;
  }
  Numbers keys, values;
  std::int32_t count = 77, size, status = 77;
};

std::string printed(auto action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

TEST(HashTable, sizes_are_primes_of_at_least_three_times_the_count) {
  std::int32_t size = 0, status = 0;
  hashsuggestedsize_(33, size, status);
  EXPECT_EQ(size, 101);
  EXPECT_EQ(status_of(hashsuggestedsize_, largest, size), 1);
  EXPECT_EQ(size, 0);
  for (const auto& [n, expected] : std::vector<std::pair<int, int>>{
           {-7, -7}, {3, 3}, {4, 5}, {9, 11}, {24, 29}, {2147117569 /* 46337^2 */, 2147117617}, {largest, largest}}) {
    std::int32_t prime = 0;
    getnextprime_(n, prime, status);
    EXPECT_EQ(prime, expected) << n;
  }
}

TEST(HashTable, collisions_step_forward_and_wrap) {
  Table t(7);
  t.insert({6, 13, 20, 1}, {60, 130, 200, 10});
  EXPECT_THAT(t.keys, ElementsAre(13, 20, 1, 0, 0, 0, 6));
  EXPECT_EQ(t.count, 4);
  EXPECT_EQ(t.find(20), 200);
  EXPECT_EQ(t.status, 0);
  EXPECT_EQ(t.find(8), -1);
  EXPECT_EQ(t.status, -1);
}

TEST(HashTable, one_slot_stays_free) {
  Table t(5), u(5);
  EXPECT_EQ(printed([&] { t.insert({1, 2, 3, 4, 5}, {1, 2, 3, 4, 5}); }), "Hash table is full.\n");
  EXPECT_EQ(t.status, 1);
  EXPECT_EQ(t.count, 0);
  t.insert({1, 2, 3, 4}, {1, 2, 3, 4});
  EXPECT_EQ(t.status, 0);
  EXPECT_EQ(printed([&] { u.overwrite({1, 2, 3, 4, 4, 5, 6}, {1, 2, 3, 4, 5, 6, 7}); }), "Hash table is full.\n");
  EXPECT_EQ(u.status, 1);
  EXPECT_EQ(u.count, 4);
  EXPECT_EQ(u.find(4), 5);
}

TEST(HashTable, behaves_as_a_map) {
  const auto seed = std::random_device{}();
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  std::uniform_int_distribution<std::int32_t> key(-2000, 2000);
  std::unordered_map<std::int32_t, std::int32_t> expected;
  Table t(6011);
  for (int k = 0; k < 3000; ++k) {
    const std::int32_t id = key(random);
    if (id == 0) continue;
    t.overwrite({id}, {k});
    expected[id] = k;
  }
  EXPECT_EQ(t.count, static_cast<std::int32_t>(expected.size()));
  Numbers all(4001), found(4001);
  std::iota(all.begin(), all.end(), -2000);
  hashsearch_(all, found, t.keys, t.values, t.size, 0, -1, t.status);
  EXPECT_EQ(t.status, -1);
  for (std::size_t k = 0; k < all.size(); ++k)
    EXPECT_EQ(found[k], expected.contains(all[k]) ? expected[all[k]] : -1) << all[k];
}

TEST(IdentifierIndex, gives_the_first_position_of_any_integer) {
  std::int32_t status = 77;
  const Numbers ids{7, 0, -3, 7, largest, 0, -1, smallest, -3};
  const IdentifierIndex index(ids, status);
  EXPECT_EQ(status, 0);
  for (const auto& [id, position] : std::vector<std::pair<std::int32_t, std::int32_t>>{
           {7, 0}, {0, 1}, {-3, 2}, {largest, 4}, {-1, 6}, {smallest, 7}, {-2, -1}, {-4, -1}, {1, -1}})
    EXPECT_EQ(index.find(id), position) << id;
}

}  // namespace
}  // namespace pathstat
