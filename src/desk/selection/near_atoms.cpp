#include "desk/selection/near_atoms.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace pathstat::desk {
namespace {

/// Atoms in cells within cells, each halved across its longest side, with a sphere around the atoms of each. The
/// distance to the nearest image obeys the triangle inequality, so that a sphere decides for all its atoms at once
/// where it lies within the limit or beyond it.
class NearSearch {
 public:
  NearSearch(const MolecularModel& model, const AtomFlags& from, double distance)
      : model_(model),
        distance_(distance),
        lattice_(is_usable_cell(model.periodic_type, model.cell) ? model.periodic_type : not_periodic, model.cell) {
    is_box_ = lattice_.repeats(0);
    for (std::size_t axis = 0; axis < 3; ++axis) {
      edges_[axis] = model.cell[axis][axis];
      inverse_[axis] = 1 / edges_[axis];
      const auto across = static_cast<std::size_t>(std::count(model.cell[axis].begin(), model.cell[axis].end(), 0.0));
      is_box_ = is_box_ && across == 2 && edges_[axis] != 0;
    }
    const auto finite = [](const Vector3& p) {
      return std::all_of(p.begin(), p.end(), [](double x) { return std::isfinite(x); });
    };
    for (std::size_t atom = 0; atom < from.size(); ++atom) {
      if (from[atom] && finite(model.positions[atom])) points_.push_back({model.positions[atom], {}});
    }
    if (!points_.empty()) build(0, points_.size());
  }

  bool is_near(const Vector3& position) const { return !cells_.empty() && any_near(0, position); }

 private:
  static constexpr std::size_t most_in_leaf = 8;

  struct Point {
    Vector3 position{};
    Vector3 image{};  ///< while its cell is made
  };

  struct CellOfAtoms {
    Vector3 centre{};
    double radius = 0;
    std::size_t first = 0, last = 0;  ///< of the points
    std::size_t second_half = 0;      ///< its cell; the first half is the next cell; 0 for a leaf
  };

  /// The shortest way from a point to another one or an image of it.
  Vector3 nearest(const Vector3& from, const Vector3& to) const {
    Vector3 d{};
    dvecsub_(to, from, d);
    if (is_box_) {
      for (std::size_t axis = 0; axis < 3; ++axis) d[axis] -= edges_[axis] * std::nearbyint(d[axis] * inverse_[axis]);
      return d;
    }
    return lattice_.shortest(d);
  }

  std::size_t build(std::size_t first, std::size_t last) {
    const auto number = cells_.size();
    cells_.push_back({.first = first, .last = last});
    const auto points = std::span(points_).subspan(first, last - first);
    // The images that are near the first point.
    const auto anchor = points.front().position;
    Vector3 low = anchor, high = anchor;
    for (auto& [position, image] : points) {
      dvecadd_(anchor, nearest(anchor, position), image);
      for (std::size_t axis = 0; axis < 3; ++axis) {
        low[axis] = std::min(low[axis], image[axis]);
        high[axis] = std::max(high[axis], image[axis]);
      }
    }
    auto& cell = cells_[number];
    std::size_t longest = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      cell.centre[axis] = low[axis] + (high[axis] - low[axis]) / 2;
      if (high[axis] - low[axis] > high[longest] - low[longest]) longest = axis;
    }
    for (const auto& point : points) {
      Vector3 d{};
      dvecsub_(point.image, cell.centre, d);
      cell.radius = std::max(cell.radius, dveclen_(d));
    }
    if (points.size() <= most_in_leaf) return number;
    const auto half = points.size() / 2;
    std::nth_element(points.begin(), points.begin() + static_cast<std::ptrdiff_t>(half), points.end(),
                     [&](const Point& a, const Point& b) { return a.image[longest] < b.image[longest]; });
    build(first, first + half);
    const auto second = build(first + half, last);
    cells_[number].second_half = second;
    return number;
  }

  bool any_near(std::size_t number, const Vector3& position) const {
    const auto& cell = cells_[number];
    const double away = dveclen_(nearest(position, cell.centre));
    // The sphere decides but for what rounding may have done to it.
    const double slack = 1e-9 * (1 + away + cell.radius);
    if (away - cell.radius > distance_ + slack) return false;
    if (away + cell.radius < distance_ - slack) return true;
    if (cell.second_half != 0) return any_near(number + 1, position) || any_near(cell.second_half, position);
    return std::any_of(points_.begin() + static_cast<std::ptrdiff_t>(cell.first),
                       points_.begin() + static_cast<std::ptrdiff_t>(cell.last),
                       [&](const Point& point) { return dveclen_(nearest(position, point.position)) <= distance_; });
  }

  const MolecularModel& model_;
  double distance_;
  Lattice lattice_;
  bool is_box_ = false;  ///< the cell has right angles and stands on the axes: the nearest image is found by rounding
  Vector3 edges_{}, inverse_{};
  std::vector<Point> points_;
  std::vector<CellOfAtoms> cells_;
};

}  // namespace

AtomFlags atoms_near(const MolecularModel& model, const AtomFlags& from, double distance) {
  const NearSearch search(model, from, distance);
  AtomFlags near(from.size());
  for (std::size_t atom = 0; atom < near.size(); ++atom) {
    near[atom] = from[atom] || search.is_near(model.positions[atom]) ? 1 : 0;
  }
  return near;
}

}  // namespace pathstat::desk
