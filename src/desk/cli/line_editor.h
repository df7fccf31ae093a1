#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "desk/cli/completion.h"

namespace pathstat::desk {

/// The file that keeps typed lines from one session to the next, in the user's folder for such states.
std::filesystem::path history_path();

/// The prompt on a terminal: editing, history, and completion with the tab key. There is one at a time.
class LineEditor {
 public:
  using Completer = std::function<Completion(const std::vector<std::string>& before, std::string_view begun)>;

  LineEditor(Completer completer, std::filesystem::path history);
  ~LineEditor();
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;

  /// Takes one line. The interrupt key drops what was typed so far. @return none at the end of the input
  std::optional<std::string> read(const char* prompt);

 private:
  std::filesystem::path history_;
};

}  // namespace pathstat::desk
