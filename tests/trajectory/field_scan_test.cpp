#include "trajectory/field_scan.h"

#include <gtest/gtest.h>

#include <array>

namespace pathstat {
namespace {

struct Case {
  const char* text;
  const char* field;
  std::int32_t length, end;
};

TEST(FieldScan, finds_what_stands_between_blanks) {
  const Case cases[] = {
      {"", "     ", 0, 0},   {"    ", "     ", 0, 0},      {"one two", "one  ", 3, 3},       {"  12 ", "12   ", 2, 4},
      {" x", "x    ", 1, 2}, {"tab\tbed", "tab\tb", 7, 7}, {"   seventeen", "seven", 9, 12},
  };
  for (const Case& c : cases) {
    Text<5> field{"?????"};
    std::int32_t length = -1, end = -1;
    nxtfld_(c.text, field, length, end);
    EXPECT_EQ(field.full(), c.field) << c.text;
    EXPECT_EQ(length, c.length) << c.text;
    EXPECT_EQ(end, c.end) << c.text;
  }
}

TEST(FieldScan, walks_a_line_by_the_text_behind_the_end) {
  std::string_view rest = " 1  ARC -2.5 ";
  std::string walked;
  while (true) {
    Text<8> field;
    std::int32_t length = 0, end = 0;
    nxtfld_(rest, field, length, end);
    if (length == 0) break;
    walked += field.str() + "|";
    rest.remove_prefix(static_cast<std::size_t>(end));
  }
  EXPECT_EQ(walked, "1|ARC|-2.5|");
}

}  // namespace
}  // namespace pathstat
