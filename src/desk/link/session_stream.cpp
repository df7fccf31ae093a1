#include "desk/link/session_stream.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <utility>

namespace pathstat::desk {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t buffer_size = 65536;
constexpr int milliseconds_between_questions = 100;

bool must_wait() { return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR; }

}  // namespace

SessionStream::SessionStream(int socket, std::function<bool()> stop_now, SilenceLimits limits,
                             std::function<void(const std::string&)> tell)
    : socket_(socket), stop_now_(std::move(stop_now)), limits_(limits), tell_(std::move(tell)), input_(buffer_size) {
  output_.reserve(buffer_size);
}

bool SessionStream::fail(std::string why) {
  problem_ = std::move(why);
  return false;
}

bool SessionStream::wait(short event) {
  const auto start = Clock::now();
  const auto* what = event == POLLIN ? "send the rest of a value" : "take a value";
  for (bool told = false; !stop_now_();) {
    pollfd waiting{socket_, event, 0};
    if (::poll(&waiting, 1, milliseconds_between_questions) > 0) return true;
    const auto silence = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    const double seconds = static_cast<double>(silence.count()) / 1000;
    if (silence >= limits_.most) return fail(fmt::format("pathstat did not {} for {:.3g} seconds", what, seconds));
    if (told || silence < limits_.told) continue;
    told = true;
    tell_(fmt::format("pathdesk has waited {:.3g} seconds for pathstat to {}; a second Ctrl-C gives the run up",
                      seconds, what));
  }
  return fail("stopped");
}

std::size_t SessionStream::receive(std::span<std::byte> bytes) {
  while (true) {
    const auto got = ::recv(socket_, bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (got == 0) fail("pathstat has closed the connection");
    if (got >= 0) return static_cast<std::size_t>(got);
    if (!must_wait()) {
      fail(fmt::format("the connection to pathstat failed: {}", std::strerror(errno)));
      return 0;
    }
    if (!wait(POLLIN)) return 0;
  }
}

bool SessionStream::read(std::span<std::byte> bytes) {
  if (!flush()) return false;
  while (!bytes.empty()) {
    std::size_t got = 0;
    if (has_input()) {
      got = std::min(bytes.size(), end_ - next_);
      std::memcpy(bytes.data(), &input_[next_], got);
      next_ += got;
    } else if (bytes.size() >= buffer_size) {
      got = receive(bytes);
      if (got == 0) return false;
    } else {
      next_ = 0;
      end_ = receive(input_);
      if (end_ == 0) return false;
    }
    bytes = bytes.subspan(got);
  }
  return true;
}

bool SessionStream::write(std::span<const std::byte> bytes) {
  output_.insert(output_.end(), bytes.begin(), bytes.end());
  return output_.size() < buffer_size || flush();
}

bool SessionStream::flush() {
  for (std::size_t done = 0; done < output_.size();) {
    const auto sent = ::send(socket_, &output_[done], output_.size() - done, MSG_DONTWAIT | MSG_NOSIGNAL);
    if (sent >= 0) {
      done += static_cast<std::size_t>(sent);
    } else if (!must_wait()) {
      return fail(fmt::format("the connection to pathstat failed: {}", std::strerror(errno)));
    } else if (!wait(POLLOUT)) {
      return false;
    }
  }
  output_.clear();
  return true;
}

}  // namespace pathstat::desk
