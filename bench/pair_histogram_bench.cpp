#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "pairs/pair_histogram.h"
#include "support/parallel.h"

namespace {

using namespace pathstat;

constexpr double density = 0.1;  // atoms in a cubic Å, as in a liquid
constexpr double cutoff = 9.0;
constexpr std::size_t bins = 450;

/// Atoms at random in a cubic box.
class Liquid {
 public:
  explicit Liquid(std::int64_t atoms) : xyz_(3 * static_cast<std::size_t>(atoms)) {
    const double edge = std::cbrt(static_cast<double>(atoms) / density);
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> coordinate(0.0, edge);
    for (double& x : xyz_) x = coordinate(random);
    pairs_.list1 = xyz_;
    pairs_.periodic_type = 100;
    pairs_.vectors = {{{edge, 0, 0}, {0, edge, 0}, {0, 0, edge}}};
    pairs_.cutoff = cutoff;
    pairs_.interval = cutoff / static_cast<double>(bins);
    auto& [ia, ib, ic] = pairs_.repeats;
    cellrange_(100, pairs_.vectors[0], pairs_.vectors[1], pairs_.vectors[2], cutoff, ia, ib, ic);
  }
  Liquid(const Liquid&) = delete;

  const PairCount& pairs() const { return pairs_; }

 private:
  std::vector<double> xyz_;
  PairCount pairs_;
};

/// Seconds an atom of one frame, as its own column; the times are those of the processor.
void per_atom(benchmark::State& state) {
  state.counters["s/atom"] = benchmark::Counter(
      static_cast<double>(state.range(0)), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void pairs_by_cells(benchmark::State& state) {
  const Liquid liquid(state.range(0));
  set_thread_count(1);
  const auto search = std::make_unique<PairSearch>();
  std::vector<double> histogram(bins);
  std::int32_t status = 0;
  for (auto _ : state) calculaterdf_(liquid.pairs(), histogram, *search, status);
  per_atom(state);
}
BENCHMARK(pairs_by_cells)
    ->Unit(benchmark::kMillisecond)
    ->Arg(1250)
    ->Arg(2500)
    ->Arg(5000)
    ->Arg(10000)
    ->Arg(11000)
    ->Arg(100000)
    ->Arg(1000000);

/// The same with the plain instructions of the processor family.
void pairs_by_cells_without_vectors(benchmark::State& state) {
  const Liquid liquid(state.range(0));
  set_thread_count(1);
  const auto search = std::make_unique<PairSearch>(pair_vectors(0));
  std::vector<double> histogram(bins);
  std::int32_t status = 0;
  for (auto _ : state) calculaterdf_(liquid.pairs(), histogram, *search, status);
  per_atom(state);
}
BENCHMARK(pairs_by_cells_without_vectors)->Unit(benchmark::kMillisecond)->Arg(11000);

/// By the clock. Ranges: atoms, threads.
void pairs_on_threads(benchmark::State& state) {
  const Liquid liquid(state.range(0));
  set_thread_count(state.range(1));
  const auto search = std::make_unique<PairSearch>();
  std::vector<double> histogram(bins);
  std::int32_t status = 0;
  for (auto _ : state) calculaterdf_(liquid.pairs(), histogram, *search, status);
}
BENCHMARK(pairs_on_threads)->ArgsProduct({{11000, 1000000}, {1, 2}})->Unit(benchmark::kMillisecond)->UseRealTime();

/// Every image, every pair.
void pairs_by_definition(benchmark::State& state) {
  const Liquid liquid(state.range(0));
  std::vector<double> histogram(bins);
  std::int32_t status = 0;
  for (auto _ : state) count_pairs_plainly(liquid.pairs(), histogram, status);
  per_atom(state);
}
BENCHMARK(pairs_by_definition)->Unit(benchmark::kMillisecond)->Arg(1250)->Arg(2500)->Arg(5000)->Arg(11000);

}  // namespace
