#pragma once

#include <span>

#include "shell/application_table.h"
#include "shell/word_table.h"

namespace pathstat {

/// The table of applications of this process.
std::span<const Application> applications_of_process();

/// The words of all applications, in the order of their table. No word stands in two of them, so that a word tells its
/// application.
std::span<const WordTable* const> words_of_applications();

}  // namespace pathstat
