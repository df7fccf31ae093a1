#include "desk/script/console.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cmath>

namespace pathstat::desk {
namespace {

constexpr int bar_width = 30;

}  // namespace

Console::Console() : terminal_(::isatty(STDERR_FILENO) != 0) {}

void Console::write(std::FILE* stream, std::string_view text) {
  clear();
  fmt::print(stream, "{}\n", text);
  std::fflush(stream);
}

void Console::print(std::string_view text) { write(stdout, text); }
void Console::complain(std::string_view text) { write(stderr, text); }

void Console::set_activity(std::string activity) {
  clear();
  activity_ = std::move(activity);
}

void Console::draw(const std::string& line) {
  if (!terminal_) return;
  fmt::print(stderr, "\r\x1b[K{}", line);
  std::fflush(stderr);
  drawn_ = true;
}

void Console::show_progress(double fraction) {
  const auto done = static_cast<int>(std::lround(fraction * bar_width));
  draw(fmt::format("{} [{:=<{}}{: <{}}] {:3.0f} %", activity_, "", done, "", bar_width - done, 100 * fraction));
}

void Console::show_status(std::string_view text) {
  if (text.empty()) return clear();
  draw(fmt::format("{}: {}", activity_, text));
}

void Console::clear() {
  if (!drawn_) return;
  fmt::print(stderr, "\r\x1b[K");
  std::fflush(stderr);
  drawn_ = false;
}

}  // namespace pathstat::desk
