#pragma once

#include <span>
#include <string>

#include "shell/word_table.h"

namespace pathstat {

/// What a word takes, in words: its list, its limits, or what its row says.
std::string arguments_in_words(const CommandWord& row);

/// What must hold before a word runs, in words; empty where nothing must.
std::string guards_in_words(const CommandWord& row);

/// The page of all command words, one section an application, in Markdown.
std::string command_words_page(std::span<const WordTable* const> tables);

/// One line a word for programs: word, arguments, meaning, what must hold and its application, with tabs between them.
std::string command_words_list(std::span<const WordTable* const> tables);

}  // namespace pathstat
