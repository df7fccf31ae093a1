#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "shell/command_words.h"
#include "shell/queries.h"

namespace pathstat {

/// The words of one application and what they tell on request.
struct WordTable {
  std::string_view application;  ///< the key under which the Core knows it
  std::string_view title;        ///< for people
  std::span<const CommandWord> words;
  std::span<const QueryRow> queries;
};

/// Runs one command word. @return the command's status, 0 on success; 1 with a message for a word that is not there
std::int32_t run_command(const WordTable& table, std::string_view command, std::string_view arguments);

/// Answers one data request into the output texts of sch_RegisterOutputStrings. A word without a query defines nothing;
/// one that is not there gives a message.
void answer_request(const WordTable& table, std::string_view key);

}  // namespace pathstat
