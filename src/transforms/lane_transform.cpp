#include "transforms/lane_transform.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <utility>

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

/// The way back through a stage: the conjugate of everything, by its real and imaginary parts in each other's place.
template <std::size_t Radix>
[[gnu::always_inline]] inline void run_back(LaneComplex* data, std::size_t part, const std::complex<double>* twiddles) {
  for (std::size_t j = 0; j < part; ++j) {
    Value z[Radix];
    load(data[j], z[0]);
    std::swap(z[0].re, z[0].im);
    for (std::size_t q = 1; q < Radix; ++q) {
      Value y;
      load(data[j + q * part], y);
      const double c = twiddles[(Radix - 1) * j + q - 1].real();
      const double s = twiddles[(Radix - 1) * j + q - 1].imag();
      z[q] = {y.im * c - y.re * s, y.im * s + y.re * c};
    }
    butterfly(z);
    for (std::size_t m = 0; m < Radix; ++m) store({z[m].im, z[m].re}, data[j + m * part]);
  }
}

/// A stage where all but the first part is 0.
template <std::size_t Radix>
[[gnu::always_inline]] inline void spread_first_part(LaneComplex* data, std::size_t part,
                                                     const std::complex<double>* twiddles) {
  for (std::size_t j = 0; j < part; ++j) {
    Value z;
    load(data[j], z);
    for (std::size_t q = 1; q < Radix; ++q) store_turned(z, twiddles[(Radix - 1) * j + q - 1], data[j + q * part]);
  }
}

enum class Way { there, from_first_part, back };

template <std::size_t Radix>
[[gnu::always_inline]] inline void run_one(Way way, LaneComplex* data, std::size_t part,
                                           const std::complex<double>* twiddles) {
  if (way == Way::there) return run_stage<Radix>(data, part, twiddles);
  if (way == Way::back) return run_back<Radix>(data, part, twiddles);
  spread_first_part<Radix>(data, part, twiddles);
}

[[gnu::always_inline]] inline void dispatch_stage(std::size_t radix, Way way, LaneComplex* data, std::size_t part,
                                                  const std::complex<double>* twiddles) {
  if (radix == 2) return run_one<2>(way, data, part, twiddles);
  if (radix == 3) return run_one<3>(way, data, part, twiddles);
  if (radix == 4) return run_one<4>(way, data, part, twiddles);
  run_one<5>(way, data, part, twiddles);
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

using RunStage = void (*)(std::size_t, Way, LaneComplex*, std::size_t, const std::complex<double>*);
using AddProducts = void (*)(std::span<const LaneComplex>, std::span<const LaneComplex>,
                             std::span<std::complex<double>>);

void plain_stage(std::size_t radix, Way way, LaneComplex* data, std::size_t part,
                 const std::complex<double>* twiddles) {
  dispatch_stage(radix, way, data, part, twiddles);
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
[[gnu::target("avx2,fma")]] void wide_stage(std::size_t radix, Way way, LaneComplex* data, std::size_t part,
                                            const std::complex<double>* twiddles) {
  dispatch_stage(radix, way, data, part, twiddles);
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

/// All e^(-2 pi i k / length), each from the sine and cosine of an angle in the first octant, where rounding is least.
template <class Real>
std::vector<std::complex<Real>> roots_of_unity(std::size_t length) {
  constexpr Real pi = std::numbers::pi_v<Real>;
  std::vector<std::complex<Real>> roots;
  roots.reserve(length);
  for (std::size_t k = 0; k < length; ++k) {
    std::size_t eighths = 8 * k;  // of which 8 x length make a turn
    const bool below = eighths > 4 * length;
    if (below) eighths = 8 * length - eighths;
    const bool left = eighths > 2 * length;
    if (left) eighths = 4 * length - eighths;
    const bool steep = eighths > length;
    if (steep) eighths = 2 * length - eighths;
    const Real angle = pi * static_cast<Real>(eighths) / static_cast<Real>(4 * length);
    Real cos = std::cos(angle);
    Real sin = std::sin(angle);
    if (steep) std::swap(cos, sin);
    roots.emplace_back(left ? -cos : cos, below ? sin : -sin);
  }
  return roots;
}

/// Elements that stay in the second cache while the stages below a part run on it.
constexpr std::size_t elements_in_cache = 4096;

}  // namespace

LanePlan::Shape LanePlan::cheapest(std::int64_t least) {
  const auto from = static_cast<std::size_t>(std::max<std::int64_t>(least, 2));
  Shape best;
  // Beyond a quarter more the first that comes will do; a power of two is found on the way at the latest.
  for (std::size_t length = from; best.radices.empty() || length - from <= from / 4; ++length) {
    auto radices = radices_of(length);
    if (radices.empty()) continue;
    const double cost = cost_of(length, radices);
    if (best.radices.empty() || cost < best.cost) best = {length, std::move(radices), cost};
  }
  return best;
}

LanePlan::LanePlan(const Shape& shape) : length_(shape.length) {
  const auto roots = roots_of_unity<double>(length_);
  std::size_t part = length_;
  std::size_t turn = 1;  // length over the elements that a stage works on
  for (const std::size_t radix : shape.radices) {
    part /= radix;
    Stage stage{radix, part, {}};
    stage.twiddles.reserve((radix - 1) * part);
    for (std::size_t j = 0; j < part; ++j) {
      for (std::size_t q = 1; q < radix; ++q) stage.twiddles.push_back(roots[j * q * turn]);
    }
    stages_.push_back(std::move(stage));
    turn *= radix;
  }
}

void LanePlan::run(std::size_t stage, std::span<LaneComplex> data) const {
  const Stage& s = stages_[stage];
  const std::size_t whole = s.radix * s.part;
  for (std::size_t at = 0; at < data.size(); at += whole) {
    kernels().stage(s.radix, Way::there, data.data() + at, s.part, s.twiddles.data());
  }
}

void LanePlan::transform(std::span<LaneComplex> data, std::size_t filled) const {
  // Stage by stage while the parts are larger than the cache, then part by part through all that is left.
  std::size_t stage = 0;
  if (filled <= stages_[0].part) {
    const Stage& first = stages_[stage++];
    kernels().stage(first.radix, Way::from_first_part, data.data(), first.part, first.twiddles.data());
  }
  while (stage < stages_.size() && stages_[stage].radix * stages_[stage].part > elements_in_cache) run(stage++, data);
  if (stage == stages_.size()) return;
  const std::size_t piece = stages_[stage].radix * stages_[stage].part;
  for (std::size_t at = 0; at < data.size(); at += piece) {
    for (std::size_t k = stage; k < stages_.size(); ++k) run(k, data.subspan(at, piece));
  }
}

void LanePlan::back(std::span<LaneComplex> data) const {
  for (auto stage = stages_.rbegin(); stage != stages_.rend(); ++stage) {
    const std::size_t whole = stage->radix * stage->part;
    for (std::size_t at = 0; at < data.size(); at += whole) {
      kernels().stage(stage->radix, Way::back, data.data() + at, stage->part, stage->twiddles.data());
    }
  }
}

void LanePlan::back(std::span<std::complex<long double>> data) const {
  auto turns = roots_of_unity<long double>(length_);
  for (auto& turn : turns) turn = std::conj(turn);
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

void multiply_lanes(std::span<LaneComplex> a, std::span<const LaneComplex> b) {
  for (std::size_t j = 0; j < a.size(); ++j) {
    for (std::size_t k = 0; k < lanes_together; ++k) {
      const double re = a[j].re[k] * b[j].re[k] - a[j].im[k] * b[j].im[k];
      a[j].im[k] = a[j].re[k] * b[j].im[k] + a[j].im[k] * b[j].re[k];
      a[j].re[k] = re;
    }
  }
}

void add_lane_products(std::span<const LaneComplex> a, std::span<const LaneComplex> b,
                       std::span<std::complex<double>> sums) {
  kernels().products(a, b, sums);
}

}  // namespace pathstat
