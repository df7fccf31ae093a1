// History trajectories against a plain read of the same bytes, and backwards against forwards.
#include <benchmark/benchmark.h>

#include <fstream>
#include <numeric>
#include <vector>

#include "plain_read.h"
#include "support/record_file.h"
#include "trajectory/history_file.h"
#include "trajectory/history_writer.h"

namespace {

using namespace pathstat;

std::vector<std::int32_t> up_to(std::int32_t count) {
  std::vector<std::int32_t> all(static_cast<std::size_t>(count));
  std::iota(all.begin(), all.end(), 1);
  return all;
}

/// A run of one molecule whose atoms all move.
class Run : public BenchFile {
 public:
  Run(std::int32_t atoms, std::int32_t frames) : BenchFile(".his") {
    using namespace testing_bytes;
    const HistoryPlan plan{.atoms = atoms, .movable = up_to(atoms)};
    std::ofstream file(path(), std::ios::binary);
    const auto write = [&](const Bytes& bytes) {
      file.write(reinterpret_cast<const char*>(bytes.all().data()), static_cast<std::streamsize>(bytes.size()));
    };
    write(history_head(plan));
    write(history_first_frame(plan, numbered_frame(plan, 1)));
    for (std::int32_t frame = 2; frame <= frames; ++frame) write(history_later_frame(numbered_frame(plan, frame)));
  }
};

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
