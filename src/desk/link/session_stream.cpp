#include "desk/link/session_stream.h"

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
constexpr auto longest_silence = std::chrono::seconds(60);

bool must_wait() { return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR; }

}  // namespace

SessionStream::SessionStream(int socket, std::function<bool()> stop_now)
    : socket_(socket), stop_now_(std::move(stop_now)), input_(buffer_size) {
  output_.reserve(buffer_size);
}

bool SessionStream::wait(short event) const {
  const auto limit = Clock::now() + longest_silence;
  while (!stop_now_() && Clock::now() < limit) {
    pollfd waiting{socket_, event, 0};
    if (::poll(&waiting, 1, milliseconds_between_questions) > 0) return true;
  }
  return false;
}

std::size_t SessionStream::receive(std::span<std::byte> bytes) const {
  while (true) {
    const auto got = ::recv(socket_, bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (got >= 0) return static_cast<std::size_t>(got);
    if (!must_wait() || !wait(POLLIN)) return 0;
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
    } else if (!must_wait() || !wait(POLLOUT)) {
      return false;
    }
  }
  output_.clear();
  return true;
}

}  // namespace pathstat::desk
