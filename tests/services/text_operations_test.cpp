#include "services/text_operations.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <string>

#include "services/coded_number.h"

namespace pathstat {
namespace {

TEST(TextLength, is_at_least_one) {
  struct {
    const char* text;
    std::int32_t length;
  } const cases[] = {{"    ", 1}, {"", 1}, {"a", 1}, {" a  ", 2}, {"a b c   ", 5}};
  for (const auto& [text, length] : cases) {
    std::int32_t found = 0;
    kvs_str_nblen_(text, found);
    EXPECT_EQ(found, length) << '"' << text << '"';
  }
}

TEST(NumberReading, takes_either_exponent_letter_and_ignores_what_follows) {
  struct {
    const char* text;
    double value;
    std::int32_t error;
  } const cases[] = {
      {"2.5D3", 2500, 0}, {"2.5d-1", 0.25, 0}, {"2.5xyz", 2.5, 0},     {"  -7e1 ", -70, 0},
      {"xyz", 0, 1},      {"", 0, 1},          {"1D999", HUGE_VAL, 1},
  };
  for (const auto& [text, value, error] : cases) {
    double found = -1;
    std::int32_t status = -1;
    kvs_str_todouble_(text, found, status);
    EXPECT_EQ(found, value) << text;
    EXPECT_EQ(status, error) << text;
  }
}

TEST(IntegerReading, is_decimal_and_stays_in_32_bits) {
  struct {
    const char* text;
    std::int32_t value;
    std::int32_t error;
  } const cases[] = {
      {"042", 42, 0},
      {" -17 apples", -17, 0},
      {"2147483647", 2147483647, 0},
      {"2147483648", 2147483647, 1},
      {"0x10", 0, 0},
      {"apples", 0, 1},
      {"-99999999999999999999", -2147483647 - 1, 1},
  };
  for (const auto& [text, value, error] : cases) {
    std::int32_t found = -1;
    std::int32_t status = -1;
    kvs_str_tointeger_(text, found, status);
    EXPECT_EQ(found, value) << text;
    EXPECT_EQ(status, error) << text;
  }
}

TEST(WhiteSpace, is_trimmed_at_both_ends_in_place) {
  std::string block = "\t  two words \n ";
  const auto kept = STR_Trim_white_space(block);
  EXPECT_EQ(std::string(kept.data()), "two words");
  EXPECT_EQ(kept.data(), block.data() + 3);

  std::string blank = " \t ";
  EXPECT_TRUE(STR_Trim_white_space(blank).empty());
  EXPECT_EQ(blank, std::string(3, '\0'));

  std::string field = "  ab c  ";
  kvs_str_trimwhitespace_(TextField(field));
  EXPECT_EQ(field, "ab c    ");
}

TEST(Comparison, ignores_case_and_in_twins_padding) {
  EXPECT_EQ(STR_CaseCmp("FileName", "fILEnAME"), 0);
  EXPECT_LT(STR_CaseCmp("abc", "ABD"), 0);
  EXPECT_GT(STR_CaseCmp("abcd", "ABC"), 0);
  EXPECT_GT(STR_CaseCmp("\xe9", "z"), 0);
  EXPECT_NE(STR_CaseCmp("abc ", "abc"), 0);
  EXPECT_EQ(kvs_str_casecmp_("ABC   ", "abc"), 0);

  std::string field = "end 12_z  ";
  kvs_str_toupper_(TextField(field));
  EXPECT_EQ(field, "END 12_Z  ");
}

TEST(Sleep, lasts_at_least_as_long_as_asked) {
  const auto start = std::chrono::steady_clock::now();
  kvs_msecsleep_(20);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
}

struct CodedCase {
  double value;
  std::int32_t width, digits, zeros;
  std::size_t field;
  const char* text;
};

class CodedNumber : public testing::TestWithParam<CodedCase> {};

TEST_P(CodedNumber, has_its_digits_in_the_form_that_fits) {
  const auto& [value, width, digits, zeros, field, text] = GetParam();
  std::string written(field, '#');
  kvs_fmt_codedouble_(TextField(written), value, width, digits, zeros);
  EXPECT_EQ(written, text);
}

INSTANTIATE_TEST_SUITE_P(fixed_form, CodedNumber,
                         testing::Values(CodedCase{0.5, 16, 10, 3, 16, "    0.5000000000"},
                                         CodedCase{-0.5, 16, 10, 3, 16, "   -0.5000000000"},
                                         CodedCase{0, 16, 10, 3, 16, "    0.0000000000"},
                                         CodedCase{1, 16, 10, 3, 16, "     1.000000000"},
                                         CodedCase{123.456, 16, 10, 3, 20, "     123.4560000    "},
                                         CodedCase{0.05, 16, 10, 3, 16, "   0.05000000000"},
                                         CodedCase{-0.0005, 16, 10, 3, 16, "-0.0005000000000"},
                                         CodedCase{123456789, 16, 10, 3, 16, "     123456789.0"}));

INSTANTIATE_TEST_SUITE_P(exponent_form, CodedNumber,
                         testing::Values(CodedCase{0.00005, 16, 10, 3, 16, " 5.000000000E-05"},
                                         CodedCase{0.05, 16, 10, 0, 16, " 5.000000000E-02"},
                                         CodedCase{12345678901., 16, 10, 3, 16, " 1.234567890E+10"},
                                         CodedCase{2e-150, 17, 10, 3, 17, " 2.000000000E-150"}));

INSTANTIATE_TEST_SUITE_P(
    no_room, CodedNumber,
    testing::Values(CodedCase{2e-150, 16, 10, 3, 16, "**********      "}, CodedCase{0.5, 16, 10, 3, 12, "**********  "},
                    CodedCase{0.5, 16, 0, 3, 16, "**********      "}, CodedCase{0.5, 9, 4, 3, 9, "*********"},
                    CodedCase{std::numeric_limits<double>::infinity(), 16, 10, 3, 16, "**********      "}));

}  // namespace
}  // namespace pathstat
