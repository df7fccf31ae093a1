#pragma once

#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace pathstat::desk {

/// What a text tells.
enum class Told { result, table, complaint };

/// Takes what would stand on the terminal. Every member is there.
struct ConsoleSink {
  std::function<void(Told kind, std::string_view text)> told;
  std::function<void(double fraction)> progress;
  std::function<void(std::string_view text)> status;  ///< empty when it is over
};

/// The terminal: lines of results on standard output, lines of trouble on standard error, and below them, on a terminal
/// only, one line that tells how far the work has come. Control characters in texts are shown, not sent.
class Console {
 public:
  Console();
  ~Console() { clear(); }
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  /// Has everything go to a sink instead of the terminal.
  void lead_to(ConsoleSink sink) { sink_ = std::move(sink); }

  void print(std::string_view text, Told kind = Told::result);
  void complain(std::string_view text);
  /// Why a line of results did not reach the standard output, once; empty if all did, or if its reader has gone.
  std::string take_problem() { return std::exchange(problem_, {}); }

  /// What begins to run now; stands in front of the progress.
  void set_activity(std::string_view activity);
  /// Shows how far it has come, and how long the rest will take if it goes on like that.
  void show_progress(double fraction);
  void show_status(std::string_view text);
  /// Takes the progress line away.
  void clear();

 private:
  void draw(const std::string& line);

  ConsoleSink sink_;
  bool terminal_;
  bool drawn_ = false;
  std::string problem_;
  std::string activity_;
  std::chrono::steady_clock::time_point started_{};
};

/// "1 h 05 min left", "2 min 30 s left" or "12 s left"; empty where too little is done to tell.
///
/// @param fraction  share of the work that is done
/// @param seconds   that it took
std::string time_left(double fraction, double seconds);

}  // namespace pathstat::desk
