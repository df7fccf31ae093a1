#include "services/text_operations.h"

#include "services/coded_number.h"
#include "testing.h"

namespace pathstat {
namespace {

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
      {" -17 apples", -17, 0},
      {"2147483647", 2147483647, 0},
      {"2147483648", 2147483647, 1},
      {"0x10", 0, 0},
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

INSTANTIATE_TEST_SUITE_P(
    forms, CodedNumber,
    testing::Values(
        CodedCase{0.5, 16, 10, 3, 16, "    0.5000000000"}, CodedCase{1, 16, 10, 3, 16, "     1.000000000"},
        CodedCase{123.456, 16, 10, 3, 20, "     123.4560000    "}, CodedCase{0.05, 16, 10, 3, 16, "   0.05000000000"},
        CodedCase{-0.0005, 16, 10, 3, 16, "-0.0005000000000"}, CodedCase{123456789, 16, 10, 3, 16, "     123456789.0"},
        CodedCase{0.00005, 16, 10, 3, 16, " 5.000000000E-05"}, CodedCase{0.05, 16, 10, 0, 16, " 5.000000000E-02"},
        CodedCase{12345678901., 16, 10, 3, 16, " 1.234567890E+10"},
        CodedCase{2e-150, 17, 10, 3, 17, " 2.000000000E-150"}, CodedCase{2e-150, 16, 10, 3, 16, "**********      "},
        CodedCase{0.5, 16, 10, 3, 12, "**********  "}, CodedCase{0.5, 16, 0, 3, 16, "**********      "},
        CodedCase{0.5, 9, 4, 3, 9, "*********"},
        CodedCase{std::numeric_limits<double>::infinity(), 16, 10, 3, 16, "**********      "}));

}  // namespace
}  // namespace pathstat
