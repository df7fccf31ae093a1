// Cosine, sine and real transforms of any length against their definitions.
#include "transforms/transforms.h"

#include <cmath>
#include <map>
#include <numbers>
#include <vector>

#include "fuzz_input.h"

namespace {

void hold(double found, double expected, double scale) {
  if (!(std::abs(found - expected) <= 1e-11 * (scale + 1))) __builtin_trap();  // also where no number was found
}

using Turns = std::map<std::size_t, std::vector<long double>>;

/// The values of a function at the multiples of π/n in a whole turn, computed once for each n.
template <class Function>
const std::vector<long double>& turn_of(std::size_t n, Turns& turns, Function function) {
  auto& values = turns[n];
  if (!values.empty()) return values;
  values.resize(2 * n);
  for (std::size_t k = 0; k < values.size(); ++k) {
    values[k] = function(std::numbers::pi_v<long double> * static_cast<long double>(k) / static_cast<long double>(n));
  }
  return values;
}

long double in_turn(const std::vector<long double>& values, std::size_t k) { return values[k % values.size()]; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace pathstat;
  fuzz::Numbers numbers(std::span(data, size));
  const auto n = static_cast<std::size_t>(3 + numbers.below(600));
  const std::size_t start = numbers.byte();
  std::vector<double> x(n), cosines(n), sines(n + 1);
  double scale = 0;
  for (double& value : x) {
    value = numbers.fraction();
    scale += std::abs(2 * value);
  }
  fftcos_(x, cosines);
  fftsin_(x, sines);
  static Turns cosine_turns, sine_turns;
  const auto& cosine_table = turn_of(n - 1, cosine_turns, [](long double angle) { return std::cos(angle); });
  const auto& sine_table = turn_of(n + 1, sine_turns, [](long double angle) { return std::sin(angle); });
  const std::size_t step = 1 + n / 8;  // some elements stand for all
  for (std::size_t i = start % step; i < n; i += step) {
    long double cosine = x[0] + (i % 2 == 0 ? x[n - 1] : -x[n - 1]), sine = 0;
    for (std::size_t k = 1; k + 1 < n; ++k) cosine += 2 * x[k] * in_turn(cosine_table, k * i);
    for (std::size_t k = 0; k < n; ++k) sine += 2 * x[k] * in_turn(sine_table, (k + 1) * (i + 1));
    hold(cosines[i], static_cast<double>(cosine), scale);
    hold(sines[i], static_cast<double>(sine), scale);
  }
  return 0;
}
