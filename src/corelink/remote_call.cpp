#include "corelink/remote_call.h"

#include <cstdio>
#include <cstdlib>
#include <new>

#include "support/level.h"

namespace pathstat {
namespace {

constexpr std::int32_t reply_ready = 1;
constexpr std::int32_t nested_command = -1;
constexpr std::int32_t nested_request = -2;
constexpr std::int32_t first_frame_word = 2;

constexpr int most_nested = 100;  ///< inputs within each other; each takes room of the stack

NestedInputHandler nested_input_handler = nullptr;
int nested_inputs = 0;  ///< that have begun and not ended

[[noreturn]] void must_exit(const char* text) {
  std::fputs(text, stdout);
  std::exit(1);
}

void require(std::int32_t failure) {
  if (failure != 0) kvC_Error_handler(failure);
}

Connection& core() {
  if (kvC_API_pnc == nullptr) kvC_Error_handler();
  need_core();
  return *kvC_API_pnc;
}

void serve_nested(std::int32_t code) {
  if (nested_inputs == most_nested) must_exit("The Core asks within its own calls without an end, must exit.\n");
  const Level level(nested_inputs);
  nested_input_handler(code);  // a failed exchange shows in the next read
}

/// Sends what is buffered and blocks for the reply, serving what the Core asks for in the meantime.
void reply_wait(Connection& connection, const char* text) {
  if (PNC_flush(connection) != 1) kvC_Error_handler();
  for (;;) {
    std::int32_t code = 0;
    require(PD_receive_int(connection, code, no_time_limit));
    if (code == reply_ready) return;
    const bool nested = code == nested_command || code == nested_request;
    if (!nested || nested_input_handler == nullptr) must_exit(text);
    serve_nested(code);
  }
}

}  // namespace

void set_nested_input_handler(NestedInputHandler handler) { nested_input_handler = handler; }

RemoteCall::RemoteCall(std::string_view name, std::int32_t family_code, std::int32_t second_word, std::int32_t& binding)
    : connection_(core()) {
  if (binding == unbound) {
    send(family_code);
    send_text(name);
    wait();
    binding = receive<std::int32_t>();
  }
  send(binding);
  send(first_frame_word);
  send(second_word);
}

void RemoteCall::send(std::span<const std::int32_t> values) { require(PD_send0_int(connection_, values)); }
void RemoteCall::send(std::span<const float> values) { require(PD_send0_float(connection_, values)); }
void RemoteCall::send(std::span<const double> values) { require(PD_send0_double(connection_, values)); }

void RemoteCall::send_text(std::string_view text) try {
  require(PD_send0_string(connection_, text.substr(0, longest_string)));
} catch (const std::bad_alloc&) {
  // Nothing could follow the half of a call on the wire.
  must_exit("Not enough memory inside a call of the Core, must exit.\n");
}

void RemoteCall::wait() { reply_wait(connection_, "Core has disconnected, must exit.\n"); }

void RemoteCall::receive(std::span<std::int32_t> values) { require(PD_receive_int(connection_, values, PNC_Timeout)); }
void RemoteCall::receive(std::span<float> values) { require(PD_receive_float(connection_, values, PNC_Timeout)); }
void RemoteCall::receive(std::span<double> values) { require(PD_receive_double(connection_, values, PNC_Timeout)); }

std::string RemoteCall::receive_text() {
  std::string text;
  require(PD_receive_string(connection_, text, PNC_Timeout));
  return text;
}

}  // namespace pathstat
