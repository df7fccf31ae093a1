#include "measures/torsion_block.h"

#include <cmath>

// The loop is written once and built for two instruction sets; what it computes is the same to the last bit.

namespace pathstat {
namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double tangent_of_eighth = 0.41421356237309504880;  // tan(pi / 8)

/// atan(t) / t for |t| <= tan(pi / 8), by the Chebyshev interpolation in t^2, whose error there is below 5e-20.
[[gnu::always_inline]] inline double arctangent_ratio(double t) {
  constexpr std::array coefficients{0.015113763707864537871,  -0.033387823128967978368, 0.044995006697646829303,
                                    -0.052173125594086316713, 0.058768340023197307098,  -0.066662052597397748406,
                                    0.076922810999214884548,  -0.090909080590304584645, 0.11111111085322087897,
                                    -0.14285714285329707815,  0.19999999999997013889,   -0.33333333333333324206};
  const double z = t * t;
  double sum = 0;
  for (const double c : coefficients) sum = (sum + c) * z;
  return 1 + sum;
}

/// The angle, from 0 to pi, whose sine and cosine are as `y`, not below 0, to `x`.
[[gnu::always_inline]] inline double angle_from(double y, double x) {
  const double size = std::abs(x);
  const double low = y < size ? y : size, high = y < size ? size : y;
  const double less = low - high, both = low + high;
  const bool past_eighth = low > tangent_of_eighth * high;
  const double t = (past_eighth ? less : low) / (past_eighth ? both : high);
  const double octant = (past_eighth ? pi / 4 : 0.0) + t * arctangent_ratio(t);
  const double rest = pi / 2 - octant, quadrant = y < size ? octant : rest;
  const double obtuse = pi - quadrant;
  return x < 0 ? obtuse : quadrant;
}

/// With the bonds u, v, w along the four points: the sine is as |v| u . (v x w), the cosine as (u x v) . (v x w).
[[gnu::always_inline]] inline void torsions(TorsionBlock& block) {
  const auto& [p, q, r, s] = block.points;
  for (std::size_t k = 0; k < TorsionBlock::size; ++k) {
    const double ux = q[0][k] - p[0][k], uy = q[1][k] - p[1][k], uz = q[2][k] - p[2][k];
    const double vx = r[0][k] - q[0][k], vy = r[1][k] - q[1][k], vz = r[2][k] - q[2][k];
    const double wx = s[0][k] - r[0][k], wy = s[1][k] - r[1][k], wz = s[2][k] - r[2][k];
    const double mx = uy * vz - uz * vy, my = uz * vx - ux * vz, mz = ux * vy - uy * vx;
    const double nx = vy * wz - vz * wy, ny = vz * wx - vx * wz, nz = vx * wy - vy * wx;
    const double sine = std::sqrt(vx * vx + vy * vy + vz * vz) * (ux * nx + uy * ny + uz * nz);
    const double angle = angle_from(std::abs(sine), mx * nx + my * ny + mz * nz), turned = -angle;
    block.angles[k] = sine < 0 ? turned : angle;
  }
}

#ifdef __x86_64__
[[gnu::target("avx2")]] void wide_torsions(TorsionBlock& block) { torsions(block); }
#endif

}  // namespace

void TorsionBlock::compute() {
#ifdef __x86_64__
  if (__builtin_cpu_supports("avx2")) return wide_torsions(*this);
#endif
  torsions(*this);
}

}  // namespace pathstat
