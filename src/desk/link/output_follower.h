#pragma once

#include <cstddef>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>

namespace pathstat::desk {

using LineSink = std::function<void(std::string_view line)>;

/// Hands on, line by line, what a process writes to a file. A file, not a pipe, so that the process never waits for its
/// reader, and what it had printed when it sent something is always there to be read.
class OutputFollower {
 public:
  OutputFollower(std::filesystem::path file, LineSink sink) : file_(std::move(file)), sink_(std::move(sink)) {}

  /// Hands on the lines that are complete by now.
  void follow();
  /// Hands on the rest, a last line without its end included.
  void finish();
  /// The last lines, for a report of what went wrong.
  const std::deque<std::string>& last_lines() const { return last_; }

 private:
  void hand_on(std::string_view line);

  std::filesystem::path file_;
  LineSink sink_;
  std::ifstream stream_;
  std::string begun_;
  std::deque<std::string> last_;
};

}  // namespace pathstat::desk
