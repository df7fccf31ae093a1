#pragma once

#include <functional>
#include <vector>

#include "desk/ops/typed_stream.h"

namespace pathstat::desk {

/// The bytes of a socket, with a way out at every one of them: a wait ends when it is asked to stop, or when the other
/// side neither sends nor takes a byte for a minute.
class SessionStream : public ByteStream {
 public:
  /// @param stop_now  asked a few times a second while a byte is waited for
  explicit SessionStream(int socket, std::function<bool()> stop_now);

  bool read(std::span<std::byte> bytes) override;
  bool write(std::span<const std::byte> bytes) override;
  bool flush() override;
  bool has_input() const { return next_ < end_; }

 private:
  bool wait(short event) const;
  /// Receives at least one byte. @return their number, 0 at the end of the stream, on a failure, or when stopped
  std::size_t receive(std::span<std::byte> bytes) const;

  int socket_;
  std::function<bool()> stop_now_;
  std::vector<std::byte> input_, output_;
  std::size_t next_ = 0, end_ = 0;  ///< of what is unread in the input
};

}  // namespace pathstat::desk
