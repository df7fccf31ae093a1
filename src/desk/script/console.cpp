#include "desk/script/console.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cmath>

#include "desk/messages/visible_text.h"

namespace pathstat::desk {
namespace {

constexpr int bar_width = 30;

}  // namespace

Console::Console() : terminal_(::isatty(STDERR_FILENO) != 0) {}

void Console::write(std::FILE* stream, std::string_view text, Told kind) {
  if (sink_.told) return sink_.told(kind, text);
  clear();
  fmt::print(stream, "{}\n", visible_lines(text));
  std::fflush(stream);
}

void Console::print(std::string_view text, Told kind) { write(stdout, text, kind); }
void Console::complain(std::string_view text) { write(stderr, text, Told::complaint); }

void Console::set_activity(std::string_view activity) {
  clear();
  activity_ = visible(activity);
  started_ = std::chrono::steady_clock::now();
}

void Console::draw(const std::string& line) {
  if (!terminal_) return;
  fmt::print(stderr, "\r\x1b[K{}", line);
  std::fflush(stderr);
  drawn_ = true;
}

void Console::show_progress(double fraction) {
  if (sink_.progress) return sink_.progress(fraction);
  const auto done = static_cast<int>(std::lround(fraction * bar_width));
  const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - started_;
  draw(fmt::format("{} [{:=<{}}{: <{}}] {:3.0f} % {}", activity_, "", done, "", bar_width - done, 100 * fraction,
                   time_left(fraction, spent.count())));
}

void Console::show_status(std::string_view text) {
  if (sink_.status) return sink_.status(text);
  if (text.empty()) return clear();
  draw(fmt::format("{}: {}", activity_, visible(text)));
}

void Console::clear() {
  if (!drawn_) return;
  fmt::print(stderr, "\r\x1b[K");
  std::fflush(stderr);
  drawn_ = false;
}

std::string time_left(double fraction, double seconds) {
  constexpr double least_fraction = 0.01, least_seconds = 1;
  if (fraction < least_fraction || fraction >= 1 || seconds < least_seconds) return {};
  const auto left = std::lround(seconds * (1 - fraction) / fraction);
  if (left >= 3600) return fmt::format("{} h {:02} min left", left / 3600, left / 60 % 60);
  if (left >= 60) return fmt::format("{} min {:02} s left", left / 60, left % 60);
  return fmt::format("{} s left", left);
}

}  // namespace pathstat::desk
