#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "desk/ops/object_values.h"
#include "structure/symmetry_codes.h"

namespace pathstat::desk {
namespace {

/// The number of the operator that made an atom; that of an atom of the file is 1, the identity.
void operators_of_atom(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto atom = data.atom(call.integer(0));
  if (!atom) return void(reply.error = unknown_object);
  const auto& columns = atom.model->data;
  const bool in_file = atom.place < columns.file_atoms;
  put_list({in_file ? 1 : columns.image_origins[atom.place - columns.file_atoms].op}, call.integer(1), reply);
}

void symmetry_children(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto atom = data.atom(call.integer(0));
  if (!atom) return void(reply.error = unknown_object);
  std::vector<std::int32_t> children;
  if (atom.place < atom.model->data.atom_images.size()) {
    for (const auto place : atom.model->data.atom_images[atom.place]) children.push_back(atom.model->atom_id(place));
  }
  put_list(std::move(children), call.integer(1), reply);
}

const SpaceGroup* group_at(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto* group = data.space_group(call.integer(0));
  if (!group) reply.error = unknown_object;
  return group;
}

template <auto member>
void group_number(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (const auto* group = group_at(data, call, reply)) reply.put(group->*member);
}

void group_name(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (const auto* group = group_at(data, call, reply)) reply.put(group->name);
}

void operator_count(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (const auto* group = group_at(data, call, reply)) reply.put(static_cast<std::int32_t>(group->operators.size()));
}

template <std::size_t N>
std::vector<double> first_numbers(const std::vector<std::array<double, N>>& rows, std::size_t count) {
  std::vector<double> numbers;
  for (std::size_t k = 0; k < count; ++k) numbers.insert(numbers.end(), rows[k].begin(), rows[k].end());
  return numbers;
}

void operators_of_group(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto* group = group_at(data, call, reply);
  if (!group) return;
  const auto& operators = group->operators;
  const auto fitting = std::min(operators.size(), static_cast<std::size_t>(std::max(call.integer(1), 0)));
  reply.put(first_numbers(operators.rotations, fitting));
  reply.put(first_numbers(operators.translations, fitting));
  reply.put(static_cast<std::int32_t>(operators.size()));
}

void groups_by_number(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (call.integer(0) != data.group_library()) return void(reply.error = unknown_object);
  put_list(data.space_groups(call.integer(1), call.integer(2)), call.integer(3), reply);
}

void groups_by_name(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (call.integer(0) != data.group_library()) return void(reply.error = unknown_object);
  put_list(data.space_groups(call.text(1)), call.integer(3), reply);
}

void group_library(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (call.text(0) != "QFX_SpaceGroups") return void(reply.error = not_there);
  reply.put(data.group_library());
}

/// A group of operators that no library has: the identity first, all of them finite.
void create_group(DataModel& data, const OperationCall& call, OperationReply& reply) {
  SpaceGroup group{.name = call.text(0),
                   .number = 0,
                   .option = 1,
                   .lattice_type = call.integer(1),
                   .centring_type = call.integer(2),
                   .operators = {}};
  const auto turns = call.doubles(4), shifts = call.doubles(5);
  const auto is_finite = [](double x) { return std::isfinite(x); };
  const bool good = turns.size() / 9 >= 1 && turns.size() / 9 <= most_group_operators &&
                    std::ranges::all_of(turns, is_finite) && std::ranges::all_of(shifts, is_finite);
  if (!good) return void(reply.error = bad_value);
  auto& operators = group.operators;
  operators.rotations.resize(turns.size() / 9), operators.translations.resize(shifts.size() / 3);
  for (std::size_t k = 0; k < turns.size(); ++k) operators.rotations[k / 9][k % 9] = turns[k];
  for (std::size_t k = 0; k < shifts.size(); ++k) operators.translations[k / 3][k % 3] = shifts[k];
  if (operators.rotations.front() != identity_rotation || operators.translations.front() != Vector3{})
    return void(reply.error = bad_value);
  const auto id = data.add_space_group(std::move(group));
  if (id == 0) reply.error = bad_value;
  reply.put(id);
}

constexpr std::array served{
    ServedOperation{"kvD_SYM_Operators", operators_of_atom},
    ServedOperation{"kvD_SYM_SymmetryChildren", symmetry_children},
    ServedOperation{"kvD_SGR_CenteringType", group_number<&SpaceGroup::centring_type>},
    ServedOperation{"kvD_SGR_Create", create_group},
    ServedOperation{"kvD_SGR_FindByITNum", groups_by_number},
    ServedOperation{"kvD_SGR_FindByName", groups_by_name},
    ServedOperation{"kvD_SGR_FindLibraryByName", group_library},
    ServedOperation{"kvD_SGR_LatticeType", group_number<&SpaceGroup::lattice_type>},
    ServedOperation{"kvD_SGR_Name", group_name},
    ServedOperation{"kvD_SGR_NumOperators", operator_count},
    ServedOperation{"kvD_SGR_Operators", operators_of_group},
    ServedOperation{"kvD_SGR_OptionId", group_number<&SpaceGroup::option>},
};

}  // namespace

void serve_symmetry_operations(OperationServer& server, DataModel& model) { serve_all(server, model, served); }

}  // namespace pathstat::desk
