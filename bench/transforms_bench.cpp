#include "transforms/transforms.h"

#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "transforms/real_transform.h"

namespace pathstat {
namespace {

std::vector<double> signal(std::size_t n) {
  std::vector<double> x(n);
  for (std::size_t i = 0; i < n; ++i)
    x[i] = std::exp(-0.001 * static_cast<double>(i)) * std::cos(0.3 * static_cast<double>(i));
  return x;
}

/// The real transform with its tables made beforehand.
void real_forward(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  auto x = signal(n);
  const double scale = 0.5 / std::sqrt(static_cast<double>(n));  // keeps repeated transforms finite
  std::vector<double> work(4 * n + 40);
  const std::span<double> all(work);
  fftftri_(state.range(0), all);
  for (auto _ : state) {
    fft3trf_(x, all.first(n), all.subspan(n, n), all.subspan(2 * n));
    benchmark::DoNotOptimize(x.data());
    for (double& value : x) value *= scale;
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void real_forward_fftw(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  auto x = signal(n);
  const double scale = 0.5 / std::sqrt(static_cast<double>(n));  // keeps repeated transforms finite
  const auto plan = fftw_plan_r2r_1d(static_cast<int>(n), x.data(), x.data(), FFTW_R2HC, FFTW_MEASURE);
  std::ranges::copy(signal(n), x.begin());  // planning has written over it
  for (auto _ : state) {
    fftw_execute(plan);
    benchmark::DoNotOptimize(x.data());
    for (double& value : x) value *= scale;
  }
  fftw_destroy_plan(plan);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// A whole call, tables included, as the spectra make it.
void cosine(benchmark::State& state) {
  const auto x = signal(static_cast<std::size_t>(state.range(0)) + 1);
  std::vector<double> result(x.size());
  std::vector<double> work(6 * x.size() + 30);
  for (auto _ : state) {
    fftcosi_(static_cast<std::int64_t>(x.size()), work);
    fft2ost_(x, result, work);
    benchmark::DoNotOptimize(result.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void cosine_fftw(benchmark::State& state) {
  auto x = signal(static_cast<std::size_t>(state.range(0)) + 1);
  std::vector<double> result(x.size());
  for (auto _ : state) {
    fftw_cleanup();
    const auto plan =
        fftw_plan_r2r_1d(static_cast<int>(x.size()), x.data(), result.data(), FFTW_REDFT00, FFTW_ESTIMATE);
    fftw_execute(plan);
    benchmark::DoNotOptimize(result.data());
    fftw_destroy_plan(plan);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// Powers of 2 and 4, then lengths with 3 and 5; the largest is the longest that a spectrum asks for.
void lengths(benchmark::internal::Benchmark* bench) {
  for (const int n : {256, 1024, 4096, 16384, 131072, 240, 3000, 19683, 15625, 129600}) bench->Arg(n);
}
void prime_lengths(benchmark::internal::Benchmark* bench) {
  for (const int n : {101, 1009, 10007}) bench->Arg(n);
}

BENCHMARK(real_forward)->Apply(lengths);
BENCHMARK(real_forward_fftw)->Apply(lengths);
BENCHMARK(cosine)->Apply(lengths)->Apply(prime_lengths);
BENCHMARK(cosine_fftw)->Apply(lengths)->Apply(prime_lengths);

}  // namespace
}  // namespace pathstat
