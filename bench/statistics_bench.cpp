#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "reports/moments.h"
#include "support/number_format.h"
#include "support/sorting.h"

namespace {

using namespace pathstat;

constexpr std::size_t count = 1'000'000;

const std::vector<double>& sample() {
  static const auto values = [] {
    std::mt19937_64 generator(5);
    std::normal_distribution<double> normal(-515.0, 12.0);
    std::vector<double> list(count);
    for (double& value : list) value = normal(generator);
    return list;
  }();
  return values;
}

// The order of a ranking: the index heap sort against the library's sort of the same index.

void ranking_heap_sort(benchmark::State& state) {
  std::vector<std::int32_t> index(count);
  for (auto _ : state) {
    dsortidx_(sample(), index);
    benchmark::DoNotOptimize(index.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
}
BENCHMARK(ranking_heap_sort)->Unit(benchmark::kMillisecond);

void ranking_library_sort(benchmark::State& state) {
  std::vector<std::int32_t> index(count);
  const double* values = sample().data();
  for (auto _ : state) {
    std::iota(index.begin(), index.end(), 0);
    std::sort(index.begin(), index.end(), [=](std::int32_t a, std::int32_t b) { return values[a] < values[b]; });
    benchmark::DoNotOptimize(index.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
}
BENCHMARK(ranking_library_sort)->Unit(benchmark::kMillisecond);

// Moments and extremes against the two sums that nobody can do without.

void moments_and_extremes(benchmark::State& state) {
  const ValueSet set{sample(), 1, static_cast<std::int32_t>(count), {}, 0, 1};
  for (auto _ : state) benchmark::DoNotOptimize(moments_of(set));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(2 * count * sizeof(double)));
}
BENCHMARK(moments_and_extremes)->Unit(benchmark::kMillisecond);

void plain_two_pass_variance(benchmark::State& state) {
  const auto& values = sample();
  for (auto _ : state) {
    double sum = 0;
    for (const double value : values) sum += value;
    const double mean = sum / static_cast<double>(count);
    double squares = 0;
    for (const double value : values) squares += (value - mean) * (value - mean);
    benchmark::DoNotOptimize(squares);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(2 * count * sizeof(double)));
}
BENCHMARK(plain_two_pass_variance)->Unit(benchmark::kMillisecond);

// One cell of the table file.

void table_cell(benchmark::State& state) {
  std::size_t k = 0;
  for (auto _ : state) benchmark::DoNotOptimize(formatted(sample()[k++ % count], "(g24.16)"));
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(table_cell);

}  // namespace
