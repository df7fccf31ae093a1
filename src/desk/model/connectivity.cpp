#include "desk/model/connectivity.h"

#include <algorithm>
#include <utility>

#include "structure/cell_bonds.h"

namespace pathstat::desk {
namespace {

/// The bonds of each atom as a row of neighbours.
struct Neighbours {
  std::vector<std::size_t> starts;
  std::vector<std::uint32_t> atoms;
  std::vector<Translation> cells;  ///< beside the atoms, where the model knows to which cells its bonds lead

  explicit Neighbours(const MolecularModel& model)
      : starts(model.atoms() + 1), atoms(2 * model.bonds.size()), cells(2 * model.bond_cells.size()) {
    for (const auto& [first, second] : model.bonds) ++starts[first], ++starts[second];
    std::size_t sum = 0;
    for (auto& start : starts) sum += std::exchange(start, sum);
    auto next = starts;
    for (std::size_t k = 0; k < model.bonds.size(); ++k) {
      const auto [first, second] = model.bonds[k];
      if (!model.bond_cells.empty()) {
        cells[next[first]] = model.bond_cells[k];
        cells[next[second] + (first == second ? 1 : 0)] = plus({}, model.bond_cells[k], -1);
      }
      atoms[next[first]++] = second;
      atoms[next[second]++] = first;
    }
  }
};

class MoleculeFinder {
 public:
  explicit MoleculeFinder(const MolecularModel& model)
      : model_(model), lattice_(model.periodic_type, model.cell), neighbours_(model) {
    found_.order.reserve(model.atoms());
    found_.molecule.assign(model.atoms(), unseen);
    found_.image.assign(model.atoms(), Translation{});
    if (periodic_directions(model.periodic_type) > 0) {
      narrowest_ = 1e30;
      for (auto axis = static_cast<std::size_t>(3 - periodic_directions(model.periodic_type)); axis < 3; ++axis) {
        narrowest_ = std::min(narrowest_, lattice_.width(axis));
      }
    }
  }

  Connectivity find() {
    for (std::uint32_t atom = 0; atom < model_.atoms(); ++atom) {
      if (found_.molecule[atom] == unseen) walk(atom);
    }
    found_.starts.push_back(static_cast<std::uint32_t>(found_.order.size()));
    return std::move(found_);
  }

 private:
  static constexpr std::uint32_t unseen = 0xffffffff;

  void walk(std::uint32_t first) {
    const auto number = static_cast<std::uint32_t>(found_.starts.size());
    const auto begin = found_.order.size();
    found_.starts.push_back(static_cast<std::uint32_t>(begin));
    reach(first, number, {});
    for (auto place = begin; place < found_.order.size(); ++place) {
      const auto atom = found_.order[place];
      for (auto k = neighbours_.starts[atom]; k < neighbours_.starts[atom + 1]; ++k) follow(atom, k, number);
    }
  }

  void reach(std::uint32_t atom, std::uint32_t number, const Translation& image) {
    found_.molecule[atom] = number;
    found_.image[atom] = image;
    found_.order.push_back(atom);
  }

  void follow(std::uint32_t atom, std::size_t neighbour, std::uint32_t number) {
    const auto next = neighbours_.atoms[neighbour];
    const auto image = plus(found_.image[atom], cell_of(atom, neighbour));
    if (found_.molecule[next] == unseen) return reach(next, number, image);
    const auto closure = plus(image, found_.image[next], -1);
    if (closure != Translation{}) found_.networks[number].add(closure);
  }

  /// The cell that a bond leads to: the one that it was made with while it is not much longer there than to the
  /// nearest image, as it is when an atom has since gone round the cell.
  Translation cell_of(std::uint32_t atom, std::size_t neighbour) const {
    constexpr double stretch = 0.25;
    Vector3 bond{};
    dvecsub_(model_.positions[neighbours_.atoms[neighbour]], model_.positions[atom], bond);
    const auto nearest = lattice_.nearest_image(bond);
    if (neighbours_.cells.empty() || neighbours_.cells[neighbour] == nearest) return nearest;
    const auto reach = [&](const Translation& cell) { return dveclen_(translated(bond, model_.cell, cell)); };
    const auto& made = neighbours_.cells[neighbour];
    const bool has_gone_round =
        neighbours_.atoms[neighbour] != atom && reach(made) > reach(nearest) + stretch * narrowest_;
    return has_gone_round ? nearest : made;
  }

  const MolecularModel& model_;
  Lattice lattice_;
  double narrowest_ = 0;  ///< the least width of the cell, Å
  Neighbours neighbours_;
  Connectivity found_;
};

}  // namespace

void NetworkBasis::add(Translation t) {
  for (std::size_t column = 0; column < 3; ++column) {
    auto& row = rows_[column];
    // Euclid's algorithm on the leading elements leaves their greatest common divisor in the row.
    while (t[column] != 0) {
      if (row[column] == 0) {
        row = t;
        return;
      }
      t = plus(t, row, -(t[column] / row[column]));
      if (t[column] != 0) std::swap(t, row);
    }
  }
}

int NetworkBasis::periodicity() const {
  int independent = 0;
  for (const auto& row : rows_) independent += row != Translation{} ? 1 : 0;
  return independent;
}

std::array<Translation, 3> NetworkBasis::vectors() const {
  std::array<Translation, 3> basis{};
  std::size_t next = 0;
  for (const auto& row : rows_) {
    if (row != Translation{}) basis[next++] = row;
  }
  return basis;
}

Connectivity find_molecules(const MolecularModel& model) { return MoleculeFinder(model).find(); }

}  // namespace pathstat::desk
