#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "correlation/dipole_pairs.h"

namespace {

using namespace pathstat;

/// A series of frames and the table of its lags.
struct Series {
  Series(std::int64_t frames, std::int64_t lags)
      : vectors(static_cast<std::size_t>(3 * frames)), table(correlation_columns * static_cast<std::size_t>(lags)) {
    std::mt19937 generator(1);
    std::normal_distribution<double> normal(10.0, 5.0);
    for (double& value : vectors) value = normal(generator);
  }
  std::vector<double> vectors;
  std::vector<double> table;
};

/// Pair by pair in blocks of a fiftieth of the origins, as a curve that is watched grows: frames, lags.
void dipole_pairs(benchmark::State& state, bool components) {
  Series series(state.range(0), state.range(1));
  for (auto _ : state) {
    std::int32_t status = 0;
    const DipolePairs pairs(series.vectors, 1, status);
    const std::int64_t block = std::max<std::int64_t>(state.range(0) / 50, 1);
    for (std::int64_t first = 0; first < pairs.origins(); first += block) {
      pairs.add(first, std::min(first + block, pairs.origins()), components, series.table);
    }
    benchmark::DoNotOptimize(series.table.data());
  }
}

/// All at a stroke by the transform.
void dipole_transform(benchmark::State& state, bool components) {
  Series series(state.range(0), state.range(1));
  for (auto _ : state) {
    std::int32_t status = 0;
    const DipolePairs pairs(series.vectors, 1, status);
    if (!pairs.sum_all(components, series.table)) state.SkipWithError("no memory");
    benchmark::DoNotOptimize(series.table.data());
  }
}

/// The definition as it stands.
void dipole_plain(benchmark::State& state) {
  Series series(state.range(0), state.range(1));
  const auto frames = static_cast<std::size_t>(state.range(0)), lags = static_cast<std::size_t>(state.range(1));
  const auto& v = series.vectors;
  for (auto _ : state) {
    for (std::size_t origin = 0; origin < frames; ++origin) {
      for (std::size_t lag = 0; lag < lags && origin + lag < frames; ++lag) {
        const double* u = &v[3 * origin];
        const double* w = u + 3 * lag;
        series.table[7 * lag + 6] += u[0] * w[0] + u[1] * w[1] + u[2] * w[2];
      }
    }
    benchmark::DoNotOptimize(series.table.data());
  }
}

void dipole_pairs_total(benchmark::State& state) { dipole_pairs(state, false); }
void dipole_pairs_components(benchmark::State& state) { dipole_pairs(state, true); }
void dipole_transform_total(benchmark::State& state) { dipole_transform(state, false); }
void dipole_transform_components(benchmark::State& state) { dipole_transform(state, true); }

// The first two lengths show from where on a transform pays.
BENCHMARK(dipole_pairs_total)
    ->Args({20000, 64})
    ->Args({20000, 256})
    ->Args({20000, 10000})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(dipole_pairs_components)->Args({20000, 10000})->Unit(benchmark::kMillisecond);
BENCHMARK(dipole_transform_total)
    ->Args({20000, 64})
    ->Args({20000, 256})
    ->Args({20000, 20000})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(dipole_transform_components)->Args({20000, 20000})->Unit(benchmark::kMillisecond);
BENCHMARK(dipole_plain)->Args({20000, 10000})->Unit(benchmark::kMillisecond);

}  // namespace
