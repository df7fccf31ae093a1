#include <algorithm>
#include <numeric>
#include <unordered_set>
#include <utility>

#include "desk/model/model_edit.h"
#include "desk/model/model_slot.h"
#include "support/put_back.h"

namespace pathstat::desk {
namespace {

constexpr std::uint32_t gone = 0xffffffff;

std::vector<std::uint32_t> all_places(const MolecularModel& model) {
  std::vector<std::uint32_t> places(model.atoms());
  std::iota(places.begin(), places.end(), 0);
  return places;
}

/// The places that are not marked.
std::vector<std::uint32_t> places_but(std::span<const std::uint8_t> marked) {
  std::vector<std::uint32_t> places;
  places.reserve(marked.size());
  for (std::uint32_t place = 0; place < marked.size(); ++place) {
    if (marked[place] == 0) places.push_back(place);
  }
  return places;
}

}  // namespace

/// Brings in step what knows the atoms by their places, after the model's columns have taken an order.
void DataModel::take_order(ModelObject& model, std::span<const std::uint32_t> order) {
  auto& slot = slot_of(model);
  std::size_t known = 0;  // so many places that something knows
  const auto count_in = [&](std::uint32_t place) {
    if (place != gone) known = std::max<std::size_t>(known, place + std::size_t{1});
  };
  for (const auto place : order) count_in(place);
  for (const auto& image : slot.images) count_in(image.place);
  for (const auto& monitor : model.data.monitors) std::ranges::for_each(monitor.atoms, count_in);
  std::vector<std::uint32_t> new_place(known, gone);
  std::vector<std::int32_t> ids;
  ids.reserve(order.size());
  for (std::uint32_t k = 0; k < order.size(); ++k) {
    new_place[order[k]] = k;
    ids.push_back(model.atom_id(order[k]));
  }
  if (!model.atom_selected.empty()) {
    const auto old = std::exchange(model.atom_selected, {});
    for (const auto place : order) model.atom_selected.push_back(place < old.size() ? old[place] : 0);
    model.selected_atoms = static_cast<std::size_t>(std::ranges::count(model.atom_selected, 1));
  }
  for (auto k = model.data.monitors.size(); k-- > 0;) {
    auto& monitor = model.data.monitors[k];
    for (auto& place : monitor.atoms) place = new_place[place];
    if (std::ranges::count(monitor.atoms, gone) > 0) remove_monitor(model, k);
  }
  model.atom_ids = std::move(ids);
  for (auto& image : slot.images) {
    if (image.place != gone) image.place = new_place[image.place];
  }
  name_atoms(model);
  geometry_changed(model);
}

/// Tells the registry which identifiers the atoms and images of a model have; images of atoms that are gone end.
void DataModel::name_atoms(ModelObject& model) {
  const auto slot_place = find(model.id).model;
  auto& slot = *slots_[slot_place];
  std::vector<std::int32_t> image_ids;
  std::erase_if(slot.images, [](const NamedImage& image) { return image.place == gone; });
  slot.image_ids.clear();
  for (const auto& image : slot.images) {
    image_ids.push_back(image.id);
    slot.image_ids.emplace(ImageAtom{image.place, image.image}, image.id);
  }
  registry_.replace_atoms(slot_place, model.atom_ids, image_ids);
  std::erase_if(model.kept_images, [&](std::int32_t id) { return find(id).kind != ObjectClass::periodic_image; });
}

/// Gives identifiers in a row to atoms that the columns have got at their end. @return the first, or 0
std::int32_t DataModel::name_new_atoms(ModelObject& model, std::size_t count) {
  const auto before = model.data.atoms() - count;
  const auto first = registry_.add(ObjectClass::atom, count, find(model.id).model, before);
  if (before == 0 && model.atom_ids.empty()) model.first_atom = first;
  const bool in_a_row = model.atom_ids.empty() && first == model.first_atom + static_cast<std::int32_t>(before);
  if (!in_a_row) {
    std::vector<std::int32_t> ids;
    for (std::size_t place = 0; place < before; ++place) ids.push_back(model.atom_id(place));
    for (std::size_t k = 0; k < count; ++k) ids.push_back(first + static_cast<std::int32_t>(k));
    model.atom_ids = std::move(ids);
  }
  if (!model.atom_selected.empty()) model.atom_selected.resize(model.data.atoms());
  geometry_changed(model);
  return first;
}

std::int32_t DataModel::add_atoms(ModelObject& model, std::span<const std::uint8_t> elements,
                                  std::span<const Vector3> positions) {
  if (!registry_.has_room(elements.size())) return 0;
  const PutBack unless_done(registry_, slot_of(model));
  if (!append_atoms(model.data, elements, positions)) return 0;
  return name_new_atoms(model, elements.size());
}

std::int32_t DataModel::copy_atoms(ModelObject& model, std::span<const std::uint32_t> places) {
  if (!registry_.has_room(places.size())) return 0;
  const PutBack unless_done(registry_, slot_of(model));
  if (!append_copies(model.data, places)) return 0;
  return name_new_atoms(model, places.size());
}

void DataModel::remove_atoms(ModelObject& model, std::span<const std::int32_t> ids) {
  auto& slot = slot_of(model);
  const PutBack unless_done(registry_, slot);
  std::vector<std::uint8_t> removed(model.data.atoms());
  for (const auto id : ids) {
    const auto place = find(id);
    if (place.kind == ObjectClass::atom) removed[place.index] = 1;
    if (place.kind == ObjectClass::periodic_image) slot.images[place.index].place = gone;
  }
  take_order(model, rearrange(model.data, places_but(removed)));
  for (const auto id : ids) user_data_.erase(id);
}

void DataModel::make_images(ModelObject& model, std::span<const std::int32_t> ids,
                            std::span<const std::uint32_t> parents, std::span<const Translation> cells) {
  auto& slot = slot_of(model);
  const PutBack unless_done(registry_, slot);
  fix_bond_cells(model.data);
  std::vector<std::uint8_t> is_image(model.data.atoms());
  for (std::size_t k = 0; k < ids.size(); ++k) {
    is_image[find(ids[k]).index] = 1;
    slot.images.push_back({ids[k], parents[k], cells[k]});
    model.kept_images.push_back(ids[k]);
  }
  take_order(model, rearrange(model.data, places_but(is_image)));
}

void DataModel::set_origins(ModelObject& model, std::vector<ImageOrigin> origins) {
  const PutBack unless_done(registry_, slot_of(model));
  fix_bond_cells(model.data);
  take_order(model, desk::set_origins(model.data, std::move(origins)));
}

void DataModel::renumber(ModelObject& model) {
  const PutBack unless_done(registry_, slot_of(model));
  auto order = all_places(model.data);
  std::ranges::stable_sort(order, {}, [&](std::uint32_t place) { return model.data.ids[place]; });
  std::vector<std::int32_t> rank(order.size());
  for (std::size_t k = 0; k < order.size(); ++k) rank[order[k]] = static_cast<std::int32_t>(k + 1);
  model.data.ids = std::move(rank);
  if (!std::ranges::is_sorted(order)) take_order(model, rearrange(model.data, order));
}

bool DataModel::set_periodic_type(ModelObject& model, std::int32_t type) {
  if (type != not_periodic && !is_usable_cell(type, model.data.cell)) return false;
  const PutBack unless_done(registry_, added_groups_, group_ids_, slot_of(model));
  if (type == not_periodic && model.data.periodic_type != not_periodic) {
    fix_bond_cells(model.data);
    images_to_atoms(model);
  }
  model.data.periodic_type = type;
  std::int32_t conventional = 0;
  if (type == periodic_3d && model.space_group == 0) model.space_group = group_for(model.data, conventional);
  geometry_changed(model);
  return true;
}

/// Turns the periodic images that are part of a model into atoms, and its bonds into bonds between atoms that are
/// there.
void DataModel::images_to_atoms(ModelObject& model) {
  auto& slot = slot_of(model);
  auto& data = model.data;
  std::unordered_set<std::int32_t> kept(model.kept_images.begin(), model.kept_images.end());
  std::unordered_map<ImageAtom, std::uint32_t, ImageHash> instances;  // atoms that stand in a cell
  std::unordered_map<std::uint32_t, std::vector<Translation>> cells;  // in which an atom has images
  std::vector<std::uint32_t> parents;
  std::vector<Vector3> positions;
  std::vector<std::int32_t> ids;
  for (std::uint32_t place = 0; place < data.atoms(); ++place) ids.push_back(model.atom_id(place));
  for (const auto& image : slot.images) {
    if (!kept.contains(image.id)) continue;
    instances.emplace(ImageAtom{image.place, image.image}, static_cast<std::uint32_t>(ids.size()));
    cells[image.place].push_back(image.image);
    parents.push_back(image.place);
    positions.push_back(translated(data.positions[image.place], data.cell, image.image));
    ids.push_back(image.id);
  }
  const auto instance = [&](std::uint32_t place, const Translation& cell) {
    if (cell == Translation{}) return place;
    const auto found = instances.find({place, cell});
    return found == instances.end() ? gone : found->second;
  };
  std::vector<std::pair<std::uint32_t, std::uint32_t>> bonds;
  for (std::size_t k = 0; k < data.bonds.size(); ++k) {
    const auto [first, second] = data.bonds[k];
    auto from = cells.contains(first) ? cells.at(first) : std::vector<Translation>{};
    from.push_back({});
    for (const auto& cell : from) {
      Translation to = data.bond_cells[k];
      for (std::size_t axis = 0; axis < 3; ++axis) to[axis] += cell[axis];
      if (const auto end = instance(second, to); end != gone) bonds.emplace_back(instance(first, cell), end);
    }
  }
  const auto atoms = data.atoms();
  if (!parents.empty() && append_copies(data, parents)) {
    std::ranges::copy(positions, data.positions.begin() + static_cast<std::ptrdiff_t>(atoms));
    model.atom_ids = std::move(ids);
    if (!model.atom_selected.empty()) model.atom_selected.resize(data.atoms());
  }
  data.bonds = std::move(bonds);
  data.bond_cells.clear();
  model.kept_images.clear();
  slot.images.clear();
  take_order(model, rearrange(data, all_places(data)));
}

void DataModel::set_space_group(ModelObject& model, std::int32_t group) {
  const auto* found = space_group(group);
  model.data.symmetry = found ? found->operators : SymmetryOperators{};
  model.space_group = group;
}

}  // namespace pathstat::desk
