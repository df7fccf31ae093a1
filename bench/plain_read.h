#pragma once

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

// What the benches of trajectories hold their readers against.

namespace pathstat {

/// A file that goes when the program ends.
class BenchFile {
 public:
  explicit BenchFile(const std::string& ending)
      : path_(std::filesystem::temp_directory_path() / ("bench_" + std::to_string(::getpid()) + ending)) {}
  ~BenchFile() { std::filesystem::remove(path_); }
  BenchFile(const BenchFile&) = delete;

  const std::string& path() const { return path_; }
  double bytes() const { return static_cast<double>(std::filesystem::file_size(path_)); }

 private:
  std::string path_;
};

/// The plain way: read() over the whole file into one buffer.
inline void read_every_byte(const std::string& path) {
  static std::vector<std::byte> buffer(1 << 20);
  const int fd = ::open(path.c_str(), O_RDONLY);
  while (::read(fd, buffer.data(), buffer.size()) > 0) benchmark::DoNotOptimize(buffer.data());
  ::close(fd);
}

inline double seconds(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Runs two ways by turns and reports the time of the second over that of the first.
inline void compare(benchmark::State& state, const char* ratio, const std::function<void()>& work,
                    const std::function<void()>& reference) {
  work();
  reference();
  double own = 0.0, other = 0.0;
  for (auto _ : state) {
    const double time = seconds(work);
    state.SetIterationTime(time);
    own += time;
    other += seconds(reference);
  }
  state.counters[ratio] = other / own;
}

}  // namespace pathstat
