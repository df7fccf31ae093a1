#include "desk/model/bond_search.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <utility>

#include "desk/model/elements.h"

namespace pathstat::desk {
namespace {

using Box = std::array<std::int64_t, 3>;

/// Atoms by the box that they are in. Boxes are at least as wide as the longest bond, so that bonds lead to the next
/// box at most; along directions that repeat, a whole number of boxes fills the cell.
class Boxes {
 public:
  Boxes(const MolecularModel& model, const Lattice& lattice, double reach) : next_(model.atoms(), none) {
    const auto first_repeating = static_cast<std::size_t>(3 - periodic_directions(model.periodic_type));
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const bool repeats = axis >= first_repeating;
      count_[axis] = repeats ? std::max<std::int64_t>(1, static_cast<std::int64_t>(lattice.width(axis) / reach)) : 0;
      scale_[axis] = repeats ? static_cast<double>(count_[axis]) : 1 / reach;
    }
    boxes_.reserve(model.atoms());
    for (const auto& position : model.positions) boxes_.push_back(box_of(lattice.fractional(position)));
    for (std::uint32_t atom = 0; atom < boxes_.size(); ++atom) {
      const auto [head, is_new] = heads_.try_emplace(key(boxes_[atom]), atom);
      if (!is_new) next_[atom] = std::exchange(head->second, atom);
    }
  }

  /// Visits the atoms in an atom's box and those around it, each once.
  template <class Visit>
  void around(std::uint32_t atom, Visit visit) const {
    const auto& box = boxes_[atom];
    for (std::int64_t a = first(0); a <= last(0); ++a) {
      for (std::int64_t b = first(1); b <= last(1); ++b) {
        for (std::int64_t c = first(2); c <= last(2); ++c) {
          const auto head = heads_.find(key({wrapped(box[0] + a, 0), wrapped(box[1] + b, 1), wrapped(box[2] + c, 2)}));
          if (head == heads_.end()) continue;
          for (auto other = head->second; other != none; other = next_[other]) visit(other);
        }
      }
    }
  }

 private:
  static constexpr std::uint32_t none = 0xffffffff;
  static constexpr double farthest = 1 << 20;

  // With one box or two along a direction, the box on the one side is that on the other.
  std::int64_t first(std::size_t axis) const { return count_[axis] == 1 || count_[axis] == 2 ? 0 : -1; }
  std::int64_t last(std::size_t axis) const { return count_[axis] == 1 ? 0 : 1; }

  std::int64_t wrapped(std::int64_t k, std::size_t axis) const {
    const auto n = count_[axis];
    return n == 0 ? k : (k % n + n) % n;
  }

  Box box_of(const Vector3& fractional) const {
    Box box{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const double f = count_[axis] == 0 ? fractional[axis] : fractional[axis] - std::floor(fractional[axis]);
      const double place = std::clamp(std::floor(f * scale_[axis]), -farthest, farthest);
      box[axis] = wrapped(static_cast<std::int64_t>(place), axis);
    }
    return box;
  }

  static std::uint64_t key(const Box& box) {
    std::uint64_t bits = 0;
    for (const auto k : box) bits = bits << 21 | (static_cast<std::uint64_t>(k) & 0x1fffff);
    return bits * 0x9e3779b97f4a7c15u;  // odd, so that no two boxes get one key
  }

  Box count_{};  ///< boxes along a direction that repeats, 0 along one that does not
  Vector3 scale_{};
  std::vector<Box> boxes_;
  std::unordered_map<std::uint64_t, std::uint32_t> heads_;
  std::vector<std::uint32_t> next_;
};

}  // namespace

void find_bonds(MolecularModel& model) {
  model.bonds.clear();
  double largest = 0;
  for (const auto element : model.elements) largest = std::max(largest, elements()[element].bond_radius);
  if (largest == 0) return;
  const Lattice lattice(model.periodic_type, model.cell);
  const Boxes boxes(model, lattice, 2 * largest + bond_tolerance);
  const auto radius = [&](std::uint32_t atom) { return elements()[model.elements[atom]].bond_radius; };
  for (std::uint32_t atom = 0; atom < model.atoms(); ++atom) {
    if (radius(atom) == 0) continue;
    boxes.around(atom, [&](std::uint32_t other) {
      if (other <= atom || radius(other) == 0) return;
      Vector3 d{};
      dvecsub_(model.positions[other], model.positions[atom], d);
      d = translated(d, model.cell, lattice.nearest_image(d));
      const double longest = radius(atom) + radius(other) + bond_tolerance;
      if (dvecdot_(d, d) <= longest * longest) model.bonds.emplace_back(atom, other);
    });
  }
  std::sort(model.bonds.begin(), model.bonds.end());
}

}  // namespace pathstat::desk
