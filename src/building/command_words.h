#pragma once

#include <span>

#include "shell/command_words.h"

namespace pathstat {

std::span<const CommandWord> building_command_words();

}  // namespace pathstat
