#include "desk/selection/near_atoms.h"

#include <algorithm>
#include <cmath>

#include "desk/model/boxes.h"

namespace pathstat::desk {
namespace {

/// Boxes are no narrower than this, and as wide as the distance up to twice this; wider ones would hold many atoms.
constexpr double narrowest = 3;

/// A sphere around all atoms of a box, so that most boxes are decided by it alone.
struct Sphere {
  Vector3 centre{};
  double radius = 0;
};

class NearSearch {
 public:
  NearSearch(const MolecularModel& model, const AtomFlags& from, double distance)
      : model_(model),
        from_(from),
        distance_(distance),
        lattice_(is_usable_cell(model.periodic_type, model.cell) ? model.periodic_type : not_periodic, model.cell),
        boxes_(model, lattice_, width(distance), distance > 2 * narrowest ? 2 : 1,
               [&](std::uint32_t atom) { return from[atom] != 0; }) {
    spheres_.reserve(boxes_.size());
    for (std::uint32_t box = 0; box < boxes_.size(); ++box) spheres_.push_back(sphere_of(box));
  }

  bool is_near(std::uint32_t atom) const {
    if (from_[atom]) return true;
    const auto& position = model_.positions[atom];
    return boxes_.any_near(atom, [&](std::uint32_t box) {
      const auto& [centre, radius] = spheres_[box];
      const double away = length(nearest(position, centre));
      // The sphere decides but for what rounding may have done to it.
      const double slack = 1e-9 * (1 + away);
      if (away - radius > distance_ + slack) return false;
      return away + radius < distance_ - slack || holds_near(box, position);
    });
  }

 private:
  static double width(double distance) {
    return distance > 2 * narrowest ? distance / 2 : std::max(distance, narrowest);
  }
  static double length(const Vector3& v) { return std::sqrt(dvecdot_(v, v)); }

  /// The shortest way from a point to another one or an image of it.
  Vector3 nearest(const Vector3& from, const Vector3& to) const {
    Vector3 d{};
    dvecsub_(to, from, d);
    return translated(d, model_.cell, lattice_.nearest_image(d));
  }

  bool holds_near(std::uint32_t box, const Vector3& position) const {
    for (auto atom = boxes_.first_atom(box); atom != Boxes::none; atom = boxes_.next_atom(atom)) {
      if (length(nearest(position, model_.positions[atom])) <= distance_) return true;
    }
    return false;
  }

  Sphere sphere_of(std::uint32_t box) const {
    Sphere sphere{model_.positions[boxes_.first_atom(box)], 0};
    for (auto atom = boxes_.first_atom(box); atom != Boxes::none; atom = boxes_.next_atom(atom)) {
      sphere.radius = std::max(sphere.radius, length(nearest(sphere.centre, model_.positions[atom])));
    }
    return sphere;
  }

  const MolecularModel& model_;
  const AtomFlags& from_;
  double distance_;
  Lattice lattice_;
  Boxes boxes_;
  std::vector<Sphere> spheres_;
};

}  // namespace

AtomFlags atoms_near(const MolecularModel& model, const AtomFlags& from, double distance) {
  const NearSearch search(model, from, distance);
  AtomFlags near(from.size());
  for (std::uint32_t atom = 0; atom < near.size(); ++atom) near[atom] = search.is_near(atom) ? 1 : 0;
  return near;
}

}  // namespace pathstat::desk
