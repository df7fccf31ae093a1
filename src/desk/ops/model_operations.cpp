#include "desk/ops/model_operations.h"

#include <algorithm>
#include <array>

#include "desk/export/structure_files.h"
#include "desk/ops/object_values.h"

namespace pathstat::desk {
namespace {

constexpr std::int32_t without_images = 1;
constexpr std::int32_t with_periodic_images = 7;

std::vector<std::int32_t> atoms_by_selector(const ModelObject& model, std::int32_t selector) {
  std::vector<std::int32_t> list(selector == without_images ? model.data.file_atoms : model.data.atoms());
  for (std::size_t place = 0; place < list.size(); ++place) list[place] = model.atom_id(place);
  if (selector == with_periodic_images) list.insert(list.end(), model.kept_images.begin(), model.kept_images.end());
  return list;
}

std::size_t count_by_selector(const ModelObject& model, std::int32_t selector) {
  if (selector == without_images) return model.data.file_atoms;
  return model.data.atoms() + (selector == with_periodic_images ? model.kept_images.size() : 0);
}

/// The periodic type by which a model's cell is read: one that isn't periodic may have a cell to be built with.
std::int32_t type_of_cell(const ModelObject& model, std::int32_t unless_periodic) {
  const auto type = model.data.periodic_type;
  return type == not_periodic ? unless_periodic : type;
}

void put_vector(OperationReply& reply, const Vector3& v) { reply.put(std::vector<double>(v.begin(), v.end())); }

Vector3 vector_at(const OperationCall& call, std::size_t slot) {
  Vector3 v{};
  const auto values = call.doubles(slot);
  std::copy_n(values.begin(), 3, v.begin());
  return v;
}

void cell_vectors_2d(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto* model = model_at(data, call.integer(0), reply);
  if (!model) return;
  const auto type = type_of_cell(*model, periodic_2d);
  if (type != periodic_2d || !is_usable_cell(type, model->data.cell)) return void(reply.error = not_there);
  put_vector(reply, model->data.cell[1]);
  put_vector(reply, model->data.cell[2]);
}

void cell_vectors_3d(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto* model = model_at(data, call.integer(0), reply);
  if (!model) return;
  if (!is_usable_cell(type_of_cell(*model, periodic_3d), model->data.cell)) return void(reply.error = not_there);
  for (const auto& v : model->data.cell) put_vector(reply, v);
}

void set_cell(DataModel& data, ModelObject& model, std::int32_t type, const Cell& cell, OperationReply& reply) {
  if (!is_usable_cell(type, cell)) return void(reply.error = bad_value);
  model.data.cell = cell;
  data.geometry_changed(model);
}

void set_cell_vectors_2d(DataModel& data, const OperationCall& call, OperationReply& reply) {
  auto* model = model_at(data, call.integer(0), reply);
  if (!model) return;
  const auto type = type_of_cell(*model, periodic_2d);
  if (type != periodic_2d) return void(reply.error = not_there);
  set_cell(data, *model, type, {model->data.cell[0], vector_at(call, 1), vector_at(call, 2)}, reply);
}

void set_cell_vectors_3d(DataModel& data, const OperationCall& call, OperationReply& reply) {
  auto* model = model_at(data, call.integer(0), reply);
  if (!model) return;
  set_cell(data, *model, type_of_cell(*model, periodic_3d),
           {vector_at(call, 1), vector_at(call, 2), vector_at(call, 3)}, reply);
}

void symmetry_3d(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto* model = model_at(data, call.integer(0), reply);
  if (!model) return;
  if (model->space_group == 0) reply.error = not_there;
  reply.put(model->space_group);
}

void atom_list(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto* model = model_at(data, call.integer(0), reply);
  if (!model) return;
  put_list(atoms_by_selector(*model, call.integer(1)), call.integer(2), reply);
}

void atoms_in_file_order(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto* model = model_at(data, call.integer(0), reply);
  if (model) reply.put(atoms_by_selector(*model, without_images));
}

void atom_count(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto* model = model_at(data, call.integer(0), reply);
  if (model) reply.put(static_cast<std::int32_t>(count_by_selector(*model, call.integer(1))));
}

void current_model(DataModel& data, const OperationCall&, OperationReply& reply) { reply.put(data.current_model()); }

void set_current_model(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (!data.set_current_model(call.integer(0))) reply.error = unknown_object;
}

/// The model 0 stands for none, which is clear.
void is_clear(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (call.integer(0) == 0) return reply.put(std::int32_t{1});
  const auto* model = model_at(data, call.integer(0), reply);
  if (model) reply.put(std::int32_t{model->data.atoms() == 0 ? 1 : 0});
}

void model_name(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto objects = call.integers(2);
  const auto* model = model_at(data, objects.empty() ? 0 : objects.front(), reply);
  if (model) reply.put(model->data.name);
}

void periodic_type(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto* model = model_at(data, call.integer(0), reply);
  if (model) reply.put(model->data.periodic_type);
}

/// Takes in all the models of a file or none.
/// @return the identifier of the first, or 0
std::int32_t take_in(DataModel& data, std::vector<MolecularModel>& models) {
  std::vector<std::int32_t> taken;
  for (auto& model : models) {
    taken.push_back(data.add_model(std::move(model)));
    if (taken.back() != 0) continue;
    for (const auto id : taken) data.remove_model(id);
    return 0;
  }
  return taken.empty() ? 0 : taken.front();
}

/// A model among the inputs has no say: a file always makes new models, of which the first becomes current.
void import_model(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (!is_structure_file_type(call.integer(1))) return void(reply.error = bad_value);
  const auto path = data.resolved(call.text(0)).string();
  auto imported = read_structure_file(path, call.integer(1));
  const auto first = imported.problem.empty() ? take_in(data, imported.models) : 0;
  if (first == 0) {
    data.report_problem(imported.problem.empty() ? path + ": there are too many atoms" : imported.problem);
    reply.error = file_problem;
    return;
  }
  data.set_current_model(first);
  reply.put(first);
}

void export_model(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto* model = model_at(data, call.integer(1), reply);
  if (!model) return;
  if (!is_structure_file_type(call.integer(2))) return void(reply.error = bad_value);
  const auto problem = write_structure_file(model->data, data.resolved(call.text(0)).string(), call.integer(2));
  if (problem.empty()) return;
  data.report_problem(problem);
  reply.error = file_problem;
}

constexpr std::array served{
    ServedOperation{"kvD_MOD_2DCellVector", cell_vectors_2d},
    ServedOperation{"kvD_MOD_3DCellVector", cell_vectors_3d},
    ServedOperation{"kvD_MOD_3DSymmetry", symmetry_3d},
    ServedOperation{"kvD_MOD_AtomList", atom_list},
    ServedOperation{"kvD_MOD_Current", current_model},
    ServedOperation{"kvD_MOD_IsClear", is_clear},
    ServedOperation{"kvD_MOD_Name", model_name},
    ServedOperation{"kvD_MOD_NumAtoms", atom_count},
    ServedOperation{"kvD_MOD_PeriodicType", periodic_type},
    ServedOperation{"kvD_MOD_Set2DCellVector", set_cell_vectors_2d},
    ServedOperation{"kvD_MOD_Set3DCellVector", set_cell_vectors_3d},
    ServedOperation{"kvD_MOD_SetCurrent", set_current_model},
    ServedOperation{"kvD_FIL_ExportModel", export_model},
    ServedOperation{"kvD_FIL_ImportModel", import_model},
    ServedOperation{"kvA_FIL_CarAtomIdOrder", atoms_in_file_order},
};

}  // namespace

void serve_model_operations(OperationServer& server, DataModel& model) { serve_all(server, model, served); }

void register_data_model_operations(OperationServer& server, DataModel& model) {
  serve_model_operations(server, model);
  serve_atom_operations(server, model);
  serve_building_operations(server, model);
  serve_monitor_operations(server, model);
  serve_surface_operations(server, model);
  serve_symmetry_operations(server, model);
  serve_user_data_operations(server, model);
  serve_vector_operations(server, model);
}

}  // namespace pathstat::desk
