#include "shell/words_page.h"

#include "main/applications.h"
#include "testing.h"

namespace pathstat {
namespace {

TEST(WordsPage, is_the_one_in_the_docs) {
  std::ifstream file(SOURCE_DIR "/docs/command-words.md");
  const std::string page(std::istreambuf_iterator<char>(file), {});
  EXPECT_EQ(page, command_words_page(words_of_applications())) << "run ./dev docs";
}

TEST(WordsOfApplications, stand_in_one_table_each) {
  std::set<std::string_view> seen;
  for (const auto* table : words_of_applications()) {
    for (const auto& row : table->words) EXPECT_TRUE(seen.insert(row.word).second) << row.word;
    for (const auto& query : table->queries) EXPECT_TRUE(find_command_word(table->words, query.word)) << query.word;
  }
}

}  // namespace
}  // namespace pathstat
