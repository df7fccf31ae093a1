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

/// The mean of a metric tensor, by columns, over what rotations make of it.
Matrix3 turned_mean(const Matrix3& metric, const std::vector<Matrix3>& rotations) {
  Matrix3 mean{};
  for (const auto& rotation : rotations) {
    Matrix3 turned{}, transposed{};
    for (std::size_t k = 0; k < 9; ++k) transposed[k] = rotation[k / 3 + 3 * (k % 3)];
    dmatmat_(metric, rotation, turned);
    dmatmat_(transposed, turned, turned);
    for (std::size_t k = 0; k < 9; ++k) mean[k] += turned[k] / static_cast<double>(rotations.size());
  }
  return mean;
}

/// A metric tensor that all rotations leave as it is and that has nothing else in common with a lattice. The mean over
/// a whole group is one at once, that over some of its operators after some rounds.
Matrix3 invariant_metric(const std::vector<Matrix3>& rotations) {
  constexpr int most_rounds = 1000;
  constexpr double settled = 1e-13;
  Matrix3 metric{1.0, 0.13, 0.07, 0.13, 1.31, 0.19, 0.07, 0.19, 1.73};
  for (int round = 0; round < most_rounds; ++round) {
    const auto next = turned_mean(metric, rotations);
    double change = 0;
    for (std::size_t k = 0; k < 9; ++k) change = std::max(change, std::abs(next[k] - metric[k]));
    metric = next;
    if (!(change > settled)) break;
  }
  return metric;
}

/// True if a cell that the operators leave as it is has what a lattice type states of cells. On axes of one's own it
/// may not.
bool states_the_cell(std::int32_t lattice_type, const Matrix3& metric) {
  const auto same = [](double x, double y) { return std::abs(x - y) < 1e-9; };
  const double aa = metric[0], bb = metric[4], cc = metric[8], ab = metric[3], ac = metric[6], bc = metric[7];
  const bool a_c = same(ac, 0), a_b = same(ab, 0), b_c = same(bc, 0);
  switch (lattice_type) {
    case 1:
      return a_b && a_c;
    case 2:
      return a_b && b_c;
    case 3:
      return a_c && b_c;
    case 4:
      return a_b && a_c && b_c;
    case 5:
    case 8:
      return same(aa, bb) && same(ab, -aa / 2) && a_c && b_c;
    case 6:
      return same(aa, bb) && same(bb, cc) && same(ab, ac) && same(ac, bc);
    case 7:
      return same(aa, bb) && a_b && a_c && b_c;
    case 9:
      return same(aa, bb) && same(bb, cc) && a_b && a_c && b_c;
    default:
      return true;
  }
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
    d = lattice_.shortest(d);
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
  const auto lattice = lattice_type(Axes(operators.rotations));
  group.lattice_type = states_the_cell(lattice, invariant_metric(operators.rotations)) ? lattice : 0;
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
