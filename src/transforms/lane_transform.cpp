#include "transforms/lane_transform.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>

namespace pathstat {
namespace {

using Lanes [[gnu::vector_size(sizeof(double) * lanes_together)]] = double;

constexpr std::size_t largest_radix = 5;

struct Value {
  Lanes re;
  Lanes im;
};

[[gnu::always_inline]] inline void load(const LaneComplex& from, Value& to) {
  std::memcpy(&to.re, from.re.data(), sizeof(Lanes));
  std::memcpy(&to.im, from.im.data(), sizeof(Lanes));
}

[[gnu::always_inline]] inline void store(const Value& from, LaneComplex& to) {
  std::memcpy(to.re.data(), &from.re, sizeof(Lanes));
  std::memcpy(to.im.data(), &from.im, sizeof(Lanes));
}

[[gnu::always_inline]] inline void store_turned(const Value& from, const std::complex<double>& twiddle,
                                                LaneComplex& to) {
  const double c = twiddle.real();
  const double s = twiddle.imag();
  store({from.re * c - from.im * s, from.re * s + from.im * c}, to);
}

// The transforms of 2 to 5 values in place.
[[gnu::always_inline]] inline void butterfly(Value (&z)[2]) {
  const Value a = z[0];
  z[0] = {a.re + z[1].re, a.im + z[1].im};
  z[1] = {a.re - z[1].re, a.im - z[1].im};
}

[[gnu::always_inline]] inline void butterfly(Value (&z)[3]) {
  constexpr double sin = 0.8660254037844386;
  const Value sum{z[1].re + z[2].re, z[1].im + z[2].im};
  const Value turned{(z[1].im - z[2].im) * sin, (z[2].re - z[1].re) * sin};
  const Value middle{z[0].re - 0.5 * sum.re, z[0].im - 0.5 * sum.im};
  z[0] = {z[0].re + sum.re, z[0].im + sum.im};
  z[1] = {middle.re + turned.re, middle.im + turned.im};
  z[2] = {middle.re - turned.re, middle.im - turned.im};
}

[[gnu::always_inline]] inline void butterfly(Value (&z)[4]) {
  const Value a{z[0].re + z[2].re, z[0].im + z[2].im};
  const Value b{z[0].re - z[2].re, z[0].im - z[2].im};
  const Value c{z[1].re + z[3].re, z[1].im + z[3].im};
  const Value d{z[1].im - z[3].im, z[3].re - z[1].re};
  z[0] = {a.re + c.re, a.im + c.im};
  z[1] = {b.re + d.re, b.im + d.im};
  z[2] = {a.re - c.re, a.im - c.im};
  z[3] = {b.re - d.re, b.im - d.im};
}

[[gnu::always_inline]] inline void butterfly(Value (&z)[5]) {
  constexpr double cos1 = 0.30901699437494745;
  constexpr double cos2 = -0.8090169943749475;
  constexpr double sin1 = 0.9510565162951535;
  constexpr double sin2 = 0.5877852522924731;
  const Value a{z[1].re + z[4].re, z[1].im + z[4].im};
  const Value b{z[2].re + z[3].re, z[2].im + z[3].im};
  const Value c{z[1].im - z[4].im, z[4].re - z[1].re};
  const Value d{z[2].im - z[3].im, z[3].re - z[2].re};
  const Value e{z[0].re + a.re * cos1 + b.re * cos2, z[0].im + a.im * cos1 + b.im * cos2};
  const Value f{z[0].re + a.re * cos2 + b.re * cos1, z[0].im + a.im * cos2 + b.im * cos1};
  const Value g{c.re * sin1 + d.re * sin2, c.im * sin1 + d.im * sin2};
  const Value h{c.re * sin2 - d.re * sin1, c.im * sin2 - d.im * sin1};
  z[0] = {z[0].re + a.re + b.re, z[0].im + a.im + b.im};
  z[1] = {e.re + g.re, e.im + g.im};
  z[2] = {f.re + h.re, f.im + h.im};
  z[3] = {f.re - h.re, f.im - h.im};
  z[4] = {e.re - g.re, e.im - g.im};
}

/// The stage of a radix on `radix * part` elements.
template <std::size_t Radix>
[[gnu::always_inline]] inline void run_stage(LaneComplex* data, std::size_t part,
                                             const std::complex<double>* twiddles) {
  for (std::size_t j = 0; j < part; ++j) {
    Value z[Radix];
    for (std::size_t m = 0; m < Radix; ++m) load(data[j + m * part], z[m]);
    butterfly(z);
    store(z[0], data[j]);
    for (std::size_t q = 1; q < Radix; ++q) store_turned(z[q], twiddles[(Radix - 1) * j + q - 1], data[j + q * part]);
  }
}

/// The same where all but the first part is 0.
template <std::size_t Radix>
[[gnu::always_inline]] inline void spread_first_part(LaneComplex* data, std::size_t part,
                                                     const std::complex<double>* twiddles) {
  for (std::size_t j = 0; j < part; ++j) {
    Value z;
    load(data[j], z);
    for (std::size_t q = 1; q < Radix; ++q) store_turned(z, twiddles[(Radix - 1) * j + q - 1], data[j + q * part]);
  }
}

[[gnu::always_inline]] inline void dispatch_stage(std::size_t radix, bool first_part_only, LaneComplex* data,
                                                  std::size_t part, const std::complex<double>* twiddles) {
  switch (radix) {
    case 2:
      return first_part_only ? spread_first_part<2>(data, part, twiddles) : run_stage<2>(data, part, twiddles);
    case 3:
      return first_part_only ? spread_first_part<3>(data, part, twiddles) : run_stage<3>(data, part, twiddles);
    case 4:
      return first_part_only ? spread_first_part<4>(data, part, twiddles) : run_stage<4>(data, part, twiddles);
    default:
      return first_part_only ? spread_first_part<5>(data, part, twiddles) : run_stage<5>(data, part, twiddles);
  }
}

[[gnu::always_inline]] inline void products(std::span<const LaneComplex> a, std::span<const LaneComplex> b,
                                            std::span<std::complex<double>> sums) {
  for (std::size_t k = 0; k < sums.size(); ++k) {
    Value u;
    Value w;
    load(a[k], u);
    load(b[k], w);
    const Lanes re = u.re * w.re + u.im * w.im;
    const Lanes im = u.re * w.im - u.im * w.re;
    sums[k] += std::complex((re[0] + re[2]) + (re[1] + re[3]), (im[0] + im[2]) + (im[1] + im[3]));
  }
}

using RunStage = void (*)(std::size_t, bool, LaneComplex*, std::size_t, const std::complex<double>*);
using AddProducts = void (*)(std::span<const LaneComplex>, std::span<const LaneComplex>,
                             std::span<std::complex<double>>);

void plain_stage(std::size_t radix, bool first_part_only, LaneComplex* data, std::size_t part,
                 const std::complex<double>* twiddles) {
  dispatch_stage(radix, first_part_only, data, part, twiddles);
}
void plain_products(std::span<const LaneComplex> a, std::span<const LaneComplex> b,
                    std::span<std::complex<double>> sums) {
  products(a, b, sums);
}

struct Kernels {
  RunStage stage;
  AddProducts products;
};

#if defined(__x86_64__)
[[gnu::target("avx2,fma")]] void wide_stage(std::size_t radix, bool first_part_only, LaneComplex* data,
                                            std::size_t part, const std::complex<double>* twiddles) {
  dispatch_stage(radix, first_part_only, data, part, twiddles);
}
[[gnu::target("avx2,fma")]] void wide_products(std::span<const LaneComplex> a, std::span<const LaneComplex> b,
                                               std::span<std::complex<double>> sums) {
  products(a, b, sums);
}
#endif

Kernels usable_kernels() {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma")) return {wide_stage, wide_products};
#endif
  return {plain_stage, plain_products};
}

const Kernels& kernels() {
  static const Kernels chosen = usable_kernels();
  return chosen;
}

/// Register operations per element of a stage, loads and stores among them.
constexpr double stage_cost(std::size_t radix) {
  constexpr std::array<double, largest_radix + 1> costs{0.0, 0.0, 9.0, 14.0, 12.0, 20.0};
  return costs[radix];
}

/// Radices of a length, the largest first; empty if it has another prime factor.
std::vector<std::size_t> radices_of(std::size_t length) {
  std::vector<std::size_t> radices;
  for (const std::size_t radix : {5, 4, 3, 2}) {
    for (; length % radix == 0; length /= radix) radices.push_back(radix);
  }
  return length == 1 ? radices : std::vector<std::size_t>{};
}

double cost_of(std::size_t length, std::span<const std::size_t> radices) {
  double per_element = 0.0;
  for (const std::size_t radix : radices) per_element += stage_cost(radix);
  return per_element * static_cast<double>(length);
}

/// e^(-2 pi i numerator / length), numerator below length, to full accuracy.
template <class Real>
std::complex<Real> root_of_unity(std::size_t numerator, std::size_t length) {
  const auto angle =
      -2.0L * std::numbers::pi_v<long double> * static_cast<long double>(numerator) / static_cast<long double>(length);
  return {static_cast<Real>(std::cos(angle)), static_cast<Real>(std::sin(angle))};
}

/// Elements that stay in the second cache while the stages below a part run on it.
constexpr std::size_t elements_in_cache = 4096;

}  // namespace

LanePlan::LanePlan(std::int64_t least) {
  const auto from = static_cast<std::size_t>(std::max<std::int64_t>(least, 2));
  double cheapest = std::numeric_limits<double>::infinity();
  std::vector<std::size_t> chosen;
  // Beyond a quarter more the first that comes will do; a power of two is found on the way at the latest.
  for (std::size_t length = from; chosen.empty() || length - from <= from / 4; ++length) {
    const auto radices = radices_of(length);
    if (radices.empty()) continue;
    const double cost = cost_of(length, radices);
    if (cost >= cheapest) continue;
    cheapest = cost;
    length_ = length;
    chosen = radices;
  }
  std::size_t part = length_;
  for (const std::size_t radix : chosen) {
    const std::size_t whole = part;
    part /= radix;
    Stage stage{radix, part, {}};
    stage.twiddles.reserve((radix - 1) * part);
    for (std::size_t j = 0; j < part; ++j) {
      for (std::size_t q = 1; q < radix; ++q) stage.twiddles.push_back(root_of_unity<double>(j * q, whole));
    }
    stages_.push_back(std::move(stage));
  }
}

double LanePlan::cost() const {
  double per_element = 0.0;
  for (const Stage& stage : stages_) per_element += stage_cost(stage.radix);
  return per_element * static_cast<double>(length_);
}

void LanePlan::transform(std::span<LaneComplex> data, std::size_t filled) const {
  // Stage by stage while the parts are larger than the cache, then part by part through all that is left.
  std::size_t first_small = 0;
  const RunStage run = kernels().stage;
  const auto run_on = [&](std::size_t stage, std::size_t at, bool first_part_only) {
    const Stage& s = stages_[stage];
    run(s.radix, first_part_only, data.data() + at, s.part, s.twiddles.data());
  };
  for (; first_small < stages_.size() && stages_[first_small].part * stages_[first_small].radix > elements_in_cache;
       ++first_small) {
    const std::size_t whole = stages_[first_small].part * stages_[first_small].radix;
    const bool rest_is_zero = first_small == 0 && filled <= stages_[0].part;
    for (std::size_t at = 0; at < data.size(); at += whole) run_on(first_small, at, rest_is_zero);
  }
  if (first_small == stages_.size()) return;
  const std::size_t piece = stages_[first_small].part * stages_[first_small].radix;
  for (std::size_t at = 0; at < data.size(); at += piece) {
    for (std::size_t stage = first_small; stage < stages_.size(); ++stage) {
      const std::size_t whole = stages_[stage].part * stages_[stage].radix;
      for (std::size_t inner = at; inner < at + piece; inner += whole) run_on(stage, inner, false);
    }
  }
}

void LanePlan::back(std::span<std::complex<long double>> data) const {
  std::vector<std::complex<long double>> turns;
  turns.reserve(length_);
  for (std::size_t j = 0; j < length_; ++j) turns.push_back(std::conj(root_of_unity<long double>(j, length_)));
  std::array<std::complex<long double>, largest_radix> z;
  for (auto stage = stages_.rbegin(); stage != stages_.rend(); ++stage) {
    const std::size_t radix = stage->radix;
    const std::size_t part = stage->part;
    const std::size_t turn = length_ / (radix * part);
    for (std::size_t at = 0; at < length_; at += radix * part) {
      for (std::size_t j = 0; j < part; ++j) {
        for (std::size_t q = 0; q < radix; ++q) z[q] = data[at + j + q * part] * turns[j * q * turn];
        for (std::size_t m = 0; m < radix; ++m) {
          std::complex<long double> sum = z[0];
          for (std::size_t q = 1; q < radix; ++q) sum += z[q] * turns[m * q % radix * (length_ / radix)];
          data[at + j + m * part] = sum;
        }
      }
    }
  }
}

void add_lane_products(std::span<const LaneComplex> a, std::span<const LaneComplex> b,
                       std::span<std::complex<double>> sums) {
  kernels().products(a, b, sums);
}

}  // namespace pathstat
