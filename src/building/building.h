#pragma once

#include <cstdint>
#include <string_view>

#include "shell/word_table.h"

namespace pathstat {

/// The key under which the Core knows this application.
constexpr std::string_view building_key = "STRUCTURE";

/// The words of this application.
const WordTable& building_words();

/// Runs one command word. @return the command's status, 0 on success
std::int32_t set_building(std::string_view command, std::string_view arguments);

/// Answers one data request into the output texts of sch_RegisterOutputStrings.
void get_building(std::string_view key);

/// Puts all that command words set back to its start.
void init_building();
void terminate_building();
void load_building();
void save_building();

}  // namespace pathstat
