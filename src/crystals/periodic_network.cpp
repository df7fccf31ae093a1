#include "crystals/periodic_network.h"

#include <algorithm>
#include <array>
#include <utility>

#include "coreapi/messages.h"
#include "coreapi/operations.h"
#include "crystals/contact_finder.h"
#include "support/identifier_index.h"

namespace pathstat {
namespace {

constexpr double coincident_squared = 1e-5;
constexpr std::size_t most_contacts = 500;

/// The shifts of −1 ... 1 along the periodic directions.
std::vector<CellShift> neighbour_cells(std::size_t axes) {
  std::vector<CellShift> cells;
  const std::int32_t third = axes == 3 ? 1 : 0;
  for (std::int32_t x = -1; x <= 1; ++x) {
    for (std::int32_t y = -1; y <= 1; ++y) {
      for (std::int32_t z = -third; z <= third; ++z) cells.push_back({x, y, z});
    }
  }
  return cells;
}

/// Products of the operators of a group, each worked out once.
class Products {
 public:
  explicit Products(const GroupTable& group) : group_(group), known_(group.size() * group.size(), -1) {}

  /// The operator that does `first` and then `second`, all counted from 0.
  /// @param status  that of sym_multiplyfromtable_
  std::size_t product(std::size_t first, std::size_t second, std::int32_t& status) {
    auto& known = known_[first * group_.size() + second];
    if (known < 0) {
      constexpr CellShift none{};
      CellShift shift{};
      std::int32_t number = 1;
      sym_multiplyfromtable_(static_cast<std::int32_t>(first + 1), none, static_cast<std::int32_t>(second + 1), none,
                             number, shift, group_.rotations, group_.translations, group_.codes, group_.index, status);
      if (status != 0) return 0;
      known = number - 1;
    }
    return static_cast<std::size_t>(known);
  }

 private:
  const GroupTable& group_;
  std::vector<std::int32_t> known_;
};

}  // namespace

Vector3 GroupTable::applied(std::size_t op, const Vector3& f) const {
  Vector3 image;
  dmatmul_(std::span(rotations).subspan(9 * op).first<9>(), f, image);
  dvecadd_(image, std::span(translations).subspan(3 * op).first<3>(), image);
  return image;
}

CellShift GroupTable::turned(std::size_t op, const CellShift& shift) const {
  Vector3 result;
  dmatmul_(std::span(rotations).subspan(9 * op).first<9>(),
           Vector3{double(shift[0]), double(shift[1]), double(shift[2])}, result);
  CellShift whole{};
  for (std::size_t axis = 0; axis < 3; ++axis) whole[axis] = static_cast<std::int32_t>(std::lround(result[axis]));
  return whole;
}

GroupTable group_table(std::int32_t group, std::int32_t& status) {
  GroupTable table;
  table.codes.resize(most_group_operators), table.index.resize(most_group_operators);
  constexpr std::size_t most = most_group_operators;
  table.rotations.resize(9 * most), table.translations.resize(3 * most);
  std::int32_t count = 0;
  sym_constructgrouptable_(group, count, table.rotations, table.translations, table.codes, table.index, status);
  if (status != 0) return {};
  const auto size = static_cast<std::size_t>(count);
  table.codes.resize(size), table.index.resize(size);
  table.rotations.resize(9 * size), table.translations.resize(3 * size);
  return table;
}

PeriodicNetwork::PeriodicNetwork(std::int32_t model, const PeriodicFrame& frame,
                                 std::span<const std::int32_t> new_atoms, std::int32_t& status)
    : frame_(frame), objects_(atoms_of(model, AtomSelector::with_images, status)) {
  if (status != 0 || objects_.empty()) return;
  std::vector<double> xyz(3 * objects_.size());
  radii_.resize(objects_.size());
  kvd_xyz_(objects_, xyz, status);
  if (status == 0) kvd_atm_bondradius_(objects_, radii_, status);
  if (status != 0) return;

  largest_radius_ = std::max(0.0, *std::ranges::max_element(radii_));
  positions_.resize(xyz.size());
  for (std::size_t atom = 0; atom < objects_.size(); ++atom) {
    stored_.push_back(frame_.fractional({xyz[3 * atom], xyz[3 * atom + 1], xyz[3 * atom + 2]}));
    if (!can_be_folded(stored_.back())) {
      status = 1;
      return;
    }
    folded_.push_back(folded(frame_, stored_.back(), true));
    std::ranges::copy(frame_.cartesian(folded_.back().fraction), positions_.begin() + std::ptrdiff_t(3 * atom));
  }
  const IdentifierIndex news(new_atoms, status);
  for (const auto object : objects_) new_.push_back(news.find(object) >= 0 ? 1 : 0);
  if (status == 0) read_bonds(model, status);
}

/// Bonds of the Core with their ends as places. Periodic images have given their bonds to their atoms.
void PeriodicNetwork::read_bonds(std::int32_t model, std::int32_t& status) {
  const auto listed = bonds_of_model(model, status);
  if (status != 0) return;
  const IdentifierIndex places(objects_, status);
  if (status != 0) return;
  for (const auto& bond : listed) {
    const CellBond placed{places.find(bond.first), places.find(bond.second), bond.shift};
    if (placed.first >= 0 && placed.second >= 0 && known_.add(placed)) bonds_.push_back(placed);
  }
}

void PeriodicNetwork::make(std::vector<CellBond> bonds, std::int32_t& status) {
  bonds_.insert(bonds_.end(), bonds.begin(), bonds.end());
  for (auto& bond : bonds) {
    bond.first = objects_[static_cast<std::size_t>(bond.first)];
    bond.second = objects_[static_cast<std::size_t>(bond.second)];
  }
  drop_existing_bonds(bonds, status);
  if (status == 0) make_bonds(bonds, status);
}

/// What the Core tells of symmetry: the atom and operator of each image, and the images of each atom.
struct PeriodicNetwork::Relations {
  std::vector<std::int32_t> parent;  ///< place
  std::vector<std::size_t> op;       ///< counted from 0
  std::vector<std::int32_t> images;  ///< place of each atom's image under each operator, or -1
  std::vector<std::int32_t> row;     ///< of each atom: its row of `images`
  std::size_t operators = 0;

  Relations(std::span<const std::int32_t> objects, std::size_t operator_count, std::int32_t& status)
      : operators(operator_count) {
    std::vector<std::int32_t> parents(objects.size()), numbers(objects.size()), shifts(3 * objects.size());
    kvd_sym_parents_(objects, parents, numbers, shifts, status);
    if (status != 0) return;
    const IdentifierIndex places(objects, status);
    row.assign(objects.size(), -1);
    for (std::size_t atom = 0; atom < objects.size() && status == 0; ++atom) {
      const auto place = places.find(parents[atom]);
      const bool known = place >= 0 && numbers[atom] >= 1 && std::cmp_less_equal(numbers[atom], operators);
      if (!known) {
        status = 1;
        return;
      }
      parent.push_back(place);
      op.push_back(static_cast<std::size_t>(numbers[atom] - 1));
      auto& first = row[static_cast<std::size_t>(place)];
      if (first < 0) {
        first = static_cast<std::int32_t>(images.size());
        images.resize(images.size() + operators, -1);
      }
      images[static_cast<std::size_t>(first) + op.back()] = static_cast<std::int32_t>(atom);
    }
  }

  std::span<const std::int32_t> images_of(std::int32_t atom) const {
    const auto first = static_cast<std::size_t>(row[static_cast<std::size_t>(parent[static_cast<std::size_t>(atom)])]);
    return std::span(images).subspan(first, operators);
  }
};

void PeriodicNetwork::copy_bonds(const GroupTable& group, std::int32_t& status) {
  if (bonds_.empty() || group.size() < 2) return;
  const Relations relations(objects_, group.size(), status);
  Products products(group);

  /// Where an operator takes an atom: to which atom, in which cell.
  struct Image {
    std::int32_t atom = -1;
    CellShift shift{};
  };
  const auto image_of = [&](std::int32_t atom, std::size_t op) {
    const auto& f = stored_[static_cast<std::size_t>(atom)];
    const auto moved = group.applied(op, f);
    const auto images = relations.images_of(atom);
    Image image{images[products.product(relations.op[static_cast<std::size_t>(atom)], op, status)], {}};
    if (image.atom < 0) {  // on a special position one atom stands for several operators
      const auto same = std::ranges::find_if(images, [&](std::int32_t other) {
        return other >= 0 && frame_.coincide(folded(frame_, moved, false).fraction,
                                             folded_[static_cast<std::size_t>(other)].fraction);
      });
      if (same == images.end()) return image;
      image.atom = *same;
    }
    Vector3 difference;
    dvecsub_(moved, stored_[static_cast<std::size_t>(image.atom)], difference);
    image.shift = frame_.nearest_shift(difference);
    return image;
  };

  std::vector<CellBond> copies;
  for (std::size_t k = 0; k < bonds_.size() && status == 0; ++k) {
    const auto bond = bonds_[k];
    if (!is_new(bond)) continue;
    for (std::size_t op = 1; op < group.size() && status == 0; ++op) {
      const auto first = image_of(bond.first, op), second = image_of(bond.second, op);
      if (status != 0 || first.atom < 0 || second.atom < 0) continue;
      const auto shift = plus(plus(group.turned(op, bond.shift), second.shift), first.shift, -1);
      const CellBond copy{first.atom, second.atom, shift};
      if (known_.add(copy)) copies.push_back(copy);
    }
  }
  if (status == 0) make(std::move(copies), status);
}

void PeriodicNetwork::find_bonds(std::int32_t bonding, std::string_view failure_key, std::int32_t& status) {
  if (bonding == build_option::no_new_bonds || objects_.empty()) return;
  chains_.resize(objects_.size());
  kva_initfindcont_(positions_, 2 * largest_radius_, chains_, status);
  const auto cells = neighbour_cells(frame_.axes);
  std::vector<CellBond> found;
  for (std::size_t atom = 0; atom < objects_.size() && status == 0; ++atom) {
    for (const auto& cell : cells) {
      search_around(atom, cell, bonding, found, status);
      if (status != 0) break;
    }
  }
  if (status != 0) return show_message(failure_key);
  make(std::move(found), status);
}

/// Finds the partners of an atom in a neighbouring cell.
void PeriodicNetwork::search_around(std::size_t atom, const CellShift& cell, std::int32_t bonding,
                                    std::vector<CellBond>& found, std::int32_t& status) {
  std::array<std::int32_t, most_contacts> list;
  std::int32_t count = 0;
  const Vector3 place{positions_[3 * atom], positions_[3 * atom + 1], positions_[3 * atom + 2]};
  const auto point = frame_.moved(place, plus({}, cell, -1));
  const auto number = static_cast<std::int32_t>(atom);
  kva_findcontact_(positions_, chains_, point, cell == CellShift{} ? number + 1 : 0, radii_[atom] + largest_radius_,
                   list, count, 0, status);
  if (std::cmp_equal(count, list.size())) status = 1;
  if (status != 0) return;
  for (const auto contact : std::span(list).first(static_cast<std::size_t>(count))) {
    const CellBond bond{
        number, contact - 1,
        plus(plus(cell, folded_[static_cast<std::size_t>(contact - 1)].offset), folded_[atom].offset, -1)};
    if (bond.second < number || (bond.second == number && !points_forward(bond.shift)) || !is_new(bond)) continue;
    if (bond.shift == CellShift{} && bonding != build_option::bonds_everywhere) continue;
    const auto other = static_cast<std::size_t>(bond.second);
    Vector3 d;
    dvecsub_(std::span(positions_).subspan(3 * other).first<3>(), point, d);
    const double squared = dvecdot_(d, d), reach = radii_[atom] + radii_[other];
    if (squared < coincident_squared || squared > reach * reach) continue;
    if (known_.add(bond)) found.push_back(bond);
  }
}

/// Sets of bonded atoms.
struct PeriodicNetwork::Molecules {
  std::vector<std::size_t> order;     ///< atoms, molecule by molecule
  std::vector<std::size_t> starts;    ///< place in `order` of each molecule's first atom, and the end
  std::vector<CellShift> cell;        ///< of each atom: the cell in which it belongs to its whole molecule
  std::vector<std::uint8_t> endless;  ///< of each molecule: 1 if bonds lead from an atom to its own image
};

PeriodicNetwork::Molecules PeriodicNetwork::molecules(bool across_cells) const {
  const auto atoms = objects_.size();
  std::vector<std::size_t> first(atoms + 1);
  const auto counts = [&](const CellBond& bond) { return across_cells || bond.shift == CellShift{}; };
  for (const auto& bond : bonds_) {
    if (counts(bond)) ++first[static_cast<std::size_t>(bond.first)], ++first[static_cast<std::size_t>(bond.second)];
  }
  std::size_t sum = 0;
  for (auto& start : first) sum += std::exchange(start, sum);
  struct Neighbour {
    std::size_t atom;
    CellShift shift;
  };
  std::vector<Neighbour> neighbours(sum);
  auto next = first;
  for (const auto& bond : bonds_) {
    if (!counts(bond)) continue;
    const auto one = static_cast<std::size_t>(bond.first), other = static_cast<std::size_t>(bond.second);
    neighbours[next[one]++] = {other, bond.shift};
    neighbours[next[other]++] = {one, plus({}, bond.shift, -1)};
  }

  Molecules found;
  found.cell.resize(atoms);
  std::vector<std::uint8_t> reached(atoms);
  for (std::size_t seed = 0; seed < atoms; ++seed) {
    if (reached[seed] != 0) continue;
    found.starts.push_back(found.order.size());
    found.endless.push_back(0);
    reached[seed] = 1;
    found.order.push_back(seed);
    for (auto at = found.starts.back(); at < found.order.size(); ++at) {
      const auto atom = found.order[at];
      for (auto k = first[atom]; k < first[atom + 1]; ++k) {
        const auto cell = plus(found.cell[atom], neighbours[k].shift);
        const auto other = neighbours[k].atom;
        if (reached[other] == 0) {
          reached[other] = 1;
          found.cell[other] = cell;
          found.order.push_back(other);
        } else if (found.cell[other] != cell) {
          found.endless.back() = 1;
        }
      }
    }
  }
  found.starts.push_back(found.order.size());
  return found;
}

void PeriodicNetwork::display(std::int32_t display, std::int32_t faces, std::int32_t& status) {
  std::vector<CellShift> offsets(objects_.size()), flags(objects_.size());
  for (std::size_t atom = 0; atom < objects_.size(); ++atom) {
    if (display != build_option::display_as_stored) offsets[atom] = folded_[atom].offset;
    flags[atom] = folded_[atom].faces;
  }
  if (display == build_option::display_molecules || display == build_option::display_whole_molecules) {
    const auto found = molecules(display == build_option::display_whole_molecules);
    for (std::size_t number = 0; number < found.endless.size(); ++number) {
      if (found.endless[number] != 0) continue;
      const auto members =
          std::span(found.order).subspan(found.starts[number], found.starts[number + 1] - found.starts[number]);
      Vector3 mean{};
      for (const auto atom : members) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
          mean[axis] += (stored_[atom][axis] + found.cell[atom][axis]) / static_cast<double>(members.size());
        }
      }
      const auto centre = folded(frame_, mean, true);
      for (const auto atom : members) {
        offsets[atom] = plus(found.cell[atom], centre.offset);
        flags[atom] = centre.faces;
      }
    }
  }
  if (faces != build_option::face_flags) std::ranges::fill(flags, CellShift{});
  std::vector<std::int32_t> cells, flat;
  for (const auto& offset : offsets) cells.insert(cells.end(), offset.begin(), offset.end());
  for (const auto& flag : flags) flat.insert(flat.end(), flag.begin(), flag.end());
  if (objects_.empty()) return;
  kvd_atm_setcell0offset_(objects_, cells, status);
  if (status == 0) kvd_atm_setfaceflags_(objects_, flat, status);
}

}  // namespace pathstat
