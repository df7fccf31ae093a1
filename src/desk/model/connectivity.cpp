#include "desk/model/connectivity.h"

#include <utility>

namespace pathstat::desk {
namespace {

Translation plus(const Translation& a, const Translation& b, std::int32_t factor = 1) {
  return {a[0] + factor * b[0], a[1] + factor * b[1], a[2] + factor * b[2]};
}

/// The bonds of each atom as a row of neighbours.
struct Neighbours {
  std::vector<std::size_t> starts;
  std::vector<std::uint32_t> atoms;

  explicit Neighbours(const MolecularModel& model) : starts(model.atoms() + 1), atoms(2 * model.bonds.size()) {
    for (const auto& [first, second] : model.bonds) ++starts[first], ++starts[second];
    std::size_t sum = 0;
    for (auto& start : starts) sum += std::exchange(start, sum);
    auto next = starts;
    for (const auto& [first, second] : model.bonds) {
      atoms[next[first]++] = second;
      atoms[next[second]++] = first;
    }
  }

  std::span<const std::uint32_t> of(std::uint32_t atom) const {
    return std::span(atoms).subspan(starts[atom], starts[atom + 1] - starts[atom]);
  }
};

class MoleculeFinder {
 public:
  explicit MoleculeFinder(const MolecularModel& model)
      : model_(model), lattice_(model.periodic_type, model.cell), neighbours_(model) {
    found_.order.reserve(model.atoms());
    found_.molecule.assign(model.atoms(), unseen);
    found_.image.assign(model.atoms(), Translation{});
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
      for (const auto next : neighbours_.of(atom)) follow(atom, next, number);
    }
  }

  void reach(std::uint32_t atom, std::uint32_t number, const Translation& image) {
    found_.molecule[atom] = number;
    found_.image[atom] = image;
    found_.order.push_back(atom);
  }

  void follow(std::uint32_t atom, std::uint32_t next, std::uint32_t number) {
    Vector3 bond{};
    dvecsub_(model_.positions[next], model_.positions[atom], bond);
    const auto image = plus(found_.image[atom], lattice_.nearest_image(bond));
    if (found_.molecule[next] == unseen) return reach(next, number, image);
    const auto closure = plus(image, found_.image[next], -1);
    if (closure != Translation{}) found_.networks[number].add(closure);
  }

  const MolecularModel& model_;
  Lattice lattice_;
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
