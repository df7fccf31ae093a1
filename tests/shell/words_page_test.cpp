#include "shell/words_page.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace pathstat {
namespace {

TEST(WordsPage, is_the_one_in_the_docs) {
  std::ifstream file(SOURCE_DIR "/docs/command-words.md");
  const std::string page(std::istreambuf_iterator<char>(file), {});
  EXPECT_EQ(page, command_words_page()) << "run ./dev docs";
}

}  // namespace
}  // namespace pathstat
