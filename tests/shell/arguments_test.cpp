#include "shell/arguments.h"

#include "shell/argument_host.h"
#include "shell/return_list.h"
#include "testing.h"

namespace pathstat {
namespace {

using Log = std::vector<std::string>;

/// A test with the argument text of a command; `log_` holds what the user would be shown, 0 left out.
class Arguments : public testing::Test {
 protected:
  Arguments() : host_(argument_host()) {
    argument_host() = {[this](std::string_view text) { log_.push_back("text " + std::string(text)); },
                       [this](std::int32_t number) { log_.push_back("number " + std::to_string(number)); },
                       [this](std::int32_t severity, std::string_view key) {
                         log_.push_back("display " + std::to_string(severity) + " " + std::string(key));
                       },
                       [this](std::int32_t status) {
                         if (status != 0) log_.push_back("status " + std::to_string(status));
                       },
                       [](std::string_view name, std::int32_t type, std::int32_t& object) {
                         if (name != "water" || type == 99) return false;
                         object = 1200;
                         return true;
                       },
                       [this](std::string_view text) { log_.push_back("return " + std::string(text)); }};
  }
  ~Arguments() override { argument_host() = host_; }

  std::int32_t prepare(std::string_view text) {
    std::int32_t count = -1;
    sch_PrepareArguments(text, count);
    log_.clear();
    return count;
  }

  /// The positional arguments as they were cut, and the log emptied.
  Log positional() {
    Log tokens;
    for (std::int32_t k = 1; k <= kvZ_ArgumentTotal(); ++k) {
      std::int32_t status = -1;
      kvZ_ArgFillString(tokens.emplace_back(), k, {}, status);
    }
    return tokens;
  }

  Log log_;
  std::int32_t status_ = -1;

 private:
  ArgumentHost host_;
};

TEST_F(Arguments, are_cut_at_blanks_and_by_marks) {
  struct {
    const char* text;
    Log tokens;
  } const cases[] = {
      {"", {}},
      {" \t\n ", {}},
      {"one two\tthree\x01 four", {"one", "two", "three", "four"}},
      {"\"a b\"", {"a b"}},
      {"{a \"b\"}", {"a \"b\""}},
      {"'it''s' \"\"", {"it", "s", ""}},
      {"\"abc", {"abc"}},
      {"a \"", {"a"}},
      {"\"a\"b c\"d e", {"a", "b", "c\"d", "e"}},
      {"{a {b} c}", {"a {b", "c}"}},
      {"\"-x\" -5 - -.5 -1.5e3 -e -+1", {"-x", "-5", "-", "-.5", "-1.5e3", "-e", "-+1"}},
      {"caf\xc3\xa9 \xff", {"caf\xc3\xa9", "\xff"}},
  };
  for (const auto& [text, tokens] : cases) {
    EXPECT_EQ(prepare(text), static_cast<std::int32_t>(tokens.size())) << text;
    EXPECT_EQ(positional(), tokens) << text;
  }
}

TEST_F(Arguments, belong_to_the_keyword_ahead_of_them) {
  EXPECT_EQ(prepare("-5 -3.2 -x 1 2 -y -1e2e3 3 -x 4 5 6"), 2);
  struct {
    const char* key;
    std::int32_t count, status;
  } const cases[] = {{"x", 2, 0},      {"-X", 2, 0},    {"y", 0, 0},      {"1e2e3", 1, 0},
                     {"z", -1, -1002}, {"", -1, -1002}, {"xy", -1, -1002}};
  for (const auto& [key, count, status] : cases) {
    EXPECT_EQ(kvZ_KEY_ArgumentTotal(key, status_), count) << key;
    EXPECT_EQ(status_, status) << key;
  }
  kvZ_KEY_NoDetection();
  EXPECT_EQ(kvZ_ArgumentTotal(), 12);
  EXPECT_EQ(positional()[2], "-x");
  EXPECT_EQ(kvZ_KEY_ArgumentTotal("x", status_), -1);
}

TEST_F(Arguments, may_be_missing_beyond_the_minimal_count_only) {
  struct {
    std::int32_t min_count;  // -1: not defined
    std::int32_t index, status;
    Log log;
  } const cases[] = {
      {-1, 1, 0, {}},
      {-1, 2, 1005, {"number 2", "status 1005"}},
      {1, 2, 0, {"status -1001"}},
      {0, 3, 0, {"status -1001"}},
      {3, 2, 1006, {"number 1", "number 3", "status 1006"}},
      {3, 4, 0, {"status -1001"}},
      {1, 0, 1005, {"number 0", "status 1005"}},
  };
  for (const auto& [min_count, index, status, log] : cases) {
    prepare("7");
    if (min_count >= 0) kvz_defineminargcount_(min_count, status_);
    log_.clear();
    std::int32_t target = -5;
    EXPECT_EQ(status_of(kvz_argint_, target, index, no_integer_limit, no_integer_limit), status)
        << "index " << index << " of at least " << min_count;
    EXPECT_EQ(log_, log) << "index " << index << " of at least " << min_count;
    EXPECT_EQ(target, index == 1 ? 7 : -5);
  }
}

TEST_F(Arguments, are_counted_against_the_minimal_count) {
  prepare("1 2 -x 3");
  EXPECT_EQ(status_of(kvZ_DefineMinArgCount, 2), 0);
  EXPECT_EQ(status_of(kvZ_DefineMinArgCount, 3), 1006);
  EXPECT_EQ(status_of(kvZ_KEY_DefineMinArgCount, "x", 2), 1006);
  EXPECT_EQ(status_of(kvZ_KEY_DefineMinArgCount, "none", 2), -1002);
  EXPECT_THAT(log_, ElementsAre("number 2", "number 3", "status 1006", "text x", "display 2 KVZ_KWORD_HEAD", "number 1",
                                "number 2", "status 1006", "text none", "status -1002"));
  prepare("1");
  std::int32_t target = 0;
  EXPECT_EQ(status_of(kvZ_ArgInt, target, 2, no_integer_limit, no_integer_limit), 1005)
      << "a new command starts without a minimal count";
}

TEST_F(Arguments, of_a_flag_are_refused) {
  prepare("-on -off 1");
  struct {
    const char* key;
    std::int32_t value, status;
  } const cases[] = {{"on", 1, 0}, {"off", 1, 1007}, {"none", 0, 0}};
  for (const auto& [key, value, status] : cases) {
    EXPECT_EQ(kvZ_KEY_FlagValue(key, status_), value) << key;
    EXPECT_EQ(status_, status) << key;
  }
  EXPECT_THAT(log_, ElementsAre("text off", "display 2 KVZ_KWORD_HEAD", "status 1007"));
}

TEST_F(Arguments, read_as_integers_within_limits) {
  struct {
    const char* text;
    std::int32_t min, max, status, value;
    Log log;
  } const cases[] = {
      {"-12", no_integer_limit, no_integer_limit, 0, -12, {}},
      {"12abc", no_integer_limit, no_integer_limit, 0, 12, {}},
      {"abc", no_integer_limit, no_integer_limit, 0, 0, {}},
      {"99999999999", no_integer_limit, no_integer_limit, 0, 2147483647, {}},
      {"1", 1, 3, 0, 1, {}},
      {"3", 1, 3, 0, 3, {}},
      {"0", 1, no_integer_limit, 1001, -5, {"text 0", "text 1", "status 1001"}},
      {"4", no_integer_limit, 3, 1002, -5, {"text 4", "text 3", "status 1002"}},
  };
  for (const auto& [text, min, max, status, value, log] : cases) {
    prepare(text);
    std::int32_t target = -5;
    EXPECT_EQ(status_of(kvz_argint_, target, 1, min, max), status) << text;
    EXPECT_EQ(target, value) << text;
    EXPECT_EQ(log_, log) << text;
  }
}

TEST_F(Arguments, read_as_reals_within_limits) {
  struct {
    const char* text;
    double min, max;
    std::int32_t status;
    double value;
    Log log;
  } const cases[] = {
      {"2.5e1x", no_real_limit, no_real_limit, 0, 25, {}},
      {"-1e38", no_real_limit, no_real_limit, 0, -1e38, {}},
      {"0", 0, 100, 0, 0, {}},
      {"100", 0, 100, 0, 100, {}},
      {"-0.25", 0, 100, 1001, -5, {"text -0.25", "text 0", "status 1001"}},
      {"1234567.5", no_real_limit, 100, 1002, -5, {"text 1.23457e+06", "text 100", "status 1002"}},
      {"nan", 0, 100, 1001, -5, {"text nan", "text 0", "status 1001"}},
  };
  for (const auto& [text, min, max, status, value, log] : cases) {
    prepare(text);
    double target = -5;
    EXPECT_EQ(status_of(kvz_argdouble_, target, 1, min, max), status) << text;
    EXPECT_EQ(target, value) << text;
    EXPECT_EQ(log_, log) << text;
    float narrow = -5;
    EXPECT_EQ(status_of(kvZ_ArgFloat, narrow, 1, static_cast<float>(min), static_cast<float>(max)), status) << text;
    EXPECT_EQ(narrow, static_cast<float>(value)) << text;
  }
}

TEST_F(Arguments, read_as_logicals_by_their_first_character) {
  prepare("1 2 9 Yes yes T true \"\" 0 no false off - +1");
  const std::array truths{true, true, true, true, true, true, true, false, false, false, false, false, false, false};
  for (std::size_t k = 0; k < truths.size(); ++k) {
    Logical target = !truths[k];
    EXPECT_EQ(status_of(kvz_arglogical_, target, static_cast<std::int32_t>(k) + 1), 0);
    EXPECT_EQ(target, truths[k]) << "argument " << k + 1;
  }
}

TEST_F(Arguments, match_a_list_of_allowed_texts_exactly) {
  struct {
    const char *text, *allowed;
    bool matches;
  } const cases[] = {
      {"A", "A,B\\,C", true},          {"\"B,C\"", "A,B\\,C", true}, {"B", "A,B\\,C", false},
      {"C", "A,B\\,C", false},         {"a", "A,B\\,C", false},      {"two", "one , two ", true},
      {"\"two \"", "one, two", false}, {"on", "one,two", false},     {"\"x y\"", " x y ,z", true},
      {"anything", "  ", true},        {"anything", "", true},
  };
  for (const auto& [text, allowed, matches] : cases) {
    prepare(text);
    Text<12> target("kept");
    EXPECT_EQ(status_of(kvz_argfillstring_, target, 1, 0, allowed), matches ? 0 : 1003) << text << " in " << allowed;
    EXPECT_EQ(target == "kept", !matches) << text << " in " << allowed;
  }
  prepare("x");
  const char* target = nullptr;
  EXPECT_EQ(status_of(kvZ_ArgString, target, 1, ""), 1003) << "no text is in an empty list";
  EXPECT_EQ(target, nullptr);
}

TEST_F(Arguments, fill_fields_and_blocks_up_to_their_size) {
  prepare("trajectory short");
  std::string field(12, '#');
  kvz_argfillstring_(TextField(field), 1, 0, "", status_);
  EXPECT_EQ(field, "trajectory  ");
  kvz_argfillstring_(TextField(field), 2, 6, "", status_);
  EXPECT_EQ(field, "short tory  ");
  EXPECT_THAT(log_, IsEmpty());
  kvz_argfillstring_(TextField(field), 1, 4, "", status_);
  EXPECT_EQ(field, "trajt tory  ");
  EXPECT_EQ(status_, 0);
  EXPECT_THAT(log_, ElementsAre("status -1000"));

  std::array<char, 6> block{};
  kvZ_ArgFillString(std::span<char>(block), 2, {}, status_);
  EXPECT_STREQ(block.data(), "short");
  kvZ_ArgFillString(std::span<char>(block), 1, {}, status_);
  EXPECT_STREQ(block.data(), "traje");
  kvz_defineminargcount_(1, status_);
  kvz_argfillstring_(TextField(field), 3, 0, "", status_);
  EXPECT_EQ(field, "trajt tory  ") << "an optional argument leaves the field alone";
}

TEST_F(Arguments, of_a_keyword_are_reported_with_it) {
  prepare("one -size 5 big -file \"a b\"");
  std::int32_t size = 0;
  kvZ_KEY_ArgInt("SIZE", size, 1, 0, 10, status_);
  EXPECT_EQ(size, 5);
  Text<8> field;
  kvz_key_argfillstring_("file  ", field, 1, 0, "", status_);
  EXPECT_EQ(field, "a b");
  kvz_key_argfillstring_("   ", field, 1, 0, "", status_);
  EXPECT_EQ(field, "one") << "no keyword means the positional arguments";
  EXPECT_THAT(log_, IsEmpty());

  EXPECT_EQ(status_of(kvZ_KEY_ArgInt, "size", size, 1, 6, 10), 1001);
  EXPECT_EQ(status_of(kvZ_KEY_ArgInt, "size", size, 3, 0, 10), 1005);
  EXPECT_EQ(status_of(kvZ_KEY_ArgInt, "none", size, 1, 0, 10), 0) << "a missing keyword leaves the target";
  EXPECT_EQ(size, 5);
  EXPECT_THAT(log_, ElementsAre("text size", "display 2 KVZ_KWORD_HEAD", "text 5", "text 6", "status 1001", "text size",
                                "display 2 KVZ_KWORD_HEAD", "number 3", "status 1005", "text none", "status -1002"));
}

TEST_F(Arguments, are_terminated_without_touching_the_text) {
  const std::string text = "{a}'b' -k c";
  prepare(text);
  const char *first = nullptr, *second = nullptr, *third = nullptr;
  kvZ_ArgString(first, 1, {}, status_);
  kvZ_ArgString(second, 2, {}, status_);
  kvZ_KEY_ArgString("k", third, 1, {}, status_);
  EXPECT_STREQ(first, "a");
  EXPECT_STREQ(second, "b");
  EXPECT_STREQ(third, "c");
  EXPECT_EQ(text, "{a}'b' -k c");
}

TEST_F(Arguments, name_objects) {
  prepare("water ice \"\"");
  std::int32_t object = -5;
  EXPECT_EQ(status_of(kvZ_ArgObject, object, 1, 99), 1008);
  EXPECT_EQ(status_of(kvZ_ArgObject, object, 2, 0), 1008);
  EXPECT_EQ(status_of(kvZ_ArgObject, object, 3, 0), 1008);
  EXPECT_EQ(object, -5);
  EXPECT_THAT(log_, ElementsAre("text water", "status 1008", "text ice", "status 1008", "text ", "status 1008"));
  kvZ_ArgObject(object, 1, 0, status_);
  EXPECT_EQ(object, 1200);
}

TEST_F(Arguments, join_with_single_blanks) {
  prepare("a   'b c'\td -x 1   2");
  std::string all;
  kvZ_AllArgs(all, status_);
  EXPECT_EQ(all, "a b c d");
  kvZ_KEY_AllArgs("x", all, status_);
  EXPECT_EQ(all, "1 2");
  std::array<char, 5> block{};
  kvZ_AllArgs(std::span<char>(block), status_);
  EXPECT_STREQ(block.data(), "a b ");
  EXPECT_EQ(status_, -1000);
  EXPECT_EQ(status_of(kvZ_KEY_AllArgs, "y", all), -1002);
}

TEST_F(Arguments, give_ranges_with_open_ends) {
  struct {
    const char* text;
    double low, high;
    std::int32_t status;
  } const cases[] = {
      {"1:10", 1, 10, 0},     {" -2 : 3 ", -2, 3, 0},   {":10", open_end, 10, 0},     {"  :10", open_end, 10, 0},
      {"5:", 5, open_end, 0}, {"5:  ", 5, open_end, 0}, {":", open_end, open_end, 0}, {"5", 77, 77, 1004},
  };
  for (const auto& [text, low, high, status] : cases) {
    double reals[2] = {77, 77};
    EXPECT_EQ(status_of(kvZ_GetDoubleRange, text, reals[0], reals[1]), status) << text;
    EXPECT_EQ(reals[0], low) << text;
    EXPECT_EQ(reals[1], high) << text;
    float floats[2] = {77, 77};
    kvZ_GetFloatRange(text, floats[0], floats[1], status_);
    EXPECT_EQ(floats[1], static_cast<float>(high)) << text;
    std::int32_t integers[2] = {77, 77};
    kvZ_GetIntRange(text, integers[0], integers[1], status_);
    EXPECT_EQ(integers[0], low == open_end ? -2147483647 : static_cast<std::int32_t>(low)) << text;
    EXPECT_EQ(integers[1], high == open_end ? -2147483647 : static_cast<std::int32_t>(high)) << text;
  }
}

TEST_F(Arguments, go_back_as_a_list_of_words) {
  struct {
    Log items;
    Log sent;
  } const cases[] = {
      {{}, {}},
      {{"one"}, {"return one"}},
      {{"a b", "{x}", "c   "}, {"return {a b} \\{x\\} c"}},
      {{"{a b}"}, {"return {\\{a b\\}}"}},
  };
  for (const auto& [items, sent] : cases) {
    prepare("");
    for (const auto& item : items) kvz_addtoreturnlist_(item);
    kvz_setreturnfromlist_();
    EXPECT_EQ(log_, sent);
    kvz_setreturnfromlist_();
    EXPECT_EQ(log_, sent) << "the list is sent once";
  }
  kvZ_AddToReturnList("left over");
  prepare("next command");
  kvZ_SetReturnFromList();
  EXPECT_THAT(log_, IsEmpty());
}

TEST(OutputArguments, begin_at_the_second_word) {
  struct {
    const char *text, *rest;
  } const cases[] = {{"GET name more", "name more"}, {"  GET   name", "name"}};
  for (const auto& [text, rest] : cases) EXPECT_STREQ(kvZ_AllOutputArgsP(text), rest);
  for (const char* text : {"GET", "GET  ", "   ", ""}) EXPECT_EQ(kvZ_AllOutputArgsP(text), nullptr);
}

}  // namespace
}  // namespace pathstat
