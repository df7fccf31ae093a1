#include "desk/model/data_model.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "desk/model/group_library.h"
#include "desk/model/model_slot.h"
#include "desk/model/primitive_setting.h"
#include "desk/model/stated_symmetry.h"
#include "structure/elements.h"
#include "support/put_back.h"

namespace pathstat::desk {
namespace {

/// A monitor and at most its two planes.
constexpr std::size_t ids_of_monitor = 3;

}  // namespace

DataModel::DataModel() {
  registry_.add(ObjectClass::element, elements().size() - 1, ObjectRegistry::no_model, 1);
  root_ = registry_.add(ObjectClass::root, 1);
  for (const char* name : {"MD_ANALYSIS", "CRYSTAL", "SURFACE"}) {
    applications_.emplace(name, registry_.add(ObjectClass::application, 1));
  }
  group_library_ = registry_.add(ObjectClass::space_group_library, 1);
  const auto known = library_groups().size();
  const auto first = registry_.add(ObjectClass::space_group, known);
  for (std::size_t k = 0; k < known; ++k) group_ids_.push_back(first + static_cast<std::int32_t>(k));
}

DataModel::~DataModel() = default;

std::int32_t DataModel::application(std::string_view name) const {
  const auto found = applications_.find(name);
  return found == applications_.end() ? 0 : found->second;
}

std::int32_t DataModel::object_named(std::string_view text) const {
  std::int32_t id = 0;
  const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), id);
  if (status == std::errc{} && end == text.data() + text.size()) return exists(id) ? id : 0;
  for (auto slot = slots_.rbegin(); slot != slots_.rend(); ++slot) {
    if (*slot && (*slot)->object.data.name == text) return (*slot)->object.id;
  }
  return application(text);
}

std::int32_t DataModel::group_for(const MolecularModel& model, std::int32_t& conventional) {
  constexpr std::int32_t rhombohedral = 6;
  const bool may_have =
      model.periodic_type == periodic_3d || (model.periodic_type == not_periodic && model.symmetry.size() > 0);
  conventional = 0;
  if (!may_have) return 0;
  if (model.symmetry.size() < 2) return group_ids_.front();
  const auto tabulated = tabulated_group(model.symmetry);
  if (tabulated != 0 && space_group(tabulated)->lattice_type != rhombohedral) return tabulated;

  // Of several centred settings the one that the tables have first.
  std::int32_t lattice_type = 0, option = 0;
  for (const auto& setting : primitive_settings(model.symmetry)) {
    const auto ordered = find_symmetry(stated_symmetry(setting.conventional)).operators;
    const auto group = tabulated_group(ordered);
    if (group == 0 || (conventional != 0 && space_group(group)->option >= option)) continue;
    conventional = group;
    lattice_type = setting.lattice_type, option = space_group(group)->option;
  }
  if (tabulated != 0) return tabulated;
  if (conventional == 0) return add_space_group(group_of_operators(model.name, model.symmetry));
  SpaceGroup primitive;
  primitive.name = space_group(conventional)->name + " primitive";
  primitive.lattice_type = lattice_type;
  primitive.operators = model.symmetry;
  return add_space_group(std::move(primitive));
}

std::int32_t DataModel::tabulated_group(const SymmetryOperators& operators) const {
  for (std::size_t k = 0; operators.size() > 0 && k < library_groups().size(); ++k) {
    if (library_group(k).operators == operators) return group_ids_[k];
  }
  return 0;
}

std::int32_t DataModel::add_space_group(SpaceGroup group) {
  const auto is_same = [&](const SpaceGroup& known) {
    return known.operators == group.operators && known.lattice_type == group.lattice_type &&
           known.centring_type == group.centring_type;
  };
  const auto known = static_cast<std::size_t>(std::ranges::find_if(added_groups_, is_same) - added_groups_.begin());
  if (known < added_groups_.size()) return group_ids_[library_groups().size() + known];
  const PutBack unless_done(registry_, added_groups_, group_ids_);
  const auto id = registry_.add(ObjectClass::space_group, 1, ObjectRegistry::no_model, group_ids_.size());
  if (id == 0) return 0;
  added_groups_.push_back(std::move(group));
  group_ids_.push_back(id);
  return id;
}

std::int32_t DataModel::add_model(MolecularModel&& model) {
  if (!model.image_origins.empty()) return place_model(std::move(model));
  model.file_atoms = model.atoms();
  model.file_bonds = model.bonds.size();
  return model.atoms() > 0 && expand_symmetry(model) ? place_model(std::move(model)) : 0;
}

std::int32_t DataModel::create_model(std::string name) {
  MolecularModel model;
  model.name = std::move(name);
  return place_model(std::move(model));
}

std::int32_t DataModel::place_model(MolecularModel&& model) {
  constexpr std::size_t model_and_group = 2;
  if (!registry_.has_room(model.atoms() + ids_of_monitor * model.monitors.size() + model_and_group)) return 0;

  const PutBack unless_done(registry_, added_groups_, group_ids_, user_data_);
  const auto place = slots_.size();
  auto slot = std::make_unique<ModelSlot>();
  auto& object = slot->object;
  object.id = registry_.add(ObjectClass::model, 1, place);
  object.number = static_cast<std::int32_t>(place + 1);
  object.first_atom = registry_.add(ObjectClass::atom, model.atoms(), place);
  std::int32_t conventional = 0;
  object.space_group = group_for(model, conventional);
  if (conventional != 0)
    set_user_value(object.id, "CRY/CONVENTIONAL_GPSYMMETRY", {UserValue::Kind::object, {conventional}});
  object.data = std::move(model);
  for (std::size_t k = 0; k < object.data.monitors.size(); ++k) name_monitor(object, k);
  for (std::size_t k = 0; k < object.data.monitors.size(); ++k) name_planes(object, k);
  slots_.push_back(std::move(slot));
  ++version_;
  return object.id;
}

void DataModel::number_next_model(std::int32_t number) {
  while (static_cast<std::int64_t>(slots_.size()) < std::int64_t{number} - 1) slots_.emplace_back();
}

void DataModel::remove_model(std::int32_t id) {
  const auto place = find(id);
  if (place.kind != ObjectClass::model) return;
  registry_.remove_model(place.model);
  slots_[place.model].reset();
  if (current_model_ == id) current_model_ = 0;
  std::erase_if(user_data_, [&](const auto& entry) { return !exists(entry.first); });
  ++version_;
}

ModelObject* DataModel::model(std::int32_t id) {
  const auto place = find(id);
  return place.kind == ObjectClass::model ? &slots_[place.model]->object : nullptr;
}

const ModelObject* DataModel::model(std::int32_t id) const {
  const auto place = find(id);
  return place.kind == ObjectClass::model ? &slots_[place.model]->object : nullptr;
}

ModelObject* DataModel::model_of(const ObjectPlace& place) {
  return place.model < slots_.size() && slots_[place.model] ? &slots_[place.model]->object : nullptr;
}

std::vector<ModelObject*> DataModel::models() {
  std::vector<ModelObject*> list;
  for (auto& slot : slots_) {
    if (slot) list.push_back(&slot->object);
  }
  return list;
}

std::vector<const ModelObject*> DataModel::models() const {
  std::vector<const ModelObject*> list;
  for (const auto& slot : slots_) {
    if (slot) list.push_back(&slot->object);
  }
  return list;
}

bool DataModel::set_current_model(std::int32_t id) {
  if (!model(id)) return false;
  current_model_ = id;
  return true;
}

void DataModel::geometry_changed(ModelObject& model) {
  ++model.geometry_version;
  ++version_;
}

AtomRef DataModel::atom(std::int32_t id) {
  const auto place = find(id);
  if (place.kind == ObjectClass::atom) return {&slots_[place.model]->object, place.index, {}};
  if (place.kind != ObjectClass::periodic_image) return {};
  auto& slot = *slots_[place.model];
  const auto& image = slot.images[place.index];
  return {&slot.object, image.place, image.image};
}

std::int32_t DataModel::atom_image(ModelObject& model, std::size_t place, const Translation& image) {
  if (image == Translation{}) return model.atom_id(place);
  const auto slot_place = find(model.id).model;
  auto& slot = *slots_[slot_place];
  auto& known = slot.image_ids[{static_cast<std::uint32_t>(place), image}];
  if (known != 0) return known;
  const auto id = registry_.add(ObjectClass::periodic_image, 1, slot_place, slot.images.size());
  if (id != 0) slot.images.push_back({id, static_cast<std::uint32_t>(place), image});
  return known = id;
}

std::vector<NamedImage> DataModel::atom_images(const ModelObject& model) const {
  return slots_[find(model.id).model]->images;
}

void DataModel::name_monitor(ModelObject& model, std::size_t place) {
  model.monitor_ids.push_back(registry_.add(ObjectClass::monitor, 1, find(model.id).model, place));
}

/// Gives identifiers to the planes of a monitor that has any.
void DataModel::name_planes(ModelObject& model, std::size_t place) {
  if (model.data.monitors[place].type != plane_monitor) return;
  model.plane_monitors.push_back(place);
  for (int side = 0; side < 2; ++side) {
    model.plane_ids.push_back(registry_.add(ObjectClass::plane, 1, find(model.id).model, model.plane_ids.size()));
  }
}

bool DataModel::add_monitor(ModelObject& model, Monitor monitor) {
  if (!registry_.has_room(ids_of_monitor)) return false;
  const PutBack unless_done(registry_, model.data.monitors, model.monitor_ids, model.plane_monitors, model.plane_ids);
  model.data.monitors.push_back(std::move(monitor));
  name_monitor(model, model.data.monitors.size() - 1);
  name_planes(model, model.data.monitors.size() - 1);
  return true;
}

void DataModel::remove_monitor(ModelObject& model, std::size_t place) {
  const PutBack unless_done(registry_, model.data.monitors, model.monitor_ids, model.plane_monitors, model.plane_ids);
  const auto at = [](auto& list, std::size_t k) { return list.begin() + static_cast<std::ptrdiff_t>(k); };
  auto& planes = model.plane_monitors;
  const auto first_behind = std::lower_bound(planes.begin(), planes.end(), place);
  if (model.data.monitors[place].type == plane_monitor) {
    const auto plane = 2 * static_cast<std::size_t>(first_behind - planes.begin());
    for (const std::size_t side : {1, 0}) registry_.remove(model.plane_ids[plane + side]);
    model.plane_ids.erase(at(model.plane_ids, plane), at(model.plane_ids, plane + 2));
  }
  std::erase(planes, place);
  for (auto& other : planes) other -= other > place ? 1 : 0;
  registry_.remove(model.monitor_ids[place]);
  model.monitor_ids.erase(at(model.monitor_ids, place));
  model.data.monitors.erase(at(model.data.monitors, place));
}

const Connectivity& DataModel::connectivity(ModelObject& model) {
  auto& slot = slot_of(model);
  if (slot.connectivity_version != model.geometry_version) {
    slot.connectivity = find_molecules(model.data);
    slot.connectivity_version = model.geometry_version;
  }
  return slot.connectivity;
}

const SpaceGroup* DataModel::space_group(std::int32_t id) const {
  const auto place = find(id);
  if (place.kind != ObjectClass::space_group) return nullptr;
  const auto library = library_groups().size();
  return place.index < library ? &library_group(place.index) : &added_groups_[place.index - library];
}

const SpaceGroup& DataModel::named_group(std::size_t place) const {
  const auto library = library_groups();
  return place < library.size() ? library[place] : added_groups_[place - library.size()];
}

std::vector<std::int32_t> DataModel::space_groups(std::int32_t number, std::int32_t option) const {
  std::vector<std::int32_t> found;
  for (std::size_t k = 0; k < group_ids_.size(); ++k) {
    const auto& group = named_group(k);
    if (group.number == number && group.option == option) found.push_back(group_ids_[k]);
  }
  return found;
}

std::vector<std::int32_t> DataModel::space_groups(std::string_view name) const {
  std::vector<std::int32_t> found;
  for (std::size_t k = 0; k < group_ids_.size(); ++k) {
    if (k < library_groups().size() ? is_name_of(k, name) : named_group(k).name == name) found.push_back(group_ids_[k]);
  }
  return found;
}

std::int32_t DataModel::add_surface() {
  const auto id = registry_.add(ObjectClass::surface, 1, ObjectRegistry::no_model, surfaces_.size());
  if (id != 0) surfaces_.emplace_back();
  return id;
}

Surface* DataModel::surface(std::int32_t id) {
  const auto place = find(id);
  return place.kind == ObjectClass::surface ? &surfaces_[place.index] : nullptr;
}

void DataModel::set_user_value(std::int32_t owner, std::string_view name, UserValue value) {
  user_data_[owner].insert_or_assign(std::string(name), std::move(value));
}

const UserValue* DataModel::user_value(std::int32_t owner, std::string_view name, UserValue::Kind kind) const {
  const auto values = user_data_.find(owner);
  if (values == user_data_.end()) return nullptr;
  const auto found = values->second.find(name);
  return found != values->second.end() && found->second.kind == kind ? &found->second : nullptr;
}

void DataModel::remove_user_value(std::int32_t owner, std::string_view name) {
  const auto values = user_data_.find(owner);
  if (values == user_data_.end()) return;
  const auto found = values->second.find(name);
  if (found != values->second.end()) values->second.erase(found);
}

bool DataModel::open_trajectory(std::string_view path) {
  if (trajectory_) return false;
  ModelFile file(FIL_QFXioCreate(resolved(path).string()));
  if (!file || FIL_QFXioOpenRead(*file) != 0) return false;
  trajectory_ = std::move(file);
  return true;
}

bool DataModel::close_trajectory() {
  const bool was_open = static_cast<bool>(trajectory_);
  trajectory_.reset();
  return was_open;
}

}  // namespace pathstat::desk
