#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "support/record_file.h"

namespace pathstat::desk {

using LineSink = std::function<void(std::string_view line)>;

/// Hands on, line by line, what a process writes to a file. A file, not a pipe, so that the process never waits for its
/// reader, and what it had printed when it sent something is always there to be read.
class OutputFollower {
 public:
  /// @param from  the bytes of the file that have been handed on before
  OutputFollower(std::filesystem::path file, LineSink sink, std::uintmax_t from = 0)
      : file_(std::move(file)), sink_(std::move(sink)), handed_on_(from) {}

  /// Hands on the lines that are complete by now.
  void follow();
  /// Hands on the rest, a last line without its end included.
  void finish();
  /// The bytes of the file that have been handed on.
  std::uintmax_t handed_on() const { return handed_on_; }
  /// The last lines, for a report of what went wrong.
  const std::deque<std::string>& last_lines() const { return last_; }

 private:
  void hand_on(std::string_view line);
  /// Reads up to the end there was at its begin: a process that prints without an end holds nobody. @return 0, or the
  /// error number of what went wrong; the next call goes on there
  int read_on();

  std::filesystem::path file_;
  LineSink sink_;
  FileDescriptor open_;
  std::uintmax_t handed_on_;
  std::string begun_;
  std::deque<std::string> last_;
};

}  // namespace pathstat::desk
