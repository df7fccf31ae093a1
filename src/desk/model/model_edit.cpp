#include "desk/model/model_edit.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

#include "structure/elements.h"
#include "support/put_back.h"

namespace pathstat::desk {
namespace {

constexpr std::uint32_t none = 0xffffffff;

/// Runs over the columns that hold one value for each atom, words apart.
///
/// @param visit  void(auto& column)
template <class Visit>
void visit_columns(MolecularModel& model, Visit visit) {
  visit(model.ids), visit(model.elements), visit(model.residue_ids), visit(model.charges), visit(model.masses);
  visit(model.occupancies), visit(model.positions), visit(model.movable);
  for (auto& [name, column] : model.vectors) visit(column);
  if (!model.cell_offsets.empty()) visit(model.cell_offsets);
  if (!model.face_flags.empty()) visit(model.face_flags);
}

/// The identifier behind the largest; 0 if so many more have run out.
std::int32_t next_ids(const MolecularModel& model, std::size_t count) {
  const std::int64_t largest = model.ids.empty() ? 0 : *std::ranges::max_element(model.ids);
  const auto room = std::numeric_limits<std::int32_t>::max() - largest;
  return std::cmp_less_equal(count, room) ? static_cast<std::int32_t>(largest + 1) : 0;
}

/// New last atoms are atoms of the file; where the model has images, they are sorted in front of those.
void take_last_as_own(MolecularModel& model) {
  const bool has_images = !model.image_origins.empty();
  for (auto place = model.file_atoms + model.image_origins.size(); has_images && place < model.atoms(); ++place) {
    model.image_origins.push_back({static_cast<std::uint32_t>(place), 1, {}});
  }
  if (!has_images) {
    model.file_atoms = model.atoms();
    model.atom_images.resize(model.file_atoms);
  }
}

/// Splits the atoms into those of the file and images, by their origins.
void take_origins(MolecularModel& model, std::span<const ImageOrigin> origins) {
  const auto is_own = [&](std::size_t place) { return origins[place].parent == place; };
  model.file_atoms = 0;
  while (model.file_atoms < origins.size() && is_own(model.file_atoms)) ++model.file_atoms;
  model.image_origins.assign(origins.begin() + static_cast<std::ptrdiff_t>(model.file_atoms), origins.end());
  model.atom_images.assign(model.file_atoms, {});
  for (std::size_t place = model.file_atoms; place < origins.size(); ++place) {
    model.atom_images[origins[place].parent].push_back(static_cast<std::uint32_t>(place));
  }
}

/// Bonds between atoms that remain, those of the file first.
void rearrange_bonds(MolecularModel& model, std::span<const std::uint32_t> new_place) {
  std::vector<std::pair<std::uint32_t, std::uint32_t>> bonds, of_images;
  std::vector<Translation> cells, of_image_cells;
  for (std::size_t k = 0; k < model.bonds.size(); ++k) {
    const std::pair bond{new_place[model.bonds[k].first], new_place[model.bonds[k].second]};
    if (bond.first == none || bond.second == none) continue;
    const bool in_file = bond.first < model.file_atoms && bond.second < model.file_atoms;
    (in_file ? bonds : of_images).push_back(bond);
    if (!model.bond_cells.empty()) (in_file ? cells : of_image_cells).push_back(model.bond_cells[k]);
  }
  model.file_bonds = bonds.size();
  bonds.insert(bonds.end(), of_images.begin(), of_images.end());
  cells.insert(cells.end(), of_image_cells.begin(), of_image_cells.end());
  model.bonds = std::move(bonds);
  model.bond_cells = std::move(cells);
}

}  // namespace

void append_atom(MolecularModel& model, std::int32_t id, const StatedAtom& atom) {
  const auto& element = elements()[atom.element];
  visit_columns(model, [](auto& column) { column.emplace_back(); });
  model.ids.back() = id;
  model.elements.back() = atom.element;
  model.residue_ids.back() = atom.residue_id;
  model.charges.back() = atom.charge;
  model.masses.back() = element.mass;
  model.occupancies.back() = atom.occupancy;
  model.positions.back() = atom.position;
  model.movable.back() = 1;
  model.names.push_back(atom.name.empty() ? fmt::format("{}{}", element.symbol, id) : std::string(atom.name));
  model.ff_types.push_back(atom.ff_type);
  model.residues.push_back(atom.residue);
}

bool append_atoms(MolecularModel& model, std::span<const std::uint8_t> added, std::span<const Vector3> positions) {
  auto id = next_ids(model, added.size());
  if (id == 0) return false;
  for (std::size_t k = 0; k < added.size(); ++k, ++id) {
    append_atom(model, id, {.element = added[k], .position = positions[k]});
  }
  take_last_as_own(model);
  return true;
}

bool append_copies(MolecularModel& model, std::span<const std::uint32_t> places) {
  auto id = next_ids(model, places.size());
  if (id == 0) return false;
  for (const auto place : places) {
    visit_columns(model, [place](auto& column) { column.push_back(column[place]); });
    model.ids.back() = id++;
    model.names.repeat(place), model.ff_types.repeat(place), model.residues.repeat(place);
  }
  take_last_as_own(model);
  return true;
}

std::vector<ImageOrigin> origins_of(const MolecularModel& model) {
  std::vector<ImageOrigin> origins(model.atoms());
  for (std::uint32_t place = 0; place < model.file_atoms; ++place) origins[place] = {place, 1, {}};
  std::ranges::copy(model.image_origins, origins.begin() + static_cast<std::ptrdiff_t>(model.file_atoms));
  return origins;
}

std::vector<std::uint32_t> rearrange(MolecularModel& model, std::span<const std::uint32_t> order) {
  const auto old_origins = origins_of(model);
  std::vector<std::uint32_t> new_place(model.atoms(), none);
  for (const auto place : order) new_place[place] = 0;
  const auto is_own = [&](std::uint32_t place) {
    const auto parent = old_origins[place].parent;
    return parent == place || new_place[parent] == none;
  };
  std::vector<std::uint32_t> taken(order.begin(), order.end());
  std::stable_partition(taken.begin(), taken.end(), is_own);
  std::vector<std::uint8_t> own;
  own.reserve(taken.size());
  for (const auto place : taken) own.push_back(is_own(place) ? 1 : 0);
  for (std::uint32_t k = 0; k < taken.size(); ++k) new_place[taken[k]] = k;

  visit_columns(model, [&](auto& column) {
    auto kept = column;
    kept.resize(taken.size());
    for (std::size_t k = 0; k < taken.size(); ++k) kept[k] = column[taken[k]];
    column = std::move(kept);
  });
  model.names.pick(taken), model.ff_types.pick(taken), model.residues.pick(taken);
  std::vector<ImageOrigin> origins;
  for (std::uint32_t k = 0; k < taken.size(); ++k) {
    auto origin = old_origins[taken[k]];
    origin.parent = own[k] != 0 ? k : new_place[origin.parent];
    origins.push_back(own[k] != 0 ? ImageOrigin{k, 1, {}} : origin);
  }
  take_origins(model, origins);
  rearrange_bonds(model, new_place);
  return taken;
}

std::vector<std::uint32_t> set_origins(MolecularModel& model, std::vector<ImageOrigin> origins) {
  // As images of the file's end, so that the order alone decides which atoms are images.
  std::vector<std::uint32_t> order(model.atoms());
  std::iota(order.begin(), order.end(), 0);
  const auto is_own = [&](std::uint32_t place) { return origins[place].parent == place; };
  std::ranges::stable_sort(order, {}, [&](std::uint32_t place) { return is_own(place) ? 0 : origins[place].op; });
  model.file_atoms = 0;
  model.image_origins = std::move(origins);
  return rearrange(model, order);
}

std::vector<Translation> bond_cells(const MolecularModel& model) {
  if (!model.bond_cells.empty()) return model.bond_cells;
  std::vector<Translation> cells(model.bonds.size());
  if (model.periodic_type == not_periodic) return cells;
  const Lattice lattice(model.periodic_type, model.cell);
  for (std::size_t k = 0; k < cells.size(); ++k) {
    Vector3 d{};
    dvecsub_(model.positions[model.bonds[k].second], model.positions[model.bonds[k].first], d);
    cells[k] = lattice.nearest_image(d);
  }
  return cells;
}

CellBond cell_bond(const std::pair<std::uint32_t, std::uint32_t>& ends, const Translation& cell) {
  return {static_cast<std::int32_t>(ends.first), static_cast<std::int32_t>(ends.second), cell};
}

BondSet known_bonds(const MolecularModel& model) {
  const auto cells = bond_cells(model);
  BondSet known;
  known.reserve(cells.size());
  for (std::size_t k = 0; k < cells.size(); ++k) known.add(cell_bond(model.bonds[k], cells[k]));
  return known;
}

void fix_bond_cells(MolecularModel& model) {
  if (model.bond_cells.empty()) model.bond_cells = bond_cells(model);
}

void add_bonds(MolecularModel& model, std::span<const std::pair<std::uint32_t, std::uint32_t>> bonds,
               std::span<const Translation> cells) {
  fix_bond_cells(model);
  const PutBack unless_done(model.bonds, model.bond_cells, model.file_bonds);
  auto known = known_bonds(model);
  for (std::size_t k = 0; k < bonds.size(); ++k) {
    if (!known.add(cell_bond(bonds[k], cells[k]))) continue;
    model.bonds.push_back(bonds[k]);
    model.bond_cells.push_back(cells[k]);
  }
  std::vector<std::uint32_t> same(model.atoms());
  std::iota(same.begin(), same.end(), 0);
  rearrange_bonds(model, same);
}

}  // namespace pathstat::desk
