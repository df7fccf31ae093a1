#include "desk/model/symmetry.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <utility>

namespace pathstat::desk {
namespace {

constexpr double coincident_squared = 0.05 * 0.05;
constexpr std::size_t most_atoms = 100'000'000;

using WholeMatrix = std::array<int, 9>;

/// Kinds of axes among the operators, a rotation and its product with the inversion being the same axis.
struct Axes {
  std::set<WholeMatrix> twofold, threefold;
  bool fourfold = false, sixfold = false;

  explicit Axes(const std::vector<Matrix3>& rotations) {
    for (const auto& rotation : rotations) {
      const double handedness =
          vector_triple<double>(std::span(rotation).first<3>(), std::span(rotation).subspan<3, 3>(),
                                std::span(rotation).last<3>()) < 0
              ? -1
              : 1;
      WholeMatrix whole{};
      for (std::size_t k = 0; k < 9; ++k) whole[k] = static_cast<int>(std::lround(handedness * rotation[k]));
      switch (whole[0] + whole[4] + whole[8]) {
        case -1:
          twofold.insert(whole);
          break;
        case 0:
          threefold.insert(whole);
          break;
        case 1:
          fourfold = true;
          break;
        case 2:
          sixfold = true;
          break;
        default:
          break;
      }
    }
  }
};

std::int32_t lattice_type(const Axes& axes) {
  if (axes.threefold.size() > 2) return 9;
  if (axes.sixfold) return 8;
  if (!axes.threefold.empty()) {
    const auto& turn = *axes.threefold.begin();
    return turn[8] == 1 ? 5 : 6;
  }
  if (axes.fourfold) return 7;
  if (axes.twofold.size() > 1) return 4;
  if (axes.twofold.empty()) return 0;
  const auto& turn = *axes.twofold.begin();
  return turn[0] == 1 ? 1 : turn[4] == 1 ? 2 : 3;
}

std::int32_t centring_type(const SymmetryOperators& operators) {
  constexpr double near = 1e-3;
  bool a = false, b = false, c = false, body = false, thirds = false;
  for (std::size_t k = 0; k < operators.size(); ++k) {
    if (operators.rotations[k] != identity_rotation) continue;
    Vector3 t = operators.translations[k];
    for (auto& x : t) x -= std::floor(x + near);
    const auto is = [&](double x, double y, double z) {
      return std::abs(t[0] - x) < near && std::abs(t[1] - y) < near && std::abs(t[2] - z) < near;
    };
    a |= is(0, 0.5, 0.5), b |= is(0.5, 0, 0.5), c |= is(0.5, 0.5, 0), body |= is(0.5, 0.5, 0.5);
    thirds |= is(2. / 3, 1. / 3, 1. / 3);
  }
  if (thirds) return 6;
  if (body) return 1;
  if (a && b && c) return 2;
  return a ? 3 : b ? 4 : c ? 5 : 0;
}

Vector3 image_position(const SymmetryOperators& operators, std::size_t k, const Lattice& lattice, const Vector3& x) {
  Vector3 f = lattice.fractional(x);
  dmatmul_(operators.rotations[k], f, f);
  dvecadd_(f, operators.translations[k], f);
  return lattice.cartesian(f);
}

/// Adds the images of a model's atoms and remembers which place each operator takes each atom to.
class SymmetryBuilder {
 public:
  explicit SymmetryBuilder(MolecularModel& model)
      : model_(model), lattice_(model.periodic_type, model.cell), next_id_(largest_id() + std::int64_t{1}) {
    model.atom_images.resize(model.file_atoms);
  }

  bool build() {
    const auto operators = model_.symmetry.size();
    if (operators * model_.file_atoms > most_atoms) return false;
    std::vector<std::uint32_t> places(model_.file_atoms);
    for (std::size_t k = 1; k < operators; ++k) {
      for (std::uint32_t atom = 0; atom < model_.file_atoms; ++atom) places[atom] = place_of_image(atom, k);
      for (std::size_t bond = 0; bond < model_.file_bonds; ++bond) copy_bond(bond, places);
    }
    return next_id_ - 1 <= std::numeric_limits<std::int32_t>::max();
  }

 private:
  std::int32_t largest_id() const { return *std::max_element(model_.ids.begin(), model_.ids.end()); }

  std::uint32_t place_of_image(std::uint32_t atom, std::size_t operator_place) {
    const auto position = image_position(model_.symmetry, operator_place, lattice_, model_.positions[atom]);
    if (coincide(position, model_.positions[atom])) return atom;
    for (const auto image : model_.atom_images[atom]) {
      if (coincide(position, model_.positions[image])) return image;
    }
    return add_image(atom, operator_place, position);
  }

  bool coincide(const Vector3& x, const Vector3& y) const {
    Vector3 d{};
    dvecsub_(x, y, d);
    d = translated(d, model_.cell, lattice_.nearest_image(d));
    return dvecdot_(d, d) < coincident_squared;
  }

  std::uint32_t add_image(std::uint32_t atom, std::size_t operator_place, const Vector3& position) {
    const auto place = static_cast<std::uint32_t>(model_.atoms());
    const auto repeat = [&](auto& column) { column.push_back(column[atom]); };
    repeat(model_.elements), repeat(model_.residue_ids), repeat(model_.charges), repeat(model_.masses);
    repeat(model_.occupancies), repeat(model_.movable);
    model_.names.repeat(atom), model_.ff_types.repeat(atom), model_.residues.repeat(atom);
    for (auto& [name, column] : model_.vectors) column.push_back(turned(column[atom], operator_place));
    model_.positions.push_back(position);
    model_.ids.push_back(static_cast<std::int32_t>(next_id_++));
    model_.image_origins.push_back({atom, static_cast<std::int32_t>(operator_place + 1), {}});
    model_.atom_images[atom].push_back(place);
    return place;
  }

  Vector3 turned(const Vector3& v, std::size_t operator_place) const {
    Vector3 f = lattice_.fractional(v);
    dmatmul_(model_.symmetry.rotations[operator_place], f, f);
    return lattice_.cartesian(f);
  }

  void copy_bond(std::size_t bond, const std::vector<std::uint32_t>& places) {
    const auto [first, second] = model_.bonds[bond];
    const std::pair copy{places[first], places[second]};
    if (copy.first < model_.file_atoms && copy.second < model_.file_atoms) return;
    model_.bonds.push_back(copy);
    if (model_.bond_cells.empty()) return;
    Vector3 d{};
    dvecsub_(model_.positions[copy.second], model_.positions[copy.first], d);
    model_.bond_cells.push_back(lattice_.nearest_image(d));
  }

  MolecularModel& model_;
  Lattice lattice_;
  std::int64_t next_id_;
};

}  // namespace

SpaceGroup group_of_operators(std::string name, const SymmetryOperators& operators) {
  SpaceGroup group;
  group.name = std::move(name);
  group.lattice_type = lattice_type(Axes(operators.rotations));
  group.centring_type = centring_type(operators);
  group.operators = operators;
  return group;
}

bool expand_symmetry(MolecularModel& model) {
  const bool has_images = model.periodic_type == periodic_3d && model.symmetry.size() > 1 && model.atoms() > 0;
  model.atom_images.resize(model.file_atoms);
  return !has_images || SymmetryBuilder(model).build();
}

}  // namespace pathstat::desk
