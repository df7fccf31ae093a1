#pragma once

#include <array>
#include <cstddef>
#include <span>

// Sums over the atoms of a pair of frames. Each kernel adds to its sums, in 64-bit floats, and touches nothing else.
namespace pathstat {

/// Columns of a correlation table: XX, YY, ZZ, XY, XZ, YZ and the total XX + YY + ZZ.
constexpr std::size_t correlation_columns = 7;
constexpr std::size_t total_column = correlation_columns - 1;

/// The vectors of n atoms, one span of n elements per axis.
struct Axes {
  std::span<const double> x;
  std::span<const double> y;
  std::span<const double> z;

  /// The vectors of `count` atoms from `first` on.
  Axes part(std::size_t first, std::size_t count) const {
    return {x.subspan(first, count), y.subspan(first, count), z.subspan(first, count)};
  }
};

/// @param origin, later  equal numbers of atoms
/// @param sums           one element for the total alone, or one for each column
using PairKernel = void (*)(const Axes& origin, const Axes& later, std::span<double> sums);

/// Total displacement: sum of |later - origin|^2.
void add_squared_displacement(const Axes& origin, const Axes& later, std::span<double> sums);
/// Products of the displacement's components, dx dx, dy dy, dz dz, dx dy, dx dz, dy dz, and the total.
void add_displacement_products(const Axes& origin, const Axes& later, std::span<double> sums);

/// Total of velocities u and w: sum of u . w.
void add_velocity_product(const Axes& origin, const Axes& later, std::span<double> sums);
/// Products of their components, ux wx, uy wy, uz wz, ux wy + wx uy, ux wz + wx uz, uy wz + wy uz, and the total.
void add_velocity_products(const Axes& origin, const Axes& later, std::span<double> sums);

/// Two origins, each with four later frames: every vector is fetched once for several pairs. All of equal numbers of
/// atoms.
struct PairTile {
  static constexpr std::size_t origins_together = 2;
  static constexpr std::size_t frames_together = 4;

  std::array<Axes, origins_together> origins;
  std::array<Axes, frames_together> later;
};

/// By origin and later frame.
using TileSums = std::array<std::array<double, PairTile::frames_together>, PairTile::origins_together>;
/// Adds the total of each pair. It is the same to the last bit at any place of a tile.
using TileKernel = void (*)(const PairTile& tile, TileSums& sums);

/// Total displacements: sums of |later - origin|^2; and totals of velocities u and w: sums of u . w.
void add_squared_displacements(const PairTile& tile, TileSums& sums);
void add_velocity_products_of_pairs(const PairTile& tile, TileSums& sums);

/// The kernels for one width of vector registers.
struct KernelSet {
  PairKernel squared_displacement;
  PairKernel displacement_products;
  TileKernel squared_displacements;
  PairKernel velocity_product;
  PairKernel velocity_products;
  TileKernel velocity_products_of_pairs;
};

/// Those that the processor can run, the widest first, which the functions above use.
std::span<const KernelSet> kernel_sets();

}  // namespace pathstat
