#include "trajectory/field_scan.h"

#include "testing.h"

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

}  // namespace
}  // namespace pathstat
