#include "desk/script/console.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstring>

#include "desk/messages/visible_text.h"

namespace pathstat::desk {
namespace {

constexpr int bar_width = 30;

/// Writes a text at once. @return 0 or an error number; a stream that fails does not end what the program does
int put(std::FILE* stream, std::string_view text) {
  errno = 0;
  const bool written = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
  if (std::fflush(stream) == 0 && written) return 0;
  return errno == 0 ? EIO : errno;
}

}  // namespace

Console::Console() : terminal_(::isatty(STDERR_FILENO) != 0) {}

void Console::print(std::string_view text, Told kind) {
  if (sink_.told) return sink_.told(kind, text);
  clear();
  const int failure = put(stdout, visible_lines(text) + "\n");
  // A reader that has seen enough, as of a pager, is no trouble.
  if (failure == 0 || failure == EPIPE || !problem_.empty()) return;
  problem_ = fmt::format("the standard output cannot be written: {}", std::strerror(failure));
}

void Console::complain(std::string_view text) {
  if (sink_.told) return sink_.told(Told::complaint, text);
  clear();
  put(stderr, visible_lines(text) + "\n");
}

void Console::set_activity(std::string_view activity) {
  clear();
  activity_ = visible(activity);
  started_ = std::chrono::steady_clock::now();
}

void Console::draw(const std::string& line) {
  if (!terminal_) return;
  put(stderr, "\r\x1b[K" + line);
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
  put(stderr, "\r\x1b[K");
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
