#pragma once

#include <chrono>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "desk/ops/typed_stream.h"

namespace pathstat::desk {

/// How long the other side may neither send nor take a byte inside a value.
struct SilenceLimits {
  std::chrono::milliseconds told{10000};  ///< until the user hears of it
  std::chrono::milliseconds most{30000};  ///< until the link is given up
};

/// The bytes of a socket, with a way out at every one of them: a wait ends when it is asked to stop, or when the other
/// side has been silent for too long.
class SessionStream : public ByteStream {
 public:
  /// @param stop_now  asked a few times a second while a byte is waited for
  /// @param tell      gets a sentence when a wait takes long: which side waits for what
  explicit SessionStream(
      int socket, std::function<bool()> stop_now, SilenceLimits limits = {},
      std::function<void(const std::string&)> tell = [](const std::string&) {});

  bool read(std::span<std::byte> bytes) override;
  bool write(std::span<const std::byte> bytes) override;
  bool flush() override;
  bool has_input() const { return next_ < end_; }
  /// Why the last read or write failed, as a sentence of what pathstat or the system did.
  const std::string& problem() const { return problem_; }

 private:
  bool wait(short event);
  bool fail(std::string why);
  /// Receives at least one byte. @return their number, 0 at the end of the stream, on a failure, or when stopped
  std::size_t receive(std::span<std::byte> bytes);

  int socket_;
  std::function<bool()> stop_now_;
  SilenceLimits limits_;
  std::function<void(const std::string&)> tell_;
  std::string problem_;
  std::vector<std::byte> input_, output_;
  std::size_t next_ = 0, end_ = 0;  ///< of what is unread in the input
};

}  // namespace pathstat::desk
