#include <cstring>

#include "corelink/environment.h"
#include "corelink/fixed_text.h"
#include "corelink/last_error.h"
#include "corelink/test_peer.h"
#include "testing.h"

namespace pathstat {
namespace {

using namespace std::string_literals;

TEST(LastError, may_be_built_from_itself) {
  PLE_error("inner\t%d", 1);
  PLE_error("outer\n\t%s", PLE_get_error());
  EXPECT_STREQ(PLE_get_error(), "outer\n\tinner\t1");
  PLE_notab_error();
  EXPECT_STREQ(PLE_get_error(), "outer\n inner 1");
  PLE_error("%s", std::string(5000, 'x').c_str());
  EXPECT_EQ(std::strlen(PLE_get_error()), 1023U);
  PLE_reset_error();
  EXPECT_STREQ(PLE_get_error(), "");
}

TEST(Environment, number_must_be_positive) {
  struct Case {
    const char* value;
    std::int32_t number;
    bool warned;
  };
  for (const auto& [value, number, warned] :
       {Case{nullptr, 9, false}, Case{"12", 12, false}, Case{"2147483647", 2147483647, false}, Case{"0", 9, true},
        Case{"-3", 9, true}, Case{"", 9, true}, Case{"5x", 9, true}, Case{"2147483648", 9, true}}) {
    const ScopedVariable variable("SOME_NUMBER", value);
    testing::internal::CaptureStderr();
    EXPECT_EQ(COM_getnumenv("SOME_NUMBER", 9), number);
    const std::string warning = testing::internal::GetCapturedStderr();
    EXPECT_EQ(warning, warned ? "Wrong value SOME_NUMBER="s + value + ". Default 9 is accepted\n" : "");
  }
}

TEST(Environment, fields_and_their_trace) {
  const ScopedVariable trace("GETENV_DEBUG", "ON");
  const ScopedVariable variable("SOME_NAME", nullptr);
  std::string field(6, '#');
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  com_getenv_fortran_("SOME_NAME  ", field);
  EXPECT_EQ(field, "      ");
  com_setenv_fortran_("SOME_NAME  ", "value   ");
  EXPECT_STREQ(COM_getenv("SOME_NAME"), "value");
  com_getenv_fortran_("SOME_NAME", field);
  EXPECT_EQ(field, "value ");
  com_getenv_fortran_("SOME_NAME", std::span(field).first(4));
  EXPECT_EQ(field, "    e ");
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "com_getenv: SOME_NAME is not set\ncom_setenv: SOME_NAME=value\ncom_getenv: SOME_NAME=value\n"
            "com_getenv: SOME_NAME=value\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "com_getenv: value of SOME_NAME has 5 characters, and the field 4\n");
}

TEST(FixedText, field_and_terminated_text) {
  struct Case {
    std::string source;
    std::size_t size;
    std::string terminated;  ///< up to its NUL
    std::string field;
  };
  for (const auto& [source, size, terminated, field] :
       {Case{"name   ", 8, "name", "name    "}, Case{"      ", 4, "", "    "}, Case{"abcdef", 4, "abc", "abcd"},
        Case{"ab\0cd"s, 6, "ab", "ab    "}, Case{"a", 1, "", "a"}}) {
    std::string target(size, '#');
    kvS_STR_CopyF2C(target, source);
    EXPECT_STREQ(target.c_str(), terminated.c_str());
    EXPECT_EQ(target.back(), '\0');
    target.assign(size, '#');
    kvS_STR_CopyC2F(target, source);
    EXPECT_EQ(target, field);
  }
}

}  // namespace
}  // namespace pathstat
