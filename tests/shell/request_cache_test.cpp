#include "shell/request_cache.h"

#include "testing.h"

namespace pathstat {
namespace {

using namespace std::string_literals;

constexpr std::int32_t values = 2;
constexpr std::int32_t ranges = 1;
constexpr std::int32_t in_group(std::int32_t group, std::int32_t pool) { return group << 8 | pool; }

/// An application that answers from a table and notes what it is asked.
constexpr const char* keys_of_both =
    "a\x10"
    "b";

class RequestCacheTest : public testing::Test {
 protected:
  struct Texts {
    std::string value;
    std::string range;
  };
  struct Evaluated {
    std::string application;
    std::string key;
    std::size_t value_size;
    std::size_t range_size;
    auto operator<=>(const Evaluated&) const = default;
  };

  static void put(const std::string& text, std::span<char> block, std::int64_t& length) {
    length = static_cast<std::int64_t>(text.size());
    if (block.empty()) return;
    const auto fitting = text.copy(block.data(), block.size() - 1);
    block[fitting] = '\0';
  }

  std::int32_t ask(std::string_view keys, std::int32_t count, std::int32_t selector, std::int32_t capacity,
                   std::string_view application = "MD_ANALYSIS") {
    return cache.answer({application, keys, count, selector, capacity}, reply, answers);
  }
  std::size_t evaluations() const { return evaluated.size(); }

  std::map<std::string, Texts> table{{"a", {"one", "1:9"}}, {"b", {"two!", "x,y"}}, {"none", {"", ""}}};
  std::vector<Evaluated> evaluated;
  RequestCache cache{[this](std::string_view application, std::string_view key, std::span<char> value,
                            std::span<char> range, std::int64_t& value_length, std::int64_t& range_length) {
    evaluated.push_back({std::string(application), std::string(key), value.size(), range.size()});
    const Texts& texts = table[std::string(key)];
    put(texts.value, value, value_length);
    put(texts.range, range, range_length);
  }};
  std::string reply = "as it was";
  std::int32_t answers = -1;
};

TEST_F(RequestCacheTest, reply_is_cut_at_its_capacity) {
  struct Case {
    const char* keys;
    std::int32_t count;
    std::int32_t capacity;
    std::int32_t status;
    std::int32_t answers;
    std::string reply;
  };
  const Case cases[] = {
      {keys_of_both, 2, 100, 0, 2, "one\x10two!"},
      {keys_of_both, 2, 9, 0, 2, "one\x10two!"},
      {keys_of_both, 2, 8, -9, 1, "one\x10two"},
      {keys_of_both, 2, 5, -9, 1, "one\x10"},  // a single free byte behind a separator counts as none
      {keys_of_both, 2, 4, -9, 1, "one"},
      {keys_of_both, 2, 3, -9, 0, "on"},
      {keys_of_both, 2, 1, -9, 0, ""},
      {keys_of_both, 2, 0, -9, 0, ""},
      {keys_of_both, 2, -5, -9, 0, ""},
      {"a", 1, 4, 0, 1, "one"},
      {"a", 1, 3, -4, 0, "on"},
      {"a\x10none", 2, 6, 0, 2, "one\x10"},
      {"a\x10none", 2, 5, -5, 1, "one\x10"},
      {"none", 1, 1, 0, 1, ""},
  };
  for (const auto& expected : cases) {
    EXPECT_EQ(ask(expected.keys, expected.count, values, expected.capacity), expected.status)
        << "capacity " << expected.capacity;
    EXPECT_EQ(reply, expected.reply) << "capacity " << expected.capacity;
    EXPECT_EQ(answers, expected.answers) << "capacity " << expected.capacity;
  }
}

TEST_F(RequestCacheTest, request_without_keys_leaves_the_reply) {
  EXPECT_EQ(ask("a", 0, values, 100), 0);
  EXPECT_EQ(answers, 0);
  EXPECT_EQ(reply, "as it was");
  EXPECT_EQ(evaluations(), 0U);
}

TEST_F(RequestCacheTest, count_beyond_the_keys_is_not_believed) {
  EXPECT_EQ(ask(keys_of_both, std::numeric_limits<std::int32_t>::max(), values, 100), 0);
  EXPECT_EQ(answers, 2);
  EXPECT_EQ(evaluations(), 2U);
}

TEST_F(RequestCacheTest, capacity_alone_allocates_little) {
  EXPECT_EQ(ask("a", 1, values, 0), -4) << "the need is told even without a block";
  EXPECT_EQ(ask("a", 1, values, std::numeric_limits<std::int32_t>::max()), 0);
  EXPECT_EQ(reply, "one");
  EXPECT_LE(evaluated.back().value_size, std::size_t{1} << 24);
}

TEST_F(RequestCacheTest, one_evaluation_serves_a_group) {
  ask(keys_of_both, 2, in_group(7, values), 100);
  EXPECT_EQ(reply, "one\x10two!");
  ask(keys_of_both, 2, in_group(7, ranges), 100);
  EXPECT_EQ(reply, "1:9\x10x,y");
  EXPECT_EQ(evaluations(), 2U);
  ask("b\x10none", 2, in_group(7, values), 100);
  EXPECT_EQ(evaluations(), 3U) << "a key that is new to the group";
  ask("a", 1, in_group(7, values), 100, "MX");
  EXPECT_EQ(evaluations(), 4U) << "the same key of another application";
  ask("a", 1, in_group(8, values), 100);
  EXPECT_EQ(evaluations(), 5U) << "another group";
  ask("b", 1, in_group(7, values), 100);
  EXPECT_EQ(evaluations(), 6U) << "the first group again";
}

TEST_F(RequestCacheTest, group_0_keeps_nothing) {
  ask("a", 1, in_group(3, values), 100);
  ask("a", 1, values, 100);
  ask("a", 1, values, 100);
  ask("a", 1, in_group(3, values), 100);
  EXPECT_EQ(evaluations(), 4U);
}

TEST_F(RequestCacheTest, bits_beyond_pool_and_group_are_ignored) {
  ask("a", 1, in_group(3, values), 100);
  ask("a", 1, in_group(3, values) | 0x7F0000F0, 100);
  EXPECT_EQ(reply, "one");
  EXPECT_EQ(evaluations(), 1U);
}

TEST_F(RequestCacheTest, pool_grows_by_its_shortfall_or_doubles_and_the_key_is_evaluated_again) {
  table["long"] = {std::string(15, 'v'), std::string(9, 'r')};
  ask("long", 1, values, 10);
  ASSERT_EQ(evaluations(), 2U);
  EXPECT_EQ(evaluated[0], (Evaluated{"MD_ANALYSIS", "long", 10, 10}));
  EXPECT_EQ(evaluated[1], (Evaluated{"MD_ANALYSIS", "long", 10 + 6 + 500, 10}));
  evaluated.clear();
  table["longer"] = {std::string(2500, 'v'), "r"};
  ask("longer", 1, in_group(1, values), 2000);
  ASSERT_EQ(evaluations(), 2U);
  EXPECT_EQ(evaluated[0].value_size, 2000U);
  EXPECT_EQ(evaluated[1].value_size, 4000U);
  EXPECT_EQ(reply, std::string(1999, 'v'));
}

TEST_F(RequestCacheTest, pool_larger_than_it_need_be_is_cut_when_it_holds_more_than_the_reply) {
  table["longer"] = {std::string(2500, 'v'), "r"};
  ask("longer", 1, in_group(1, values), 2000);
  evaluated.clear();
  ask("a", 1, in_group(1, values), 2000);
  EXPECT_EQ(evaluated.at(0).value_size, 256U);
  EXPECT_EQ(evaluated.at(0).range_size, 2000U - 2);
  ask("longer", 1, in_group(1, values), 3000);
  EXPECT_EQ(reply, std::string(2500, 'v'));
}

TEST_F(RequestCacheTest, many_keys_keep_their_texts_while_the_pools_move) {
  std::string keys;
  std::string expected;
  for (int k = 0; k < 300; ++k) {
    const std::string key = "key" + std::to_string(k);
    table[key] = {std::string(static_cast<std::size_t>(1 + k % 40), static_cast<char>('a' + k % 26)), key};
    keys += (k > 0 ? "\x10" : "") + key;
    expected += (k > 0 ? "\x10" : "") + table[key].value;
  }
  EXPECT_EQ(ask(keys, 300, in_group(1, values), 10), -static_cast<std::int32_t>(expected.size() + 1));
  EXPECT_EQ(ask(keys, 300, in_group(1, values), 100000), 0);
  EXPECT_EQ(reply, expected);
  EXPECT_EQ(ask(keys, 300, in_group(1, ranges), 100000), 0);
  EXPECT_EQ(reply, keys);
}

}  // namespace
}  // namespace pathstat
