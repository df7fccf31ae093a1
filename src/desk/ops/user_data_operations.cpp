#include <algorithm>
#include <array>
#include <string>
#include <type_traits>

#include "desk/ops/object_values.h"

namespace pathstat::desk {
namespace {

void add_object_array(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (!data.exists(call.integer(0))) return void(reply.error = unknown_object);
  const auto objects = call.integers(3);
  data.set_user_value(call.integer(0), call.text(1),
                      {UserValue::Kind::object_array, {objects.begin(), objects.end()}, 0});
}

/// The values of an owner's array; the result is how many there are.
template <UserValue::Kind kind>
void find_array(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (!data.exists(call.integer(0))) return void(reply.error = unknown_object);
  const auto* found = data.user_value(call.integer(0), call.text(1), kind);
  if (!found) return void(reply.error = not_there);
  reply.put(found->values);
  reply.result = static_cast<std::int32_t>(found->values.size());
}

void find_object(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (!data.exists(call.integer(0))) return void(reply.error = unknown_object);
  const auto* found = data.user_value(call.integer(0), call.text(1), UserValue::Kind::object);
  if (!found) return void(reply.error = not_there);
  reply.put(found->values.front());
}

template <class T>
T value_of(const UserValue& found) {
  if constexpr (std::is_same_v<T, double>) {
    return found.number;
  } else {
    return found.values.front();
  }
}

template <UserValue::Kind kind, class T>
void find_number(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (!data.exists(call.integer(0))) return void(reply.error = unknown_object);
  const auto* found = data.user_value(call.integer(0), call.text(1), kind);
  if (!found) return void(reply.error = not_there);
  reply.put(value_of<T>(*found));
}

void set_integer(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (!data.exists(call.integer(0))) return void(reply.error = unknown_object);
  data.set_user_value(call.integer(0), call.text(1), {UserValue::Kind::integer, {call.integer(2)}, 0});
}

void set_number(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (!data.exists(call.integer(0))) return void(reply.error = unknown_object);
  data.set_user_value(call.integer(0), call.text(1), {UserValue::Kind::number, {}, call.number(2)});
}

void set_int_array(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (!data.exists(call.integer(0))) return void(reply.error = unknown_object);
  const auto values = call.integers(3);
  data.set_user_value(call.integer(0), call.text(1), {UserValue::Kind::int_array, {values.begin(), values.end()}, 0});
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
    ServedOperation{"kvD_UD_AddObjectArray", add_object_array},
    ServedOperation{"kvD_UD_FindIntArray", find_array<UserValue::Kind::int_array>},
    ServedOperation{"kvD_UD_FindObject", find_object},
    ServedOperation{"kvD_UD_FindObjectArray", find_array<UserValue::Kind::object_array>},
    ServedOperation{"kvD_UD_FindDouble", find_number<UserValue::Kind::number, double>},
    ServedOperation{"kvD_UD_FindInt", find_number<UserValue::Kind::integer, std::int32_t>},
    ServedOperation{"kvD_UD_IntVectors", find_of_each<3, UserValue::Kind::int_array>},
    ServedOperation{"kvD_UD_Ints", find_of_each<1, UserValue::Kind::integer>},
    ServedOperation{"kvD_UD_Remove", remove},
    ServedOperation{"kvD_UD_RemoveFrom", remove_from_each},
    ServedOperation{"kvD_UD_SetDouble", set_number},
    ServedOperation{"kvD_UD_SetInt", set_integer},
    ServedOperation{"kvD_UD_SetIntArray", set_int_array},
    ServedOperation{"kvD_UD_SetInts", set_of_each<1, UserValue::Kind::integer>},
    ServedOperation{"kvD_UD_SetIntVectors", set_of_each<3, UserValue::Kind::int_array>},
    ServedOperation{"kvD_APP_FindByName", application},
    ServedOperation{"kvD_TRJ_OpenReadCore", open_structured_trajectory},
    ServedOperation{"kvD_TRJ_CloseCore", close_structured_trajectory},
};

}  // namespace

void serve_user_data_operations(OperationServer& server, DataModel& model) { serve_all(server, model, served); }

}  // namespace pathstat::desk
