#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <tuple>
#include <utility>

#include "coreapi/messages.h"
#include "measures/measure_blocks.h"
#include "measures/measures.h"
#include "measures/torsion_block.h"
#include "structure/measure_geometry.h"

namespace pathstat {
namespace {

/// The measures of a family in one frame.
template <std::size_t atoms_of_measure>
class MeasuresOfFrame {
 public:
  MeasuresOfFrame(std::int32_t id, std::span<const double> xyz, VectorIn<double> a, VectorIn<double> b,
                  VectorIn<double> c)
      : values_(static_cast<std::size_t>(measure_family(id).values)), xyz_(xyz), a_(a), b_(b), c_(c) {
    for (std::size_t k = 0; k < atoms_of_measure; ++k) {
      atoms_[k] = measure_atoms(measure_family(id), k);
      images_[k] = measure_images(measure_family(id), k);
    }
  }

  /// Computes each of them.
  /// @param status  0; 1 with nothing computed
  /// @param put     void(points of measure i, i)
  void each(std::int32_t count, std::span<const double> out, std::int32_t& status, auto put) const {
    const auto measures = static_cast<std::size_t>(std::max(count, 0));
    status = are_set_up(measures) && out.size() >= values_ * measures ? 0 : 1;
    for (std::size_t i = 0; i < measures && status == 0; ++i) put(points(i), i);
  }

  /// Puts an angle of theirs into `out`, in degrees. @param angle  radians(each of the points)
  void angles(std::int32_t count, std::span<double> out, std::int32_t& status, auto angle) const {
    each(count, out, status,
         [&](const auto& points, std::size_t i) { out[i] = degrees_per_radian * std::apply(angle, points); });
  }

 private:
  /// True if there are so many measures and each of their atoms is in the frame.
  bool are_set_up(std::size_t count) const {
    return std::ranges::all_of(atoms_, [&](const auto& places) {
      return places.size() >= count && std::ranges::all_of(places.first(count), [&](std::int32_t place) {
               return place >= 1 && std::cmp_less_equal(place, xyz_.size() / 3);
             });
    });
  }

  std::array<Vector3, atoms_of_measure> points(std::size_t measure) const {
    std::array<Vector3, atoms_of_measure> points;
    for (std::size_t k = 0; k < atoms_of_measure; ++k) {
      const double* atom = &xyz_[3 * static_cast<std::size_t>(atoms_[k][measure] - 1)];
      const std::int32_t* image = &images_[k][3 * measure];
      points[k] = {atom[0], atom[1], atom[2]};
      if ((image[0] | image[1] | image[2]) != 0)
        measurescoords_(points[k], a_, b_, c_, VectorIn<std::int32_t>(image, 3), points[k]);
    }
    return points;
  }

  std::size_t values_;
  std::span<const double> xyz_;
  VectorIn<double> a_, b_, c_;
  std::array<std::span<const std::int32_t>, atoms_of_measure> atoms_;
  std::array<std::span<const std::int32_t>, atoms_of_measure> images_;
};

void put_torsion(const std::array<Vector3, 4>& points, std::size_t lane, TorsionBlock& block) {
  for (std::size_t k = 0; k < 4; ++k) {
    for (std::size_t direction = 0; direction < 3; ++direction) block.points[k][direction][lane] = points[k][direction];
  }
}

/// Degrees of the first torsions of a block. Those without a plane go by the definition.
void take_torsions(TorsionBlock& block, std::span<double> out) {
  block.compute();
  const auto point = [&](std::size_t k, std::size_t lane) {
    const auto& [x, y, z] = block.points[k];
    return Vector3{x[lane], y[lane], z[lane]};
  };
  for (std::size_t lane = 0; lane < out.size(); ++lane) {
    double angle = block.angles[lane];
    if (std::isnan(angle)) angle = torsion_of(point(0, lane), point(1, lane), point(2, lane), point(3, lane));
    out[lane] = degrees_per_radian * angle;
  }
}

}  // namespace

void measurescoords_(VectorIn<double> atom, VectorIn<double> a, VectorIn<double> b, VectorIn<double> c,
                     VectorIn<std::int32_t> image, VectorOut<double> point) {
  for (std::size_t k = 0; k < 3; ++k) point[k] = atom[k] + image[0] * a[k] + image[1] * b[k] + image[2] * c[k];
}

void calcdistmeasures_(std::int32_t count, std::span<const double> xyz, VectorIn<double> a, VectorIn<double> b,
                       VectorIn<double> c, std::span<double> out, std::int32_t& status) {
  MeasuresOfFrame<2>(501, xyz, a, b, c).each(count, out, status, [&](const auto& p, std::size_t i) {
    Vector3 between;
    dvecsub_(p[1], p[0], between);
    out[i] = dveclen_(between);
  });
}

void calcdistvecmeasures_(std::int32_t count, std::span<const double> xyz, VectorIn<double> a, VectorIn<double> b,
                          VectorIn<double> c, std::span<double> out, std::int32_t& status) {
  MeasuresOfFrame<2>(506, xyz, a, b, c).each(count, out, status, [&](const auto& p, std::size_t i) {
    dvecsub_(p[1], p[0], out.subspan(3 * i).first<3>());
  });
}

void calcangmeasures_(std::int32_t count, std::span<const double> xyz, VectorIn<double> a, VectorIn<double> b,
                      VectorIn<double> c, std::span<double> out, std::int32_t& status) {
  MeasuresOfFrame<3>(502, xyz, a, b, c).angles(count, out, status, angle_of);
}

void calctormeasures_(std::int32_t count, std::span<const double> xyz, VectorIn<double> a, VectorIn<double> b,
                      VectorIn<double> c, std::span<double> out, std::int32_t& status) {
  TorsionBlock block{};
  MeasuresOfFrame<4>(503, xyz, a, b, c).each(count, out, status, [&](const auto& points, std::size_t i) {
    const std::size_t lane = i % TorsionBlock::size;
    put_torsion(points, lane, block);
    const bool is_last = std::cmp_equal(i + 1, count);
    if (lane + 1 == TorsionBlock::size || is_last) take_torsions(block, out.subspan(i - lane, lane + 1));
  });
}

void calcplanemeasures_(std::int32_t count, std::span<const double> xyz, VectorIn<double> a, VectorIn<double> b,
                        VectorIn<double> c, std::span<double> out, std::int32_t& status) {
  MeasuresOfFrame<6>(504, xyz, a, b, c).angles(count, out, status, plane_angle_of);
}

void calcinvmeasures_(std::int32_t count, std::span<const double> xyz, VectorIn<double> a, VectorIn<double> b,
                      VectorIn<double> c, std::span<double> out, std::int32_t& status) {
  const auto conventions = inversion_conventions();
  bool undefined = false;
  MeasuresOfFrame<4>(505, xyz, a, b, c).each(count, out, status, [&](const auto& p, std::size_t i) {
    std::int32_t fault = 0;
    calcinversion_(p[0], p[1], p[2], p[3], conventions[i], out[i], fault);
    out[i] *= degrees_per_radian;
    undefined = undefined || fault != 0;
  });
  if (undefined) status = -1;
}

void calcinversion_(const Vector3& p1, const Vector3& p2, const Vector3& p3, const Vector3& p4, std::int32_t convention,
                    double& out, std::int32_t& status) {
  const Inversion found = inversion_of(p1, p2, p3, p4, convention);
  out = found.angle;
  status = found.fault == InversionFault::none ? 0 : -1;
  if (status != 0) show_message("DisplayText", inversion_fault_text(found.fault));
}

}  // namespace pathstat
