#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "shell/command_words.h"
#include "support/text_field.h"

namespace pathstat {

constexpr std::size_t command_word_count = 116;
std::span<const CommandWord, command_word_count> command_words();

/// The words alone, blank-padded, in the order of the table.
const std::array<Text<28>, command_word_count>& pathstat_cmd_common__();

}  // namespace pathstat
