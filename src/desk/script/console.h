#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace pathstat::desk {

/// The terminal: lines of results on standard output, lines of trouble on standard error, and below them, on a terminal
/// only, one line that tells how far the work has come.
class Console {
 public:
  Console();
  ~Console() { clear(); }
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  void print(std::string_view text);
  void complain(std::string_view text);

  /// What runs now; stands in front of the progress.
  void set_activity(std::string activity);
  void show_progress(double fraction);
  void show_status(std::string_view text);
  /// Takes the progress line away.
  void clear();

 private:
  void write(std::FILE* stream, std::string_view text);
  void draw(const std::string& line);

  bool terminal_;
  bool drawn_ = false;
  std::string activity_;
};

}  // namespace pathstat::desk
