#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "desk/messages/message.h"

namespace pathstat::desk {

/// A line that the process printed.
struct PrintedLine {
  std::string text;
};

/// What a command or a request returned.
struct ReturnedText {
  std::string text;
};

using RunNote = std::variant<Message, PrintedLine, ReturnedText>;

/// One line of the script that was run.
struct StepRecord {
  int line = 0;
  std::string text;
  std::optional<std::int32_t> status;  ///< none for a line that was not sent to the process, or did not end
  bool failed = false;
  double seconds = 0;
  std::vector<RunNote> notes;
  std::vector<std::int32_t> graphs;  ///< handles of the graphs that came up
};

/// All that happened in one run.
struct RunRecord {
  std::string script;   ///< its file name
  std::string program;  ///< path of the process's program
  std::string started;  ///< date and time
  double seconds = 0;
  std::string ending;           ///< why the run ended ahead of the script; empty if it did not
  std::vector<RunNote> before;  ///< what came before the first line
  std::vector<StepRecord> steps;

  /// Adds to the line that runs now.
  void note(RunNote what) { (steps.empty() ? before : steps.back().notes).push_back(std::move(what)); }
};

}  // namespace pathstat::desk
