#include <algorithm>
#include <array>
#include <string>

#include "desk/ops/object_values.h"

namespace pathstat::desk {
namespace {

void add_object_array(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (!data.exists(call.integer(0))) return void(reply.error = unknown_object);
  const auto objects = call.integers(3);
  data.set_user_value(call.integer(0), call.text(1), {UserValue::Kind::object_array, {objects.begin(), objects.end()}});
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
    ServedOperation{"kvD_UD_Remove", remove},
    ServedOperation{"kvD_APP_FindByName", application},
    ServedOperation{"kvD_TRJ_OpenReadCore", open_structured_trajectory},
    ServedOperation{"kvD_TRJ_CloseCore", close_structured_trajectory},
};

}  // namespace

void serve_user_data_operations(OperationServer& server, DataModel& model) { serve_all(server, model, served); }

}  // namespace pathstat::desk
