#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "plain_read.h"
#include "support/parallel.h"
#include "trajectory/binary_trajectory.h"
#include "volumes/isosurface.h"
#include "volumes/number_density.h"

namespace {

using namespace pathstat;

constexpr std::int32_t edge = 200;

/// A surface through the whole grid: sin x cos y + sin y cos z + sin z cos x, four waves a side.
std::vector<double> waves() {
  const double step = 8 * std::acos(-1.0) / edge;
  std::vector<double> values;
  values.reserve(std::size_t{edge} * edge * edge);
  for (int i = 0; i < edge; ++i) {
    for (int j = 0; j < edge; ++j) {
      for (int k = 0; k < edge; ++k) {
        const double x = step * i, y = step * j, z = step * k;
        values.push_back(std::sin(x) * std::cos(y) + std::sin(y) * std::cos(z) + std::sin(z) * std::cos(x));
      }
    }
  }
  return values;
}

/// Seconds that the marching cubes of scikit-image take for the same field, the best of three runs; 0 where the
/// package is not there.
double seconds_of_scikit_image() {
  constexpr const char* command =
      "PATH=/usr/bin:$PATH python3 -c '\n"
      "import time, numpy as np\n"
      "from skimage.measure import marching_cubes\n"
      "x = np.arange(200) * (8 * np.pi / 200)\n"
      "x, y, z = np.meshgrid(x, x, x, indexing=\"ij\")\n"
      "f = np.sin(x) * np.cos(y) + np.sin(y) * np.cos(z) + np.sin(z) * np.cos(x)\n"
      "times = []\n"
      "for k in range(3):\n"
      "    start = time.perf_counter()\n"
      "    marching_cubes(f, 0.2)\n"
      "    times.append(time.perf_counter() - start)\n"
      "print(min(times))\n"
      "' 2>/dev/null";
  std::FILE* pipe = ::popen(command, "r");
  double best = 0;
  if (pipe == nullptr || std::fscanf(pipe, "%lf", &best) != 1) best = 0;
  if (pipe != nullptr) ::pclose(pipe);
  return best;
}

void isosurface_of_eight_million_points(benchmark::State& state) {
  set_thread_count(state.range(0));
  const auto values = waves();
  std::vector<double> planes(edge);
  std::iota(planes.begin(), planes.end(), 0.0);
  static const double other = seconds_of_scikit_image();
  double total = 0;
  SurfaceMesh mesh;
  for (auto _ : state) {
    const double time = seconds([&] { kva_sur_iso(0.2, values, edge, edge, edge, planes, planes, planes, mesh); });
    state.SetIterationTime(time);
    total += time;
  }
  state.counters["triangles"] = static_cast<double>(mesh.triangles.size());
  if (other > 0) state.counters["faster_than_scikit_image"] = other * static_cast<double>(state.iterations()) / total;
}
BENCHMARK(isosurface_of_eight_million_points)->Arg(1)->Arg(2)->UseManualTime()->Unit(benchmark::kMillisecond);

/// A run of atoms all over a box that holds one of them for every 10 Å³, with velocities.
class Run : public BenchFile {
 public:
  Run(std::int32_t atoms, std::int32_t frames) : BenchFile(".trj") {
    const double edge_of_box = std::cbrt(10.0 * atoms);
    std::int32_t handle = 0, status = 0;
    kvA_TRJ_Open(path(), binary_mode::create, handle, status);
    const std::int32_t periodicity = 3;
    kvA_TRJ_SetValueInt(handle, 2018, {&periodicity, 1}, status);
    std::vector<double> coordinates(3 * static_cast<std::size_t>(atoms));
    std::mt19937 random(1);
    std::uniform_real_distribution<double> anywhere(-0.1 * edge_of_box, 1.1 * edge_of_box);
    for (auto& coordinate : coordinates) coordinate = anywhere(random);
    kvA_TRJ_SetValueDouble(handle, 1071, coordinates, status);
    kvA_TRJ_SetValueDouble(handle, 1072, coordinates, status);
    for (std::int32_t k = 0; k < frames && status == 0; ++k) kvA_TRJ_WriteFrame(handle, status);
    kvA_TRJ_Close(handle, status);
    box = {edge_of_box, 0, 0, 0, edge_of_box, 0, 0, 0, edge_of_box};
  }
  Matrix3 box{};
};

/// All frames counted on a grid of 0.5 Å, each while the next one is read.
void density_over(const Run& run, std::int32_t atoms) {
  const auto points = static_cast<std::int32_t>(std::ceil(run.box[0] / 0.5));
  NumberDensity density({points, points, points});
  std::vector<std::int32_t> places(static_cast<std::size_t>(atoms));
  std::iota(places.begin(), places.end(), 0);
  std::vector<double> read(3 * places.size()), counted(read.size());
  std::int32_t handle = 0, status = 0, count = 0;
  kvA_TRJ_Open(run.path(), binary_mode::read, handle, status);
  const auto next = [&](std::int32_t frame) {
    kvA_TRJ_ReadFrame(handle, frame, status);
    if (status == 0) kvA_TRJ_ValueDouble(handle, 1071, read, count, status);
  };
  next(1);
  for (std::int32_t frame = 2; status == 0; ++frame) {
    std::swap(read, counted);
    ParallelBlocks counting(1, [&](std::int64_t, std::size_t) { density.add(counted, places, run.box); });
    next(frame);
    counting.finish();
  }
  kvA_TRJ_Close(handle, status);
  benchmark::DoNotOptimize(density.mean().data());
}

void density_of_a_run(benchmark::State& state) {
  set_thread_count(state.range(1));
  const auto atoms = static_cast<std::int32_t>(state.range(0));
  const Run run(atoms, 200);
  compare(
      state, "of_plain_read_speed", [&] { density_over(run, atoms); }, [&] { read_every_byte(run.path()); });
}
BENCHMARK(density_of_a_run)->ArgsProduct({{1'000, 10'000}, {1, 2}})->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
