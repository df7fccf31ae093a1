#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

#include "desk/model/lattice.h"
#include "desk/model/molecular_model.h"

namespace pathstat::desk {

/// Atoms by the box that they are in, so that those near a point are found without looking at all. Along directions
/// that repeat, a whole number of boxes fills the cell.
class Boxes {
 public:
  static constexpr std::uint32_t none = 0xffffffff;

  /// @param width   of a box at least, Å
  /// @param steps   how many boxes away an atom is still near
  /// @param inside  tells of the place of an atom whether it goes into a box
  template <class Inside>
  Boxes(const MolecularModel& model, const Lattice& lattice, double width, std::int64_t steps, Inside inside)
      : next_(model.atoms(), none) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const double fitting = std::clamp(std::floor(lattice.width(axis) / width), 1.0, farthest);
      const bool repeats = lattice.repeats(axis);
      count_[axis] = repeats ? static_cast<std::int64_t>(fitting) : 0;
      scale_[axis] = repeats ? fitting : 1 / width;
    }
    list_offsets(steps);
    boxes_.reserve(model.atoms());
    for (const auto& position : model.positions) boxes_.push_back(box_of(lattice.fractional(position)));
    for (std::uint32_t atom = 0; atom < boxes_.size(); ++atom) {
      if (inside(atom)) put(atom);
    }
  }

  /// The atoms of a box, the last one first: next_atom leads from one to the next and ends with none.
  std::uint32_t first_atom(std::uint32_t box) const { return first_[box]; }
  std::uint32_t next_atom(std::uint32_t atom) const { return next_[atom]; }

  /// Visits the occupied boxes near that of an atom, each once, its own first, until a visit returns true.
  /// @return true if one did
  template <class Visit>
  bool any_near(std::uint32_t atom, Visit visit) const {
    const auto& box = boxes_[atom];
    return std::any_of(offsets_.begin(), offsets_.end(), [&](const Box& offset) {
      const auto found = numbers_.find(
          key({wrapped(box[0] + offset[0], 0), wrapped(box[1] + offset[1], 1), wrapped(box[2] + offset[2], 2)}));
      return found != numbers_.end() && visit(found->second);
    });
  }

 private:
  using Box = std::array<std::int64_t, 3>;

  static constexpr double farthest = (1 << 20) - 1;

  /// Where the boxes near one are; with few boxes along a direction, those on one side are those on the other.
  void list_offsets(std::int64_t steps) {
    const auto first = [&](std::size_t axis) { return count_[axis] > 0 && count_[axis] <= 2 * steps ? 0 : -steps; };
    const auto last = [&](std::size_t axis) {
      return count_[axis] > 0 && count_[axis] <= 2 * steps ? count_[axis] - 1 : steps;
    };
    for (auto a = first(0); a <= last(0); ++a) {
      for (auto b = first(1); b <= last(1); ++b) {
        for (auto c = first(2); c <= last(2); ++c) offsets_.push_back({a, b, c});
      }
    }
    const auto away = [](const Box& offset) {
      return offset[0] * offset[0] + offset[1] * offset[1] + offset[2] * offset[2];
    };
    std::stable_sort(offsets_.begin(), offsets_.end(), [&](const Box& a, const Box& b) { return away(a) < away(b); });
  }

  void put(std::uint32_t atom) {
    const auto [number, is_new] = numbers_.try_emplace(key(boxes_[atom]), static_cast<std::uint32_t>(first_.size()));
    if (is_new)
      first_.push_back(atom);
    else
      next_[atom] = std::exchange(first_[number->second], atom);
  }

  std::int64_t wrapped(std::int64_t k, std::size_t axis) const {
    const auto n = count_[axis];
    return n == 0 ? k : (k % n + n) % n;
  }

  Box box_of(const Vector3& fractional) const {
    Box box{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const double f = count_[axis] == 0 ? fractional[axis] : fractional[axis] - std::floor(fractional[axis]);
      const double place = std::isnan(f) ? 0 : std::clamp(std::floor(f * scale_[axis]), -farthest, farthest);
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
  std::vector<Box> offsets_;
  std::vector<Box> boxes_;  ///< of all atoms
  std::unordered_map<std::uint64_t, std::uint32_t> numbers_;
  std::vector<std::uint32_t> first_;
  std::vector<std::uint32_t> next_;
};

}  // namespace pathstat::desk
