#include "support/number_format.h"

#include "testing.h"

namespace pathstat {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();

struct Case {
  double value;
  const char* format;
  const char* text;
};
void PrintTo(const Case& c, std::ostream* out) { *out << c.value << " by " << c.format; }

class RealFormat : public testing::TestWithParam<Case> {};
TEST_P(RealFormat, writes_the_field_exactly) {
  EXPECT_EQ(formatted(GetParam().value, GetParam().format), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(fixed, RealFormat,
                         testing::Values(Case{1234.56785, "(f10.4)", " 1234.5678"},  // the double is below the tie
                                         Case{99.5, "(F16.5)", "        99.50000"}, Case{0.25, "(f5.1)", "  0.2"},
                                         Case{0.75, "(f5.1)", "  0.8"}, Case{2.5, "f4.0", "  2."},
                                         Case{0, "F2.0", "0."}, Case{0, "F1.0", "*"}, Case{0.5, "(F3.2)", ".50"},
                                         Case{-0.5, "(F4.2)", "-.50"}, Case{-0.5, "(F3.2)", "***"},
                                         Case{10, "(F8.5)", "10.00000"}, Case{100, "(F8.5)", "********"},
                                         Case{-0.0, "(f6.3)", "-0.000"}, Case{-0.0001, "(f6.3)", "-0.000"},
                                         Case{-0.0001, "(f5.3)", "-.000"}, Case{12.34, "(1pf8.2)", "  123.40"},
                                         Case{0.05, "(1PF5.2)", " 0.50"},
                                         Case{1e22, "(f25.1)", "10000000000000000000000.0"}));

INSTANTIATE_TEST_SUITE_P(
    exponent, RealFormat,
    testing::Values(Case{0, "(e12.4)", "  0.0000E+00"}, Case{1.5, "(e12.4)", "  0.1500E+01"},
                    Case{-1.5, "(e10.4)", "-.1500E+01"}, Case{-1.5, "(e9.4)", "*********"},
                    Case{9.99996, "(e12.4)", "  0.1000E+02"}, Case{1e-9, "(e16.9)", " 0.100000000E-08"},
                    Case{1e99, "(e12.4)", "  0.1000+100"}, Case{1e-120, "(1pe12.4)", "  1.0000-120"},
                    Case{1e99, "(1pe12.4)", "  1.0000E+99"}, Case{0, "(1pe9.4)", "*********"},
                    Case{-6.5, "(1pe16.09e3)", "****************"}, Case{6.5, "(1pe16.09e3)", "6.500000000E+000"},
                    Case{6.5, "(1pe07.00)", " 6.E+00"}, Case{1e10, "(e14.4e1)", "**************"},
                    Case{1e8, "(e14.4e1)", "     0.1000E+9"}));

INSTANTIATE_TEST_SUITE_P(
    general, RealFormat,
    testing::Values(Case{0, "(G12.5)", "  0.0000    "}, Case{-0.0, "(G12.5)", " -0.0000    "},
                    Case{1234.5, "(G12.5)", "  1234.5    "}, Case{0.1, "(G12.5)", " 0.10000    "},
                    Case{0.0999994, "(G12.5)", " 0.99999E-01"}, Case{0.09999996, "(G12.5)", " 0.10000    "},
                    Case{99999.4, "(G12.5)", "  99999.    "}, Case{99999.6, "(G12.5)", " 0.10000E+06"},
                    Case{9.99996, "(g11.5)", " 10.000    "}, Case{1e7, "(G12.5)", " 0.10000E+08"},
                    Case{-1e-4, "(g11.5)", "-.10000E-03"}, Case{-1e-4, "(g10.5)", "**********"},
                    Case{123456.7, "(G16.8)", "   123456.70    "},
                    Case{1.0 / 3, "(g24.16)", "  0.3333333333333333    "}, Case{0.5, "(g10.5)", ".50000    "},
                    Case{0.5, "(g4.1)", "****"}, Case{1234.5, "(1pg12.5)", "  1234.5    "},
                    Case{1e7, "(1pg12.5)", " 1.00000E+07"}, Case{1.5, "(g16.5e3)", "     1.5000     "},
                    Case{1e7, "(g16.5e3)", "    0.10000E+008"}));

INSTANTIATE_TEST_SUITE_P(not_finite, RealFormat,
                         testing::Values(Case{infinity, "(f10.4)", "  Infinity"}, Case{infinity, "(e8.2)", "Infinity"},
                                         Case{infinity, "(g7.1)", "    Inf"}, Case{-infinity, "(f9.1)", "-Infinity"},
                                         Case{-infinity, "(f8.1)", "    -Inf"}, Case{-infinity, "(f3.1)", "***"},
                                         Case{infinity, "(f2.1)", "**"}, Case{not_a_number, "(g12.5)", "         NaN"},
                                         Case{not_a_number, "(f3.1)", "NaN"}, Case{not_a_number, "(f2.1)", "**"}));

INSTANTIATE_TEST_SUITE_P(spelling, RealFormat,
                         testing::Values(Case{1.5, "  ( F 6 . 2 ) ", "  1.50"}, Case{1.5, "f6.2", "  1.50"},
                                         Case{1.5, "(f6.2", "******"}, Case{1.5, "f6.2)", "******"},
                                         Case{1.5, "(f6)", "******"}, Case{1.5, "(f6.2e2)", "******"},
                                         Case{1.5, "(i6)", "******"}, Case{1.5, "(e9.0)", "*********"},
                                         Case{1.5, "(2f6.2)", "*"}, Case{1.5, "", "*"}, Case{1.5, "(f0.2)", "*"},
                                         Case{1.5, "(f99999999999.2)", "*"}, Case{1.5, "(f6.401)", "******"},
                                         Case{1.5, "(p", "*"}, Case{1.5, "(9pe9.2)", "*********"}));

TEST(RealFormat, the_widest_field_holds_the_largest_number) {
  const std::string text = formatted(-std::numeric_limits<double>::max(), "(9pf400.80)");
  EXPECT_EQ(text.substr(0, 7), "-179769");
  EXPECT_EQ(text.size(), 400u);
  EXPECT_EQ(formatted(1.0, "(f400.398)"), "1." + std::string(398, '0'));
}

TEST(IntegerFormat, writes_the_field_exactly) {
  struct Row {
    std::int64_t value;
    const char* format;
    const char* text;
  };
  for (const auto& [value, format, text] :
       {Row{0, "(i6)", "     0"}, Row{-123, "(I12)", "        -123"}, Row{999, "(i3)", "999"}, Row{-999, "(i3)", "***"},
        Row{7, "(i6.3)", "   007"}, Row{-7, "(i4.3)", "-007"}, Row{-7, "(i3.3)", "***"}, Row{0, "(i4.0)", "    "},
        Row{12345, "(g12.5)", "       12345"},
        Row{std::numeric_limits<std::int64_t>::min(), "(i20)", "-9223372036854775808"}, Row{5, "(f6.2)", "******"},
        Row{5, "(1pi6)", "******"}, Row{5, "(i6.)", "******"}, Row{5, "(i)", "*"}})
    EXPECT_EQ(formatted(value, format), text) << value << " by " << format;
  EXPECT_EQ(formatted(std::numeric_limits<std::int32_t>::min(), "(i12)"), " -2147483648");
}

}  // namespace
}  // namespace pathstat
