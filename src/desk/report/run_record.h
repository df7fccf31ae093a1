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
  std::vector<std::int32_t> graphs;        ///< handles of the graphs that came up
  std::vector<std::size_t> surfaces = {};  ///< that were made, by their places
  std::size_t folded = 0;  ///< so many lines behind it are left out, for there is nothing to tell of them
  int last_line = 0;       ///< the last of these

  bool is_quiet() const { return !failed && notes.empty() && graphs.empty() && surfaces.empty(); }
};

/// What is kept of the text of a line, and how many lines in a row of which there is nothing to tell.
constexpr std::size_t most_characters = 2000, most_quiet_lines = 20;

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

  /// Ends the line that runs now. In a long row of lines of which there is nothing to tell but that they went well, one
  /// stands for all that follow, so that a long script makes no long record.
  void end_line() {
    quiet_ = steps.back().is_quiet() ? quiet_ + 1 : 0;
    ++lines;
    if (quiet_ <= most_quiet_lines) return;
    auto& kept = steps[steps.size() - 2];
    ++kept.folded;
    kept.last_line = steps.back().line;
    kept.seconds += steps.back().seconds;
    steps.pop_back();
  }
  std::size_t lines = 0;  ///< that have ended

 private:
  std::size_t quiet_ = 0;  ///< lines in a row up to the last
};

}  // namespace pathstat::desk
