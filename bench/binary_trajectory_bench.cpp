#include <benchmark/benchmark.h>

#include <array>
#include <string>
#include <vector>

#include "plain_read.h"
#include "trajectory/binary_trajectory.h"

namespace {

using namespace pathstat;

/// A run of the newest version with velocities, periodic in three directions.
class Run : public BenchFile {
 public:
  Run(std::int32_t atoms, std::int32_t frames) : BenchFile(".trj") {
    std::int32_t handle = 0, status = 0;
    kvA_TRJ_Open(path(), binary_mode::create, handle, status);
    const std::int32_t periodicity = 3;
    kvA_TRJ_SetValueInt(handle, 2018, {&periodicity, 1}, status);
    std::vector<double> coordinates(3 * static_cast<std::size_t>(atoms));
    for (std::size_t k = 0; k < coordinates.size(); ++k) coordinates[k] = 0.1 * static_cast<double>(k % 1000);
    kvA_TRJ_SetValueDouble(handle, 1071, coordinates, status);
    kvA_TRJ_SetValueDouble(handle, 1072, coordinates, status);
    for (std::int32_t k = 0; k < frames && status == 0; ++k) kvA_TRJ_WriteFrame(handle, status);
    kvA_TRJ_Close(handle, status);
  }
};

/// One value of each frame.
double scalar_row(const std::string& path, std::int32_t key) {
  std::int32_t handle = 0, status = 0, count = 0;
  kvA_TRJ_Open(path, binary_mode::read, handle, status);
  double sum = 0.0;
  for (std::int32_t frame = 1; status == 0; ++frame) {
    double value = 0.0;
    kvA_TRJ_ReadFrame(handle, frame, status);
    if (status == 0) kvA_TRJ_ValueDouble(handle, key, {&value, 1}, count, status);
    sum += value;
  }
  kvA_TRJ_Close(handle, status);
  return sum;
}

void all_coordinates(const std::string& path, std::vector<double>& positions, std::vector<double>& velocities) {
  std::int32_t handle = 0, status = 0, count = 0;
  kvA_TRJ_Open(path, binary_mode::read, handle, status);
  for (std::int32_t frame = 1; status == 0; ++frame) {
    kvA_TRJ_ReadFrame(handle, frame, status);
    if (status != 0) break;
    kvA_TRJ_ValueDouble(handle, 1071, positions, count, status);
    kvA_TRJ_ValueDouble(handle, 1072, velocities, count, status);
    benchmark::DoNotOptimize(positions.data());
    benchmark::DoNotOptimize(velocities.data());
  }
  kvA_TRJ_Close(handle, status);
}

/// Ten scalar rows, each over the whole run, against ten reads of every byte.
void ten_scalar_rows(benchmark::State& state) {
  const Run run(static_cast<std::int32_t>(state.range(0)), 100);
  constexpr std::array keys{1032, 1006, 1034, 1001, 1042, 1043, 1011, 1012, 1007, 1008};
  compare(
      state, "faster_than_every_byte",
      [&] {
        for (const auto key : keys) benchmark::DoNotOptimize(scalar_row(run.path(), key));
      },
      [&] {
        for (std::size_t k = 0; k < keys.size(); ++k) read_every_byte(run.path());
      });
}
BENCHMARK(ten_scalar_rows)->Arg(1'000)->Arg(10'000)->Arg(100'000)->UseManualTime()->Unit(benchmark::kMillisecond);

/// Positions and velocities of every frame, against a plain read of the same file.
void coordinates_and_velocities(benchmark::State& state) {
  const auto atoms = static_cast<std::int32_t>(state.range(0));
  const Run run(atoms, 2'000'000 / atoms);
  std::vector<double> positions(3 * static_cast<std::size_t>(atoms)), velocities(positions.size());
  compare(
      state, "of_plain_read_speed", [&] { all_coordinates(run.path(), positions, velocities); },
      [&] { read_every_byte(run.path()); });
  state.SetBytesProcessed(static_cast<std::int64_t>(run.bytes() * static_cast<double>(state.iterations())));
}
BENCHMARK(coordinates_and_velocities)
    ->Arg(1'000)
    ->Arg(10'000)
    ->Arg(100'000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
