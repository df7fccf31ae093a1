// Typed values of any bytes: the first bytes say what is asked for, the rest are what the peer sends.
#include <sys/socket.h>

#include <array>
#include <functional>
#include <vector>

#include "corelink/typed_values.h"
#include "fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace pathstat;
  constexpr std::size_t questions = 6;
  constexpr std::size_t most = 60000;  // what a socket takes in without a reader
  if (size < questions || size > most) return 0;
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0) return 0;
  if (::send(ends[1], data + questions, size - questions, 0) < 0 || ::close(ends[1]) != 0) __builtin_trap();
  Connection record;
  record.socket = ends[0];
  record.connected = 1;
  record.state = connection_state::client;
  if (data[0] % 2 != 0) PNC_init_read_buffer(record, 1 + data[0]);
  std::string text;
  const std::size_t count = data[1];
  std::vector<char> chars(count);
  std::vector<std::int16_t> shorts(count);
  std::vector<std::int32_t> integers(count);
  std::vector<float> floats(count);
  std::vector<double> doubles(count);
  constexpr std::int32_t seconds = 1;
  const std::array<std::function<std::int32_t()>, 7> ask{
      [&] { return PD_receive_string(record, text, seconds); },
      [&] { return PD_receive_longstring(record, text, seconds); },
      [&] { return PD_receive_char(record, chars, seconds); },
      [&] { return PD_receive_short(record, shorts, seconds); },
      [&] { return PD_receive_int(record, integers, seconds); },
      [&] { return PD_receive_float(record, floats, seconds); },
      [&] { return PD_receive_double(record, doubles, seconds); },
  };
  for (std::size_t k = 2; k < questions && ask[data[k] % ask.size()]() == 0; ++k) {
    if (text.size() > size) __builtin_trap();
  }
  PNC_close(record);
  return 0;
}
