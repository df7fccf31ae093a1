// Correlations of long runs by transforms, on one thread and on two. Times are those of the clock.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "correlation/batch_store.h"
#include "correlation/spectral_sums.h"
#include "support/parallel.h"

namespace {

using namespace pathstat;

/// Atoms that diffuse, in memory.
class Walk {
 public:
  Walk(std::int64_t atoms, std::int64_t frames) : store_("", std::int64_t{1} << 40) {
    store_.open(static_cast<std::int32_t>(atoms), static_cast<std::int32_t>(frames));
    std::mt19937 generator(1);
    std::normal_distribution<double> normal(0.0, 0.05);
    std::vector<double> frame(3 * static_cast<std::size_t>(atoms));
    const std::span<const double> all(frame);
    const auto n = static_cast<std::size_t>(atoms);
    for (std::int32_t record = 1; record <= frames; ++record) {
      for (double& value : frame) value += normal(generator);
      store_.write(record, {all.first(n), all.subspan(n, n), all.subspan(2 * n)});
    }
  }
  const BatchStore& store() const { return store_; }

 private:
  BatchStore store_;
};

/// Ranges: atoms, frames, intervals, threads.
void by_transforms(benchmark::State& state, bool of_velocities) {
  const Walk walk(state.range(0), state.range(1));
  set_thread_count(state.range(3));
  const SpectralShape shape{{state.range(1), 1, state.range(2)}, of_velocities, false};
  for (auto _ : state) {
    SpectralSums sums(shape, thread_count());
    for_blocks(
        walk.store().batches(),
        [&](std::int64_t batch, std::size_t worker) { sums.transform(walk.store().batch(batch), worker); },
        [&](std::int64_t, std::size_t worker) { sums.join(worker); });
    benchmark::DoNotOptimize(sums.lags(state.range(0)).sums.data());
  }
}
void displacement_of_a_long_run(benchmark::State& state) { by_transforms(state, false); }
void velocities_of_a_long_run(benchmark::State& state) { by_transforms(state, true); }

BENCHMARK(displacement_of_a_long_run)
    ->Args({500, 20000, 19999, 1})
    ->Args({500, 20000, 19999, 2})
    ->Args({500, 20000, 1000, 2})
    ->Args({500, 10000, 9999, 2})
    ->Args({500, 5000, 4999, 2})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(velocities_of_a_long_run)->Args({500, 20000, 19999, 2})->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
