#include "shell/output_texts.h"

#include "testing.h"

namespace pathstat {
namespace {

/// A request's two blocks of 11 and 80 bytes, with a guard behind the first.
class OutputTexts : public testing::Test {
 protected:
  OutputTexts() { sch_RegisterOutputStrings(std::span(value_).first(11), range_); }

  std::int64_t value_length() const {
    std::int64_t value = -1, range = -1;
    sch_GetFillLengths(value, range);
    return value;
  }

  std::string value_ = std::string(16, '#');
  std::string range_ = std::string(80, '#');
};

TEST_F(OutputTexts, start_empty) {
  EXPECT_STREQ(value_.c_str(), "");
  EXPECT_STREQ(range_.c_str(), "");
  EXPECT_EQ(value_length(), 0);
}

TEST_F(OutputTexts, separate_definitions) {
  kvZ_DefineValue("one");
  kvZ_DefineRange("low");
  kvz_definevalue_("2  ");
  EXPECT_STREQ(value_.c_str(),
               "one\x11"
               "2  ");
  EXPECT_STREQ(range_.c_str(), "low");
  EXPECT_EQ(value_length(), 7);
}

TEST_F(OutputTexts, keep_an_empty_first_definition_apart) {
  kvZ_DefineValue("");
  kvZ_DefineValue("two");
  EXPECT_STREQ(value_.c_str(), "\x11two");
}

TEST_F(OutputTexts, count_what_they_cannot_hold) {
  kvZ_DefineValue("fifteen letters");
  EXPECT_STREQ(value_.c_str(), "fifteen le");
  EXPECT_EQ(value_length(), 15);
  kvZ_DefineValue("more");
  EXPECT_STREQ(value_.c_str(), "fifteen le");
  EXPECT_EQ(value_length(), 20);
  EXPECT_EQ(value_.substr(11), "#####") << "nothing is written behind the block";
}

TEST_F(OutputTexts, make_one_definition_of_a_list) {
  for (const char* item : {"a   ", "b,c", " d"}) kvz_addtorangelist_(item);
  kvz_addtovaluelist_("v");
  kvz_definerangefromlist_();
  kvZ_AddToRangeList("next");
  kvZ_DefineRangeFromList();
  kvz_definevaluefromlist_();
  EXPECT_STREQ(range_.c_str(), "a,b\\,c, d\x11next");
  EXPECT_STREQ(value_.c_str(), "v");
}

TEST_F(OutputTexts, are_left_out_without_a_block) {
  kvZ_AddToValueList("left over");
  sch_RegisterOutputStrings({}, range_);
  kvZ_DefineValue("unseen");
  kvZ_DefineValueFromList();
  EXPECT_EQ(value_length(), 0);
  EXPECT_EQ(value_[0], '\0');
}

}  // namespace
}  // namespace pathstat
