#include "correlation/correlation_kernels.h"

#include <array>
#include <cstring>

namespace pathstat {
namespace {

// As many sums side by side as a register of the processor holds.
using TwoLanes [[gnu::vector_size(16)]] = double;
using FourLanes [[gnu::vector_size(32)]] = double;
using EightLanes [[gnu::vector_size(64)]] = double;

template <class Lanes>
struct Register {
  static constexpr std::size_t lanes = sizeof(Lanes) / sizeof(double);

  struct Triple {
    Lanes x;
    Lanes y;
    Lanes z;
  };

  [[gnu::always_inline]] static void load(const Axes& axes, std::size_t at, Triple& triple) {
    std::memcpy(&triple.x, axes.x.data() + at, sizeof(Lanes));
    std::memcpy(&triple.y, axes.y.data() + at, sizeof(Lanes));
    std::memcpy(&triple.z, axes.z.data() + at, sizeof(Lanes));
  }

  /// The last atoms, fewer than the lanes; the lanes behind them are 0 and add nothing.
  [[gnu::always_inline]] static void load_rest(const Axes& axes, std::size_t at, Triple& triple) {
    const std::size_t bytes = (axes.x.size() - at) * sizeof(double);
    triple = Triple{Lanes{}, Lanes{}, Lanes{}};
    std::memcpy(&triple.x, axes.x.data() + at, bytes);
    std::memcpy(&triple.y, axes.y.data() + at, bytes);
    std::memcpy(&triple.z, axes.z.data() + at, bytes);
  }
};

/// By halves, for a chain of additions would have to wait for each.
template <class Lanes>
[[gnu::always_inline]] inline double sum_of(const Lanes& sums) {
  constexpr std::size_t lanes = sizeof(Lanes) / sizeof(double);
  double values[lanes];
  std::memcpy(values, &sums, sizeof(sums));
  for (std::size_t half = lanes / 2; half > 0; half /= 2) {
    for (std::size_t k = 0; k < half; ++k) values[k] += values[k + half];
  }
  return values[0];
}

struct Displacement {
  template <class Triple, class Lanes>
  [[gnu::always_inline]] static void total(const Triple& u, const Triple& w, Lanes& sum) {
    const auto x = w.x - u.x;
    const auto y = w.y - u.y;
    const auto z = w.z - u.z;
    sum += x * x + y * y + z * z;
  }
  template <class Lanes>
  [[gnu::always_inline]] static void part(const Lanes& u, const Lanes& w, Lanes& sum) {
    const auto step = w - u;
    sum += step * step;
  }
  template <class Triple, class Lanes>
  [[gnu::always_inline]] static void products(const Triple& u, const Triple& w, Lanes (&sums)[6]) {
    const auto x = w.x - u.x;
    const auto y = w.y - u.y;
    const auto z = w.z - u.z;
    sums[0] += x * x;
    sums[1] += y * y;
    sums[2] += z * z;
    sums[3] += x * y;
    sums[4] += x * z;
    sums[5] += y * z;
  }
};

struct Product {
  template <class Triple, class Lanes>
  [[gnu::always_inline]] static void total(const Triple& u, const Triple& w, Lanes& sum) {
    sum += u.x * w.x + u.y * w.y + u.z * w.z;
  }
  template <class Lanes>
  [[gnu::always_inline]] static void part(const Lanes& u, const Lanes& w, Lanes& sum) {
    sum += u * w;
  }
  template <class Triple, class Lanes>
  [[gnu::always_inline]] static void products(const Triple& u, const Triple& w, Lanes (&sums)[6]) {
    sums[0] += u.x * w.x;
    sums[1] += u.y * w.y;
    sums[2] += u.z * w.z;
    sums[3] += u.x * w.y + w.x * u.y;
    sums[4] += u.x * w.z + w.x * u.z;
    sums[5] += u.y * w.z + w.y * u.z;
  }
};

template <class Pair, class Lanes>
[[gnu::always_inline]] inline void add_total(const Axes& origin, const Axes& later, std::span<double> sums) {
  constexpr std::size_t lanes = Register<Lanes>::lanes;
  const std::size_t atoms = origin.x.size();
  // Two sums, so that an addition does not wait for the one before.
  Lanes even{};
  Lanes odd{};
  typename Register<Lanes>::Triple u;
  typename Register<Lanes>::Triple w;
  std::size_t at = 0;
  for (; at + 2 * lanes <= atoms; at += 2 * lanes) {
    Register<Lanes>::load(origin, at, u);
    Register<Lanes>::load(later, at, w);
    Pair::total(u, w, even);
    Register<Lanes>::load(origin, at + lanes, u);
    Register<Lanes>::load(later, at + lanes, w);
    Pair::total(u, w, odd);
  }
  if (at + lanes <= atoms) {
    Register<Lanes>::load(origin, at, u);
    Register<Lanes>::load(later, at, w);
    Pair::total(u, w, even);
    at += lanes;
  }
  if (at < atoms) {
    Register<Lanes>::load_rest(origin, at, u);
    Register<Lanes>::load_rest(later, at, w);
    Pair::total(u, w, odd);
  }
  sums[0] += sum_of(even + odd);
}

template <class Pair, class Lanes>
[[gnu::always_inline]] inline void add_products(const Axes& origin, const Axes& later, std::span<double> sums) {
  constexpr std::size_t lanes = Register<Lanes>::lanes;
  const std::size_t atoms = origin.x.size();
  Lanes products[6]{};
  typename Register<Lanes>::Triple u;
  typename Register<Lanes>::Triple w;
  std::size_t at = 0;
  for (; at + lanes <= atoms; at += lanes) {
    Register<Lanes>::load(origin, at, u);
    Register<Lanes>::load(later, at, w);
    Pair::products(u, w, products);
  }
  if (at < atoms) {
    Register<Lanes>::load_rest(origin, at, u);
    Register<Lanes>::load_rest(later, at, w);
    Pair::products(u, w, products);
  }
  double total = 0.0;
  for (std::size_t column = 0; column < 6; ++column) {
    const double sum = sum_of(products[column]);
    sums[column] += sum;
    if (column < 3) total += sum;
  }
  sums[total_column] += total;
}

/// Sums of a tile's pairs that stay in registers.
template <class Lanes>
using TileLanes = Lanes[PairTile::origins_together][PairTile::frames_together];

/// What the values of an axis from `at` on add, as many as a register holds.
template <class Pair, class Lanes>
[[gnu::always_inline]] inline void add_step(const PairTile& tile, std::span<const double> Axes::*axis, std::size_t at,
                                            TileLanes<Lanes>& sums) {
  Lanes u[PairTile::origins_together];
  for (std::size_t k = 0; k < PairTile::origins_together; ++k) {
    std::memcpy(&u[k], (tile.origins[k].*axis).data() + at, sizeof(Lanes));
  }
  for (std::size_t frame = 0; frame < PairTile::frames_together; ++frame) {
    Lanes w;
    std::memcpy(&w, (tile.later[frame].*axis).data() + at, sizeof(Lanes));
    for (std::size_t k = 0; k < PairTile::origins_together; ++k) Pair::part(u[k], w, sums[k][frame]);
  }
}

/// One axis after the other: then all sums of a tile and what they are made of have a register.
template <class Pair, class Lanes>
[[gnu::always_inline]] inline void add_totals(const PairTile& tile, TileSums& sums) {
  constexpr std::size_t lanes = sizeof(Lanes) / sizeof(double);
  const std::size_t atoms = tile.origins[0].x.size();
  TileLanes<Lanes> totals{};
  for (std::size_t at = 0; at + lanes <= atoms; at += lanes) add_step<Pair, Lanes>(tile, &Axes::x, at, totals);
  for (std::size_t at = 0; at + lanes <= atoms; at += lanes) add_step<Pair, Lanes>(tile, &Axes::y, at, totals);
  for (std::size_t at = 0; at + lanes <= atoms; at += lanes) add_step<Pair, Lanes>(tile, &Axes::z, at, totals);
  TileLanes<double> rest{};
  for (std::size_t at = atoms / lanes * lanes; at < atoms; ++at) {
    for (const auto axis : {&Axes::x, &Axes::y, &Axes::z}) add_step<Pair, double>(tile, axis, at, rest);
  }
  for (std::size_t origin = 0; origin < sums.size(); ++origin) {
    for (std::size_t frame = 0; frame < sums[origin].size(); ++frame) {
      sums[origin][frame] += sum_of(totals[origin][frame]) + rest[origin][frame];
    }
  }
}

template <class Pair>
void total_of_two(const Axes& origin, const Axes& later, std::span<double> sums) {
  add_total<Pair, TwoLanes>(origin, later, sums);
}
template <class Pair>
void products_of_two(const Axes& origin, const Axes& later, std::span<double> sums) {
  add_products<Pair, TwoLanes>(origin, later, sums);
}
template <class Pair>
void totals_of_two(const PairTile& tile, TileSums& sums) {
  add_totals<Pair, TwoLanes>(tile, sums);
}
constexpr KernelSet two_lanes{total_of_two<Displacement>, products_of_two<Displacement>, totals_of_two<Displacement>,
                              total_of_two<Product>,      products_of_two<Product>,      totals_of_two<Product>};

#if defined(__x86_64__)
template <class Pair>
[[gnu::target("avx2,fma")]] void total_of_four(const Axes& origin, const Axes& later, std::span<double> sums) {
  add_total<Pair, FourLanes>(origin, later, sums);
}
template <class Pair>
[[gnu::target("avx2,fma")]] void products_of_four(const Axes& origin, const Axes& later, std::span<double> sums) {
  add_products<Pair, FourLanes>(origin, later, sums);
}
template <class Pair>
[[gnu::target("avx2,fma")]] void totals_of_four(const PairTile& tile, TileSums& sums) {
  add_totals<Pair, FourLanes>(tile, sums);
}
constexpr KernelSet four_lanes{total_of_four<Displacement>,  products_of_four<Displacement>,
                               totals_of_four<Displacement>, total_of_four<Product>,
                               products_of_four<Product>,    totals_of_four<Product>};

template <class Pair>
[[gnu::target("avx512f")]] void total_of_eight(const Axes& origin, const Axes& later, std::span<double> sums) {
  add_total<Pair, EightLanes>(origin, later, sums);
}
template <class Pair>
[[gnu::target("avx512f")]] void products_of_eight(const Axes& origin, const Axes& later, std::span<double> sums) {
  add_products<Pair, EightLanes>(origin, later, sums);
}
template <class Pair>
[[gnu::target("avx512f")]] void totals_of_eight(const PairTile& tile, TileSums& sums) {
  add_totals<Pair, EightLanes>(tile, sums);
}
constexpr KernelSet eight_lanes{total_of_eight<Displacement>,  products_of_eight<Displacement>,
                                totals_of_eight<Displacement>, total_of_eight<Product>,
                                products_of_eight<Product>,    totals_of_eight<Product>};

constexpr std::array sets{eight_lanes, four_lanes, two_lanes};
std::size_t unusable_sets() {
  if (__builtin_cpu_supports("avx512f")) return 0;
  return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") ? 1 : 2;
}
#else
constexpr std::array sets{two_lanes};
std::size_t unusable_sets() { return 0; }
#endif

}  // namespace

std::span<const KernelSet> kernel_sets() {
  static const auto usable = std::span<const KernelSet>(sets).subspan(unusable_sets());
  return usable;
}

void add_squared_displacement(const Axes& origin, const Axes& later, std::span<double> sums) {
  kernel_sets()[0].squared_displacement(origin, later, sums);
}
void add_displacement_products(const Axes& origin, const Axes& later, std::span<double> sums) {
  kernel_sets()[0].displacement_products(origin, later, sums);
}
void add_squared_displacements(const PairTile& tile, TileSums& sums) {
  kernel_sets()[0].squared_displacements(tile, sums);
}
void add_velocity_products_of_pairs(const PairTile& tile, TileSums& sums) {
  kernel_sets()[0].velocity_products_of_pairs(tile, sums);
}
void add_velocity_product(const Axes& origin, const Axes& later, std::span<double> sums) {
  kernel_sets()[0].velocity_product(origin, later, sums);
}
void add_velocity_products(const Axes& origin, const Axes& later, std::span<double> sums) {
  kernel_sets()[0].velocity_products(origin, later, sums);
}

}  // namespace pathstat
