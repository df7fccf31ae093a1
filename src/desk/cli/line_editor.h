#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "desk/cli/line_completion.h"

namespace pathstat::desk {

/// The file that keeps typed lines from one session to the next, in the user's folder for such states.
std::filesystem::path history_path();

/// The prompt on a terminal: editing, history, and completion with the tab key.
class LineEditor {
 public:
  LineEditor(std::string prompt, Completer completer, std::filesystem::path history);
  ~LineEditor();
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;

  /// Takes one line. The interrupt key drops what was typed so far. @return none at the end of the input
  std::optional<std::string> read();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace pathstat::desk
