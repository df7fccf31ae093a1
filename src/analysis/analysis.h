#pragma once

#include <cstdint>
#include <string_view>

#include "shell/word_table.h"

namespace pathstat {

/// The words of the analysis.
const WordTable& analysis_words();

/// Runs one command word. @return the command's status, 0 on success
std::int32_t set_pathstat_(std::string_view command, std::string_view arguments);

/// Answers one data request into the output texts of sch_RegisterOutputStrings.
void get_pathstat_(std::string_view key);

/// Start, end, load and save of the analysis state.
void init_pathstat_();
void terminate_pathstat_();
void load_pathstat_();
void save_pathstat_();

}  // namespace pathstat
