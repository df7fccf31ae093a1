#include "volumes/volume_frame.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <numbers>

#include "state/volume_state.h"
#include "structure/crystal_vectors.h"
#include "support/number_format.h"

namespace pathstat {
namespace {

constexpr double right_angle = 90, right_within = 1e-10;

struct Cell {
  Vector3 length;
  Vector3 cosine, sine;  ///< of alpha, beta, gamma
};

double radians(double degrees) { return degrees * std::numbers::pi / 180; }
double cosine_of(double degrees) {
  return std::abs(degrees - right_angle) <= right_within ? 0 : std::cos(radians(degrees));
}

Cell cell_of(const Vector3& lengths, const Vector3& angles) {
  Cell cell{lengths, {}, {}};
  for (std::size_t k = 0; k < 3; ++k) {
    cell.cosine[k] = cosine_of(angles[k]);
    cell.sine[k] = std::sin(radians(angles[k]));
  }
  return cell;
}

/// The cosine of the angle between the cell's faces at the edge whose opposite angle is number `k`.
double between_faces(const Cell& cell, std::size_t k) {
  const auto i = (k + 1) % 3, j = (k + 2) % 3;
  return (cell.cosine[i] * cell.cosine[j] - cell.cosine[k]) / (cell.sine[i] * cell.sine[j]);
}
double beside(double cosine) { return std::sqrt(1 - cosine * cosine); }

// Elements of the six frames, by columns.

Matrix3 frame_1(const Cell& cell) {
  const auto& [a, b, c] = cell.length;
  const double u = between_faces(cell, 0);
  return {a,
          0,
          0,
          b * cell.cosine[2],
          b * cell.sine[2],
          0,
          c * cell.cosine[1],
          -c * cell.sine[1] * u,
          c * cell.sine[1] * beside(u)};
}
Matrix3 frame_2(const Cell& cell) {
  const auto& [a, b, c] = cell.length;
  const double u = between_faces(cell, 1);
  return {a * cell.cosine[2],
          -a * cell.sine[2] * u,
          a * cell.sine[2] * beside(u),
          b,
          0,
          0,
          c * cell.cosine[0],
          c * cell.sine[0],
          0};
}
Matrix3 frame_3(const Cell& cell) {
  const auto& [a, b, c] = cell.length;
  const double u = between_faces(cell, 2);
  return {a * cell.cosine[1],
          a * cell.sine[1],
          0,
          b * cell.cosine[0],
          -b * cell.sine[0] * u,
          b * cell.sine[0] * beside(u),
          c,
          0,
          0};
}
Matrix3 frame_4(const Cell& cell) {
  const double a = cell.length[0], c = cell.length[2];
  return {a / 2, -a * cell.sine[2], 0, a / 2, a * cell.sine[2], 0, 0, 0, c};
}
Matrix3 frame_5(const Cell& cell) {
  const auto& [a, b, c] = cell.length;
  const double u = between_faces(cell, 2);
  return {a * cell.sine[1] * beside(u),
          -a * cell.sine[1] * u,
          a * cell.cosine[1],
          0,
          b * cell.sine[0],
          b * cell.cosine[0],
          0,
          0,
          c};
}

constexpr std::array frames{frame_1, frame_2, frame_3, frame_4, frame_5};
constexpr std::int32_t symmetric_frame = 6;

/// Brings a symmetric matrix to tridiagonal form by one reflection.
/// @param below  the elements beside the diagonal
Matrix3 reflected(const Matrix3& m, Vector3& diagonal, Vector3& below) {
  Matrix3 q{1, 0, 0, 0, 1, 0, 0, 0, 1};
  diagonal = {m[0], m[4], m[8]};
  below = {m[1], m[5], 0};
  const double norm = std::hypot(m[1], m[2]);
  if (m[2] == 0 || norm == 0) return q;
  const double u = m[1] / norm, v = m[2] / norm;
  const double s = 2 * u * m[5] + v * (m[8] - m[4]);
  diagonal = {m[0], m[4] + v * s, m[8] - v * s};
  below = {norm, m[5] - u * s, 0};
  q[4] = u, q[5] = v, q[7] = v, q[8] = -u;
  return q;
}

}  // namespace

void kva_vol_house_(const Matrix3& matrix, Vector3& values, Matrix3& vectors, std::int32_t& failed) {
  constexpr int most_steps = 30;
  Vector3 below{};
  vectors = reflected(matrix, values, below);
  failed = 0;
  const auto is_split = [&](std::size_t k) {
    return std::abs(below[k]) <=
           std::numeric_limits<double>::epsilon() * (std::abs(values[k]) + std::abs(values[k + 1]));
  };
  for (std::size_t root = 0; root < 3; ++root) {
    for (int step = 0;; ++step) {
      std::size_t end = root;
      while (end < 2 && !is_split(end)) ++end;
      if (end == root) break;
      if (step == most_steps) {
        failed = static_cast<std::int32_t>(root) + 1;
        return;
      }
      double g = (values[root + 1] - values[root]) / (2 * below[root]);
      g = values[end] - values[root] + below[root] / (g + std::copysign(std::hypot(g, 1.0), g));
      double s = 1, c = 1, p = 0;
      bool underflow = false;
      for (std::size_t k = end; k-- > root;) {
        const double f = s * below[k], b = c * below[k];
        const double r = std::hypot(f, g);
        below[k + 1] = r;
        underflow = r == 0;
        if (underflow) {
          values[k + 1] -= p;
          break;
        }
        s = f / r, c = g / r;
        g = values[k + 1] - p;
        const double t = (values[k] - g) * s + 2 * c * b;
        p = s * t;
        values[k + 1] = g + p;
        g = c * t - b;
        for (std::size_t row = 0; row < 3; ++row) {
          const double x = vectors[3 * (k + 1) + row], y = vectors[3 * k + row];
          vectors[3 * (k + 1) + row] = s * y + c * x;
          vectors[3 * k + row] = c * y - s * x;
        }
      }
      below[end] = 0;
      if (underflow) continue;
      values[root] -= p;
      below[root] = g;
    }
  }
}

void kva_vol_xtlaxs_(const Vector3& lengths, const Vector3& angles, Matrix3& root, std::int32_t& status) {
  const Cell cell = cell_of(lengths, angles);
  Matrix3 metric;
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      const double cosine = i == j ? 1 : cell.cosine[3 - i - j];
      metric[i + 3 * j] = lengths[i] * lengths[j] * cosine;
    }
  }
  Vector3 values;
  Matrix3 vectors;
  std::int32_t failed = 0;
  kva_vol_house_(metric, values, vectors, failed);
  status = 1;
  if (failed != 0) {
    std::printf(" XTLAXS> HOSE: FAILED TO CONVERGE ON ROOT NUMBER%s\n", formatted(failed, "(I6)").c_str());
    return;
  }
  if (!std::ranges::all_of(values, [](double value) { return value > 0; })) return;
  root = {};
  for (std::size_t k = 0; k < 3; ++k) {
    for (std::size_t i = 0; i < 3; ++i) {
      for (std::size_t j = 0; j < 3; ++j)
        root[i + 3 * j] += std::sqrt(values[k]) * vectors[3 * k + i] * vectors[3 * k + j];
    }
  }
  status = 0;
}

void kva_vol_corfrm_(std::int32_t& status) {
  const auto& [a, b, c] = std::array{volorthog_.a, volorthog_.b, volorthog_.c};
  const Vector3 lengths{a, b, c}, angles{volorthog_.alpha, volorthog_.beta, volorthog_.gamma};
  status = 1;
  Matrix3 to_space{}, to_fraction{};
  if (volorthog_.frame >= 1 && volorthog_.frame < symmetric_frame) {
    to_space = frames[static_cast<std::size_t>(volorthog_.frame - 1)](cell_of(lengths, angles));
  } else if (volorthog_.frame == symmetric_frame) {
    kva_vol_xtlaxs_(lengths, angles, to_space, status);
    if (status != 0) return;
  } else {
    return;
  }
  status = 1;
  if (!std::ranges::all_of(to_space, [](double element) { return std::isfinite(element); })) return;
  dmatinv_(to_space, to_fraction, status);
  if (status != 0) return;
  std::ranges::transform(to_space, volorthog_.to_space.begin(), [](double x) { return static_cast<float>(x); });
  std::ranges::transform(to_fraction, volorthog_.to_fraction.begin(), [](double x) { return static_cast<float>(x); });
}

}  // namespace pathstat
