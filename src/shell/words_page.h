#pragma once

#include <string>

#include "shell/command_words.h"

namespace pathstat {

/// What a word takes, in words: its list, its limits, or what its row says.
std::string arguments_in_words(const CommandWord& row);

/// What must hold before a word runs, in words; empty where nothing must.
std::string guards_in_words(const CommandWord& row);

/// The page of all command words, in Markdown.
std::string command_words_page();

/// One line a word for programs: word, arguments, meaning, what must hold, with tabs between them.
std::string command_words_list();

}  // namespace pathstat
