#pragma once

#include <concepts>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "corelink/core_connection.h"
#include "corelink/typed_values.h"

namespace pathstat {

/// The binding of an operation that has not been called yet.
constexpr std::int32_t unbound = -1;

/// Serves an input code (-1 command, -2 data request) that the Core sends while a call waits for its reply.
using NestedInputHandler = int (*)(std::int32_t code);
void set_nested_input_handler(NestedInputHandler handler);

/// What a frame carries as one element or as an array.
template <class T>
concept FrameValue = std::same_as<T, std::int32_t> || std::same_as<T, float> || std::same_as<T, double>;

/// One synchronous call of an operation of the Core: the constructor opens the frame, the send members add the
/// inputs in order, wait() sends the frame and blocks for the reply, the receive members take the outputs in order.
///
/// Inputs are buffered, so that a call leaves as one write. Any failure of the connection ends the process
/// (kvC_Error_handler). During the wait the Core may have commands and requests served, which may call the Core
/// themselves, the same operation included.
class RemoteCall {
 public:
  /// @param name         the operation's name, by which the first call binds it
  /// @param family_code  first word of a binding
  /// @param second_word  the family's second frame word
  /// @param binding      the operation's number at the Core; `unbound` until the first call
  RemoteCall(std::string_view name, std::int32_t family_code, std::int32_t second_word, std::int32_t& binding);
  RemoteCall(const RemoteCall&) = delete;
  RemoteCall& operator=(const RemoteCall&) = delete;

  void send(std::span<const std::int32_t> values);
  void send(std::span<const float> values);
  void send(std::span<const double> values);
  template <FrameValue T>
  void send(T value) {
    send(std::span<const T>(&value, 1));
  }
  /// A string; cut at an embedded NUL and to longest_string characters.
  void send_text(std::string_view text);

  /// Sends the frame and returns when the reply is there.
  void wait();

  void receive(std::span<std::int32_t> values);
  void receive(std::span<float> values);
  void receive(std::span<double> values);
  template <FrameValue T>
  T receive() {
    T value{};
    receive(std::span<T>(&value, 1));
    return value;
  }
  std::string receive_text();

 private:
  Connection& connection_;
};

}  // namespace pathstat
