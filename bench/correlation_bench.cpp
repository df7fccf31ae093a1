#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <span>
#include <vector>

#include "correlation/frame_file.h"
#include "correlation/frame_window.h"
#include "correlation/origin_groups.h"
#include "services/file_units.h"

namespace {

using namespace pathstat;

constexpr std::array<std::string_view, 6> labels{"Bench/x1", "Bench/y1", "Bench/z1",
                                                 "Bench/x2", "Bench/y2", "Bench/z2"};

/// A cache of this many atoms and frames.
class Cache {
 public:
  Cache(std::int64_t atoms, std::int64_t frames) : atoms_(atoms) {
    std::int32_t error = 0;
    unit_ = FileUnit("", {.record_words = static_cast<std::int32_t>(6 * atoms), .status = UnitStatus::scratch}, error);
    std::mt19937 generator(1);
    std::uniform_real_distribution<double> uniform(0.0, 50.0);
    std::vector<double> frame(static_cast<std::size_t>(3 * atoms));
    for (double& value : frame) value = uniform(generator);
    const std::span<const double> all(frame);
    const auto n = static_cast<std::size_t>(atoms);
    for (std::int64_t record = 1; record <= frames; ++record) {
      frame[static_cast<std::size_t>(record) % frame.size()] += 1.0;
      file().write(record, {all.first(n), all.subspan(n, n), all.subspan(2 * n)});
    }
  }
  FrameFile file() const { return {unit_.number(), atoms_}; }

 private:
  std::int64_t atoms_;
  FileUnit unit_;
};

/// All pairs of a correlation with every frame an origin: ranges are atoms, frames, intervals, MiB of memory.
void correlate(benchmark::State& state, PairSums sums) {
  const std::int64_t atoms = state.range(0);
  const OriginSeries series{state.range(1), 1, state.range(2)};
  const Cache cache(atoms, series.frames);
  for (auto _ : state) {
    std::int32_t status = 0;
    OriginGroups groups(series, sums, cache.file(), atoms, state.range(3) << 20, labels, status);
    double total = 0.0;
    for (std::int64_t first = 0; first < series.count(); first += groups.origins_together()) {
      const std::int64_t count = std::min(groups.origins_together(), series.count() - first);
      if (!groups.sum(first, count)) state.SkipWithError("the cache cannot be read");
      for (std::int64_t place = 0; place < count; ++place) total += groups.sums(place, 0).back();
    }
    benchmark::DoNotOptimize(total);
  }
}

/// The definition as it stands: each pair reads its later frame and goes over the atoms.
void plain_definition(benchmark::State& state) {
  const std::int64_t atoms = state.range(0);
  const OriginSeries series{state.range(1), 1, state.range(2)};
  const Cache cache(atoms, series.frames);
  const FrameFile file = cache.file();
  const auto n = static_cast<std::size_t>(atoms);
  std::vector<double> x1(n), y1(n), z1(n), x2(n), y2(n), z2(n);
  std::vector<double> sums(static_cast<std::size_t>(series.intervals));
  for (auto _ : state) {
    for (std::int64_t origin = 0; origin < series.count(); ++origin) {
      const std::int64_t first = series.record(origin);
      file.read(first, 1, {x1, y1, z1}, n);
      for (std::int64_t record = first; record < series.end(origin); ++record) {
        file.read(record, 1, {x2, y2, z2}, n);
        double sum = 0.0;
        for (std::size_t k = 0; k < n; ++k) {
          const double dx = x2[k] - x1[k], dy = y2[k] - y1[k], dz = z2[k] - z1[k];
          sum += dx * dx + dy * dy + dz * dz;
        }
        sums[static_cast<std::size_t>(record - first)] += sum;
      }
    }
    benchmark::DoNotOptimize(sums.data());
  }
}

void displacement(benchmark::State& state) {
  correlate(state, {add_squared_displacement, 1, add_squared_displacements});
}
void displacement_components(benchmark::State& state) {
  correlate(state, {add_displacement_products, correlation_columns});
}
void autocorrelation(benchmark::State& state) {
  correlate(state, {add_velocity_product, 1, add_velocity_products_of_pairs});
}
void autocorrelation_components(benchmark::State& state) {
  correlate(state, {add_velocity_products, correlation_columns});
}

// Then atoms, frames and intervals double in turn, and last the memory holds a part of the frames that a group needs.
BENCHMARK(displacement)
    ->Args({11000, 200, 100, 256})
    ->Args({22000, 200, 100, 256})
    ->Args({11000, 400, 100, 256})
    ->Args({11000, 400, 200, 256})
    ->Args({11000, 200, 100, 8})
    ->Args({11000, 200, 100, 1})
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime();
BENCHMARK(displacement_components)->Args({11000, 200, 100, 256})->Unit(benchmark::kMillisecond);
BENCHMARK(autocorrelation)->Args({11000, 200, 100, 256})->Unit(benchmark::kMillisecond);
BENCHMARK(autocorrelation_components)->Args({11000, 200, 100, 256})->Unit(benchmark::kMillisecond);
BENCHMARK(plain_definition)->Args({11000, 200, 100})->Unit(benchmark::kMillisecond);

}  // namespace
