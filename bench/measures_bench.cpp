// 1,000 torsions followed through 200 frames of 10,000 atoms, beside a pass that only reads the coordinates.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <numeric>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "catalogue/measure_families.h"
#include "measures/measure_blocks.h"
#include "measures/measures.h"
#include "support/parallel.h"
#include "trajectory/binary_trajectory.h"
#include "trajectory/front_end.h"
#include "trajectory/trajectory_keys.h"

namespace {

using namespace pathstat;

constexpr std::int32_t atoms = 10'000;
constexpr std::int32_t frames = 200;
constexpr std::int32_t torsions = 1'000;

/// A run of atoms that wander, in a file that is gone when the benchmark is over.
class Run {
 public:
  Run() {
    std::int32_t handle = 0, status = 0;
    kvA_TRJ_Open(path, binary_mode::create, handle, status);
    constexpr std::array<std::string_view, 1> kind{"MDTR"};
    constexpr std::int32_t directions = 3;
    constexpr std::array<double, 6> cell{70, 70, 70, 0, 0, 0};
    std::vector<std::int32_t> ids(static_cast<std::size_t>(atoms));
    std::iota(ids.begin(), ids.end(), 1);
    kvA_TRJ_SetValueChar(handle, 4001, kind, status);
    kvA_TRJ_SetValueInt(handle, 2020, {&atoms, 1}, status);
    kvA_TRJ_SetValueInt(handle, 2018, {&directions, 1}, status);
    kvA_TRJ_SetValueInt(handle, 2008, ids, status);
    std::mt19937 random(7);
    std::uniform_real_distribution<double> place(0, 70);
    std::vector<double> xyz(3 * static_cast<std::size_t>(atoms));
    for (std::int32_t frame = 1; frame <= frames; ++frame) {
      std::ranges::generate(xyz, [&] { return place(random); });
      kvA_TRJ_SetValueDouble(handle, 1058, cell, status);
      kvA_TRJ_SetValueDouble(handle, 1071, xyz, status);
      kvA_TRJ_WriteFrame(handle, status);
    }
    kvA_TRJ_Close(handle, status);
  }
  ~Run() { std::filesystem::remove(path); }
  Run(const Run&) = delete;

  const std::string path =
      (std::filesystem::temp_directory_path() / ("measures_" + std::to_string(::getpid()) + ".trj")).string();
};

/// Torsions of four atoms that follow each other, as those of a chain do, anywhere in the model, the last of them in a
/// neighbouring cell.
class Torsions {
 public:
  Torsions() {
    const auto& family = measure_family(503);
    std::int32_t status = 0;
    free_measure_blocks(family);
    make_measure_blocks(family, torsions, status);
    std::mt19937 random(8);
    std::uniform_int_distribution<std::int32_t> atom(1, atoms - 3);
    std::ranges::generate(measure_atoms(family, 0), [&] { return atom(random); });
    for (std::size_t k = 0; k < family.atoms; ++k) {
      std::ranges::transform(measure_atoms(family, 0), measure_atoms(family, k).begin(),
                             [&](std::int32_t first) { return first + static_cast<std::int32_t>(k); });
      std::ranges::fill(measure_images(family, k), k == 3 ? 1 : 0);
    }
  }
  ~Torsions() { free_measure_blocks(measure_family(503)); }
  Torsions(const Torsions&) = delete;
};

using Coordinates = std::array<std::vector<double>, 2>;

/// The seconds of a pass over the frames.
/// @param xyz   takes one frame after the other, in turn
/// @param take  void(coordinates), which stay until it is called anew
template <class Take>
double pass(const Run& run, Coordinates& xyz, Take take) {
  const auto start = std::chrono::steady_clock::now();
  std::int32_t handle = 0, status = 0, count = 0;
  trj_openread_(run.path, 1, handle, status);
  for (std::int32_t frame = 1; frame <= frames && status == 0; ++frame) {
    auto& now = xyz[static_cast<std::size_t>(frame) % 2];
    trj_readframe_(handle, frame, status);
    trj_dvalue_(handle, trajectory_key::movable_positions, now, count, status);
    take(now);
  }
  std::int32_t closed = 0;
  trj_close_(handle, closed);
  const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
  return status == 0 ? spent.count() : -1;
}

double median(std::vector<double> values) {
  std::ranges::nth_element(values, values.begin() + std::ssize(values) / 2);
  return values[values.size() / 2];
}

/// The torsions of a frame are computed while the next one is read, as extraction has it. `ratio` is the time of the
/// pass with the torsions over that without, medians of passes in turn.
void torsions_through_frames(benchmark::State& state) {
  const Run run;
  const Torsions set_up;
  constexpr std::array<double, 3> a{70, 0, 0}, b{0, 70, 0}, c{0, 0, 70};
  std::vector<double> values(static_cast<std::size_t>(torsions)), with, without;
  Coordinates xyz;
  xyz.fill(std::vector<double>(3 * static_cast<std::size_t>(atoms)));
  for (auto _ : state) {
    without.push_back(pass(run, xyz, [](const auto& frame) { benchmark::DoNotOptimize(frame.data()); }));
    std::optional<ParallelBlocks> beside;
    std::int32_t status = 0;
    with.push_back(pass(run, xyz, [&](const auto& frame) {
      if (beside) beside->finish();
      beside.emplace(1, [&](auto, auto) { calctormeasures_(torsions, frame, a, b, c, values, status); });
    }));
    beside->finish();
    if (status != 0) state.SkipWithError("the torsions cannot be computed");
    if (with.back() < 0) return state.SkipWithError("the frames cannot be read");
    state.SetIterationTime(with.back());
  }
  state.counters["reading_ms"] = 1e3 * median(without);
  state.counters["ratio"] = median(with) / median(without);
}
BENCHMARK(torsions_through_frames)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
