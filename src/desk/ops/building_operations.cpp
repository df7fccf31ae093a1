#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "desk/model/bond_search.h"
#include "desk/model/model_edit.h"
#include "desk/ops/object_values.h"
#include "structure/elements.h"
#include "structure/symmetry_codes.h"

// The operations by which models are made and changed: atoms, bonds, cells, images, symmetry.
namespace pathstat::desk {
namespace {

constexpr std::string_view dummy_type = "XX", head_type = "J1", tail_type = "J2";

Translation triple_at(std::span<const std::int32_t> values, std::size_t k, std::int32_t type) {
  return from_repeat_directions({values[3 * k], values[3 * k + 1], values[3 * k + 2]}, type);
}

/// The model of which all objects are atoms, or periodic images of atoms where those are asked for; null with an error
/// if there is none.
ModelObject* common_model(DataModel& data, std::span<const std::int32_t> ids, OperationReply& reply, bool images) {
  ModelObject* model = nullptr;
  for (const auto id : ids) {
    const auto atom = data.atom(id);
    const bool fits = atom && (images || !atom.is_image()) && (!model || model == atom.model);
    if (!fits) {
      reply.error = unknown_object;
      return nullptr;
    }
    model = atom.model;
  }
  if (!model) reply.error = bad_value;
  return model;
}

std::vector<std::uint32_t> places_of(DataModel& data, std::span<const std::int32_t> ids) {
  std::vector<std::uint32_t> places;
  places.reserve(ids.size());
  for (const auto id : ids) places.push_back(static_cast<std::uint32_t>(data.atom(id).place));
  return places;
}

void put_new_atoms(std::int32_t first, std::size_t count, OperationReply& reply) {
  if (first == 0) return void(reply.error = bad_value);
  std::vector<std::int32_t> ids(count);
  for (std::size_t k = 0; k < count; ++k) ids[k] = first + static_cast<std::int32_t>(k);
  reply.put(std::move(ids));
}

void create_model(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto id = data.create_model(call.text(0));
  if (id == 0) return void(reply.error = bad_value);
  data.set_current_model(id);
  reply.put(id);
}

void create_atoms(DataModel& data, const OperationCall& call, OperationReply& reply) {
  auto* model = model_at(data, call.integer(0), reply);
  if (!model) return;
  const auto numbers = call.integers(2);
  const auto xyz = call.doubles(3);
  std::vector<std::uint8_t> added;
  std::vector<Vector3> positions;
  for (std::size_t k = 0; k < numbers.size(); ++k) {
    const bool known = numbers[k] >= 1 && std::cmp_less(numbers[k], elements().size());
    const Vector3 position{xyz[3 * k], xyz[3 * k + 1], xyz[3 * k + 2]};
    if (!known || !std::ranges::all_of(position, [](double x) { return std::isfinite(x); })) {
      return void(reply.error = bad_value);
    }
    added.push_back(static_cast<std::uint8_t>(numbers[k]));
    positions.push_back(position);
  }
  put_new_atoms(data.add_atoms(*model, added, positions), added.size(), reply);
}

void copy_atoms(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto ids = call.integers(1);
  auto* model = common_model(data, ids, reply, false);
  if (model) put_new_atoms(data.copy_atoms(*model, places_of(data, ids)), ids.size(), reply);
}

/// Deletes atoms and images of one model, or a model.
void delete_objects(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (const auto ids = call.integers(1); ids.size() == 1 && data.model(ids.front()))
    return data.remove_model(ids.front());
  auto* model = common_model(data, call.integers(1), reply, true);
  if (model) data.remove_atoms(*model, call.integers(1));
}

void set_file_numbers(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto ids = call.integers(1), numbers = call.integers(2);
  if (std::ranges::any_of(numbers, [](std::int32_t number) { return number < 0; }))
    return void(reply.error = bad_value);
  if (!common_model(data, ids, reply, false)) return;
  for (std::size_t k = 0; k < ids.size(); ++k) {
    const auto atom = data.atom(ids[k]);
    atom.model->data.ids[atom.place] = numbers[k];
  }
}

void renumber(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (auto* model = model_at(data, call.integer(0), reply)) data.renumber(*model);
}

// Bonds

void bond_count(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto* model = model_at(data, call.integer(0), reply);
  if (model) reply.put(static_cast<std::int32_t>(model->data.bonds.size()));
}

void bond_list(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto* model = model_at(data, call.integer(0), reply);
  if (!model) return;
  const auto& bonds = model->data.bonds;
  const auto all_cells = bond_cells(model->data);
  std::vector<std::int32_t> first, second, cells;
  const auto fitting = std::min(bonds.size(), static_cast<std::size_t>(std::max(call.integer(1), 0)));
  for (std::size_t k = 0; k < fitting; ++k) {
    first.push_back(model->atom_id(bonds[k].first));
    second.push_back(model->atom_id(bonds[k].second));
    const auto cell = by_repeat_directions(all_cells[k], model->data.periodic_type);
    cells.insert(cells.end(), cell.begin(), cell.end());
  }
  reply.put(std::move(first));
  reply.put(std::move(second));
  reply.put(std::move(cells));
  reply.put(static_cast<std::int32_t>(bonds.size()));
}

/// Bonds as a call gives them: two lists of atoms or images and the cells of the second ones.
struct GivenBonds {
  ModelObject* model = nullptr;
  std::vector<std::pair<std::uint32_t, std::uint32_t>> ends;
  std::vector<Translation> cells;

  GivenBonds(DataModel& data, const OperationCall& call, OperationReply& reply) {
    const auto first = call.integers(1), second = call.integers(2);
    model = common_model(data, first, reply, true);
    if (!model || common_model(data, second, reply, true) != model) {
      reply.error = unknown_object;
      model = nullptr;
      return;
    }
    for (std::size_t k = 0; k < first.size(); ++k) {
      const auto one = data.atom(first[k]), other = data.atom(second[k]);
      const auto cell = triple_at(call.integers(3), k, model->data.periodic_type);
      ends.emplace_back(one.place, other.place);
      cells.push_back(plus(plus(cell, other.image), one.image, -1));
    }
  }
};

void make_bonds(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const GivenBonds given(data, call, reply);
  if (!given.model) return;
  const bool across = std::ranges::any_of(given.cells, [](const Translation& cell) { return cell != Translation{}; });
  if (across && given.model->data.periodic_type == not_periodic) return void(reply.error = bad_value);
  add_bonds(given.model->data, given.ends, given.cells);
  data.geometry_changed(*given.model);
}

void find_bonds(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const GivenBonds given(data, call, reply);
  if (!given.model) return;
  const auto known = known_bonds(given.model->data);
  std::vector<std::int32_t> found;
  for (std::size_t k = 0; k < given.ends.size(); ++k) {
    found.push_back(known.contains(cell_bond(given.ends[k], given.cells[k])) ? 1 : 0);
  }
  reply.put(std::move(found));
}

/// Half of what the atoms of a bond may be apart: radii of this kind add up to the longest bond that is found.
void bond_radii(DataModel& data, const OperationCall& call, OperationReply& reply) {
  put_each<double>(call.integers(1), reply, [&](std::int32_t id, double& radius) {
    const auto atom = data.atom(id);
    if (!atom) return false;
    radius = elements()[atom.model->data.elements[atom.place]].bond_radius;
    if (radius > 0) radius += bond_tolerance / 2;
    return true;
  });
}

// Cells and images

/// This Core moves no model without its coordinates, so that there is never a movement to be applied.
void apply_transform(DataModel& data, const OperationCall& call, OperationReply& reply) {
  model_at(data, call.integer(0), reply);
}

void set_periodic_type(DataModel& data, const OperationCall& call, OperationReply& reply) {
  auto* model = model_at(data, call.integer(0), reply);
  const auto type = call.integer(1);
  if (!model) return;
  const bool known = type == not_periodic || periodic_directions(type) > 0;
  if (!known || !data.set_periodic_type(*model, type)) reply.error = bad_value;
}

void make_periodic(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto ids = call.integers(1), parents = call.integers(2);
  auto* model = common_model(data, ids, reply, false);
  if (!model || common_model(data, parents, reply, false) != model) return void(reply.error = unknown_object);
  const auto places = places_of(data, ids), parent_places = places_of(data, parents);
  std::vector<std::uint8_t> becomes_image(model->data.atoms());
  for (const auto place : places) becomes_image[place] = 1;
  std::vector<Translation> cells;
  for (std::size_t k = 0; k < ids.size(); ++k) {
    cells.push_back(triple_at(call.integers(3), k, model->data.periodic_type));
    if (becomes_image[parent_places[k]] != 0 || cells.back() == Translation{}) return void(reply.error = bad_value);
  }
  if (model->data.periodic_type == not_periodic) return void(reply.error = bad_value);
  data.make_images(*model, ids, parent_places, cells);
}

void move_by_cells(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto ids = call.integers(1);
  auto* model = common_model(data, ids, reply, false);
  if (!model) return;
  auto& columns = model->data;
  fix_bond_cells(columns);
  std::vector<Translation> moves(columns.atoms());
  for (std::size_t k = 0; k < ids.size(); ++k) {
    const auto place = data.atom(ids[k]).place;
    moves[place] = triple_at(call.integers(2), k, columns.periodic_type);
    columns.positions[place] = translated(columns.positions[place], columns.cell, moves[place]);
  }
  for (std::size_t k = 0; k < columns.bonds.size(); ++k) {
    const auto [first, second] = columns.bonds[k];
    columns.bond_cells[k] = plus(plus(columns.bond_cells[k], moves[first]), moves[second], -1);
  }
  data.geometry_changed(*model);
}

/// Sets three integers of each atom; images have none of their own.
template <auto column>
void set_triples(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto ids = call.integers(1);
  auto* model = common_model(data, ids, reply, true);
  if (!model) return;
  auto& values = model->data.*column;
  values.resize(model->data.atoms());
  for (std::size_t k = 0; k < ids.size(); ++k) {
    const auto atom = data.atom(ids[k]);
    if (!atom.is_image()) values[atom.place] = triple_at(call.integers(2), k, model->data.periodic_type);
  }
  data.geometry_changed(*model);
}

void face_flags(DataModel& data, const OperationCall& call, OperationReply& reply) {
  put_each_triple<std::int32_t>(call.integers(1), reply, [&](std::int32_t id, Translation& flags) {
    const auto atom = data.atom(id);
    if (!atom) return false;
    const auto& column = atom.model->data.face_flags;
    if (!column.empty()) flags = by_repeat_directions(column[atom.place], atom.model->data.periodic_type);
    return true;
  });
}

void clear_selections(DataModel& data, const OperationCall&, OperationReply&) {
  for (auto* model : data.models()) data.set_selected_atoms(*model, {});
  data.select_models(std::array<std::string, 1>{"none"});
}

// Symmetry

void set_symmetry(DataModel& data, const OperationCall& call, OperationReply& reply) {
  auto* model = model_at(data, call.integer(0), reply);
  if (!model) return;
  const bool fits = call.integer(1) == 0 || data.space_group(call.integer(1)) != nullptr;
  if (!fits || !model->data.image_origins.empty()) return void(reply.error = bad_value);
  data.set_space_group(*model, call.integer(1));
}

/// 0 without a group, 1 for one of the library, 2 for operators that a model states itself.
void symmetry_mode(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto* model = model_at(data, call.integer(0), reply);
  if (!model) return;
  const auto* group = data.space_group(model->space_group);
  reply.put(std::int32_t{!group ? 0 : group->number > 0 ? 1 : 2});
}

void clear_symmetry(DataModel& data, const OperationCall& call, OperationReply& reply) {
  auto* model = model_at(data, call.integer(0), reply);
  if (!model) return;
  auto origins = origins_of(model->data);
  for (std::uint32_t place = 0; place < origins.size(); ++place) origins[place] = {place, 1, {}};
  data.set_origins(*model, std::move(origins));
}

void symmetry_parents(DataModel& data, const OperationCall& call, OperationReply& reply) {
  std::vector<std::int32_t> parents, operators, shifts;
  for (const auto id : call.integers(1)) {
    const auto atom = data.atom(id);
    if (!atom) reply.error = unknown_object;
    const bool is_image = atom && atom.place >= atom.model->data.file_atoms;
    const auto origin = is_image ? atom.model->data.image_origins[atom.place - atom.model->data.file_atoms]
                                 : ImageOrigin{static_cast<std::uint32_t>(atom.place), 1, {}};
    parents.push_back(atom ? atom.model->atom_id(origin.parent) : 0);
    operators.push_back(origin.op);
    shifts.insert(shifts.end(), origin.shift.begin(), origin.shift.end());
  }
  reply.put(std::move(parents));
  reply.put(std::move(operators));
  reply.put(std::move(shifts));
}

void set_symmetry_parents(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto ids = call.integers(1), parents = call.integers(2), operators = call.integers(3);
  auto* model = common_model(data, ids, reply, false);
  if (!model || common_model(data, parents, reply, false) != model) return void(reply.error = unknown_object);
  auto origins = origins_of(model->data);
  const auto places = places_of(data, ids), parent_places = places_of(data, parents);
  for (std::size_t k = 0; k < ids.size(); ++k) {
    if (operators[k] < 1 || operators[k] > most_group_operators) return void(reply.error = bad_value);
    origins[places[k]] = {parent_places[k], operators[k], triple_at(call.integers(4), k, model->data.periodic_type)};
  }
  const bool flat = std::ranges::all_of(
      origins, [&](const ImageOrigin& origin) { return origins[origin.parent].parent == origin.parent; });
  if (!flat) return void(reply.error = bad_value);
  data.set_origins(*model, std::move(origins));
}

/// An atom's status, 1 of the asymmetric unit or 2 an image, follows here from its parent.
void set_symmetry_status(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const bool known =
      std::ranges::all_of(call.integers(2), [](std::int32_t status) { return status == 1 || status == 2; });
  if (!known) return void(reply.error = bad_value);
  common_model(data, call.integers(1), reply, true);
}

// Links of polymers

std::vector<std::uint32_t> atoms_of_type(const ModelObject& model, std::string_view type) {
  std::vector<std::uint32_t> places;
  const auto& types = model.data.ff_types;
  if (const auto key = types.find(type)) {
    for (std::uint32_t place = 0; place < model.data.atoms(); ++place) {
      if (types.key(place) == *key) places.push_back(place);
    }
  }
  return places;
}

void link_atoms(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto* model = model_at(data, call.integer(0), reply);
  if (!model) return;
  std::vector<std::int32_t> ids;
  for (const auto place : atoms_of_type(*model, call.text(1))) ids.push_back(model->atom_id(place));
  put_list(std::move(ids), call.integer(2), reply);
}

/// A monomer has one dummy at its head and one at its tail and no link atoms, all in one molecule.
void viable_monomer(DataModel& data, const OperationCall& call, OperationReply& reply) {
  auto* model = model_at(data, call.integer(0), reply);
  if (!model) return;
  const auto dummies = atoms_of_type(*model, dummy_type);
  const auto& molecule = data.connectivity(*model).molecule;
  const bool viable = dummies.size() == 2 && molecule[dummies[0]] == molecule[dummies[1]] &&
                      atoms_of_type(*model, head_type).empty() && atoms_of_type(*model, tail_type).empty();
  reply.put(std::int32_t{viable ? 1 : 0});
  for (std::size_t k = 0; k < 2; ++k) reply.put(viable ? model->atom_id(dummies[k]) : 0);
}

constexpr std::array served{
    ServedOperation{"kvD_Copy", copy_atoms},
    ServedOperation{"kvD_Delete", delete_objects},
    ServedOperation{"kvD_FindBond", find_bonds},
    ServedOperation{"kvD_ReassignIds", renumber},
    ServedOperation{"kvD_SetId", set_file_numbers},
    ServedOperation{"kvD_MOD_ApplyTransform", apply_transform},
    ServedOperation{"kvD_MOD_BondList", bond_list},
    ServedOperation{"kvD_MOD_Create", create_model},
    ServedOperation{"kvD_MOD_NumBonds", bond_count},
    ServedOperation{"kvD_MOD_Set3DSymmetry", set_symmetry},
    ServedOperation{"kvD_MOD_SetPeriodicType", set_periodic_type},
    ServedOperation{"kvD_MOD_SymmetryMode", symmetry_mode},
    ServedOperation{"kvD_ATM_BondRadius", bond_radii},
    ServedOperation{"kvD_ATM_Create", create_atoms},
    ServedOperation{"kvD_ATM_FaceFlags", face_flags},
    ServedOperation{"kvD_ATM_MoveByCells", move_by_cells},
    ServedOperation{"kvD_ATM_SetCell0Offset", set_triples<&MolecularModel::cell_offsets>},
    ServedOperation{"kvD_ATM_SetFaceFlags", set_triples<&MolecularModel::face_flags>},
    ServedOperation{"kvD_SEL_ClearAll", clear_selections},
    ServedOperation{"kvD_PER_MakePeriodic", make_periodic},
    ServedOperation{"kvD_SYM_Clear", clear_symmetry},
    ServedOperation{"kvD_SYM_Parents", symmetry_parents},
    ServedOperation{"kvD_SYM_SetParents", set_symmetry_parents},
    ServedOperation{"kvD_SYM_SetStatus", set_symmetry_status},
    ServedOperation{"kvA_LNK_FindAtoms", link_atoms},
    ServedOperation{"kvA_LNK_ViableMonomer", viable_monomer},
    ServedOperation{"kvA_MakeBond", make_bonds},
};

}  // namespace

void serve_building_operations(OperationServer& server, DataModel& model) { serve_all(server, model, served); }

}  // namespace pathstat::desk
