#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <regex>

#include "corelink/byte_dump.h"
#include "corelink/environment.h"
#include "corelink/fixed_text.h"
#include "corelink/last_error.h"
#include "corelink/terminated_text.h"
#include "corelink/test_peer.h"
#include "corelink/time_stamp.h"

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

TEST(LastError, system_text_follows_the_error_number) {
  errno = ENOENT;
  EXPECT_EQ(PLE_system_error(), "\n\tsystem error: "s + std::strerror(ENOENT));
  errno = 99999;
  EXPECT_STREQ(PLE_system_error(), "");
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
  testing::internal::CaptureStderr();
  EXPECT_EQ(COM_getnumenv(nullptr, 4), 4);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "COM_getnumenv warning: env_name=NULL\n");
}

TEST(Environment, set_and_unset) {
  const ScopedVariable variable("SOME_TEXT", nullptr);
  EXPECT_EQ(COM_getenv("SOME_TEXT"), nullptr);
  COM_setenv("SOME_TEXT", "a=b");
  EXPECT_STREQ(COM_getenv("SOME_TEXT"), "a=b");
  COM_unsetenv("SOME_TEXT");
  EXPECT_STREQ(COM_getenv("SOME_TEXT"), "");
  testing::internal::CaptureStderr();
  COM_setenv("BAD=NAME", "x");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error in COM_setenv: system command 'putenv(BAD=NAME=x)' rc=-1\n");
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

TEST(TerminatedText, words_and_quotes) {
  const std::vector<std::string> words{"run", "a b", "", "c'd", "tail"};
  EXPECT_EQ(COM_parm2args("  run 'a b' \"\"\tc'd \"tail"), words);
  const std::array<const char*, 3> arguments{"run", "a b", "c"};
  EXPECT_EQ(COM_args2parm(arguments), "run 'a b' c");
}

TEST(TerminatedText, copies_and_places) {
  EXPECT_EQ(COM_strsave(nullptr), nullptr);
  EXPECT_STREQ(COM_strsave_uc("aB1").get(), "AB1");
  EXPECT_STREQ(COM_strsave_lc("aB1").get(), "ab1");
  EXPECT_EQ(COM_strindex("cd", "abcd"), 3);
  EXPECT_EQ(COM_strindex("x", "abcd"), 0);
}

TEST(TerminatedText, block_grows_to_multiples_of_256) {
  void* block = nullptr;
  std::int32_t capacity = 0;
  for (const auto& [needed, grown] : {std::pair{0, 256}, {255, 256}, {256, 512}, {10, 512}, {1000, 1024}}) {
    ASSERT_TRUE(COM_realloc(block, capacity, needed));
    EXPECT_EQ(capacity, grown) << needed;
    EXPECT_NE(block, nullptr);
  }
  EXPECT_FALSE(COM_realloc(block, capacity, INT32_MAX));
  std::free(block);
  block = nullptr;
  testing::internal::CaptureStderr();
  EXPECT_TRUE(COM_realloc(block, capacity, 3));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "COM_realloc warning: *HowMuchIs=1024, but *addr == NULL\n");
  EXPECT_EQ(capacity, 256);
  std::free(block);
}

std::string dumped(std::string_view bytes) {
  testing::internal::CaptureStdout();
  COM_cdump("some bytes", bytes_of(bytes));
  return testing::internal::GetCapturedStdout();
}

TEST(ByteDump, rows_of_sixteen) {
  EXPECT_EQ(dumped("0123456789abcdef \x7Fz\x1F"),
            "*** dump *** some bytes\n"
            "30313233 34353637 38396162 63646566  *0123456789abcdef*\n"
            "207F7A1F                             *..z.*\n");
  EXPECT_EQ(dumped("ab"),
            "*** dump *** some bytes\n*** dump error: length=2 ... set 80\n"
            "6162                                 *ab*\n");
  const std::string large = dumped(std::string(5000, 'a'));
  EXPECT_EQ(std::count(large.begin(), large.end(), '\n'), 2 + 80 / 16);
}

TEST(ByteDump, hexadecimal_both_ways) {
  const auto bytes = COM_h2c("00fFa1");
  EXPECT_EQ(COM_scdump(bytes), "00FFA1");
  EXPECT_EQ(COM_h2c("12x4").size(), 1U);
  EXPECT_EQ(COM_h2c("123").size(), 1U);
}

TEST(TimeStamp, ends_in_microseconds_without_padding) {
  EXPECT_TRUE(std::regex_match(COM_timestamp(), std::regex("\\d\\d:\\d\\d:\\d\\d\\.(0|[1-9]\\d{0,5})")));
}

}  // namespace
}  // namespace pathstat
