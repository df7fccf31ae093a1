// A remote call with two integers, to a Core in a process of its own over loopback, and the writes it makes.
#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "coreapi/operations.h"
#include "corelink/connection.h"
#include "corelink/core_connection.h"
#include "corelink/typed_values.h"

namespace pathstat {
namespace {

/// Binds one operation and answers its calls until the connection closes.
void serve_calls(const ListeningServer& server) {
  Connection connection;
  PNC_accept_client(connection, server, -1);
  constexpr std::int32_t number = 100000;
  constexpr std::int32_t ready = 1;
  const auto take = [&](std::int32_t& value) { return PD_receive_int(connection, value, -1) == 0; };
  const auto give = [&](std::int32_t value) { PD_send0_int(connection, value); };
  PNC_init_write_buffer(connection, 4096);
  for (std::int32_t code = 0; take(code);) {
    if (code != number) {
      std::string name;
      PD_receive_string(connection, name, -1);
      give(ready);
      give(number);
    } else {
      std::int32_t word = 0;
      for (int k = 0; k < 4; ++k) take(word);
      give(ready);
    }
    PNC_flush(connection);
  }
}

/// Write calls that this process has made.
long writes_so_far() {
  std::ifstream counters("/proc/self/io");
  for (std::string name; counters >> name;) {
    long value = 0;
    counters >> value;
    if (name == "syscw:") return value;
  }
  return 0;
}

void remote_call(benchmark::State& state) {
  const auto server = PNC_create_server(nullptr, "tcp");
  if (server == nullptr) return state.SkipWithError("no server");
  const pid_t core = fork();
  if (core == 0) {
    serve_calls(*server);
    _exit(0);
  }
  static Connection connection;
  PNC_create_client(connection, "127.0.0.1", PNC_server_name(*server).c_str(), "tcp");
  PNC_init_write_buffer(connection, 4096);
  kvC_API_pnc = &connection;
  kvg_redisplaymodels_(1, 0);
  std::vector<double> times_us;
  const long writes = writes_so_far();
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    kvg_redisplaymodels_(1, 0);
    times_us.push_back(std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count());
  }
  state.counters["writes_per_call"] =
      static_cast<double>(writes_so_far() - writes) / static_cast<double>(times_us.size());
  std::ranges::nth_element(times_us, times_us.begin() + std::ssize(times_us) / 2);
  state.counters["median_us"] = times_us[times_us.size() / 2];
  PNC_close(connection);
  waitpid(core, nullptr, 0);
}
BENCHMARK(remote_call)->UseRealTime();

}  // namespace
}  // namespace pathstat
