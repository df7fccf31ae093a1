#include "structure/model_numbers.h"

#include <bit>
#include <cstdio>

#include "testing.h"

namespace pathstat {
namespace {

template <class... Arguments>
std::string printed(const char* format, Arguments... arguments) {
  char text[64];
  std::snprintf(text, sizeof text, format, arguments...);
  return text;
}

template <class Number>
std::string appended(Number value) {
  std::string text;
  append_number(text, value);
  return text;
}

TEST(ModelNumbers, are_written_as_printf_writes_them) {
  using D = std::numeric_limits<double>;
  const double special[] = {0.0,           -0.0,           1,         0.1,     1e16,     1e17,        1e18,
                            1e-4,          1e-5,           123456789, 1.5e300, D::max(), D::min(),    D::denorm_min(),
                            D::infinity(), -D::infinity(), 1.0 / 3,   1e5,     99999999, 999999995.0, 0.5};
  for (const double value : special) {
    EXPECT_EQ(appended(value), printed("%.17G", value));
    EXPECT_EQ(appended(static_cast<float>(value)), printed("%.8G", static_cast<double>(static_cast<float>(value))));
  }
  std::mt19937_64 random(7);
  std::vector<double> back;
  for (int round = 0; round < 20000; ++round) {
    const auto bits = random();
    const auto value = std::bit_cast<double>(bits);
    const auto small = std::bit_cast<float>(static_cast<std::uint32_t>(bits));
    const auto integer = static_cast<std::int32_t>(bits);
    if (value == value) {
      ASSERT_EQ(appended(value), printed("%.17G", value));
      ASSERT_TRUE(read_numbers(appended(value), back));
      ASSERT_THAT(back, ElementsAre(value));
    }
    if (small == small) {
      ASSERT_EQ(appended(small), printed("%.8G", static_cast<double>(small)));
    }
    ASSERT_EQ(appended(integer), printed("%d", integer));
  }
}

TEST(ModelNumbers, are_parted_by_white_space_and_parentheses) {
  std::vector<double> doubles;
  EXPECT_TRUE(read_numbers("((1 +2.5)(-3e2\t4))\n5", doubles));
  EXPECT_THAT(doubles, ElementsAre(1, 2.5, -300, 4, 5));
  EXPECT_TRUE(read_numbers(" () ", doubles));
  EXPECT_THAT(doubles, IsEmpty());
  std::vector<std::int32_t> integers;
  EXPECT_TRUE(read_numbers("-2147483648 +7", integers));
  EXPECT_THAT(integers, ElementsAre(INT32_MIN, 7));
}

TEST(ModelNumbers, what_is_no_number_is_refused) {
  std::vector<double> doubles;
  std::vector<std::int32_t> integers;
  for (const char* text : {"1 x", "1 2,3", "1 2x", "1 +-2", "1 1e999", "1 +"}) {
    EXPECT_FALSE(read_numbers(text, doubles)) << text;
    EXPECT_THAT(doubles, ElementsAre(1)) << text;
  }
  for (const char* text : {"1 2.5", "1 2147483648", "1 e"}) {
    EXPECT_FALSE(read_numbers(text, integers)) << text;
    EXPECT_THAT(integers, ElementsAre(1)) << text;
  }
}

TEST(ModelNumbers, long_values_are_read_in_pieces_up_to_the_first_fault) {
  std::string text;
  for (std::int32_t k = 0; k < 100'000; ++k) text += std::to_string(k) + (k % 3 == 2 ? ")(" : " ");
  std::vector<std::int32_t> integers;
  EXPECT_TRUE(read_numbers(text, integers));
  std::vector<std::int32_t> wanted(100'000);
  std::iota(wanted.begin(), wanted.end(), 0);
  EXPECT_EQ(integers, wanted);
  text[text.find(" 70000 ") + 3] = 'x';
  text[text.find(" 90001 ") + 3] = 'x';
  EXPECT_FALSE(read_numbers(text, integers));
  wanted.resize(70'000);
  EXPECT_EQ(integers, wanted);
}

}  // namespace
}  // namespace pathstat
