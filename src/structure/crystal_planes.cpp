#include "structure/crystal_planes.h"

#include <climits>
#include <cstddef>

#include "structure/crystal_cell.h"
#include "structure/crystal_vectors.h"

namespace pathstat {

using namespace crystal;

namespace {

Vector3 plane_vector(const Vector3& a, const Vector3& b, const Vector3& c, std::int32_t h, std::int32_t k,
                     std::int32_t l, double volume) {
  const Vector3 sum3 = sum(sum(scaled(cross(b, c), h), scaled(cross(c, a), k)), scaled(cross(a, b), l));
  return scaled(sum3, 1 / volume);
}

using Product = std::array<std::int64_t, 3>;

std::int64_t wide(std::int32_t value) { return value; }

std::int64_t integer_dot(const Indices& a, const Product& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

Product integer_cross(const Indices& a, const Indices& b) {
  return {wide(a[1]) * b[2] - wide(a[2]) * b[1], wide(a[2]) * b[0] - wide(a[0]) * b[2],
          wide(a[0]) * b[1] - wide(a[1]) * b[0]};
}

bool parallel(const Indices& a, const Indices& b) { return integer_cross(a, b) == Product{}; }

/// The square of a reciprocal vector's length.
double squared_length(const Indices& plane, const Matrix3& reciprocal_metric) {
  const Vector3 hkl{static_cast<double>(plane[0]), static_cast<double>(plane[1]), static_cast<double>(plane[2])};
  return dot(hkl, product(reciprocal_metric, hkl));
}

/// The shortest planes met so far, none parallel to another.
class PlaneList {
 public:
  void offer(const Indices& plane, double size) {
    for (std::size_t k = 0; k < count_; ++k) {
      if (parallel(plane, planes_[k])) return;
    }
    if (count_ < planes_.size()) {
      put(count_, plane, size);
      if (count_ == 0 || size > sizes_[longest_]) longest_ = count_;
      ++count_;
    } else if (size < sizes_[longest_]) {
      put(longest_, plane, size);
      longest_ = 0;
      for (std::size_t k = 1; k < count_; ++k) {
        if (sizes_[k] > sizes_[longest_]) longest_ = k;
      }
    }
  }

  /// False if fewer than two are there.
  bool shortest_two(Indices& first, Indices& second) const {
    if (count_ < 2) return false;
    const std::size_t one = shortest_but(count_);
    first = planes_[one];
    second = planes_[shortest_but(one)];
    return true;
  }

 private:
  void put(std::size_t k, const Indices& plane, double size) { planes_[k] = plane, sizes_[k] = size; }
  std::size_t shortest_but(std::size_t excluded) const {
    std::size_t shortest = excluded == 0 ? 1 : 0;
    for (std::size_t k = shortest + 1; k < count_; ++k) {
      if (k != excluded && sizes_[k] < sizes_[shortest]) shortest = k;
    }
    return shortest;
  }

  std::array<Indices, 7> planes_{};
  std::array<double, 7> sizes_{};
  std::size_t count_ = 0;
  std::size_t longest_ = 0;
};

/// Visits the planes of a zone with |h|, |k|, |l| up to the limits, one of each pair of opposites, in the order of h,
/// then k, then l.
template <class Visit>
void walk_zone(const Indices& zone, const Indices& limits, Visit visit) {
  const std::int64_t u = zone[0], v = zone[1], w = zone[2];
  for (std::int32_t h = 0; h <= limits[0]; ++h) {
    for (std::int32_t k = h == 0 ? 0 : -limits[1]; k <= limits[1]; ++k) {
      const std::int32_t lowest = h == 0 && k == 0 ? 1 : -limits[2];
      const std::int64_t in_plane = h * u + k * v;
      if (w != 0) {
        const std::int64_t l = -in_plane / w;
        if (in_plane % w == 0 && l >= lowest && l <= limits[2]) visit({h, k, static_cast<std::int32_t>(l)});
      } else if (in_plane == 0) {
        for (std::int32_t l = lowest; l <= limits[2]; ++l) visit({h, k, l});
      }
    }
  }
}

/// How far the walk has to go in each index so that it meets every plane as short as the zone's plain ones.
bool zone_limits(const Indices& zone, const Matrix3& metric, const Matrix3& reciprocal_metric, Indices& limits) {
  double bound = 0;
  const auto [u, v, w] = zone;
  for (const Indices& plane : {Indices{v, -u, 0}, Indices{w, 0, -u}, Indices{0, w, -v}}) {
    bound = std::max(bound, std::sqrt(squared_length(plane, reciprocal_metric)));
  }
  for (std::size_t k = 0; k < 3; ++k) {
    const double limit = std::sqrt(metric[4 * k]) * bound + 1.0001;
    if (!(limit < INT_MAX)) return false;
    limits[k] = static_cast<std::int32_t>(limit);
  }
  return true;
}

}  // namespace

void kva_cry_3dreciprocalvectors_(const Vector3& a, const Vector3& b, const Vector3& c, Vector3& a_star,
                                  Vector3& b_star, Vector3& c_star, std::int32_t& status) {
  const double volume = dvectrip_(a, b, c);
  status = vanishes(volume) ? cell_volume_vanishes : 0;
  if (status != 0) return;
  const Vector3 first = cross(b, c), second = cross(c, a), third = cross(a, b);
  a_star = scaled(first, 1 / volume), b_star = scaled(second, 1 / volume), c_star = scaled(third, 1 / volume);
}

void kva_cry_2dreciprocalvectors_(const Vector3& u, const Vector3& v, Vector3& u_star, Vector3& v_star,
                                  std::int32_t& status) {
  const Vector3 w = cross(u, v);
  const Vector3 first = cross(v, w), second = cross(w, u);
  const double volume = dot(u, first);
  status = vanishes(volume) ? cell_volume_vanishes : 0;
  if (status != 0) return;
  u_star = scaled(first, 1 / volume), v_star = scaled(second, 1 / volume);
}

void kva_cry_millerspacing_(const Vector3& a, const Vector3& b, const Vector3& c, std::int32_t h, std::int32_t k,
                            std::int32_t l, double& spacing, std::int32_t& status) {
  const double volume = dvectrip_(a, b, c);
  status = vanishes(volume) ? cell_volume_vanishes : h == 0 && k == 0 && l == 0 ? 1 : 0;
  if (status == 0) spacing = 1 / length(plane_vector(a, b, c, h, k, l, volume));
}

void kva_cry_millernormal_(const Vector3& a, const Vector3& b, const Vector3& c, std::int32_t h, std::int32_t k,
                           std::int32_t l, const Vector3& point, Vector3& normal, double& distance,
                           std::int32_t& status) {
  const double volume = dvectrip_(a, b, c);
  status = volume == 0 ? cell_volume_vanishes : h == 0 && k == 0 && l == 0 ? 1 : 0;
  if (status != 0) return;
  const Vector3 at = product(columns(a, b, c), point);
  normal = unit(plane_vector(a, b, c, h, k, l, volume));
  distance = dot(normal, at);
}

void kva_cry_zoneplanes_(const Indices& zone, const Vector3& a, const Vector3& b, const Vector3& c, Indices& plane1,
                         Indices& plane2, std::int32_t& status) {
  status = zone == Indices{} || *std::min_element(zone.begin(), zone.end()) < -INT_MAX ? 1 : 0;
  if (status != 0) return;
  const Matrix3 metric{dot(a, a), dot(a, b), dot(a, c), dot(b, a), dot(b, b),
                       dot(b, c), dot(c, a), dot(c, b), dot(c, c)};
  Matrix3 reciprocal_metric;
  Indices limits{};
  dmatinv_(metric, reciprocal_metric, status);
  Indices first, second;
  PlaneList planes;
  if (status == 0 && zone_limits(zone, metric, reciprocal_metric, limits)) {
    walk_zone(zone, limits,
              [&](const Indices& plane) { planes.offer(plane, squared_length(plane, reciprocal_metric)); });
  }
  status = planes.shortest_two(first, second) ? 0 : cell_volume_vanishes;
  if (status != 0) return;
  if (integer_dot(zone, integer_cross(first, second)) < 0) std::swap(first, second);
  plane1 = first, plane2 = second;
}

}  // namespace pathstat
