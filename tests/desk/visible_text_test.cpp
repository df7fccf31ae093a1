#include "desk/messages/visible_text.h"

#include "testing.h"

namespace pathstat::desk {
namespace {

using namespace std::string_literals;

TEST(VisibleText, shows_what_would_act_on_a_terminal) {
  using Case = std::tuple<std::string, std::string>;
  for (const auto& [text, shown] : {
           Case{"plain 'text'", "plain 'text'"},
           Case{"\x1b[2J\a"s, "\\x1b[2J\\x07"},
           Case{"nul\0 cr\r lf\n tab\t del\x7f"s, "nul\\x00 cr\\x0d lf\\x0a tab\\x09 del\\x7f"},
           Case{"Å · é 水 🜁", "Å · é 水 🜁"},
           Case{"\xc2\x9b"
                "31m",
                "\\xc2\\x9b31m"},                                        // CSI of one code, as UTF-8
           Case{"\x9b"s + "31m \xff", "\\x9b31m \\xff"},                 // and as a byte
           Case{"\xc0\x9b \xe0\x82\x9b", "\\xc0\\x9b \\xe0\\x82\\x9b"},  // in more bytes than it needs
           Case{"\xed\xa0\x80", "\\xed\\xa0\\x80"},                      // half of a pair
           Case{"cut \xe6\xb0", "cut \\xe6\\xb0"},
           Case{"\xf5\x80\x80\x80", "\\xf5\\x80\\x80\\x80"},
           Case{"gpj.\u202etab", "gpj.\\xe2\\x80\\xaetab"},  // from right to left
           Case{"a\u2029b\u2066c", "a\\xe2\\x80\\xa9b\\xe2\\x81\\xa6c"},
       }) {
    EXPECT_EQ(visible(text), shown);
  }
  EXPECT_EQ(visible_lines("a\n\tb\r\n"), "a\n\tb\\x0d\n");
}

TEST(VisibleText, is_shortened_between_letters) {
  EXPECT_EQ(shortened("abc", 3), "abc");
  EXPECT_EQ(shortened("abcd", 3), "abc... (4 characters)");
  EXPECT_EQ(shortened("aÅÅ", 2), "a... (5 characters)");
  EXPECT_EQ(shortened("aÅÅ", 3), "aÅ... (5 characters)");
  EXPECT_EQ(shortened(std::string(9, '\x80'), 5), "\x80\x80... (9 characters)") << "no letters at all";
}

}  // namespace
}  // namespace pathstat::desk
