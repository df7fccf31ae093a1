// Prints the page of command words, or with --list one line a word for programs.
#include <cstdio>
#include <string_view>

#include "main/applications.h"
#include "shell/words_page.h"

int main(int argc, char** argv) {
  const bool list = argc > 1 && std::string_view(argv[1]) == "--list";
  const auto tables = pathstat::words_of_applications();
  std::fputs((list ? pathstat::command_words_list(tables) : pathstat::command_words_page(tables)).c_str(), stdout);
  return 0;
}
