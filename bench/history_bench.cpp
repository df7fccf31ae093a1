// History trajectories against a plain read of the same bytes, and backwards against forwards.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <filesystem>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

#include "support/record_file.h"
#include "trajectory/history_file.h"

namespace {

using namespace pathstat;

/// A run of one molecule whose atoms all move, that goes when the program ends.
class Run {
 public:
  Run(std::int32_t atoms, std::int32_t frames)
      : path_(std::filesystem::temp_directory_path() / ("bench_" + std::to_string(::getpid()) + ".his")) {
    RecordWriter file;
    file.create(path_);
    write_head(file, atoms);
    for (std::int32_t frame = 1; frame <= frames; ++frame) write_frame(file, atoms, frame);
    file.close();
  }
  ~Run() { std::filesystem::remove(path_); }
  Run(const Run&) = delete;

  const std::string& path() const { return path_; }
  double bytes() const { return static_cast<double>(std::filesystem::file_size(path_)); }

 private:
  static constexpr std::int32_t components = 18;

  static void write_head(RecordWriter& file, std::int32_t atoms) {
    file.write(RecordBytes().i32(0));
    file.write(RecordBytes().text("a run", 80).f64(2.9));
    for (int k = 0; k < 2; ++k) file.write(RecordBytes().text("", 80));
    file.write(RecordBytes().i32(1).text("c3  ").f64(12.011));
    file.write(RecordBytes().i32(1).text("RES "));
    RecordBytes list;
    list.i32(atoms);
    for (std::int32_t k = 0; k < atoms; ++k) list.i32(1);
    for (std::int32_t k = 0; k < atoms; ++k) list.text("C", 5);
    file.write(list);
    list.clear();
    list.i32(0).i32(atoms);
    for (std::int32_t k = 1; k <= atoms; ++k) list.i32(k);
    file.write(list);
    file.write(RecordBytes().i32(1).i32(atoms).i32(1));
    file.write(RecordBytes().i32(1).i32(1).i32(atoms).i32(1));
    file.write(RecordBytes().i32(0));
  }

  static void write_frame(RecordWriter& file, std::int32_t atoms, std::int32_t frame) {
    RecordBytes cell, energies, vectors;
    const double right = std::acos(0.0);
    for (const double number : {50.0, 50.0, 50.0, right, right, right}) cell.f64(number);
    for (const double number : {50.0, 0.0, 0.0, 0.0, 50.0, 0.0, 0.0, 0.0, 50.0}) cell.f64(number);
    for (int k = 0; k < 3 + components + 1 + components + 4 + 2 + 54; ++k) energies.f64(frame + 0.25 * k);
    for (std::int32_t k = 0; k < 3 * atoms; ++k) vectors.f32(0.1F * static_cast<float>(k % 1000));
    if (frame == 1) {
      for (int k = 0; k < 106; ++k) cell.i32(0);
      file.write(cell);
      file.write(RecordBytes().i32(components).f64(1).i32(10).i32(0));
      file.write(energies);
    } else {
      file.write(RecordBytes().i32(1));
      file.write(energies);
      file.write(cell);
    }
    file.write(vectors);
    file.write(vectors);
  }

  std::string path_;
};

/// The plain way: read() over the whole file into one buffer.
void read_every_byte(const std::string& path) {
  static std::vector<std::byte> buffer(1 << 20);
  const int fd = ::open(path.c_str(), O_RDONLY);
  while (::read(fd, buffer.data(), buffer.size()) > 0) benchmark::DoNotOptimize(buffer.data());
  ::close(fd);
}

void open_run(const std::string& path) {
  std::int32_t status = 0;
  RecordReader file;
  file.open(path);
  open_history(std::move(file), status);
}

/// Positions and velocities of the frames in the order given, up to the end of the file.
void read_frames(const std::vector<std::int32_t>& frames, const Matrix3* turn, std::vector<double>& vectors) {
  std::int32_t status = 0;
  for (const auto frame : frames) {
    read_history_frame(frame, status);
    if (status != 0) return;
    for (const auto which : {HistoryVectors::positions, HistoryVectors::velocities}) {
      get_history_vectors(which, turn, vectors, status);
      benchmark::DoNotOptimize(vectors.data());
    }
  }
}

double seconds(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Runs two ways by turns and reports the time of the second over that of the first.
void compare(benchmark::State& state, const char* ratio, const std::function<void()>& work,
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

std::vector<std::int32_t> up_to(std::int32_t frames) {
  std::vector<std::int32_t> all(static_cast<std::size_t>(frames));
  std::iota(all.begin(), all.end(), 1);
  return all;
}

/// @param turned  the run's cell is turned into the model's
void history_vectors(benchmark::State& state, bool turned) {
  const auto atoms = static_cast<std::int32_t>(state.range(0)), frames = 2'000'000 / atoms;
  const Run run(atoms, frames);
  std::vector<double> vectors(3 * static_cast<std::size_t>(atoms));
  const auto order = up_to(frames);
  constexpr Matrix3 turn{0, 1, 0, -1, 0, 0, 0, 0, 1};
  compare(
      state, "of_plain_read_speed",
      [&] {
        open_run(run.path());
        read_frames(order, turned ? &turn : nullptr, vectors);
      },
      [&] { read_every_byte(run.path()); });
  close_history();
  state.SetBytesProcessed(static_cast<std::int64_t>(run.bytes() * static_cast<double>(state.iterations())));
}
BENCHMARK_CAPTURE(history_vectors, as_they_stand, false)
    ->Arg(1'000)
    ->Arg(10'000)
    ->Arg(100'000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(history_vectors, turned, true)
    ->Arg(1'000)
    ->Arg(10'000)
    ->Arg(100'000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

/// Two hundred frames of ten thousand atoms from the last to the first, against the other way round.
void history_backwards(benchmark::State& state) {
  constexpr std::int32_t atoms = 10'000, frames = 200;
  const Run run(atoms, frames);
  std::vector<double> vectors(std::size_t{3} * atoms);
  const auto forwards = up_to(frames);
  const std::vector<std::int32_t> backwards(forwards.rbegin(), forwards.rend());
  const auto walk = [&](const std::vector<std::int32_t>& order) {
    open_run(run.path());
    read_frames(order, nullptr, vectors);
  };
  compare(
      state, "forwards_of_backwards", [&] { walk(backwards); }, [&] { walk(forwards); });
  close_history();
}
BENCHMARK(history_backwards)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
