#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "desk/ops/object_values.h"

namespace pathstat::desk {
namespace {

/// Gives the owner that a call names a value.
void give(DataModel& data, const OperationCall& call, OperationReply& reply, UserValue value) {
  if (!data.exists(call.integer(0))) return void(reply.error = unknown_object);
  data.set_user_value(call.integer(0), call.text(1), std::move(value));
}

template <UserValue::Kind kind>
void set_array(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto values = call.integers(3);
  give(data, call, reply, {kind, {values.begin(), values.end()}, 0});
}

void set_integer(DataModel& data, const OperationCall& call, OperationReply& reply) {
  give(data, call, reply, {UserValue::Kind::integer, {call.integer(2)}, 0});
}

void set_object(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (!data.exists(call.integer(2))) return void(reply.error = unknown_object);
  give(data, call, reply, {UserValue::Kind::object, {call.integer(2)}, 0});
}

void set_number(DataModel& data, const OperationCall& call, OperationReply& reply) {
  give(data, call, reply, {UserValue::Kind::number, {}, call.number(2)});
}

/// The value of this kind that a call asks an owner for; null with an error if there is none.
const UserValue* asked_for(DataModel& data, const OperationCall& call, OperationReply& reply, UserValue::Kind kind) {
  const bool exists = data.exists(call.integer(0));
  const auto* found = exists ? data.user_value(call.integer(0), call.text(1), kind) : nullptr;
  if (!found) reply.error = exists ? not_there : unknown_object;
  return found;
}

/// The values of an owner's array; the result is how many there are.
template <UserValue::Kind kind>
void find_array(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto* found = asked_for(data, call, reply, kind);
  if (!found) return;
  reply.put(found->values);
  reply.result = static_cast<std::int32_t>(found->values.size());
}

template <UserValue::Kind kind>
void find_one(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto* found = asked_for(data, call, reply, kind);
  if (!found) return;
  if constexpr (kind == UserValue::Kind::number) {
    reply.put(found->number);
  } else {
    reply.put(found->values.front());
  }
}

/// Gives each object so many of the integers.
template <std::size_t each, UserValue::Kind kind>
void set_of_each(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto objects = call.integers(2), values = call.integers(3);
  for (const auto id : objects) {
    if (!data.exists(id)) return void(reply.error = unknown_object);
  }
  for (std::size_t k = 0; k < objects.size(); ++k) {
    const auto own = values.subspan(each * k, each);
    data.set_user_value(objects[k], call.text(1), {kind, {own.begin(), own.end()}, 0});
  }
}

/// Flags of the objects that have a value, and the values, 0 where there is none.
template <std::size_t each, UserValue::Kind kind>
void find_of_each(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto objects = call.integers(2);
  std::vector<std::int32_t> flags(objects.size()), values(each * objects.size());
  for (std::size_t k = 0; k < objects.size(); ++k) {
    if (!data.exists(objects[k])) reply.error = unknown_object;
    const auto* found = data.user_value(objects[k], call.text(1), kind);
    if (!found || found->values.size() != each) continue;
    flags[k] = 1;
    std::ranges::copy(found->values, values.begin() + static_cast<std::ptrdiff_t>(each * k));
  }
  reply.put(std::move(flags));
  reply.put(std::move(values));
}

void remove_from_each(DataModel& data, const OperationCall& call, OperationReply& reply) {
  for (const auto id : call.integers(2)) {
    if (!data.exists(id)) reply.error = unknown_object;
    data.remove_user_value(id, call.text(1));
  }
}

/// Removing what is not there is no fault.
void remove(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (!data.exists(call.integer(0))) return void(reply.error = unknown_object);
  data.remove_user_value(call.integer(0), call.text(1));
}

void application(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto found = data.application(call.text(0));
  if (found == 0) reply.error = not_there;
  reply.put(found);
}

void open_structured_trajectory(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (!data.open_trajectory(call.text(0))) reply.error = file_problem;
}

void close_structured_trajectory(DataModel& data, const OperationCall&, OperationReply& reply) {
  if (!data.close_trajectory()) reply.error = not_there;
}

constexpr std::array served{
    ServedOperation{"kvD_UD_AddObjectArray", set_array<UserValue::Kind::object_array>},
    ServedOperation{"kvD_UD_FindIntArray", find_array<UserValue::Kind::int_array>},
    ServedOperation{"kvD_UD_FindObject", find_one<UserValue::Kind::object>},
    ServedOperation{"kvD_UD_SetObject", set_object},
    ServedOperation{"kvD_UD_FindObjectArray", find_array<UserValue::Kind::object_array>},
    ServedOperation{"kvD_UD_FindDouble", find_one<UserValue::Kind::number>},
    ServedOperation{"kvD_UD_FindInt", find_one<UserValue::Kind::integer>},
    ServedOperation{"kvD_UD_IntVectors", find_of_each<3, UserValue::Kind::int_array>},
    ServedOperation{"kvD_UD_Ints", find_of_each<1, UserValue::Kind::integer>},
    ServedOperation{"kvD_UD_Remove", remove},
    ServedOperation{"kvD_UD_RemoveFrom", remove_from_each},
    ServedOperation{"kvD_UD_SetDouble", set_number},
    ServedOperation{"kvD_UD_SetInt", set_integer},
    ServedOperation{"kvD_UD_SetIntArray", set_array<UserValue::Kind::int_array>},
    ServedOperation{"kvD_UD_SetInts", set_of_each<1, UserValue::Kind::integer>},
    ServedOperation{"kvD_UD_SetIntVectors", set_of_each<3, UserValue::Kind::int_array>},
    ServedOperation{"kvD_APP_FindByName", application},
    ServedOperation{"kvD_TRJ_OpenReadCore", open_structured_trajectory},
    ServedOperation{"kvD_TRJ_CloseCore", close_structured_trajectory},
};

}  // namespace

void serve_user_data_operations(OperationServer& server, DataModel& model) { serve_all(server, model, served); }

}  // namespace pathstat::desk
