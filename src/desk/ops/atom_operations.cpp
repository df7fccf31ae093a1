#include <algorithm>
#include <array>

#include "desk/ops/object_values.h"
#include "structure/elements.h"

namespace pathstat::desk {
namespace {

bool is_atom(ObjectClass kind) { return kind == ObjectClass::atom || kind == ObjectClass::periodic_image; }

/// A column of the atoms, of which an image has the value of its atom.
template <class T, auto column>
void put_column(DataModel& data, std::span<const std::int32_t> atoms, OperationReply& reply) {
  put_each<T>(atoms, reply, [&](std::int32_t id, T& value) {
    const auto atom = data.atom(id);
    if (atom) value = static_cast<T>((atom.model->data.*column)[atom.place]);
    return static_cast<bool>(atom);
  });
}

template <class T, auto column>
void answer_column(DataModel& data, const OperationCall& call, OperationReply& reply) {
  put_column<T, column>(data, call.integers(1), reply);
}

void file_numbers(DataModel& data, const OperationCall& call, OperationReply& reply) {
  put_each<std::int32_t>(call.integers(1), reply, [&](std::int32_t id, std::int32_t& number) {
    if (const auto atom = data.atom(id)) {
      number = atom.model->data.ids[atom.place];
      return true;
    }
    const auto place = data.find(id);
    if (place.kind == ObjectClass::model) number = data.model(id)->number;
    if (place.kind == ObjectClass::monitor) number = static_cast<std::int32_t>(place.index + 1);
    return number != 0;
  });
}

void are_of_class(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto wanted = static_cast<ObjectClass>(call.integer(0));
  put_each<std::int32_t>(call.integers(2), reply, [&](std::int32_t id, std::int32_t& flag) {
    const auto kind = data.find(id).kind;
    flag = (wanted == ObjectClass::atom ? is_atom(kind) : kind == wanted) ? 1 : 0;
    return kind != ObjectClass::none;
  });
}

/// The element of an atom, the type of a monitor, the class of anything else.
void types(DataModel& data, const OperationCall& call, OperationReply& reply) {
  put_each<std::int32_t>(call.integers(1), reply, [&](std::int32_t id, std::int32_t& type) {
    const auto place = data.find(id);
    if (const auto atom = data.atom(id)) {
      type = atom.model->data.elements[atom.place];
    } else if (place.kind == ObjectClass::monitor) {
      type = data.model_of(place)->data.monitors[place.index].type;
    } else {
      type = static_cast<std::int32_t>(place.kind);
    }
    return type != 0;
  });
}

void exist(DataModel& data, const OperationCall& call, OperationReply& reply) {
  put_each<std::int32_t>(call.integers(1), reply, [&](std::int32_t id, std::int32_t& flag) {
    flag = data.exists(id) ? 1 : 0;
    return true;
  });
}

void root(DataModel& data, const OperationCall&, OperationReply& reply) { reply.put(data.root()); }

void positions(DataModel& data, const OperationCall& call, OperationReply& reply) {
  put_each_triple<double>(call.integers(1), reply, [&](std::int32_t id, Vector3& position) {
    const auto atom = data.atom(id);
    if (atom) position = atom.position();
    return static_cast<bool>(atom);
  });
}

/// Runs over atoms that are to be changed; none is if one of the identifiers is no atom, or that of an image.
///
/// @param change  void(AtomRef, std::size_t k)
template <class Change>
bool change_atoms(DataModel& data, std::span<const std::int32_t> ids, OperationReply& reply, Change change) {
  for (const auto id : ids) {
    if (data.find(id).kind == ObjectClass::atom) continue;
    reply.error = unknown_object;
    return false;
  }
  for (std::size_t k = 0; k < ids.size(); ++k) change(data.atom(ids[k]), k);
  return true;
}

void set_positions(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto xyz = call.doubles(2);
  ModelObject* changed = nullptr;
  change_atoms(data, call.integers(1), reply, [&](const AtomRef& atom, std::size_t k) {
    if (changed && changed != atom.model) data.geometry_changed(*changed);
    changed = atom.model;
    std::copy_n(xyz.begin() + static_cast<std::ptrdiff_t>(3 * k), 3, atom.model->data.positions[atom.place].begin());
  });
  if (changed) data.geometry_changed(*changed);
}

void set_movable(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto flags = call.integers(2);
  change_atoms(data, call.integers(1), reply, [&](const AtomRef& atom, std::size_t k) {
    atom.model->data.movable[atom.place] = flags[k] != 0 ? 1 : 0;
  });
}

/// The cells that an atom is away from where it is shown: as the builder set it, or else as its whole molecule has it.
void cell_offsets(DataModel& data, const OperationCall& call, OperationReply& reply) {
  put_each_triple<std::int32_t>(call.integers(1), reply, [&](std::int32_t id, Translation& offset) {
    const auto atom = data.atom(id);
    if (!atom) return false;
    const auto& shown = atom.model->data.cell_offsets;
    offset = shown.empty() ? data.connectivity(*atom.model).image[atom.place] : shown[atom.place];
    for (std::size_t axis = 0; axis < 3; ++axis) offset[axis] += atom.image[axis];
    offset = by_repeat_directions(offset, atom.model->data.periodic_type);
    return true;
  });
}

void ff_type(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto atoms = call.integers(2);
  const auto atom = data.atom(atoms.empty() ? 0 : atoms.front());
  if (!atom) return void(reply.error = unknown_object);
  reply.put(std::string(atom.model->data.ff_types[atom.place]));
}

void periodic_parents(DataModel& data, const OperationCall& call, OperationReply& reply) {
  put_each<std::int32_t>(call.integers(1), reply, [&](std::int32_t id, std::int32_t& parent) {
    const auto atom = data.atom(id);
    if (atom) parent = atom.model->atom_id(atom.place);
    return static_cast<bool>(atom);
  });
}

void translations(DataModel& data, const OperationCall& call, OperationReply& reply) {
  put_each_triple<std::int32_t>(call.integers(1), reply, [&](std::int32_t id, Translation& translation) {
    const auto atom = data.atom(id);
    if (atom) translation = by_repeat_directions(atom.image, atom.model->data.periodic_type);
    return static_cast<bool>(atom);
  });
}

constexpr auto model_class = static_cast<std::int32_t>(ObjectClass::model);
constexpr auto atom_class = static_cast<std::int32_t>(ObjectClass::atom);

/// The models that are the object or below it.
std::vector<ModelObject*> models_below(DataModel& data, std::int32_t object) {
  if (object == data.root()) return data.models();
  auto* model = data.model(object);
  return model ? std::vector{model} : std::vector<ModelObject*>{};
}

void count_selected(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto wanted = call.integer(0);
  if (wanted != model_class && wanted != atom_class) return void(reply.error = bad_value);
  put_each<std::int32_t>(call.integers(2), reply, [&](std::int32_t id, std::int32_t& count) {
    for (const auto* model : models_below(data, id)) {
      count += wanted == atom_class ? static_cast<std::int32_t>(model->selected_atoms) : model->selected ? 1 : 0;
    }
    return id == data.root() || data.model(id);
  });
}

/// Adds the selected atoms of a model as their molecules are whole: those on another side of the cell come as images.
void append_selected_atoms(DataModel& data, ModelObject& model, std::vector<std::int32_t>& list) {
  if (model.selected_atoms == 0) return;
  const auto& images = data.connectivity(model).image;
  for (std::size_t place = 0; place < model.atom_selected.size(); ++place) {
    if (model.atom_selected[place]) list.push_back(data.atom_image(model, place, images[place]));
  }
}

void find_selected(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto object = call.integer(0), wanted = call.integer(1);
  if (object != data.root() && !data.model(object)) return void(reply.error = unknown_object);
  if (wanted != model_class && wanted != atom_class) return void(reply.error = bad_value);
  std::vector<std::int32_t> list;
  for (auto* model : models_below(data, object)) {
    if (wanted == model_class && model->selected) list.push_back(model->id);
    if (wanted == atom_class) append_selected_atoms(data, *model, list);
  }
  put_list(std::move(list), call.integer(2), reply);
}

void find_symbol(DataModel&, const OperationCall& call, OperationReply& reply) {
  const auto element = element_of_symbol(call.text(1));
  if (element == 0) return void(reply.error = not_there);
  reply.put(std::vector<std::int32_t>{element});
  reply.result = 1;
}

void symbol(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto objects = call.integers(2);
  const auto place = data.find(objects.empty() ? 0 : objects.front());
  if (place.kind != ObjectClass::element) return void(reply.error = unknown_object);
  reply.put(std::string(elements()[place.index].symbol));
}

using Columns = MolecularModel;

constexpr std::array served{
    ServedOperation{"kvD_Id", file_numbers},
    ServedOperation{"kvD_IsA", are_of_class},
    ServedOperation{"kvD_IsMovable", answer_column<std::int32_t, &Columns::movable>},
    ServedOperation{"kvD_Root", root},
    ServedOperation{"kvD_SetMovable", set_movable},
    ServedOperation{"kvD_SetXYZ", set_positions},
    ServedOperation{"kvD_Type", types},
    ServedOperation{"kvD_ValidateOID", exist},
    ServedOperation{"kvD_XYZ", positions},
    ServedOperation{"kvD_ATM_Cell0Offset", cell_offsets},
    ServedOperation{"kvD_ATM_Charge", answer_column<double, &Columns::charges>},
    ServedOperation{"kvD_ATM_FFType", ff_type},
    ServedOperation{"kvD_ATM_dMass", answer_column<double, &Columns::masses>},
    ServedOperation{"kvD_ATM_Occupancy", answer_column<double, &Columns::occupancies>},
    ServedOperation{"kvD_PER_PeriodicParent", periodic_parents},
    ServedOperation{"kvD_PER_Translation", translations},
    ServedOperation{"kvD_SEL_FindSelected", find_selected},
    ServedOperation{"kvD_SEL_NumSelected", count_selected},
    ServedOperation{"kvD_ACL_FindSymbol", find_symbol},
    ServedOperation{"kvD_ACL_Symbol", symbol},
};

}  // namespace

void serve_atom_operations(OperationServer& server, DataModel& model) { serve_all(server, model, served); }

}  // namespace pathstat::desk
