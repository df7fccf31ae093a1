// Pairs through cells against the plain loop: the same counts, bin by bin.
#include <algorithm>
#include <cmath>
#include <vector>

#include "fuzz_input.h"
#include "pairs/pair_histogram.h"
#include "pairs/pair_search.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace pathstat;
  fuzz::Numbers numbers(std::span(data, size));
  PairCount pairs;
  const bool wild = numbers.byte() % 8 == 0;  // coordinates of any bits
  pairs.set_mode = 1 + numbers.byte() % 2;
  const std::int32_t dimensions = numbers.byte() % 4;
  pairs.cutoff = 0.5 + 3 * std::abs(numbers.fraction());
  pairs.interval = 0.05 + 0.5 * std::abs(numbers.fraction());
  const double scale = numbers.byte() / 8.0;
  for (std::int32_t k = 0; k < 3; ++k) {
    for (double& x : pairs.vectors[static_cast<std::size_t>(k)]) x = numbers.fraction();
    pairs.vectors[static_cast<std::size_t>(k)][static_cast<std::size_t>(k)] += 2 + scale;
    pairs.repeats[static_cast<std::size_t>(k)] = k < dimensions ? numbers.byte() % 3 : 0;
  }
  pairs.periodic_type = dimensions > 0 ? 100 : 0;
  std::vector<double> lists[2];
  lists[1].resize(3 * static_cast<std::size_t>(numbers.byte() % 32));
  lists[0].resize(3 * std::min<std::size_t>(size / 6, 200));
  for (auto& list : lists) {
    for (double& x : list) x = wild ? numbers.any() : (1 + scale) * numbers.fraction();
  }
  pairs.list1 = lists[0];
  pairs.list2 = lists[1];
  std::vector<double> searched(1 + numbers.byte() % 64), plain(searched.size());
  static PairSearch search;
  std::int32_t status = 0, plain_status = 0;
  calculaterdf_(pairs, searched, search, status, {});
  count_pairs_plainly(pairs, plain, plain_status);
  if (status != plain_status || searched != plain) __builtin_trap();
  return 0;
}
